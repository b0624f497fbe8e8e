#include "OCObject.h"
#include "OCAnsiString.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <deque>
#include <list>
#include <map>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace {

int alive = 0;

class Counted : public OCObject {
public:
    Counted() { ++alive; }
    ~Counted() noexcept override { --alive; }
    int payload = 7;
};

class FailsToConstruct : public OCObject {
public:
    FailsToConstruct() { throw std::runtime_error("no"); }
};

class FailsToDestroy : public OCObject {
public:
    ~FailsToDestroy() noexcept(false) override { throw std::runtime_error("no"); }
};

template<class Type, class = void>
struct HasNothrowNew : std::false_type {};
template<class Type>
struct HasNothrowNew<Type, std::void_t<decltype(Type::operator new(1, std::nothrow))>>
    : std::true_type {};

TEST(OCObject, HoldsNothingButItsTable) {
    EXPECT_EQ(8u, sizeof(OCObject));
    EXPECT_EQ(2u, slots::slotCount<OCObject>());
}

TEST(OCObject, ADestructorMayThrow) {
    EXPECT_FALSE(std::is_nothrow_destructible_v<OCObject>);
    EXPECT_TRUE(std::has_virtual_destructor_v<OCObject>);
}

TEST(OCObject, ThereIsNoNewThatReturnsNull) {
    EXPECT_FALSE(HasNothrowNew<OCObject>::value);
    EXPECT_FALSE(HasNothrowNew<OCAnsiString>::value);
}

TEST(OCObject, NewTakesItsStorageFromTheHeapAndDeleteGivesItBack) {
    const fault::HeapRecord before = fault::heapRecord();
    OCObject* const object = new Counted;
    const fault::HeapRecord between = fault::heapRecord();
    delete object;
    const fault::HeapRecord after = fault::heapRecord();

    EXPECT_EQ(before.requests + 1, between.requests);
    EXPECT_EQ(sizeof(Counted), between.lastSize);
    EXPECT_EQ(before.liveBlocks + 1, between.liveBlocks);
    EXPECT_EQ(between.releases + 1, after.releases);
    EXPECT_EQ(before.liveBlocks, after.liveBlocks);
}

TEST(OCObject, NewThrowsWhenMemoryIsExhausted) {
    fault::HeapFault fault(1);
    EXPECT_EXCEPTION(new Counted, OXMemory_AllocationError, "Memory allocation failure");
    EXPECT_TRUE(fault.triggered());
    EXPECT_EQ(0, alive);
}

TEST(OCObject, TheOperatorsCanBeCalledDirectly) {
    const long before = fault::heapRecord().liveBlocks;
    void* const storage = OCObject::operator new(100);
    EXPECT_EQ(100u, fault::heapRecord().lastSize);
    OCObject::operator delete(storage);
    void* const array = OCObject::operator new[](50);
    EXPECT_EQ(50u, fault::heapRecord().lastSize);
    OCObject::operator delete[](array);
    OCObject::operator delete(nullptr);
    OCObject::operator delete[](nullptr);
    EXPECT_EQ(before, fault::heapRecord().liveBlocks);
}

TEST(OCObject, AConstructorThatThrowsLeavesNoStorageBehind) {
    EXPECT_EQ(0,
              fault::blocksLeftBy([] { EXPECT_THROW(new FailsToConstruct, std::runtime_error); }));
}

TEST(OCObject, ADestructorThatThrowsLeavesNoStorageBehind) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  OCObject* const object = new FailsToDestroy;
                  EXPECT_THROW(delete object, std::runtime_error);
              }));
}

TEST(OCObject, DeletingThroughTheRootRunsTheDerivedDestructor) {
    OCObject* const object = new Counted;
    EXPECT_EQ(1, alive);
    delete object;
    EXPECT_EQ(0, alive);
}

TEST(OCObject, ArraysComeFromTheHeapToo) {
    const fault::HeapRecord before = fault::heapRecord();
    Counted* const objects = new Counted[3];
    const fault::HeapRecord between = fault::heapRecord();
    EXPECT_EQ(3, alive);
    delete[] objects;
    EXPECT_EQ(0, alive);
    EXPECT_EQ(before.requests + 1, between.requests);
    EXPECT_GE(between.lastSize, 3 * sizeof(Counted));
    EXPECT_EQ(before.liveBlocks, fault::heapRecord().liveBlocks);
}

TEST(OCObject, AnArrayThrowsWhenMemoryIsExhausted) {
    fault::HeapFault fault(1);
    EXPECT_EXCEPTION(new Counted[3], OXMemory_AllocationError, "Memory allocation failure");
    EXPECT_EQ(0, alive);
}

TEST(OCObject, CanBePlaced) {
    alignas(Counted) unsigned char place[2 * sizeof(Counted)];
    const unsigned long requests = fault::heapRecord().requests;
    Counted* const object = new (place) Counted;
    EXPECT_EQ(static_cast<void*>(place), static_cast<void*>(object));
    EXPECT_EQ(1, alive);
    object->~Counted();
    EXPECT_EQ(0, alive);
    EXPECT_EQ(requests, fault::heapRecord().requests);
    EXPECT_THROW(new (place) FailsToConstruct, std::runtime_error);
    EXPECT_EQ(static_cast<void*>(place), OCObject::operator new[](1, place));
}

TEST(OCObject, LivesInStandardContainers) {
    std::vector<OCAnsiString> vector(3, "x");
    vector.emplace_back("y");
    vector.insert(vector.begin(), "w");
    EXPECT_EQ(OCAnsiString("w"), vector.front());
    EXPECT_EQ(OCAnsiString("y"), vector.back());
    std::map<OCAnsiString, Counted> map;
    map["b"].payload = 1;
    map["a"].payload = 2;
    EXPECT_EQ(OCAnsiString("a"), map.begin()->first);
    std::list<Counted> list(2);
    std::deque<OCAnsiString> deque(4, "z");
    EXPECT_EQ(OCAnsiString("z"), deque[3]);
    const auto shared = std::make_shared<Counted>();
    const std::unique_ptr<OCObject> unique(new Counted);
    EXPECT_EQ(6, alive);
    map.clear();
    list.clear();
    EXPECT_EQ(2, alive);
}

TEST(OCObjectDisposer, HoldsOnePointer) {
    EXPECT_EQ(16u, sizeof(OCObjectDisposer));
    EXPECT_EQ(2u, slots::slotCount<OCObjectDisposer>());
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCObjectDisposer>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCObjectDisposer>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCObjectDisposer>);
}

TEST(OCObjectDisposer, DeletesItsObjectAtTheEndOfTheScope) {
    const long before = fault::heapRecord().liveBlocks;
    {
        const OCObjectDisposer disposer(new Counted);
        EXPECT_EQ(1, alive);
    }
    EXPECT_EQ(0, alive);
    EXPECT_EQ(before, fault::heapRecord().liveBlocks);
}

TEST(OCObjectDisposer, TakesNull) {
    const unsigned long releases = fault::heapRecord().releases;
    { const OCObjectDisposer disposer(nullptr); }
    EXPECT_EQ(releases, fault::heapRecord().releases);
}

TEST(OCObjectDisposer, DropsTheExceptionOfADestructor) {
    EXPECT_EQ(0, fault::blocksLeftBy([] { const OCObjectDisposer disposer(new FailsToDestroy); }));
}

TEST(OCObjectDisposer, CanDisposeWhileAnExceptionIsOnItsWay) {
    try {
        const OCObjectDisposer disposer(new FailsToDestroy);
        throw std::runtime_error("first");
    } catch (const std::runtime_error& failure) {
        EXPECT_STREQ("first", failure.what());
    }
}

TEST(OECompareResult, IsASigned32BitNumber) {
    EXPECT_TRUE((std::is_same_v<int, std::underlying_type_t<OECompareResult>>));
    EXPECT_EQ(-1, static_cast<int>(CompareResultLess));
    EXPECT_EQ(0, static_cast<int>(CompareResultEqual));
    EXPECT_EQ(1, static_cast<int>(CompareResultGreater));
}

} // namespace
