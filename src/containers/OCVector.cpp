#include "OCVector.h"

#include "OCMemory.h"
#include "OCStringConversion.h"
#include "containers/OCQuickSort.h"

#include <algorithm>
#include <utility>

#include <malloc.h>

namespace {

// NOLINTNEXTLINE(bugprone-sizeof-expression): of the pointer
constexpr unsigned long slotSize = sizeof(OCObject*);

} // namespace

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

/// The slots of a vector. Every access is checked, so that a comparator may do to the vector
/// whatever it likes.
class SortedSlots {
public:
    typedef const OCObject* Pivot;

    SortedSlots(OCVector& sorted, OCVector::Comparator order) : vector(sorted), comparator(order) {}

    Pivot pivot(long index) const { return &vector.getElement(static_cast<unsigned long>(index)); }
    OECompareResult compare(long index, Pivot other) const {
        return comparator(pivot(index), other);
    }
    void exchange(long a, long b) {
        vector.exchangeElements(static_cast<unsigned long>(a), static_cast<unsigned long>(b));
    }

private:
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
    memoryCopy(elements, other.elements, held * slotSize);
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
    memoryCopy(elements + index + 1, elements + index, (count - 1 - index) * slotSize);
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
            memoryCopy(elements + index, elements + index + removed, moved * slotSize);
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
    SortedSlots range(*this, comparator);
    orvabase::OCQuickSort<SortedSlots>(range).sort(count);
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
    else if (malloc_usable_size(block) / slotSize < slots)
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
