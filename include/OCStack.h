#ifndef ORVABASE_OCSTACK_H
#define ORVABASE_OCSTACK_H

#include "OCVector.h"

/// A last-in-first-out stack of pointers to objects.
///
/// It does not own what it points to: neither copying nor destruction touches an object.
/// `OCStackUtilities` deletes the elements on request. Not for use by several threads at once.
///
///     OCStack open;
///     open.push(*new Section("chapter"));
///     open.push(*new Section("paragraph"));
///     delete &open.pop();                      // the paragraph
///     OCStackUtilities(open).deleteElements(); // the chapter
class ORVABASE_EXPORT OCStack : public OCObject {
public:
    /// An empty stack.
    OCStack() noexcept = default;
    /// The pointers of `other`: both stacks refer to the same objects then.
    /// @throws OXMemory_AllocationError
    OCStack(const OCStack& other);
    OCStack& operator=(const OCStack& other) { return assign(other); }
    ~OCStack() noexcept override;

    /// Takes `other`'s pointers. A stack assigned to itself stays as it is.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    OCStack& assign(const OCStack& other);
    /// Drops all elements; they are not deleted.
    /// @throws OXMemory_AllocationError when the array cannot be made smaller; nothing is changed
    /// then.
    void clear() { vector.clear(); }

    /// Whether there are no elements.
    bool isEmpty() const { return vector.getCount() == 0; }
    /// The number of elements.
    unsigned long getCount() const { return vector.getCount(); }

    /// Puts `element` on top.
    /// @throws OXMemory_AllocationError when memory is exhausted. Note: the count is then already
    /// raised by one, and the new top reads as a null element.
    void push(OCObject& element) { vector.addElement(element); }
    /// The element put on last.
    /// @throws OXStack_UnderflowError when the stack is empty, OXVector_NullElement when its top is
    /// null.
    OCObject& top() { return vector.getElement(topIndex()); }
    const OCObject& top() const { return vector.getElement(topIndex()); }
    /// Takes the top off and returns it. Who owns the element, the stack no longer refers to it.
    /// @throws what `top` throws, and OXMemory_AllocationError when the array cannot be made
    /// smaller; nothing is changed then.
    OCObject& pop();

private:
    friend class OCXmlWriterElementStack;

    unsigned long topIndex() const {
        if (isEmpty())
            throwUnderflow();
        return vector.getCount() - 1;
    }
    [[noreturn]] static void throwUnderflow();

    OCVector vector;
};

/// Deletes the elements of a stack that owns them by agreement. It refers to the stack and must not
/// outlive it.
class ORVABASE_EXPORT OCStackUtilities : public OCObject {
public:
    /// Refers to `target`.
    explicit OCStackUtilities(OCStack& target) noexcept : stack(target) {}
    OCStackUtilities(const OCStackUtilities&) = delete;
    OCStackUtilities& operator=(const OCStackUtilities&) = delete;
    ~OCStackUtilities() noexcept override;

    /// Deletes every element, from the top down.
    ///
    /// Note: an exception of an element's destructor passes on; that element is off the stack, the
    /// ones below it are still on.
    /// @throws OXVector_NullElement when a null element comes to the top.
    void deleteElements();
    /// Deletes `n` elements from the top down.
    /// @throws OXStack_UnderflowError when there are fewer, after all of them are deleted; and what
    /// the other form throws.
    void deleteElements(unsigned long n);

private:
    OCStack& stack;
};

/// The family of the stack's failures.
class ORVABASE_EXPORT OXStack : public OXAutoException {
public:
    ~OXStack() noexcept override;

protected:
    OXStack();
};

/// "Stack underflow".
class ORVABASE_EXPORT OXStack_UnderflowError : public OXStack {
public:
    OXStack_UnderflowError();
    ~OXStack_UnderflowError() noexcept override;
};

#endif
