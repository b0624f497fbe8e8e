#ifndef ORVABASE_OCKERNELSHORT_H
#define ORVABASE_OCKERNELSHORT_H

#include "core/OCKernelAnchors.h"
#include "core/OCKernelSse2.h"
#include "core/OCKernels.h"

// Left to itself, the compiler keeps some of these apart, and a call costs more than they do.
#define KERNEL_INLINE inline __attribute__((always_inline))

/// The kernels for runs of less than `limit` bytes (of the narrower side where there are two
/// widths), which is what most strings are. Such a run is covered by two overlapping loads of the
/// greatest power of two that fits, so that there is no loop and nothing is read beyond it.
namespace orvabase::kernels::brief {

constexpr unsigned long limit = 32;

template<class Character>
constexpr bool isBrief(unsigned long count) noexcept {
    return count < limit / sizeof(Character);
}

/// A run of 16 to 31 bytes, one register of it at a time.
struct Whole {
    KERNEL_INLINE static sse2::Register load(const char* p) noexcept { return sse2::load(p); }
};

/// A run of `sizeof(Unit)` to `2 * sizeof(Unit) - 1` bytes: both loads side by side in one
/// register.
template<class Unit>
struct Pair {
    static constexpr unsigned long unit = sizeof(Unit);
    unsigned long size;

    KERNEL_INLINE sse2::Register load(const char* p) const noexcept {
        const sse2::Register front = sse2::loadLow<Unit>(p);
        const sse2::Register back = sse2::loadLow<Unit>(p + size - unit);
        if constexpr (unit == 8)
            return _mm_unpacklo_epi64(front, back);
        else if constexpr (unit == 4)
            return _mm_unpacklo_epi32(front, back);
        else if constexpr (unit == 2)
            return _mm_unpacklo_epi16(front, back);
        else
            return _mm_unpacklo_epi8(front, back);
    }

    KERNEL_INLINE void store(char* p, sse2::Register v) const noexcept {
        sse2::storeLow<Unit>(p, v);
        sse2::storeLow<Unit>(p + size - unit, _mm_srli_si128(v, unit));
    }

    /// From one bit for each byte of the register to one for each byte of the run.
    KERNEL_INLINE unsigned int spread(unsigned int bits) const noexcept {
        constexpr unsigned int low = (1U << unit) - 1;
        return (bits & low) | (bits >> unit & low) << (size - unit);
    }
};

/// One bit for each of `size` bytes, where `look(run, offset)` gives all ones in the lanes that
/// are to be marked.
template<class Look>
KERNEL_INLINE unsigned int marks(unsigned long size, const Look& look) noexcept {
    const auto bits = [](sse2::Register v) {
        return static_cast<unsigned int>(_mm_movemask_epi8(v));
    };
    if (size >= 16) {
        const unsigned long last = size - 16;
        return bits(look(Whole{}, 0UL)) | bits(look(Whole{}, last)) << last;
    }
    const auto lookAtPair = [&](auto run) __attribute__((always_inline)) {
        return run.spread(bits(look(run, 0UL)));
    };
    if (size >= 8)
        return lookAtPair(Pair<long>{size});
    if (size >= 4)
        return lookAtPair(Pair<int>{size});
    if (size >= 2)
        return lookAtPair(Pair<unsigned short>{size});
    return size == 1 ? lookAtPair(Pair<unsigned char>{size}) : 0;
}

template<class Character>
inline const char* bytesOf(const Character* p) noexcept {
    const void* bytes = p;
    return static_cast<const char*>(bytes);
}

template<class Character>
inline unsigned long indexOfLowest(unsigned int marked) noexcept {
    return static_cast<unsigned long>(__builtin_ctz(marked)) / sizeof(Character);
}

/// Clears the bits of the first character that is marked.
template<class Character>
inline unsigned int withoutLowest(unsigned int marked) noexcept {
    constexpr unsigned int one = (1U << sizeof(Character)) - 1;
    return marked & ~(one << __builtin_ctz(marked));
}

template<class Character, class Test>
inline unsigned long firstWhere(const Character* text, unsigned long count,
                                const Test& test) noexcept {
    const char* bytes = bytesOf(text);
    const unsigned int marked = marks(
        count * sizeof(Character), [&](auto run, unsigned long at) __attribute__((always_inline)) {
            return test(run.load(bytes + at));
        });
    return marked != 0 ? indexOfLowest<Character>(marked) : notFound;
}

template<class Character, bool folded>
KERNEL_INLINE unsigned long mismatch(const Character* a, const Character* b,
                                     unsigned long count) noexcept {
    const char* left = bytesOf(a);
    const char* right = bytesOf(b);
    const unsigned int matching = marks(
        count * sizeof(Character), [&](auto run, unsigned long at) __attribute__((always_inline)) {
            const sse2::Register v = run.load(left + at);
            const sse2::Register w = run.load(right + at);
            return folded ? sse2::Lanes<Character>::equal(sse2::lowerLanes<Character>(v),
                                                          sse2::lowerLanes<Character>(w))
                          : sse2::Lanes<Character>::equal(v, w);
        });
    // Behind the run there is no mark, so the first place without one is the mismatch or the end.
    return indexOfLowest<Character>(~matching);
}

/// The folded order of the first 16 bytes, all of which can be read but only `count` of which
/// count: below, at or above 0 as `a` is less, equal or greater. Bytes are signed.
KERNEL_INLINE int orderFolded(const char* a, const char* b, unsigned long count) noexcept {
    using Lanes = sse2::Lanes<char>;
    const sse2::Register v = sse2::lowerLanes<char>(sse2::load(a));
    const sse2::Register w = sse2::lowerLanes<char>(sse2::load(b));
    const unsigned int counted = count < 16 ? (1U << count) - 1 : 0xFFFF;
    const unsigned int different = ~Lanes::bits(Lanes::equal(v, w)) & counted;
    const unsigned int first = different & (0 - different);
    return (first & Lanes::bits(Lanes::greater(v, w))) != 0 ? 1 : -(first != 0);
}

template<class Character, bool toLower>
inline sse2::Register foldRegister(sse2::Register v) noexcept {
    return toLower ? sse2::lowerLanes<Character>(v) : sse2::upperLanes<Character>(v);
}

template<class Character, bool toLower>
inline void fold(Character* to, const Character* from, unsigned long count) noexcept {
    const char* source = bytesOf(from);
    void* target = to;
    char* bytes = static_cast<char*>(target);
    const unsigned long size = count * sizeof(Character);
    const auto foldPair = [&](auto run) __attribute__((always_inline)) {
        run.store(bytes, foldRegister<Character, toLower>(run.load(source)));
    };
    if (size >= 16) {
        const sse2::Register front = foldRegister<Character, toLower>(sse2::load(source));
        const sse2::Register back =
            foldRegister<Character, toLower>(sse2::load(source + size - 16));
        sse2::store(bytes, front);
        sse2::store(bytes + size - 16, back);
    } else if (size >= 8)
        foldPair(Pair<long>{size});
    else if (size >= 4)
        foldPair(Pair<int>{size});
    else if (size >= 2)
        foldPair(Pair<unsigned short>{size});
    else if (size == 1)
        foldPair(Pair<unsigned char>{size});
}

inline void widen(wchar_t* to, const char* from, unsigned long count) noexcept {
    if (count >= 4) {
        for (unsigned long i = 0; i + 4 < count; i += 4)
            sse2::widenTo(to + i, from + i);
        sse2::widenTo(to + count - 4, from + count - 4);
    } else {
        for (unsigned long i = 0; i < count; ++i)
            to[i] = static_cast<signed char>(from[i]);
    }
}

inline void narrowFour(char* to, const wchar_t* from) noexcept {
    const sse2::Register v = sse2::load(from);
    sse2::storeLow<int>(to, sse2::packLow(v, v, v, v));
}

inline void narrow(char* to, const wchar_t* from, unsigned long count) noexcept {
    if (count >= 4) {
        for (unsigned long i = 0; i + 4 < count; i += 4)
            narrowFour(to + i, from + i);
        narrowFour(to + count - 4, from + count - 4);
    } else {
        for (unsigned long i = 0; i < count; ++i)
            to[i] = static_cast<char>(from[i] & 0xFF);
    }
}

template<bool name>
constexpr bool endsSkip(wchar_t c) noexcept {
    if (!name)
        return c > 32;
    return c <= 32 || (c >= L'(' && c <= L'+') || c == L'/' || (c >= L'=' && c <= L'?') ||
           c == L'[';
}

template<bool name>
constexpr bool endsSkip(char c) noexcept {
    if (!name)
        return static_cast<unsigned char>(c) > 32;
    const int lowered = c | 0x20;
    return (lowered < 'a' || lowered > 'z') && (c < '0' || c > ':') && c != '!' && c != '-' &&
           c != '_';
}

template<bool name>
inline unsigned long skip(const char* text, unsigned long count) noexcept {
    unsigned long i = 0;
    while (i < count && !endsSkip<name>(text[i]))
        ++i;
    return i;
}

template<bool name>
inline unsigned long skip(const wchar_t* text, unsigned long count) noexcept {
    unsigned long i = 0;
    if (count >= 16) {
        if (const unsigned int ends = sse2::skipBits<name>(text))
            return indexOfLowest<char>(ends);
        i = count - 16;
        const unsigned int ends = sse2::skipBits<name>(text + i);
        return ends != 0 ? i + indexOfLowest<char>(ends) : count;
    }
    for (; i + 4 <= count; i += 4) {
        const sse2::Register v = sse2::load(text + i);
        const sse2::Register packed = sse2::packSigned(v, v, v, v);
        if (const unsigned int ends =
                name ? sse2::nameEndBits(packed) : sse2::notWhiteSpaceBits(packed))
            return i + indexOfLowest<char>(ends);
    }
    while (i < count && !endsSkip<name>(text[i]))
        ++i;
    return i;
}

/// The places of the text, `isBrief` in number, that hold both anchors of the pattern: one bit for
/// each byte.
template<class Character, bool folded>
inline unsigned int candidates(const Character* text, unsigned long places,
                               const Character* pattern, Anchors anchors) noexcept {
    const sse2::EqualTest<Character, folded> first(pattern[anchors.first]);
    const sse2::EqualTest<Character, folded> second(pattern[anchors.second]);
    const char* firsts = bytesOf(text + anchors.first);
    const char* seconds = bytesOf(text + anchors.second);
    return marks(
        places * sizeof(Character), [&](auto run, unsigned long at) __attribute__((always_inline)) {
            return sse2::both(first(run.load(firsts + at)), second(run.load(seconds + at)));
        });
}

} // namespace orvabase::kernels::brief

#undef KERNEL_INLINE

#endif
