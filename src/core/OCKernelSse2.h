#ifndef ORVABASE_OCKERNELSSE2_H
#define ORVABASE_OCKERNELSSE2_H

#include "core/OCKernelFold.h"

#include <cstring>
#include <emmintrin.h>

#define KERNEL_TARGET
#define KERNEL_INLINE inline __attribute__((always_inline))

namespace orvabase::kernels::sse2 {

using Register = __m128i;

KERNEL_INLINE Register load(const void* p) {
    return _mm_loadu_si128(static_cast<const Register*>(p));
}

KERNEL_INLINE void store(void* p, Register v) {
    _mm_storeu_si128(static_cast<Register*>(p), v);
}

/// Only as many bytes as a `Unit` has, at the low end of the register; the others are zero.
template<class Unit>
KERNEL_INLINE Register loadLow(const void* p) {
    Unit value;
    std::memcpy(&value, p, sizeof value);
    if constexpr (sizeof(Unit) == 8)
        return _mm_cvtsi64_si128(value);
    else
        return _mm_cvtsi32_si128(value);
}

template<class Unit>
KERNEL_INLINE void storeLow(void* p, Register v) {
    const auto value = static_cast<Unit>(_mm_cvtsi128_si64(v));
    std::memcpy(p, &value, sizeof value);
}

KERNEL_INLINE Register both(Register a, Register b) {
    return _mm_and_si128(a, b);
}

KERNEL_INLINE Register either(Register a, Register b) {
    return _mm_or_si128(a, b);
}

KERNEL_INLINE Register without(Register a, Register b) {
    return _mm_andnot_si128(a, b);
}

template<class Character>
struct Lanes;

template<>
struct Lanes<char> {
    static constexpr unsigned long count = 16;
    static constexpr int greatest = __SCHAR_MAX__;

    KERNEL_INLINE static Register splat(char c) { return _mm_set1_epi8(c); }
    KERNEL_INLINE static Register add(Register a, Register b) { return _mm_add_epi8(a, b); }
    KERNEL_INLINE static Register equal(Register a, Register b) { return _mm_cmpeq_epi8(a, b); }
    KERNEL_INLINE static Register greater(Register a, Register b) { return _mm_cmpgt_epi8(a, b); }
    KERNEL_INLINE static unsigned int bits(Register v) {
        return static_cast<unsigned int>(_mm_movemask_epi8(v));
    }
};

template<>
struct Lanes<wchar_t> {
    static constexpr unsigned long count = 4;
    static constexpr int greatest = __INT_MAX__;

    KERNEL_INLINE static Register splat(wchar_t c) { return _mm_set1_epi32(c); }
    KERNEL_INLINE static Register add(Register a, Register b) { return _mm_add_epi32(a, b); }
    KERNEL_INLINE static Register equal(Register a, Register b) { return _mm_cmpeq_epi32(a, b); }
    KERNEL_INLINE static Register greater(Register a, Register b) { return _mm_cmpgt_epi32(a, b); }
    KERNEL_INLINE static unsigned int bits(Register v) {
        return static_cast<unsigned int>(_mm_movemask_ps(_mm_castsi128_ps(v)));
    }
};

KERNEL_INLINE Register packSigned(Register a, Register b, Register c, Register d) {
    return _mm_packs_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d));
}

KERNEL_INLINE Register packLow(Register a, Register b, Register c, Register d) {
    const Register low = _mm_set1_epi32(0xFF);
    const Register front = _mm_packs_epi32(both(a, low), both(b, low));
    const Register back = _mm_packs_epi32(both(c, low), both(d, low));
    return _mm_packus_epi16(front, back);
}

KERNEL_INLINE void widenTo(wchar_t* to, const char* from) {
    const Register bytes = loadLow<int>(from);
    const Register pairs = _mm_unpacklo_epi8(bytes, bytes);
    store(to, _mm_srai_epi32(_mm_unpacklo_epi16(pairs, pairs), 24));
}

#include "core/OCKernelLanes.h"

} // namespace orvabase::kernels::sse2

#undef KERNEL_INLINE
#undef KERNEL_TARGET

#endif
