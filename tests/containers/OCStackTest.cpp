#include "OCStack.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>
#include <vector>

namespace {

constexpr const char* noMemory = "Memory allocation failure";

std::vector<int> deleted;

class Item : public OCObject {
public:
    explicit Item(int itemNumber, bool itemThrows = false)
        : number(itemNumber), throws(itemThrows) {}
    ~Item() noexcept(false) override {
        deleted.push_back(number);
        if (throws)
            throw std::runtime_error("no");
    }
    int number;
    bool throws;
};

void fill(OCStack& stack, int count) {
    deleted.clear();
    for (int i = 0; i < count; ++i)
        stack.push(*new Item(i));
}

int numberOf(const OCObject& object) {
    return static_cast<const Item&>(object).number;
}

using Numbers = std::vector<int>;

TEST(OCStack, HoldsAVector) {
    EXPECT_EQ(48u, sizeof(OCStack));
    EXPECT_EQ(2u, slots::slotCount<OCStack>());
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCStack>);
    EXPECT_EQ(16u, sizeof(OCStackUtilities));
    EXPECT_EQ(2u, slots::slotCount<OCStackUtilities>());
    EXPECT_FALSE(std::is_copy_constructible_v<OCStackUtilities>);
}

TEST(OCStack, ANewOneIsEmpty) {
    const OCStack stack;
    EXPECT_TRUE(stack.isEmpty());
    EXPECT_EQ(0u, stack.getCount());
}

TEST(OCStack, TheLastInIsTheFirstOut) {
    Item first(1);
    Item second(2);
    OCStack stack;
    stack.push(first);
    stack.push(second);
    EXPECT_FALSE(stack.isEmpty());
    EXPECT_EQ(2u, stack.getCount());
    EXPECT_EQ(&second, &stack.top());
    EXPECT_EQ(2u, stack.getCount());
    EXPECT_EQ(&second, &stack.pop());
    const OCStack& constant = stack;
    EXPECT_EQ(&first, &constant.top());
    EXPECT_EQ(&first, &stack.pop());
    EXPECT_TRUE(stack.isEmpty());
}

TEST(OCStack, AnEmptyOneUnderflows) {
    OCStack stack;
    const OCStack& constant = stack;
    EXPECT_EXCEPTION(stack.pop(), OXStack_UnderflowError, "Stack underflow");
    EXPECT_EXCEPTION(stack.top(), OXStack_UnderflowError, "Stack underflow");
    EXPECT_EXCEPTION(constant.top(), OXStack_UnderflowError, "Stack underflow");
    EXPECT_EQ(0u, stack.getCount());
}

TEST(OCStack, TheUnderflowBelongsToTheFamily) {
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXStack>));
    EXPECT_THROW(OCStack().pop(), OXStack);
    EXPECT_EQ(0u, OXStack_UnderflowError().getDetails().getCount());
    EXPECT_EQ(400u, sizeof(OXStack_UnderflowError));
    EXPECT_FALSE(std::is_default_constructible_v<OXStack>);
}

TEST(OCStack, CopiesShareTheObjects) {
    Item first(1);
    Item second(2);
    OCStack stack;
    stack.push(first);
    stack.push(second);
    OCStack copy(stack);
    EXPECT_EQ(&second, &copy.pop());
    EXPECT_EQ(2u, stack.getCount());
    OCStack assigned;
    assigned.push(second);
    EXPECT_EQ(&assigned, &assigned.assign(stack));
    EXPECT_EQ(2u, assigned.getCount());
    EXPECT_EQ(&second, &assigned.top());
    const OCStack& alias = assigned;
    EXPECT_EQ(&assigned, &(assigned = alias));
    EXPECT_EQ(2u, assigned.getCount());
    assigned = copy;
    EXPECT_EQ(1u, assigned.getCount());
    EXPECT_EQ(&first, &assigned.top());
}

TEST(OCStack, ClearDeletesNothing) {
    deleted.clear();
    {
        Item item(1);
        OCStack stack;
        stack.push(item);
        stack.clear();
        EXPECT_TRUE(stack.isEmpty());
        stack.push(item);
        stack.push(item);
        stack.pop();
    }
    EXPECT_EQ((Numbers{1}), deleted);
}

TEST(OCStack, AFailedPushLeavesANullTop) {
    Item item(1);
    OCStack stack;
    {
        fault::HeapFault fault(1);
        EXPECT_EXCEPTION(stack.push(item), OXMemory_AllocationError, noMemory);
    }
    EXPECT_EQ(1u, stack.getCount());
    EXPECT_EXCEPTION(stack.top(), OXVector_NullElement,
                     "The vector does not contain the requested element (0)");
    EXPECT_EXCEPTION(stack.pop(), OXVector_NullElement,
                     "The vector does not contain the requested element (0)");
    EXPECT_EQ(1u, stack.getCount());
    EXPECT_EXCEPTION(OCStackUtilities(stack).deleteElements(), OXVector_NullElement,
                     "The vector does not contain the requested element (0)");
    stack.push(item);
    EXPECT_EQ(&item, &stack.pop());
    stack.clear();
    EXPECT_TRUE(stack.isEmpty());
}

TEST(OCStack, AFailedPopTakesNothingOff) {
    OCStack stack;
    fill(stack, 65);
    {
        fault::HeapFault fault(1);
        EXPECT_EXCEPTION(stack.pop(), OXMemory_AllocationError, noMemory);
    }
    EXPECT_EQ(65u, stack.getCount());
    EXPECT_EQ(64, numberOf(stack.top()));
    OCStackUtilities(stack).deleteElements();
}

TEST(OCStackUtilities, DeletesFromTheTopDown) {
    Numbers().swap(deleted);
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  OCStack own;
                  fill(own, 3);
                  { const OCStackUtilities utilities(own); }
                  EXPECT_EQ(3u, own.getCount());
                  OCStackUtilities(own).deleteElements();
                  EXPECT_TRUE(own.isEmpty());
                  EXPECT_EQ((Numbers{2, 1, 0}), deleted);
                  Numbers().swap(deleted);
              }));
}

TEST(OCStackUtilities, DeletesSomeElements) {
    OCStack stack;
    fill(stack, 5);
    OCStackUtilities utilities(stack);
    utilities.deleteElements(2);
    EXPECT_EQ((Numbers{4, 3}), deleted);
    utilities.deleteElements(0);
    EXPECT_EQ(3u, stack.getCount());
    EXPECT_EXCEPTION(utilities.deleteElements(4), OXStack_UnderflowError, "Stack underflow");
    EXPECT_EQ((Numbers{4, 3, 2, 1, 0}), deleted);
    EXPECT_TRUE(stack.isEmpty());
    utilities.deleteElements();
    EXPECT_EQ(5u, deleted.size());
}

TEST(OCStackUtilities, TheExceptionOfADestructorPassesOn) {
    OCStack stack;
    fill(stack, 2);
    stack.push(*new Item(100, true));
    stack.push(*new Item(3));
    OCStackUtilities utilities(stack);
    EXPECT_THROW(utilities.deleteElements(), std::runtime_error);
    EXPECT_EQ((Numbers{3, 100}), deleted);
    EXPECT_EQ(2u, stack.getCount());
    stack.push(*new Item(101, true));
    EXPECT_THROW(utilities.deleteElements(3), std::runtime_error);
    EXPECT_EQ(2u, stack.getCount());
    EXPECT_EQ(1, numberOf(stack.top()));
    utilities.deleteElements();
}

} // namespace
