#include "OCVector.h"
#include "OCAnsiString.h"
#include "containers/KillerOrder.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Growth.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <random>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

#include <malloc.h>

namespace {

constexpr const char* noMemory = "Memory allocation failure";

class Item : public OCObject {
public:
    explicit Item(int itemKey = 0, int itemNumber = 0) : key(itemKey), number(itemNumber) {}
    int key;
    int number;
};

const Item& item(const OCObject* object) {
    return *static_cast<const Item*>(object);
}

OECompareResult byKey(const OCObject* a, const OCObject* b) {
    const int left = item(a).key;
    const int right = item(b).key;
    return left < right ? CompareResultLess
                        : (left > right ? CompareResultGreater : CompareResultEqual);
}

/// Objects to fill vectors with, one for each number.
OCObject& object(unsigned long number) {
    static std::vector<std::unique_ptr<Item>> items;
    while (items.size() <= number)
        items.push_back(std::make_unique<Item>(static_cast<int>(items.size())));
    return *items[number];
}

void fill(OCVector& vector, unsigned long count) {
    while (vector.getCount() < count)
        vector.addElement(object(vector.getCount()));
}

/// The slots as the numbers of their objects, -1 for null.
std::vector<int> numbers(const OCVector& vector) {
    std::vector<int> result;
    for (unsigned long i = 0; i < vector.getCount(); ++i)
        result.push_back(vector.hasElement(i) ? item(&vector.getElement(i)).key : -1);
    return result;
}

using Numbers = std::vector<int>;

TEST(OCVector, HoldsFourFields) {
    EXPECT_EQ(40u, sizeof(OCVector));
    EXPECT_EQ(2u, slots::slotCount<OCVector>());
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCVector>);
    EXPECT_EQ(16u, sizeof(OCVectorUtilities));
    EXPECT_EQ(2u, slots::slotCount<OCVectorUtilities>());
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCVectorUtilities>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCVectorUtilities>);
}

TEST(OCVector, KeepsTheOrderOfItsFields) {
    OCObject first;
    OCVector vector;
    vector.addElement(first);
    vector.addElement(first);
    vector.setBlockSize(7);
    vector.setCapacity(5);
    unsigned long fields[5];
    std::memcpy(fields, static_cast<const void*>(&vector), sizeof fields);
    OCObject* element;
    // NOLINTNEXTLINE(bugprone-sizeof-expression,performance-no-int-to-ptr)
    std::memcpy(&element, reinterpret_cast<const void*>(fields[1]), sizeof element);
    EXPECT_EQ(&first, element);
    EXPECT_EQ(7u, fields[2]); // the block size
    EXPECT_EQ(5u, fields[3]); // the capacity
    EXPECT_EQ(2u, fields[4]); // the count
}

TEST(OCVector, ANewOneHasNoArray) {
    const unsigned long requests = fault::heapRecord().requests;
    {
        const OCVector vector;
        EXPECT_EQ(0u, vector.getCount());
        EXPECT_EQ(0u, vector.getCapacity());
        EXPECT_EQ(64u, vector.getBlockSize());
        EXPECT_FALSE(vector.hasElement(0));
    }
    EXPECT_EQ(requests, fault::heapRecord().requests);
}

TEST(OCVector, GrowsInBlocksOf64) {
    OCVector vector;
    vector.addElement(object(0));
    EXPECT_EQ(64u, vector.getCapacity());
    EXPECT_EQ(512u, fault::heapRecord().lastSize);
    fill(vector, 64);
    EXPECT_EQ(64u, vector.getCapacity());
    fill(vector, 65);
    EXPECT_EQ(128u, vector.getCapacity());
    EXPECT_EQ(1024u, fault::heapRecord().lastSize);
    fill(vector, 129);
    EXPECT_EQ(192u, vector.getCapacity());
    EXPECT_EQ(1536u, fault::heapRecord().lastSize);
}

TEST(OCVector, ShrinksInBlocksOf64) {
    OCVector vector;
    fill(vector, 129);
    vector.removeElement(128);
    EXPECT_EQ(128u, vector.getCapacity());
    EXPECT_EQ(1024u, fault::heapRecord().lastSize);
    vector.setCount(65);
    EXPECT_EQ(128u, vector.getCapacity());
    vector.removeElement(0);
    EXPECT_EQ(64u, vector.getCount());
    EXPECT_EQ(64u, vector.getCapacity());
    vector.setCount(0);
    EXPECT_EQ(64u, vector.getCapacity());
}

TEST(OCVector, RequestsTheHeapOnceABlock) {
    OCVector vector;
    object(0); // is made now, if it is the first
    const unsigned long requests = fault::heapRecord().requests;
    for (unsigned long i = 0; i < 6400; ++i)
        vector.addElement(object(0));
    EXPECT_EQ(requests + 100, fault::heapRecord().requests);
}

TEST(OCVector, ALargeOneRequestsTheHeapSeldom) {
    OCVector vector;
    vector.setCount(8192);
    const unsigned long requests = fault::heapRecord().requests;
    for (unsigned long i = 8192; i < 1000000; ++i) {
        vector.addElement(object(0));
        ASSERT_EQ((i + 64) / 64 * 64, vector.getCapacity());
    }
    EXPECT_GE(requests + 20, fault::heapRecord().requests);
    for (unsigned long i = 8192; i < 1000000; ++i)
        ASSERT_EQ(&object(0), &vector.getElement(i));
}

TEST(OCVector, ALargeOneThatShrinksGivesBackAllItDoesNotNeed) {
    OCVector vector;
    for (unsigned long i = 0; i < 100000; ++i)
        vector.addElement(object(0));
    vector.setCount(64000);
    EXPECT_EQ(64000u, vector.getCapacity());
    EXPECT_EQ(512000u, fault::heapRecord().lastSize);
    vector.addElement(object(0));
    vector.setCapacity(64064);
    EXPECT_EQ(64064u, vector.getCapacity());
    EXPECT_EQ(512512u, fault::heapRecord().lastSize);
}

TEST(OCVector, ALargeOneWithoutRoomToSpareStillGrows) {
    OCVector vector;
    vector.setCapacity(8192);
    vector.setCount(8192);
    {
        fault::HeapFault fault(1); // the request for more than is needed
        vector.addElement(object(7));
        EXPECT_TRUE(fault.triggered());
    }
    EXPECT_EQ(8193u, vector.getCount());
    EXPECT_EQ(8256u, vector.getCapacity());
    EXPECT_EQ(8256u * 8, fault::heapRecord().lastSize);
    EXPECT_EQ(&object(7), &vector.getElement(8192));
    {
        fault::HeapFault fault(1, fault::HeapFault::Following);
        EXPECT_EXCEPTION(vector.setCount(9000), OXMemory_AllocationError, noMemory);
    }
    EXPECT_EQ(8193u, vector.getCount());
    EXPECT_EQ(8256u, vector.getCapacity());
}

TEST(OCVector, BlockSizeCanBeSet) {
    OCVector vector;
    vector.setBlockSize(10);
    EXPECT_EQ(10u, vector.getBlockSize());
    EXPECT_EQ(0u, vector.getCapacity());
    vector.addElement(object(0));
    EXPECT_EQ(10u, vector.getCapacity());
    fill(vector, 10);
    EXPECT_EQ(10u, vector.getCapacity());
    fill(vector, 11);
    EXPECT_EQ(20u, vector.getCapacity());
    vector.setCount(21);
    EXPECT_EQ(30u, vector.getCapacity());
    vector.setCount(20);
    EXPECT_EQ(20u, vector.getCapacity());
    vector.setCount(0);
    EXPECT_EQ(10u, vector.getCapacity());
}

TEST(OCVector, BlockSizeTakesEffectAtTheNextChangeOfTheCount) {
    OCVector vector;
    fill(vector, 100);
    vector.setBlockSize(1000);
    EXPECT_EQ(128u, vector.getCapacity());
    vector.setCount(100);
    EXPECT_EQ(128u, vector.getCapacity());
    vector.setCount(99);
    EXPECT_EQ(128u, vector.getCapacity());
    vector.addElement(object(0));
    EXPECT_EQ(1000u, vector.getCapacity());
    vector.setBlockSize(7);
    vector.removeElement(99);
    EXPECT_EQ(105u, vector.getCapacity());
}

TEST(OCVector, ABlockSizeOf0CountsAs1) {
    OCVector vector;
    vector.setBlockSize(0);
    EXPECT_EQ(1u, vector.getBlockSize());
    fill(vector, 3);
    EXPECT_EQ(3u, vector.getCapacity());
    vector.removeElement(0);
    EXPECT_EQ(2u, vector.getCapacity());
}

TEST(OCVector, AddingFollowsTheBlocksAlsoWhereTheCapacityDoesNot) {
    OCVector vector;
    vector.setCapacity(10);
    EXPECT_EQ(10u, vector.getCapacity());
    vector.addElement(object(0));
    EXPECT_EQ(64u, vector.getCapacity());
    vector.setCapacity(100);
    EXPECT_EQ(100u, vector.getCapacity());
    fill(vector, 64);
    EXPECT_EQ(100u, vector.getCapacity());
    fill(vector, 65);
    EXPECT_EQ(128u, vector.getCapacity());
}

TEST(OCVector, SetCapacityIsExact) {
    OCVector vector;
    vector.setCapacity(3);
    EXPECT_EQ(3u, vector.getCapacity());
    EXPECT_EQ(24u, fault::heapRecord().lastSize);
    EXPECT_EQ(0u, vector.getCount());
    fill(vector, 5);
    vector.setCapacity(1000);
    EXPECT_EQ(1000u, vector.getCapacity());
    EXPECT_EQ(8000u, fault::heapRecord().lastSize);
    vector.setCapacity(2);
    EXPECT_EQ(5u, vector.getCapacity());
    EXPECT_EQ((Numbers{0, 1, 2, 3, 4}), numbers(vector));
    vector.setCapacity(20000);
    EXPECT_EQ(160000u, fault::heapRecord().lastSize);
    vector.setCapacity(30000);
    EXPECT_EQ(240000u, fault::heapRecord().lastSize);
}

TEST(OCVector, SetCapacityTo0ReleasesTheArrayOfAnEmptyVector) {
    const long blocks = fault::heapRecord().liveBlocks;
    OCVector vector;
    vector.setCapacity(0);
    EXPECT_EQ(0u, vector.getCapacity());
    fill(vector, 5);
    EXPECT_EQ(blocks + 1, fault::heapRecord().liveBlocks);
    vector.clear();
    EXPECT_EQ(64u, vector.getCapacity());
    vector.setCapacity(0);
    EXPECT_EQ(0u, vector.getCapacity());
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
    fill(vector, 2);
    EXPECT_EQ((Numbers{0, 1}), numbers(vector));
}

TEST(OCVector, SetCountGrowsWithNullSlots) {
    OCVector vector;
    vector.setCount(10);
    EXPECT_EQ(10u, vector.getCount());
    EXPECT_EQ(64u, vector.getCapacity());
    EXPECT_EQ(Numbers(10, -1), numbers(vector));
}

TEST(OCVector, SetCountNullsSlotsThatWereInUseBefore) {
    OCVector vector;
    fill(vector, 5);
    vector.setCount(2);
    vector.setCount(4);
    EXPECT_EQ((Numbers{0, 1, -1, -1}), numbers(vector));
    vector.setCount(4);
    EXPECT_EQ((Numbers{0, 1, -1, -1}), numbers(vector));
}

TEST(OCVector, ClearKeepsAtMostOneBlockAndResetsTheBlockSize) {
    OCVector vector;
    vector.setBlockSize(10);
    fill(vector, 300);
    vector.clear();
    EXPECT_EQ(0u, vector.getCount());
    EXPECT_EQ(64u, vector.getBlockSize());
    EXPECT_EQ(64u, vector.getCapacity());
    vector.setBlockSize(10);
    vector.setCapacity(10);
    vector.clear();
    EXPECT_EQ(10u, vector.getCapacity());
    OCVector unused;
    unused.clear();
    EXPECT_EQ(0u, unused.getCapacity());
}

TEST(OCVector, ElementsCanBeReadAndChecked) {
    OCVector vector;
    fill(vector, 2);
    vector.nullElement(1);
    const OCVector& constant = vector;
    EXPECT_EQ(&object(0), &vector.getElement(0));
    EXPECT_EQ(&object(0), &constant.getElement(0));
    EXPECT_TRUE(vector.hasElement(0));
    EXPECT_FALSE(vector.hasElement(1));
    EXPECT_FALSE(vector.hasElement(2));
    EXPECT_FALSE(vector.hasElement(~0UL));
    EXPECT_EXCEPTION(vector.getElement(1), OXVector_NullElement,
                     "The vector does not contain the requested element (1)");
    EXPECT_EXCEPTION(constant.getElement(1), OXVector_NullElement,
                     "The vector does not contain the requested element (1)");
    EXPECT_EXCEPTION(vector.getElement(2), OXVector_NoSuchIndex, "Vector index out of bounds (2)");
    EXPECT_EXCEPTION(constant.getElement(~0UL), OXVector_NoSuchIndex,
                     "Vector index out of bounds (18446744073709551615)");
}

TEST(OCVector, TheThrowingOperationsThrow) {
    EXPECT_EXCEPTION(OCVector::throwNoSuchIndex(12), OXVector_NoSuchIndex,
                     "Vector index out of bounds (12)");
    EXPECT_EXCEPTION(OCVector::throwNullElement(12), OXVector_NullElement,
                     "The vector does not contain the requested element (12)");
}

TEST(OCVector, SetElementOverwritesASlot) {
    OCVector vector;
    fill(vector, 3);
    vector.setElement(1, object(7));
    vector.setElement(2, object(7));
    EXPECT_EQ((Numbers{0, 7, 7}), numbers(vector));
    vector.nullElement(1);
    vector.setElement(1, object(8));
    EXPECT_EQ((Numbers{0, 8, 7}), numbers(vector));
    EXPECT_EXCEPTION(vector.setElement(3, object(1)), OXVector_NoSuchIndex,
                     "Vector index out of bounds (3)");
    EXPECT_EXCEPTION(vector.nullElement(3), OXVector_NoSuchIndex, "Vector index out of bounds (3)");
    EXPECT_EQ((Numbers{0, 8, 7}), numbers(vector));
}

TEST(OCVector, InsertsBeforeAnIndex) {
    OCVector vector;
    fill(vector, 3);
    vector.insertElement(0, object(5));
    vector.insertElement(3, object(6));
    vector.insertElement(2, object(7));
    EXPECT_EQ((Numbers{5, 0, 7, 1, 6, 2}), numbers(vector));
}

TEST(OCVector, InsertingAtTheEndIsRefused) {
    OCVector vector;
    EXPECT_EXCEPTION(vector.insertElement(0, object(1)), OXVector_NoSuchIndex,
                     "Vector index out of bounds (0)");
    EXPECT_EQ(0u, vector.getCount());
    EXPECT_EQ(0u, vector.getCapacity());
    fill(vector, 2);
    EXPECT_EXCEPTION(vector.insertElement(2, object(1)), OXVector_NoSuchIndex,
                     "Vector index out of bounds (2)");
    EXPECT_EQ((Numbers{0, 1}), numbers(vector));
}

TEST(OCVector, InsertingGrowsAtTheEndOfABlock) {
    OCVector vector;
    fill(vector, 64);
    vector.insertElement(63, object(100));
    EXPECT_EQ(65u, vector.getCount());
    EXPECT_EQ(128u, vector.getCapacity());
    EXPECT_EQ(&object(100), &vector.getElement(63));
    EXPECT_EQ(&object(63), &vector.getElement(64));
}

TEST(OCVector, RemovesSlots) {
    OCVector vector;
    fill(vector, 5);
    vector.removeElement(1);
    EXPECT_EQ((Numbers{0, 2, 3, 4}), numbers(vector));
    vector.removeElements(1, 2);
    EXPECT_EQ((Numbers{0, 4}), numbers(vector));
    vector.removeElements(0, 0);
    EXPECT_EQ((Numbers{0, 4}), numbers(vector));
    vector.nullElement(0);
    vector.removeElement(0);
    EXPECT_EQ((Numbers{4}), numbers(vector));
}

TEST(OCVector, RemovesNoMoreThanThereIs) {
    OCVector vector;
    fill(vector, 5);
    vector.removeElements(2, 100);
    EXPECT_EQ((Numbers{0, 1}), numbers(vector));
    vector.removeElements(1, ~0UL);
    EXPECT_EQ((Numbers{0}), numbers(vector));
}

TEST(OCVector, RemovingBeyondTheEndIsRefused) {
    OCVector vector;
    fill(vector, 5);
    EXPECT_EXCEPTION(vector.removeElements(5, 1), OXVector_NoSuchIndex,
                     "Vector index out of bounds (5)");
    EXPECT_EXCEPTION(vector.removeElements(5, 0), OXVector_NoSuchIndex,
                     "Vector index out of bounds (5)");
    EXPECT_EXCEPTION(vector.removeElement(7), OXVector_NoSuchIndex,
                     "Vector index out of bounds (7)");
    EXPECT_EQ((Numbers{0, 1, 2, 3, 4}), numbers(vector));
}

TEST(OCVector, RemovalOfManySlotsShrinksOnce) {
    OCVector vector;
    fill(vector, 1000);
    const unsigned long requests = fault::heapRecord().requests;
    vector.removeElements(10, 900);
    EXPECT_EQ(requests + 1, fault::heapRecord().requests);
    EXPECT_EQ(100u, vector.getCount());
    EXPECT_EQ(128u, vector.getCapacity());
    EXPECT_EQ(&object(9), &vector.getElement(9));
    EXPECT_EQ(&object(910), &vector.getElement(10));
    EXPECT_EQ(&object(999), &vector.getElement(99));
}

TEST(OCVector, ExchangesTwoSlots) {
    OCVector vector;
    fill(vector, 3);
    vector.exchangeElements(0, 2);
    EXPECT_EQ((Numbers{2, 1, 0}), numbers(vector));
    vector.exchangeElements(1, 1);
    EXPECT_EQ((Numbers{2, 1, 0}), numbers(vector));
}

TEST(OCVector, ExchangeChecksBothIndexesBeforeTheSlots) {
    OCVector vector;
    fill(vector, 3);
    vector.nullElement(1);
    EXPECT_EXCEPTION(vector.exchangeElements(3, 4), OXVector_NoSuchIndex,
                     "Vector index out of bounds (3)");
    EXPECT_EXCEPTION(vector.exchangeElements(1, 4), OXVector_NoSuchIndex,
                     "Vector index out of bounds (4)");
    EXPECT_EXCEPTION(vector.exchangeElements(1, 0), OXVector_NullElement,
                     "The vector does not contain the requested element (1)");
    EXPECT_EXCEPTION(vector.exchangeElements(0, 1), OXVector_NullElement,
                     "The vector does not contain the requested element (1)");
    EXPECT_EQ((Numbers{0, -1, 2}), numbers(vector));
}

TEST(OCVector, NeitherRemovalNorDestructionDeletesAnObject) {
    Item kept(1);
    {
        OCVector vector;
        for (int i = 0; i < 6; ++i)
            vector.addElement(kept);
        vector.removeElement(0);
        vector.setElement(0, object(0));
        vector.nullElement(1);
        vector.setCount(2);
        vector.clear();
        vector.addElement(kept);
    }
    EXPECT_EQ(1, kept.key);
}

TEST(OCVector, GivesItsArrayBack) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  OCVector vector;
                  fill(vector, 200);
                  const OCVector copy(vector);
                  vector.setCount(3);
              }));
}

// Copies

TEST(OCVector, ACopySharesTheObjects) {
    OCVector vector;
    fill(vector, 3);
    vector.nullElement(1);
    OCVector copy(vector);
    EXPECT_EQ((Numbers{0, -1, 2}), numbers(copy));
    EXPECT_EQ(&vector.getElement(0), &copy.getElement(0));
    copy.setElement(1, object(9));
    vector.removeElement(0);
    EXPECT_EQ((Numbers{0, 9, 2}), numbers(copy));
    EXPECT_EQ((Numbers{-1, 2}), numbers(vector));
}

TEST(OCVector, ACopyTakesBlockSizeAndCapacity) {
    OCVector vector;
    vector.setBlockSize(10);
    fill(vector, 12);
    vector.setCapacity(500);
    const OCVector copy(vector);
    EXPECT_EQ(10u, copy.getBlockSize());
    EXPECT_EQ(500u, copy.getCapacity());
    OCVector assigned;
    fill(assigned, 200);
    EXPECT_EQ(&assigned, &(assigned = vector));
    EXPECT_EQ(10u, assigned.getBlockSize());
    EXPECT_EQ(500u, assigned.getCapacity());
    EXPECT_EQ(numbers(vector), numbers(assigned));
}

TEST(OCVector, ACopyOfAShortArrayGrowsToItsBlock) {
    OCVector vector;
    fill(vector, 5);
    vector.setCapacity(5);
    const OCVector copy(vector);
    EXPECT_EQ(5u, vector.getCapacity());
    EXPECT_EQ(64u, copy.getCapacity());
    EXPECT_EQ((Numbers{0, 1, 2, 3, 4}), numbers(copy));
}

TEST(OCVector, AssigningANeverUsedVectorReleasesTheArray) {
    const long blocks = fault::heapRecord().liveBlocks;
    OCVector vector;
    vector.setBlockSize(5);
    fill(vector, 70);
    vector.assign(OCVector());
    EXPECT_EQ(0u, vector.getCount());
    EXPECT_EQ(0u, vector.getCapacity());
    EXPECT_EQ(64u, vector.getBlockSize());
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
}

TEST(OCVector, AssigningAClearedVectorTakesItsCapacity) {
    OCVector cleared;
    fill(cleared, 100);
    cleared.clear();
    OCVector vector;
    fill(vector, 300);
    vector.assign(cleared);
    EXPECT_EQ(0u, vector.getCount());
    EXPECT_EQ(64u, vector.getCapacity());
}

TEST(OCVector, AssigningItselfChangesNothing) {
    OCVector vector;
    vector.setBlockSize(7);
    fill(vector, 5);
    const OCVector& alias = vector;
    vector = alias;
    EXPECT_EQ((Numbers{0, 1, 2, 3, 4}), numbers(vector));
    EXPECT_EQ(7u, vector.getBlockSize());
    vector.setCapacity(6); // less than the block that a copy would have
    vector.assign(alias);
    EXPECT_EQ((Numbers{0, 1, 2, 3, 4}), numbers(vector));
    EXPECT_EQ(7u, vector.getBlockSize());
    EXPECT_EQ(6u, vector.getCapacity());
}

// Exhausted memory

TEST(OCVector, AFailedAdditionLeavesTheCountRaised) {
    OCVector vector;
    {
        fault::HeapFault fault(1);
        EXPECT_EXCEPTION(vector.addElement(object(0)), OXMemory_AllocationError, noMemory);
    }
    EXPECT_EQ(1u, vector.getCount());
    EXPECT_EQ(0u, vector.getCapacity());
    EXPECT_FALSE(vector.hasElement(0));
    EXPECT_EXCEPTION(vector.getElement(0), OXVector_NullElement,
                     "The vector does not contain the requested element (0)");
}

/// A vector of 64 elements and one more that could not be stored.
void failToAdd(OCVector& vector) {
    fill(vector, 64);
    fault::HeapFault fault(1);
    EXPECT_EXCEPTION(vector.addElement(object(64)), OXMemory_AllocationError, noMemory);
}

TEST(OCVector, AfterAFailedAdditionTheMissingSlotReadsAsNull) {
    OCVector vector;
    failToAdd(vector);
    EXPECT_EQ(65u, vector.getCount());
    EXPECT_EQ(64u, vector.getCapacity());
    EXPECT_EQ(&object(63), &vector.getElement(63));
    EXPECT_EXCEPTION(vector.getElement(64), OXVector_NullElement,
                     "The vector does not contain the requested element (64)");
    EXPECT_EXCEPTION(vector.getElement(65), OXVector_NoSuchIndex,
                     "Vector index out of bounds (65)");
    EXPECT_EXCEPTION(vector.exchangeElements(0, 64), OXVector_NullElement,
                     "The vector does not contain the requested element (64)");
    EXPECT_EXCEPTION(vector.sort(byKey), OXVector_NullElement,
                     "The vector does not contain the requested element (64)");
    vector.nullElement(64);
    EXPECT_FALSE(vector.hasElement(64));
}

TEST(OCVector, AfterAFailedAdditionTheNextOneSucceeds) {
    OCVector vector;
    failToAdd(vector);
    vector.addElement(object(99));
    EXPECT_EQ(66u, vector.getCount());
    EXPECT_EQ(128u, vector.getCapacity());
    EXPECT_FALSE(vector.hasElement(64));
    EXPECT_EQ(&object(99), &vector.getElement(65));
}

TEST(OCVector, AfterAFailedAdditionTheSlotCanBeSet) {
    OCVector vector;
    failToAdd(vector);
    {
        fault::HeapFault fault(1);
        EXPECT_EXCEPTION(vector.setElement(64, object(99)), OXMemory_AllocationError, noMemory);
    }
    EXPECT_FALSE(vector.hasElement(64));
    vector.setElement(64, object(99));
    EXPECT_EQ(&object(99), &vector.getElement(64));
    EXPECT_EQ(128u, vector.getCapacity());
}

TEST(OCVector, AfterAFailedAdditionTheCountCanBeTakenBackWithoutMemory) {
    OCVector vector;
    failToAdd(vector);
    fault::HeapFault fault(1, fault::HeapFault::Following);
    vector.setCount(64);
    fault.disarm();
    EXPECT_EQ(64u, vector.getCount());
    EXPECT_EQ(64u, vector.getCapacity());
    EXPECT_EQ(&object(63), &vector.getElement(63));
}

TEST(OCVector, AfterAFailedAdditionSlotsCanBeRemovedWithoutMemory) {
    OCVector vector;
    failToAdd(vector);
    {
        fault::HeapFault fault(1, fault::HeapFault::Following);
        vector.removeElement(0);
    }
    EXPECT_EQ(64u, vector.getCount());
    EXPECT_EQ(&object(1), &vector.getElement(0));
    EXPECT_EQ(&object(63), &vector.getElement(62));
    EXPECT_FALSE(vector.hasElement(63));
    failToAdd(vector);
    EXPECT_EQ(65u, vector.getCount());
    vector.removeElement(64);
    EXPECT_EQ(64u, vector.getCount());
    vector.addElement(object(5));
    vector.removeElements(2, 70);
    EXPECT_EQ((Numbers{1, 2}), numbers(vector));
}

TEST(OCVector, AfterAFailedAdditionCopiesCountAndGrow) {
    OCVector vector;
    failToAdd(vector);
    const OCVector copy(vector);
    EXPECT_EQ(65u, copy.getCount());
    EXPECT_EQ(128u, copy.getCapacity());
    EXPECT_EQ(&object(63), &copy.getElement(63));
    EXPECT_FALSE(copy.hasElement(64));
    vector.insertElement(64, object(7));
    EXPECT_EQ(66u, vector.getCount());
    EXPECT_EQ(&object(7), &vector.getElement(64));
    EXPECT_FALSE(vector.hasElement(65));
    OCVector grown;
    failToAdd(grown);
    grown.setCount(200);
    EXPECT_EQ(256u, grown.getCapacity());
    EXPECT_FALSE(grown.hasElement(64));
    EXPECT_FALSE(grown.hasElement(199));
    OCVector exact;
    failToAdd(exact);
    exact.setCapacity(0);
    EXPECT_EQ(65u, exact.getCapacity());
    EXPECT_FALSE(exact.hasElement(64));
}

TEST(OCVector, OtherwiseAFailedChangeChangesNothing) {
    OCVector large;
    fill(large, 200);
    OCVector vector;
    fill(vector, 130);
    const std::vector<int> before = numbers(vector);
    const auto unchanged = [&] {
        EXPECT_EQ(before, numbers(vector));
        EXPECT_EQ(192u, vector.getCapacity());
        EXPECT_EQ(64u, vector.getBlockSize());
    };
    const auto refused = [&](auto operation) {
        fault::HeapFault fault(1);
        EXPECT_EXCEPTION(operation(), OXMemory_AllocationError, noMemory);
        fault.disarm();
        unchanged();
    };
    refused([&] { vector.setCount(193); });
    refused([&] { vector.setCount(128); });
    refused([&] { vector.setCount(0); });
    refused([&] { vector.clear(); });
    refused([&] { vector.setCapacity(500); });
    refused([&] { vector.setCapacity(130); });
    refused([&] { vector.removeElements(3, 2); });
    refused([&] { vector.removeElements(0, 130); });
    refused([&] { vector.removeElements(100, 30); });
    refused([&] { vector.assign(large); });
    refused([&] { const OCVector copy(vector); });
    fill(vector, 192);
    fault::HeapFault fault(1);
    EXPECT_EXCEPTION(vector.insertElement(3, object(5)), OXMemory_AllocationError, noMemory);
    fault.disarm();
    EXPECT_EQ(numbers(large).size() - 8, numbers(vector).size());
    EXPECT_EQ(&object(3), &vector.getElement(3));
    EXPECT_EQ(&object(191), &vector.getElement(191));
}

TEST(OCVector, CountsBeyondAllMemoryAreRefused) {
    OCVector vector;
    fill(vector, 3);
    for (const unsigned long n : {~0UL, ~0UL - 62, ~0UL - 63, ~0UL - 64, 1UL << 63, 1UL << 61,
                                  (1UL << 61) - 1, 1UL << 60}) {
        EXPECT_EXCEPTION(vector.setCount(n), OXMemory_AllocationError, noMemory);
        EXPECT_EXCEPTION(vector.setCapacity(n), OXMemory_AllocationError, noMemory);
        EXPECT_EQ((Numbers{0, 1, 2}), numbers(vector));
        EXPECT_EQ(64u, vector.getCapacity());
    }
    OCVector large;
    large.setCapacity(10000);
    for (const unsigned long n : {~0UL, ~0UL - 64, 1UL << 63, (1UL << 62) + 1, 1UL << 60}) {
        EXPECT_EXCEPTION(large.setCount(n), OXMemory_AllocationError, noMemory);
        EXPECT_EQ(0u, large.getCount());
        EXPECT_EQ(10000u, large.getCapacity());
    }
}

TEST(OCVector, BlockSizesBeyondAllMemoryAreRefusedAtTheNextGrowth) {
    OCVector vector;
    fill(vector, 3);
    vector.setBlockSize(~0UL);
    vector.setCount(2);
    vector.setCount(0);
    EXPECT_EQ(64u, vector.getCapacity());
    EXPECT_EXCEPTION(vector.setCount(1), OXMemory_AllocationError, noMemory);
    EXPECT_EQ(0u, vector.getCount());
    vector.setBlockSize(1UL << 62);
    EXPECT_EXCEPTION(vector.setCount(2), OXMemory_AllocationError, noMemory);
    EXPECT_EQ(0u, vector.getCount());
    EXPECT_EXCEPTION(vector.addElement(object(0)), OXMemory_AllocationError, noMemory);
    EXPECT_EQ(1u, vector.getCount());
    EXPECT_FALSE(vector.hasElement(0));
}

// Sorting

/// The partition and the order of recursion, written down plainly. It notes every comparison.
class PlainSort {
public:
    explicit PlainSort(std::vector<const Item*>& sorted) : items(sorted) {}
    std::vector<std::pair<const Item*, const Item*>> comparisons;

    void sort(long low, long high) {
        for (;;) {
            const Item* const pivot = items[static_cast<std::size_t>((low + high) / 2)];
            long i = low;
            long j = high;
            while (i <= j) {
                while (compare(i, pivot) == CompareResultLess)
                    ++i;
                while (compare(j, pivot) == CompareResultGreater)
                    --j;
                if (i <= j) {
                    std::swap(items[static_cast<std::size_t>(i)],
                              items[static_cast<std::size_t>(j)]);
                    ++i;
                    --j;
                }
            }
            if (low < j)
                sort(low, j);
            if (i >= high)
                return;
            low = i;
        }
    }

private:
    OECompareResult compare(long index, const Item* pivot) {
        const Item* const left = items[static_cast<std::size_t>(index)];
        comparisons.emplace_back(left, pivot);
        return byKey(left, pivot);
    }
    std::vector<const Item*>& items;
};

std::vector<std::pair<const Item*, const Item*>> noted;

OECompareResult byKeyNoted(const OCObject* a, const OCObject* b) {
    noted.emplace_back(&item(a), &item(b));
    return byKey(a, b);
}

std::vector<const Item*> elements(const OCVector& vector) {
    std::vector<const Item*> result;
    for (unsigned long i = 0; i < vector.getCount(); ++i)
        result.push_back(&item(&vector.getElement(i)));
    return result;
}

TEST(OCVectorSort, SortsByTheComparator) {
    OCVector vector;
    for (const int i : {5, 3, 9, 1, 3, 0})
        vector.addElement(object(static_cast<unsigned long>(i)));
    vector.sort(byKey);
    EXPECT_EQ((Numbers{0, 1, 3, 3, 5, 9}), numbers(vector));
    EXPECT_EQ(64u, vector.getCapacity());
}

TEST(OCVectorSort, AnEmptyVectorIsLeftAlone) {
    OCVector vector;
    vector.sort(nullptr);
    EXPECT_EQ(0u, vector.getCapacity());
}

TEST(OCVectorSort, OneElementIsComparedWithItself) {
    OCVector vector;
    fill(vector, 1);
    noted.clear();
    vector.sort(byKeyNoted);
    EXPECT_EQ(2u, noted.size());
    EXPECT_EQ((Numbers{0}), numbers(vector));
}

TEST(OCVectorSort, PartitionsAndRecursesAsDescribed) {
    std::mt19937 random(20240117);
    for (int run = 0; run < 300; ++run) {
        const unsigned long count = 1 + random() % 200;
        const unsigned long keys = 1 + random() % 60;
        std::vector<std::unique_ptr<Item>> items;
        OCVector vector;
        std::vector<const Item*> plain;
        for (unsigned long i = 0; i < count; ++i) {
            items.push_back(
                std::make_unique<Item>(static_cast<int>(random() % keys), static_cast<int>(i)));
            vector.addElement(*items.back());
            plain.push_back(items.back().get());
        }
        PlainSort model(plain);
        model.sort(0, static_cast<long>(count) - 1);
        noted.clear();
        vector.sort(byKeyNoted);
        ASSERT_EQ(plain, elements(vector)) << "run " << run;
        ASSERT_EQ(model.comparisons, noted) << "run " << run;
    }
}

TEST(OCVectorSort, ANullSlotAnywhereIsRefused) {
    for (const unsigned long count : {1UL, 2UL, 3UL, 17UL, 100UL}) {
        for (unsigned long null = 0; null < count; ++null) {
            OCVector vector;
            for (unsigned long i = 0; i < count; ++i)
                vector.addElement(object(count - i));
            vector.nullElement(null);
            try {
                vector.sort(byKey);
                ADD_FAILURE() << "sorted " << count << " with null at " << null;
            } catch (const OXVector_NullElement&) {
            }
            unsigned long nulls = 0;
            for (unsigned long i = 0; i < count; ++i)
                nulls += vector.hasElement(i) ? 0UL : 1UL;
            ASSERT_EQ(1u, nulls);
        }
    }
}

TEST(OCVectorSort, TheNullSlotIsNamed) {
    OCVector vector;
    vector.setCount(1);
    EXPECT_EXCEPTION(vector.sort(byKey), OXVector_NullElement,
                     "The vector does not contain the requested element (0)");
    OCVector three;
    fill(three, 3);
    three.nullElement(2);
    EXPECT_EXCEPTION(three.sort(byKey), OXVector_NullElement,
                     "The vector does not contain the requested element (2)");
}

TEST(OCVectorSort, AnOrderMadeToKillStaysBounded) {
    constexpr int count = 30000;
    OCVector vector;
    const KillerOrder killer(vector, count);
    vector.sort(KillerOrder::compare);
    // n log2 n is 446 thousand here; without a bound the killer gets 112 million.
    EXPECT_LT(killer.getComparisons(), 4000000u);
    EXPECT_LT(killer.getStackRange(), 200000u);

    // The order that came of it is as bad when it is there from the start.
    std::vector<std::unique_ptr<Item>> items;
    OCVector again;
    for (const int value : killer.getValues()) {
        items.push_back(std::make_unique<Item>(value));
        again.addElement(*items.back());
    }
    noted.clear();
    again.sort(byKeyNoted);
    EXPECT_EQ(killer.getComparisons(), noted.size());
    for (unsigned long i = 1; i < count; ++i)
        ASSERT_LE(item(&again.getElement(i - 1)).key, item(&again.getElement(i)).key);
}

TEST(OCVectorSort, CommonOrdersAreSorted) {
    constexpr int count = 20000;
    const auto check = [](auto key) {
        std::vector<std::unique_ptr<Item>> items;
        OCVector vector;
        for (int i = 0; i < count; ++i) {
            items.push_back(std::make_unique<Item>(key(i), i));
            vector.addElement(*items.back());
        }
        vector.sort(byKey);
        std::vector<int> keys;
        for (const auto& each : items)
            keys.push_back(each->key);
        std::sort(keys.begin(), keys.end());
        EXPECT_EQ(keys, numbers(vector));
    };
    check([](int i) { return i; });
    check([](int i) { return count - i; });
    check([](int) { return 7; });
    check([](int i) { return i % 2; });
    check([](int i) { return i < count / 2 ? i : count - i; });
    check([](int i) { return i % 100; });
}

OECompareResult alwaysLess(const OCObject*, const OCObject*) {
    return CompareResultLess;
}

OECompareResult alwaysGreater(const OCObject*, const OCObject*) {
    return CompareResultGreater;
}

std::mt19937 dice;

OECompareResult atRandom(const OCObject*, const OCObject*) {
    return static_cast<OECompareResult>(static_cast<int>(dice() % 3) - 1);
}

void expectSameElements(const OCVector& vector, unsigned long count) {
    std::vector<int> found = numbers(vector);
    std::sort(found.begin(), found.end());
    std::vector<int> all;
    for (unsigned long i = 0; i < count; ++i)
        all.push_back(static_cast<int>(i));
    ASSERT_EQ(all, found);
}

TEST(OCVectorSort, ComparatorsThatContradictThemselvesLoseNothing) {
    dice.seed(99);
    for (const unsigned long count : {1UL, 2UL, 3UL, 10UL, 100UL, 5000UL}) {
        OCVector vector;
        fill(vector, count);
        vector.sort(alwaysLess);
        expectSameElements(vector, count);
        vector.sort(alwaysGreater);
        expectSameElements(vector, count);
        for (int run = 0; run < 20; ++run) {
            vector.sort(atRandom);
            expectSameElements(vector, count);
        }
    }
}

unsigned long comparisonsLeft = 0;

OECompareResult throwsInTime(const OCObject* a, const OCObject* b) {
    if (comparisonsLeft-- == 0)
        throw std::runtime_error("enough");
    return byKey(b, a);
}

TEST(OCVectorSort, AComparatorThatThrowsLosesNothing) {
    for (unsigned long after = 0;; ++after) {
        OCVector vector;
        fill(vector, 50);
        comparisonsLeft = after;
        try {
            vector.sort(throwsInTime);
        } catch (const std::runtime_error&) {
            expectSameElements(vector, 50);
            continue;
        }
        expectSameElements(vector, 50);
        EXPECT_EQ(49, item(&vector.getElement(0)).key);
        EXPECT_GT(after, 200u);
        break;
    }
}

TEST(OCVectorSort, AComparatorThatThrowsInTheHeapSortLosesNothing) {
    constexpr int count = 3000;
    for (unsigned long after = 20000; after < 250000; after += 9999) {
        OCVector vector;
        const KillerOrder killer(vector, count);
        std::vector<const OCObject*> before;
        for (unsigned long i = 0; i < count; ++i)
            before.push_back(&vector.getElement(i));
        comparisonsLeft = after;
        try {
            vector.sort([](const OCObject* a, const OCObject* b) {
                if (comparisonsLeft-- == 0)
                    throw std::runtime_error("enough");
                return KillerOrder::compare(a, b);
            });
        } catch (const std::runtime_error&) {
        }
        std::vector<const OCObject*> found;
        for (unsigned long i = 0; i < count; ++i)
            found.push_back(&vector.getElement(i));
        std::sort(before.begin(), before.end());
        std::sort(found.begin(), found.end());
        ASSERT_EQ(before, found);
    }
}

OCVector* changed = nullptr;

OECompareResult clearsTheVector(const OCObject*, const OCObject*) {
    changed->setCount(3);
    return CompareResultLess;
}

TEST(OCVectorSort, AComparatorThatShortensTheVectorIsAnsweredByAnException) {
    OCVector vector;
    fill(vector, 1000);
    changed = &vector;
    EXPECT_EXCEPTION(vector.sort(clearsTheVector), OXVector_NoSuchIndex,
                     "Vector index out of bounds (3)");
    EXPECT_EQ((Numbers{0, 1, 2}), numbers(vector));
}

// Deleting companions

std::vector<int> deleted;

class Owned : public OCObject {
public:
    explicit Owned(int ownNumber, bool ownThrows = false) : number(ownNumber), throws(ownThrows) {}
    ~Owned() noexcept(false) override {
        deleted.push_back(number);
        if (throws)
            throw std::runtime_error("no");
    }
    int number;
    bool throws;
};

void fillOwned(OCVector& vector, std::initializer_list<int> slots) {
    deleted.clear();
    for (const int number : slots) {
        if (number < 0)
            vector.setCount(vector.getCount() + 1);
        else
            vector.addElement(*new Owned(number, number >= 100));
    }
}

TEST(OCVectorUtilities, DeletesAllElements) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  OCVector vector;
                  fillOwned(vector, {1, -1, 2, 3, -1});
                  vector.setBlockSize(3);
                  OCVectorUtilities(vector).deleteElements();
                  EXPECT_EQ((Numbers{1, 2, 3}), deleted);
                  EXPECT_EQ(0u, vector.getCount());
                  EXPECT_EQ(64u, vector.getBlockSize());
                  Numbers().swap(deleted);
              }));
}

TEST(OCVectorUtilities, ItsOwnDestructionDeletesNothing) {
    OCVector vector;
    fill(vector, 3);
    { const OCVectorUtilities utilities(vector); }
    EXPECT_EQ((Numbers{0, 1, 2}), numbers(vector));
}

TEST(OCVectorUtilities, DropsTheExceptionsOfDestructors) {
    OCVector vector;
    fillOwned(vector, {100, 1, 101});
    OCVectorUtilities(vector).deleteElements();
    EXPECT_EQ((Numbers{100, 1, 101}), deleted);
    EXPECT_EQ(0u, vector.getCount());
    fillOwned(vector, {100, 1, 101});
    OCVectorUtilities(vector).deleteElements(0, 2);
    EXPECT_EQ((Numbers{100, 1}), deleted);
    EXPECT_EQ(1u, vector.getCount());
    OCVectorUtilities(vector).deleteElements();
}

TEST(OCVectorUtilities, DeletesSomeElements) {
    OCVector vector;
    fillOwned(vector, {1, 2, 3, 4, 5});
    OCVectorUtilities utilities(vector);
    utilities.deleteElements(1, 2);
    EXPECT_EQ((Numbers{2, 3}), deleted);
    EXPECT_EQ(3u, vector.getCount());
    utilities.deleteElements(0, 0);
    EXPECT_EQ(3u, vector.getCount());
    utilities.deleteElements(3, 1);
    EXPECT_EQ(3u, vector.getCount());
    utilities.deleteElements(1, ~0UL);
    EXPECT_EQ((Numbers{2, 3, 4, 5}), deleted);
    EXPECT_EQ(1u, vector.getCount());
    utilities.deleteElements();
    EXPECT_EQ((Numbers{2, 3, 4, 5, 1}), deleted);
}

TEST(OCVectorUtilities, ANullSlotStopsTheDeletion) {
    OCVector vector;
    fillOwned(vector, {1, -1, 2});
    OCVectorUtilities utilities(vector);
    utilities.deleteElements(0, 3);
    EXPECT_EQ((Numbers{1}), deleted);
    EXPECT_EQ(2u, vector.getCount());
    EXPECT_FALSE(vector.hasElement(0));
    utilities.deleteElements(0, 3);
    EXPECT_EQ(2u, vector.getCount());
    utilities.deleteElements(1, 3);
    EXPECT_EQ((Numbers{1, 2}), deleted);
    EXPECT_EQ(1u, vector.getCount());
}

/// Looks at its vector, or changes it, while it is destroyed.
class Meddler : public OCObject {
public:
    Meddler(OCVector& ownVector, void (*ownAction)(OCVector&))
        : vector(ownVector), action(ownAction) {}
    ~Meddler() noexcept(false) override { action(vector); }

private:
    OCVector& vector;
    void (*action)(OCVector&);
};

std::vector<unsigned long> seen;

TEST(OCVectorUtilities, AnElementIsDetachedBeforeItIsDeleted) {
    OCVector vector;
    const auto look = [](OCVector& own) {
        seen.push_back(own.getCount());
        for (unsigned long i = 0; i < own.getCount(); ++i)
            seen.push_back(own.hasElement(i) ? 1 : 0);
    };
    for (int i = 0; i < 3; ++i)
        vector.addElement(*new Meddler(vector, look));
    seen.clear();
    OCVectorUtilities(vector).deleteElements();
    EXPECT_EQ((std::vector<unsigned long>{3, 0, 1, 1, 3, 0, 0, 1, 3, 0, 0, 0}), seen);
    for (int i = 0; i < 3; ++i)
        vector.addElement(*new Meddler(vector, look));
    seen.clear();
    OCVectorUtilities(vector).deleteElements(0, 2);
    EXPECT_EQ((std::vector<unsigned long>{2, 1, 1, 1, 1}), seen);
    OCVectorUtilities(vector).deleteElements();
}

TEST(OCVectorUtilities, ADestructorMayShortenTheVector) {
    OCVector vector;
    for (int i = 0; i < 100; ++i)
        vector.addElement(*new Meddler(vector, [](OCVector&) {}));
    delete &vector.getElement(1);
    vector.setElement(1, *new Meddler(vector, [](OCVector& own) {
                          OCVectorUtilities(own).deleteElements(2, ~0UL);
                          own.setCount(2);
                          own.setCapacity(2);
                      }));
    OCVectorUtilities(vector).deleteElements();
    EXPECT_EQ(0u, vector.getCount());
}

TEST(OCVectorUtilities, WhatADestructorAddsIsNotDeleted) {
    OCVector vector;
    vector.addElement(*new Meddler(vector, [](OCVector& own) { own.addElement(object(5)); }));
    OCVectorUtilities(vector).deleteElements();
    EXPECT_EQ(0u, vector.getCount());
    vector.addElement(*new Meddler(vector, [](OCVector& own) { own.addElement(object(5)); }));
    OCVectorUtilities(vector).deleteElements(0, 1);
    EXPECT_EQ((Numbers{5}), numbers(vector));
}

TEST(OCVectorUtilities, WithoutMemoryToShrinkAnElementStays) {
    OCVector vector;
    deleted.clear();
    for (int i = 0; i < 65; ++i)
        vector.addElement(*new Owned(i));
    {
        fault::HeapFault fault(1);
        EXPECT_EXCEPTION(OCVectorUtilities(vector).deleteElements(0, 1), OXMemory_AllocationError,
                         noMemory);
    }
    EXPECT_EQ(Numbers(), deleted);
    EXPECT_EQ(65u, vector.getCount());
    OCVectorUtilities(vector).deleteElements();
    EXPECT_EQ(65u, deleted.size());
}

void addAndDelete(unsigned long count) {
    OCVector vector;
    for (unsigned long i = 0; i < count; ++i)
        vector.addElement(*new OCObject);
    OCVectorUtilities(vector).deleteElements();
    EXPECT_EQ(0u, vector.getCount());
}

TEST(OCVectorUtilities, DeletingAllElementsIsNotQuadratic) {
    EXPECT_LT(growth::ofEightTimes(addAndDelete, 50000), 45);
}

// Exceptions

TEST(OXVector, CarriesClassMessageAndIndex) {
    EXPECT_EXCEPTION(throw OXVector_NoSuchIndex(3), OXVector_NoSuchIndex,
                     "Vector index out of bounds (3)");
    EXPECT_EXCEPTION(throw OXVector_NullElement(3), OXVector_NullElement,
                     "The vector does not contain the requested element (3)");
    EXPECT_EXCEPTION(throw OXVector_NullVector(), OXVector_NullVector,
                     "The vector does not contain any elements");
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXVector>));
    EXPECT_TRUE((std::is_base_of_v<OXVector, OXVector_NullVector>));
    EXPECT_THROW(throw OXVector_NoSuchIndex(3), OXVector);
    EXPECT_THROW(throw OXVector_NullElement(3), OXVector);
    EXPECT_EQ(400u, sizeof(OXVector_NoSuchIndex));
}

// Random changes beside a model

TEST(OCVector, BehavesLikeItsModel) {
    const unsigned int seed = 31337;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    OCVector vector;
    std::vector<OCObject*> model;
    unsigned long capacity = 0;
    unsigned long step = 64;
    const auto blocks = [&](unsigned long n) {
        return n == 0 ? step : (n + step - 1) / step * step;
    };
    const auto counted = [&](unsigned long old, unsigned long now) {
        if (now < old)
            capacity = std::min(capacity, blocks(now));
        else if (now > old)
            capacity = std::max(capacity, blocks(now));
    };
    for (int run = 0; run < 20000; ++run) {
        const unsigned long old = model.size();
        const unsigned long index = old == 0 ? 0 : random() % (old + 1);
        const auto place = model.begin() + static_cast<long>(index);
        OCObject& other = object(random() % 50);
        switch (random() % 10) {
        case 0:
        case 1:
        case 2:
            vector.addElement(other);
            model.push_back(&other);
            break;
        case 3:
        case 4:
            if (index < old) {
                vector.insertElement(index, other);
                model.insert(place, &other);
            } else {
                EXPECT_THROW(vector.insertElement(index, other), OXVector_NoSuchIndex);
            }
            break;
        case 5: {
            const unsigned long n = random() % 30;
            if (index < old) {
                vector.removeElements(index, n);
                model.erase(place, place + static_cast<long>(std::min(n, old - index)));
            } else {
                EXPECT_THROW(vector.removeElements(index, n), OXVector_NoSuchIndex);
            }
            break;
        }
        case 6: {
            const unsigned long n = random() % 10 == 0 ? random() % 1000 : old + random() % 5;
            vector.setCount(n);
            model.resize(n, nullptr);
            break;
        }
        case 7:
            if (index < old) {
                vector.setElement(index, other);
                *place = &other;
            }
            break;
        case 8:
            if (index < old) {
                vector.nullElement(index);
                *place = nullptr;
            }
            break;
        default:
            if (random() % 4 == 0) {
                step = 1 + random() % 100;
                vector.setBlockSize(step);
            } else if (random() % 4 == 0) {
                const unsigned long n = random() % 2000;
                vector.setCapacity(n);
                capacity = std::max(n, static_cast<unsigned long>(model.size()));
            } else if (random() % 50 == 0) {
                vector.clear();
                model.clear();
                step = 64;
            }
            break;
        }
        counted(old, model.size());
        ASSERT_EQ(model.size(), vector.getCount()) << run;
        ASSERT_EQ(capacity, vector.getCapacity()) << run;
        ASSERT_EQ(step, vector.getBlockSize()) << run;
        for (unsigned long i = 0; i < model.size(); ++i) {
            ASSERT_EQ(model[i] != nullptr, vector.hasElement(i)) << run;
            if (model[i] != nullptr) {
                ASSERT_EQ(model[i], &vector.getElement(i)) << run;
            }
        }
        if (run % 100 == 0) {
            const OCVector copy(vector);
            ASSERT_EQ(numbers(vector), numbers(copy));
        }
    }
}

} // namespace
