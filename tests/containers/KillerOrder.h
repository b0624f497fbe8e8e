#ifndef ORVABASE_TESTS_KILLERORDER_H
#define ORVABASE_TESTS_KILLERORDER_H

#include "OCVector.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

/// Finds the order of numbers that a vector's sort likes least.
///
/// It decides the order while the sort asks, so that each pivot turns out as bad as can be
/// (M. D. McIlroy, "A Killer Adversary for Quicksort").
class KillerOrder {
public:
    /// An object whose place in the order is decided on demand.
    class Number : public OCObject {
    public:
        explicit Number(int ownIndex) : index(ownIndex) {}
        int index;
    };

    /// Fills `vector` with numbers to be sorted by `compare`, one order at a time.
    KillerOrder(OCVector& vector, int count) : values(static_cast<std::size_t>(count), count) {
        for (int i = 0; i < count; ++i) {
            numbers.push_back(std::make_unique<Number>(i));
            vector.addElement(*numbers.back());
        }
        current = this;
    }
    KillerOrder(const KillerOrder&) = delete;
    KillerOrder& operator=(const KillerOrder&) = delete;
    ~KillerOrder() { current = nullptr; }

    static OECompareResult compare(const OCObject* a, const OCObject* b) {
        return current->decide(static_cast<const Number*>(a)->index,
                               static_cast<const Number*>(b)->index);
    }

    /// The numbers in the order in which they stood before the sort.
    const std::vector<int>& getValues() const { return values; }
    unsigned long getComparisons() const { return comparisons; }
    /// How far the call stack has moved between comparisons, in bytes.
    std::uintptr_t getStackRange() const { return highest - lowest; }

private:
    bool isOpen(int index) const { return at(index) == static_cast<int>(values.size()); }
    int at(int index) const { return values[static_cast<std::size_t>(index)]; }

    OECompareResult decide(int a, int b) {
        const char here = 0;
        const auto depth = reinterpret_cast<std::uintptr_t>(&here);
        highest = std::max(highest, depth);
        lowest = std::min(lowest, depth);
        ++comparisons;
        if (isOpen(a) && isOpen(b))
            values[static_cast<std::size_t>(a == candidate ? a : b)] = decided++;
        if (isOpen(a))
            candidate = a;
        else if (isOpen(b))
            candidate = b;
        if (at(a) == at(b))
            return CompareResultEqual;
        return at(a) < at(b) ? CompareResultLess : CompareResultGreater;
    }

    inline static KillerOrder* current = nullptr;

    std::vector<std::unique_ptr<Number>> numbers;
    std::vector<int> values;
    int decided = 0;
    int candidate = 0;
    unsigned long comparisons = 0;
    std::uintptr_t highest = 0;
    std::uintptr_t lowest = ~std::uintptr_t(0);
};

#endif
