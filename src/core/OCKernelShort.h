#ifndef ORVABASE_OCKERNELSHORT_H
#define ORVABASE_OCKERNELSHORT_H

#include "core/OCKernelAnchors.h"
#include "core/OCKernelSse2.h"
#include "core/OCKernels.h"

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
    static sse2::Register load(const char* p) noexcept { return sse2::load(p); }
};

/// A run of `unit` to `2 * unit - 1` bytes: both loads side by side in one register.
template<unsigned long unit>
struct Pair {
    unsigned long size;

    sse2::Register load(const char* p) const noexcept {
        const char* end = p + size - unit;
        if constexpr (unit == 8) {
            return _mm_unpacklo_epi64(sse2::loadHalf(p), sse2::loadHalf(end));
        } else if constexpr (unit == 4) {
            return _mm_unpacklo_epi32(sse2::loadQuarter(p), sse2::loadQuarter(end));
        } else {
            const auto byte = [](char c) {
                return static_cast<int>(static_cast<unsigned char>(c));
            };
            return _mm_cvtsi32_si128(byte(*p) | byte(p[size / 2]) << 8 | byte(*end) << 16);
        }
    }

    void store(char* p, sse2::Register v) const noexcept {
        char* end = p + size - unit;
        if constexpr (unit == 8) {
            sse2::storeHalf(p, v);
            sse2::storeHalf(end, _mm_unpackhi_epi64(v, v));
        } else if constexpr (unit == 4) {
            sse2::storeQuarter(p, v);
            sse2::storeQuarter(end, _mm_srli_epi64(v, 32));
        } else {
            const int bytes = _mm_cvtsi128_si32(v);
            *p = static_cast<char>(bytes);
            p[size / 2] = static_cast<char>(bytes >> 8);
            *end = static_cast<char>(bytes >> 16);
        }
    }

    /// From one bit for each byte of the register to one for each byte of the run.
    unsigned int spread(unsigned int bits) const noexcept {
        if constexpr (unit == 1) {
            return (bits & 1) | (bits >> 1 & 1) << (size / 2) | (bits >> 2 & 1) << (size - 1);
        } else {
            constexpr unsigned int low = (1U << unit) - 1;
            return (bits & low) | (bits >> unit & low) << (size - unit);
        }
    }
};

/// One bit for each of `size` bytes, where `look(run, offset)` gives all ones in the lanes that
/// are to be marked.
template<class Look>
inline unsigned int marks(unsigned long size, const Look& look) noexcept {
    const auto bits = [](sse2::Register v) {
        return static_cast<unsigned int>(_mm_movemask_epi8(v));
    };
    if (size >= 16) {
        const unsigned long last = size - 16;
        return bits(look(Whole{}, 0UL)) | bits(look(Whole{}, last)) << last;
    }
    if (size >= 8) {
        const Pair<8> run{size};
        return run.spread(bits(look(run, 0UL)));
    }
    if (size >= 4) {
        const Pair<4> run{size};
        return run.spread(bits(look(run, 0UL)));
    }
    if (size > 0) {
        const Pair<1> run{size};
        return run.spread(bits(look(run, 0UL)));
    }
    return 0;
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
    const unsigned int marked = marks(count * sizeof(Character), [&](auto run, unsigned long at) {
        return test(run.load(bytes + at));
    });
    return marked != 0 ? indexOfLowest<Character>(marked) : notFound;
}

template<class Character, bool folded>
inline unsigned long mismatch(const Character* a, const Character* b,
                              unsigned long count) noexcept {
    const char* left = bytesOf(a);
    const char* right = bytesOf(b);
    const unsigned int same = marks(count * sizeof(Character), [&](auto run, unsigned long at) {
        const sse2::Register v = run.load(left + at);
        const sse2::Register w = run.load(right + at);
        return folded ? sse2::Lanes<Character>::equal(sse2::lowerLanes<Character>(v),
                                                      sse2::lowerLanes<Character>(w))
                      : sse2::Lanes<Character>::equal(v, w);
    });
    // Behind the run there is no mark, so the first place without one is the mismatch or the end.
    return indexOfLowest<Character>(~same);
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
    const auto foldPair = [&](auto run) {
        run.store(bytes, foldRegister<Character, toLower>(run.load(source)));
    };
    if (size >= 16) {
        const sse2::Register front = foldRegister<Character, toLower>(sse2::load(source));
        const sse2::Register back =
            foldRegister<Character, toLower>(sse2::load(source + size - 16));
        sse2::store(bytes, front);
        sse2::store(bytes + size - 16, back);
    } else if (size >= 8) {
        foldPair(Pair<8>{size});
    } else if (size >= 4) {
        foldPair(Pair<4>{size});
    } else if (size > 0) {
        foldPair(Pair<1>{size});
    }
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
    sse2::storeQuarter(to, sse2::packLow(v, v, v, v));
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
    return marks(places * sizeof(Character), [&](auto run, unsigned long at) {
        return sse2::both(first(run.load(firsts + at)), second(run.load(seconds + at)));
    });
}

} // namespace orvabase::kernels::brief

#endif
