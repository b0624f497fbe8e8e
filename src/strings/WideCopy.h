#ifndef ORVABASE_WIDECOPY_H
#define ORVABASE_WIDECOPY_H

#include <cstring>

namespace orvabase {

/// Copies `count` characters, from `size` to twice as many, in two runs that may overlap. Both are
/// read before one is written, so `to` and `from` may overlap, too.
template<unsigned long size>
void copyTwoRuns(wchar_t* to, const wchar_t* from, unsigned long count) noexcept {
    struct Run {
        wchar_t characters[size];
    } first, last;
    std::memcpy(&first, from, sizeof(Run));
    std::memcpy(&last, from + count - size, sizeof(Run));
    std::memcpy(to, &first, sizeof(Run));
    std::memcpy(to + count - size, &last, sizeof(Run));
}

/// Copies characters; the places may overlap. Names and most values are so short that the call of
/// the C library's copy would take longer than the copy.
inline void copyCharacters(wchar_t* to, const wchar_t* from, unsigned long count) noexcept {
    if (count > 16)
        std::memmove(to, from, count * sizeof(wchar_t));
    else if (count >= 8)
        copyTwoRuns<8>(to, from, count);
    else if (count >= 4)
        copyTwoRuns<4>(to, from, count);
    else if (count >= 2)
        copyTwoRuns<2>(to, from, count);
    else if (count == 1)
        *to = *from;
}

} // namespace orvabase

#endif
