#include "OCStack.h"

OXStack::OXStack() = default;

OXStack::~OXStack() noexcept = default;

OXStack_UnderflowError::OXStack_UnderflowError() {
    setClass("OXStack_UnderflowError");
    setMessage("Stack underflow");
}

OXStack_UnderflowError::~OXStack_UnderflowError() noexcept = default;

OCStack::OCStack(const OCStack& other) = default;

OCStack::~OCStack() noexcept = default;

OCStack& OCStack::assign(const OCStack& other) {
    vector.assign(other.vector);
    return *this;
}

OCObject& OCStack::pop() {
    OCObject& element = top();
    vector.setCount(vector.getCount() - 1);
    return element;
}

void OCStack::throwUnderflow() {
    throw OXStack_UnderflowError();
}

OCStackUtilities::~OCStackUtilities() noexcept = default;

void OCStackUtilities::deleteElements() {
    while (!stack.isEmpty())
        delete &stack.pop();
}

void OCStackUtilities::deleteElements(unsigned long n) {
    for (; n != 0; --n)
        delete &stack.pop();
}
