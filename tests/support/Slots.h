#ifndef ORVABASE_TESTS_SLOTS_H
#define ORVABASE_TESTS_SLOTS_H

#include <cstddef>
#include <cstring>

/// The places of virtual operations in the virtual table, counted from 0.
///
///     EXPECT_EQ(2u, slots::slotOf(&OCStream::read));
///     EXPECT_EQ(6u, slots::slotCount<OCStream>());
namespace slots {

/// The slot of a virtual operation. A pointer to one is 1 plus its offset in the table.
template<class Member>
std::size_t slotOf(Member member) {
    static_assert(sizeof(member) == 2 * sizeof(std::size_t), "a pointer to a member function");
    std::size_t words[2];
    std::memcpy(words, &member, sizeof words);
    return (words[0] - 1) / sizeof(void*);
}

/// The first operation that a derived class adds comes behind all those of its base.
template<class Base>
class Extended : public Base {
public:
    virtual void added();
};

/// The number of slots of a class, the two of the destructor included.
template<class Base>
std::size_t slotCount() {
    return slotOf(&Extended<Base>::added);
}

} // namespace slots

#endif
