#include "OCVector.h"

#include "OCMemory.h"
#include "OCStringConversion.h"

#include <algorithm>
#include <utility>

#include <malloc.h>

OXVector::OXVector() = default;

OXVector::~OXVector() noexcept = default;

OXVector_NoSuchIndex::OXVector_NoSuchIndex(unsigned long index) {
    setClass("OXVector_NoSuchIndex");
    setMessage("Vector index out of bounds");
    getDetails().addString(OCStringConversion::fromSize(index, 10));
}

OXVector_NoSuchIndex::~OXVector_NoSuchIndex() noexcept = default;

OXVector_NullElement::OXVector_NullElement(unsigned long index) {
    setClass("OXVector_NullElement");
    setMessage("The vector does not contain the requested element");
    getDetails().addString(OCStringConversion::fromSize(index, 10));
}

OXVector_NullElement::~OXVector_NullElement() noexcept = default;

OXVector_NullVector::OXVector_NullVector() {
    setClass("OXVector_NullVector");
    setMessage("The vector does not contain any elements");
}

OXVector_NullVector::~OXVector_NullVector() noexcept = default;

namespace {

/// From this many slots on an array that must grow asks for a block with room to spare, and uses
/// that up before it asks again. Asking for every 64 slots would copy the array each time that
/// something else lies behind it on the heap.
constexpr unsigned long spareFrom = 8192;

/// Sorts the slots of one vector. Elements only ever change places by exchange, so none is lost
/// when the comparator throws, and every access is checked, so that nothing beyond the vector is
/// touched whatever the comparator answers.
class Sorter {
public:
    Sorter(OCVector& target, OCVector::Comparator order) : vector(target), comparator(order) {}

    void quickSort(long low, long high, unsigned int depth) {
        for (;; --depth) {
            if (depth == 0) {
                heapSort(low, high);
                return;
            }
            long i = low;
            long j = high;
            partition(i, j);
            if (low < j)
                quickSort(low, j, depth - 1);
            if (i >= high)
                return;
            low = i;
        }
    }

private:
    OCObject& element(long index) const {
        return vector.getElement(static_cast<unsigned long>(index));
    }
    void exchange(long a, long b) {
        vector.exchangeElements(static_cast<unsigned long>(a), static_cast<unsigned long>(b));
    }
    bool isLess(long index, const OCObject* pivot) const {
        return comparator(&element(index), pivot) == CompareResultLess;
    }
    bool isGreater(long index, const OCObject* pivot) const {
        return comparator(&element(index), pivot) == CompareResultGreater;
    }

    /// Partitions the slots `i` to `j` by the element in their middle. Afterwards what is left to
    /// sort are the slots up to `j` and those from `i` on. A comparator that contradicts itself
    /// stops at the ends of the range.
    void partition(long& i, long& j) {
        const long low = i;
        const long high = j;
        const OCObject* const pivot = &element((low + high) / 2);
        do {
            while (isLess(i, pivot) && i < high)
                ++i;
            while (isGreater(j, pivot) && j > low)
                --j;
            if (i <= j) {
                exchange(i, j);
                ++i;
                --j;
            }
        } while (i <= j);
    }

    void heapSort(long low, long high) {
        const long size = high - low + 1;
        for (long root = size / 2 - 1; root >= 0; --root)
            siftDown(low, root, size);
        for (long end = size - 1; end > 0; --end) {
            exchange(low, low + end);
            siftDown(low, 0, end);
        }
    }

    void siftDown(long low, long root, long size) {
        for (long child = 2 * root + 1; child < size; child = 2 * root + 1) {
            if (child + 1 < size && isLess(low + child, &element(low + child + 1)))
                ++child;
            if (!isLess(low + root, &element(low + child)))
                return;
            exchange(low + root, low + child);
            root = child;
        }
    }

    OCVector& vector;
    OCVector::Comparator comparator;
};

} // namespace

OCVector::OCVector(const OCVector& other) : OCVector() {
    assign(other);
}

OCVector& OCVector::assign(const OCVector& other) {
    if (this == &other)
        return *this;
    // The block comes first: while it can be refused nothing has changed.
    unsigned long slots = other.capacity;
    if (other.count != 0)
        slots = std::max(slots, calculateCapacity(other.count, other.blockSize));
    if (slots != capacity) {
        OCObject** const block = slots == 0 ? nullptr : resizeBlock(nullptr, slots);
        releaseBlock(elements);
        takeSlots({block, slots});
    }
    blockSize = other.blockSize;
    count = other.count;
    const unsigned long held = std::min(other.count, other.capacity);
    memoryCopy(elements, other.elements, held * sizeof(OCObject*));
    nullSlots(held, count);
    return *this;
}

void OCVector::swap(OCVector& other) noexcept {
    std::swap(elements, other.elements);
    std::swap(blockSize, other.blockSize);
    std::swap(capacity, other.capacity);
    std::swap(count, other.count);
}

void OCVector::clear() {
    blockSize = 64;
    setCount(0);
}

void OCVector::setBlockSize(unsigned long n) {
    blockSize = n == 0 ? 1 : n;
}

void OCVector::setCapacity(unsigned long n) {
    const unsigned long slots = std::max(n, count);
    if (slots == 0) {
        releaseBlock(elements);
        takeSlots({nullptr, 0});
        return;
    }
    const unsigned long held = capacity;
    takeSlots({resizeBlock(elements, slots), slots});
    nullSlots(held, count);
}

void OCVector::setCount(unsigned long n) {
    if (n < count) {
        const unsigned long slots = calculateCapacity(n, blockSize);
        if (slots < capacity)
            takeSlots({resizeBlock(elements, slots), slots});
    } else if (n > count) {
        takeSlots(growSlots({elements, capacity}, blockSize, count, n));
        nullSlots(count, n);
    }
    count = n;
}

void OCVector::insertElement(unsigned long index, OCObject& element) {
    if (index >= count)
        throwNoSuchIndex(index);
    setCount(count + 1);
    memoryCopy(elements + index + 1, elements + index, (count - 1 - index) * sizeof(OCObject*));
    elements[index] = &element;
}

void OCVector::setElement(unsigned long index, OCObject& element) {
    if (index >= count)
        throwNoSuchIndex(index);
    if (index >= capacity)
        takeSlots(growSlots({elements, capacity}, blockSize, count, count));
    elements[index] = &element;
}

void OCVector::nullElement(unsigned long index) {
    if (index >= count)
        throwNoSuchIndex(index);
    if (index < capacity)
        elements[index] = nullptr;
}

void OCVector::removeElements(unsigned long index, unsigned long n) {
    if (index >= count)
        throwNoSuchIndex(index);
    const unsigned long remaining = count - std::min(n, count - index);
    const unsigned long removed = count - remaining;
    if (removed == 0)
        return;
    // After a growth that failed the slots beyond the array count as null.
    const unsigned long used = std::min(count, capacity);
    const unsigned long moved = index + removed < used ? used - index - removed : 0;
    const unsigned long slots = calculateCapacity(remaining, blockSize);
    if (slots >= capacity) {
        if (moved != 0)
            memoryCopy(elements + index, elements + index + removed, moved * sizeof(OCObject*));
    } else {
        // Should the shrinking be refused, the slots go back to their places.
        OCObject** const first = elements + index;
        OCObject** const last = elements + used;
        std::rotate(first, last - moved, last);
        try {
            takeSlots({resizeBlock(elements, slots), slots});
        } catch (...) {
            std::rotate(first, first + moved, last);
            throw;
        }
    }
    count = remaining;
    nullSlots(index + moved, std::min(remaining, capacity));
}

void OCVector::exchangeElements(unsigned long a, unsigned long b) {
    if (a >= count)
        throwNoSuchIndex(a);
    if (b >= count)
        throwNoSuchIndex(b);
    OCObject* const first = checkedSlot(a);
    elements[a] = checkedSlot(b);
    elements[b] = first;
}

void OCVector::sort(Comparator comparator) {
    if (count == 0)
        return;
    // Far deeper than partitions of common orders get.
    unsigned int depth = 32;
    for (unsigned long n = count; n > 1; n /= 2)
        depth += 4;
    Sorter(*this, comparator).quickSort(0, static_cast<long>(count - 1), depth);
}

void OCVector::throwNoSuchIndex(unsigned long index) {
    throw OXVector_NoSuchIndex(index);
}

void OCVector::throwNullElement(unsigned long index) {
    throw OXVector_NullElement(index);
}

unsigned long OCVector::calculateCapacity(unsigned long n, unsigned long step) {
    if (n == 0)
        return step;
    // A size beyond all memory stays one, so that it is refused as an allocation.
    if (n - 1 > ~0UL - step)
        return ~0UL;
    const unsigned long end = step + n - 1;
    return step == 64 ? end & ~63UL : end - end % step;
}

OCVector::Slots OCVector::growSlots(Slots held, unsigned long step, unsigned long used,
                                    unsigned long needed) {
    const unsigned long slots = calculateCapacity(needed, step);
    if (slots <= held.capacity)
        return held;
    OCObject** block = held.block;
    if (held.capacity < spareFrom)
        block = resizeBlock(block, slots);
    else if (malloc_usable_size(block) / sizeof(OCObject*) < slots)
        block = resizeBlockWithSpare(block, slots);
    if (held.capacity < used)
        std::fill(block + held.capacity, block + used, nullptr);
    return {block, slots};
}

OCVector::Slots OCVector::growForLast(Slots held, unsigned long step, unsigned long needed) {
    // Should the growth be refused, the last slot reads as null.
    if (needed <= held.capacity)
        held.block[needed - 1] = nullptr;
    return growSlots(held, step, needed - 1, needed);
}

OCObject** OCVector::resizeBlock(OCObject** block, unsigned long slots) {
    if (block == nullptr)
        vectorAllocate(block, slots);
    else
        vectorReallocate(block, slots);
    return block;
}

OCObject** OCVector::resizeBlockWithSpare(OCObject** block, unsigned long slots) {
    try {
        if (slots <= ~0UL / 2)
            return resizeBlock(block, 2 * slots);
    } catch (const OXMemory_AllocationError&) {
        // Without room to spare it may still be possible.
    }
    return resizeBlock(block, slots);
}

void OCVector::releaseBlock(OCObject** block) noexcept {
    vectorRelease(block);
}

void OCVector::takeSlots(Slots slots) {
    elements = slots.block;
    capacity = slots.capacity;
}

void OCVector::nullSlots(unsigned long from, unsigned long to) {
    if (from < to)
        std::fill(elements + from, elements + to, nullptr);
}

OCVectorUtilities::~OCVectorUtilities() noexcept = default;

void OCVectorUtilities::deleteElements() {
    const unsigned long count = vector.getCount();
    // A destructor may shorten the vector: the count is looked at anew each time.
    for (unsigned long i = 0; i < count && i < vector.getCount(); ++i) {
        if (!vector.hasElement(i))
            continue;
        OCObject* const element = &vector.getElement(i);
        vector.nullElement(i);
        OCObjectDisposer disposer(element);
    }
    vector.clear();
}

void OCVectorUtilities::deleteElements(unsigned long index, unsigned long n) {
    for (; n != 0 && vector.hasElement(index); --n) {
        OCObject* const element = &vector.getElement(index);
        vector.removeElement(index);
        OCObjectDisposer disposer(element);
    }
}
