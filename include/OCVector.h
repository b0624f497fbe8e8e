#ifndef ORVABASE_OCCORERING_H
#include "OCCoreRing.h" // comes back here for each of the two halves
#elif ORVABASE_CORE_RING_HALF == 1

#include "OCObject.h"

/// A growable array of pointers to objects, grown and shrunk in blocks of 64.
///
/// It does not own what it points to: copying copies pointers, and neither removal nor destruction
/// deletes an object. `OCVectorUtilities` deletes the elements on request. A slot may be null. Not
/// for use by several threads at once.
///
/// A vector asks the heap once a block. One that grows beyond 8192 slots takes up to as much again
/// in advance, which is not counted by its capacity and is given back when it shrinks.
///
///     OCVector sensors;
///     sensors.addElement(*new Sensor("boiler"));
///     sensors.sort(compareSensors);
///     OCVectorUtilities(sensors).deleteElements();
class ORVABASE_EXPORT OCVector : public OCObject {
public:
    /// The type of a comparison function for `sort`.
    typedef OECompareResult (*Comparator)(const OCObject*, const OCObject*);

    /// An empty vector without an array.
    OCVector() noexcept : elements(nullptr), blockSize(64), capacity(0), count(0) {}
    /// The pointers of `other`: both vectors refer to the same objects then.
    /// @throws OXMemory_AllocationError when memory is exhausted.
    OCVector(const OCVector& other);
    OCVector& operator=(const OCVector& other) { return assign(other); }
    /// Gives the array back; the elements are not deleted.
    ~OCVector() noexcept override { releaseBlock(elements); }

    /// Takes `other`'s block size, capacity and pointers. A vector assigned to itself stays as it
    /// is.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    OCVector& assign(const OCVector& other);

    /// Sets the block size back to 64 and drops all slots. The elements are not deleted.
    /// @throws OXMemory_AllocationError when the array cannot be made smaller; the slots are still
    /// there then.
    void clear();

    /// The number of slots in use.
    unsigned long getCount() const { return count; }
    /// The number of slots allocated.
    unsigned long getCapacity() const { return capacity; }
    /// The step in which the array grows and shrinks, in slots.
    unsigned long getBlockSize() const { return blockSize; }

    /// Sets the step in which the array grows and shrinks, from the next change of the count on. 0
    /// counts as 1.
    void setBlockSize(unsigned long n);
    /// Reallocates the array to exactly the larger of `n` and the count; an empty array is
    /// released.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void setCapacity(unsigned long n);
    /// Drops the slots from `n` on (the elements are not deleted), or adds null slots up to `n`.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void setCount(unsigned long n);

    /// Appends a pointer to `element`.
    /// @throws OXMemory_AllocationError when memory is exhausted. Note: the count is then already
    /// raised by one, and the new slot reads as a null element.
    void addElement(OCObject& element) {
        ++count;
        // With the usual block size the slots of whole blocks need no growth.
        if (__builtin_expect(blockSize != 64 || count > (capacity & ~63UL), false)) {
            const Slots grown = growForLast({elements, capacity}, blockSize, count);
            elements = grown.block;
            capacity = grown.capacity;
        }
        elements[count - 1] = &element;
    }
    /// Inserts before `index`.
    ///
    /// Note: `index` must be below the count, so nothing can be inserted at the end: use
    /// `addElement`.
    /// @throws OXVector_NoSuchIndex, OXMemory_AllocationError
    void insertElement(unsigned long index, OCObject& element);
    /// Overwrites slot `index`; the object that it referred to is not deleted.
    /// @throws OXVector_NoSuchIndex, and OXMemory_AllocationError for a slot that an addition which
    /// failed has left without room.
    void setElement(unsigned long index, OCObject& element);
    /// Sets slot `index` to null; the object that it referred to is not deleted.
    /// @throws OXVector_NoSuchIndex
    void nullElement(unsigned long index);
    /// Removes slot `index`; the object is not deleted.
    /// @throws what `removeElements` throws.
    void removeElement(unsigned long index) { removeElements(index, 1); }
    /// Removes up to `n` slots from `index` on and moves the rest down; no object is deleted.
    /// @throws OXVector_NoSuchIndex when `index` is not below the count, also for `n` 0;
    /// OXMemory_AllocationError when the array cannot be made smaller; nothing is changed then.
    void removeElements(unsigned long index, unsigned long n);
    /// Swaps two slots, neither of which may be null.
    /// @throws OXVector_NoSuchIndex, OXVector_NullElement
    void exchangeElements(unsigned long a, unsigned long b);

    /// Whether `index` is below the count and its slot is not null.
    bool hasElement(unsigned long index) const {
        return index < count && index < capacity && elements[index] != nullptr;
    }
    /// The element in slot `index`.
    /// @throws OXVector_NoSuchIndex when `index` is not below the count, OXVector_NullElement when
    /// the slot is null.
    OCObject& getElement(unsigned long index) { return *checkedSlot(index); }
    const OCObject& getElement(unsigned long index) const { return *checkedSlot(index); }

    /// Sorts the slots in place by `comparator`: n log n comparisons at most, a logarithmic call
    /// stack, not stable. An empty vector is left alone.
    /// @throws OXVector_NullElement when a slot is null, and whatever the comparator throws; the
    /// vector is then partly sorted and has lost no element.
    void sort(Comparator comparator);

    /// Throws `OXVector_NoSuchIndex` for `index`.
    [[noreturn]] static void throwNoSuchIndex(unsigned long index);
    /// Throws `OXVector_NullElement` for `index`.
    [[noreturn]] static void throwNullElement(unsigned long index);

private:
    friend class OCNamedList;
    friend class OCQueryString;
    friend class OCStringList;

    struct Slots {
        OCObject** block;
        unsigned long capacity;
    };

    void swap(OCVector& other) noexcept;
    OCObject* checkedSlot(unsigned long index) const {
        if (index >= count)
            throwNoSuchIndex(index);
        // After a growth that failed the count may exceed the capacity: such a slot is null.
        if (index >= capacity || elements[index] == nullptr)
            throwNullElement(index);
        return elements[index];
    }
    /// The slots for `n` elements: `n` raised to a multiple of `step`, which is not 0.
    static unsigned long calculateCapacity(unsigned long n, unsigned long step);
    /// The array grown to the capacity for `needed` slots, if it has less; of the new slots the
    /// `used` ones are null. By values, so that a vector in a loop of `addElement` can live in
    /// registers.
    static Slots growSlots(Slots held, unsigned long step, unsigned long used,
                           unsigned long needed);
    /// The same for `needed` slots of which the last one is new.
    static Slots growForLast(Slots held, unsigned long step, unsigned long needed);
    static OCObject** resizeBlock(OCObject** block, unsigned long slots);
    static OCObject** resizeBlockWithSpare(OCObject** block, unsigned long slots);
    static void releaseBlock(OCObject** block) noexcept;
    void takeSlots(Slots slots);
    void nullSlots(unsigned long from, unsigned long to);

    OCObject** elements;
    unsigned long blockSize;
    unsigned long capacity;
    unsigned long count;
};

/// Deletes the elements of a vector that owns them by agreement. It refers to the vector and must
/// not outlive it.
class ORVABASE_EXPORT OCVectorUtilities : public OCObject {
public:
    /// Refers to `target`.
    explicit OCVectorUtilities(OCVector& target) noexcept : vector(target) {}
    OCVectorUtilities(const OCVectorUtilities&) = delete;
    OCVectorUtilities& operator=(const OCVectorUtilities&) = delete;
    ~OCVectorUtilities() noexcept override;

    /// Deletes every element, each detached first, and clears the vector. Exceptions of the
    /// elements' destructors are dropped.
    /// @throws OXMemory_AllocationError when the array cannot be made smaller; its slots are null
    /// then.
    void deleteElements();
    /// Deletes and removes up to `n` elements from `index` on, one after the other: each is removed
    /// (the slots behind it move down) before it is deleted.
    ///
    /// Note: a null slot at `index`, or the end, stops the deletion.
    /// @throws OXMemory_AllocationError when the array cannot be made smaller; the element at
    /// `index` is still there then.
    void deleteElements(unsigned long index, unsigned long n);

private:
    OCVector& vector;
};

#elif ORVABASE_CORE_RING_HALF == 2

/// The family of the vector's failures.
class ORVABASE_EXPORT OXVector : public OXAutoException {
public:
    ~OXVector() noexcept override;

protected:
    OXVector();
};

/// "Vector index out of bounds", with the index.
class ORVABASE_EXPORT OXVector_NoSuchIndex : public OXVector {
public:
    explicit OXVector_NoSuchIndex(unsigned long index);
    ~OXVector_NoSuchIndex() noexcept override;
};

/// "The vector does not contain the requested element", with the index.
class ORVABASE_EXPORT OXVector_NullElement : public OXVector {
public:
    explicit OXVector_NullElement(unsigned long index);
    ~OXVector_NullElement() noexcept override;
};

/// "The vector does not contain any elements". The library itself does not throw it.
class ORVABASE_EXPORT OXVector_NullVector : public OXVector {
public:
    OXVector_NullVector();
    ~OXVector_NullVector() noexcept override;
};

#endif
