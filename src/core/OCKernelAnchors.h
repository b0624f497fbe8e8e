#ifndef ORVABASE_OCKERNELANCHORS_H
#define ORVABASE_OCKERNELANCHORS_H

#include "core/OCKernelFold.h"

namespace orvabase::kernels {

/// The two places in a pattern whose characters a search looks for before it compares the rest.
struct Anchors {
    unsigned long first;
    unsigned long second;
};

/// How common the ASCII characters are in prose, markup and program texts: 0 for the rare ones
/// to 3.
struct CommonnessTable {
    static constexpr int usual = 2;

    constexpr CommonnessTable() noexcept : values() {
        for (signed char& value : values)
            value = usual;
        set("\t'():;?!#$%&*+@[]^`{|}~\\", 0);
        set("ABCDEFGHIJKLMNOPQRSTUVWXYZjkqvxz", 1);
        set(" aeinorst", 3);
        values[0] = 3;
    }

    template<class Character>
    constexpr int operator[](Character c) const noexcept {
        return c >= 0 && c <= 127 ? values[static_cast<unsigned char>(c)] : usual;
    }

private:
    constexpr void set(const char* characters, signed char commonness) noexcept {
        for (; *characters != 0; ++characters)
            values[static_cast<unsigned char>(*characters)] = commonness;
    }

    signed char values[128];
};

constexpr CommonnessTable commonness;

/// What is quickly said: the first character, and the last that differs from it (so that a text of
/// one repeated character is passed over). The pattern has two characters at least.
template<class Character, bool folded>
inline Anchors quickAnchors(const Character* pattern, unsigned long count) noexcept {
    unsigned long second = count - 1;
    while (second > 0 && same<folded>(pattern[second], pattern[0]))
        --second;
    return {0, second > 0 ? second : count - 1};
}

/// The rarest character, and the rarest that differs from it. Where several are as rare, the first
/// is the front most and the second the hindmost. Worth its time for a long text.
template<class Character, bool folded>
inline Anchors rareAnchors(const Character* pattern, unsigned long count) noexcept {
    constexpr unsigned long enough = 64;
    const unsigned long looked = count < enough ? count : enough;
    const auto rank = [pattern](unsigned long i) {
        return commonness[folded ? lower(pattern[i]) : pattern[i]];
    };
    unsigned long first = 0;
    for (unsigned long i = 1; i < looked && rank(first) > 0; ++i)
        if (rank(i) < rank(first))
            first = i;
    unsigned long second = count;
    for (unsigned long i = looked; i > 0; --i)
        if (!same<folded>(pattern[i - 1], pattern[first]) &&
            (second == count || rank(i - 1) < rank(second)))
            second = i - 1;
    return second < count ? Anchors{first, second}
                          : quickAnchors<Character, folded>(pattern, count);
}

} // namespace orvabase::kernels

#endif
