#include "core/OCKernelForms.h"
#include "core/OCKernelShort.h"
#include "core/OCKernelTwoWay.h"

#include <immintrin.h>

#define KERNEL_TARGET __attribute__((target("avx2")))
#define KERNEL_INLINE KERNEL_TARGET inline __attribute__((always_inline))

namespace orvabase::kernels {
namespace avx2 {
namespace {

using Register = __m256i;

KERNEL_INLINE Register load(const void* p) {
    return _mm256_loadu_si256(static_cast<const Register*>(p));
}

KERNEL_INLINE void store(void* p, Register v) {
    _mm256_storeu_si256(static_cast<Register*>(p), v);
}

KERNEL_INLINE Register both(Register a, Register b) {
    return _mm256_and_si256(a, b);
}

KERNEL_INLINE Register either(Register a, Register b) {
    return _mm256_or_si256(a, b);
}

KERNEL_INLINE Register without(Register a, Register b) {
    return _mm256_andnot_si256(a, b);
}

template<class Character>
struct Lanes;

template<>
struct Lanes<char> {
    static constexpr unsigned long count = 32;
    static constexpr int greatest = __SCHAR_MAX__;

    KERNEL_INLINE static Register splat(char c) { return _mm256_set1_epi8(c); }
    KERNEL_INLINE static Register add(Register a, Register b) { return _mm256_add_epi8(a, b); }
    KERNEL_INLINE static Register equal(Register a, Register b) { return _mm256_cmpeq_epi8(a, b); }
    KERNEL_INLINE static Register greater(Register a, Register b) {
        return _mm256_cmpgt_epi8(a, b);
    }
    KERNEL_INLINE static unsigned int bits(Register v) {
        return static_cast<unsigned int>(_mm256_movemask_epi8(v));
    }
};

template<>
struct Lanes<wchar_t> {
    static constexpr unsigned long count = 8;
    static constexpr int greatest = __INT_MAX__;

    KERNEL_INLINE static Register splat(wchar_t c) { return _mm256_set1_epi32(c); }
    KERNEL_INLINE static Register add(Register a, Register b) { return _mm256_add_epi32(a, b); }
    KERNEL_INLINE static Register equal(Register a, Register b) { return _mm256_cmpeq_epi32(a, b); }
    KERNEL_INLINE static Register greater(Register a, Register b) {
        return _mm256_cmpgt_epi32(a, b);
    }
    KERNEL_INLINE static unsigned int bits(Register v) {
        return static_cast<unsigned int>(_mm256_movemask_ps(_mm256_castsi256_ps(v)));
    }
};

/// Packing works within the halves of its operands, so the groups of four come out as
/// 0 2 4 6 1 3 5 7.
KERNEL_INLINE Register inOrder(Register v) {
    return _mm256_permutevar8x32_epi32(v, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}

KERNEL_INLINE Register packSigned(Register a, Register b, Register c, Register d) {
    return inOrder(_mm256_packs_epi16(_mm256_packs_epi32(a, b), _mm256_packs_epi32(c, d)));
}

KERNEL_INLINE Register packLow(Register a, Register b, Register c, Register d) {
    const Register low = _mm256_set1_epi32(0xFF);
    const Register front = _mm256_packs_epi32(both(a, low), both(b, low));
    const Register back = _mm256_packs_epi32(both(c, low), both(d, low));
    return inOrder(_mm256_packus_epi16(front, back));
}

KERNEL_INLINE void widenTo(wchar_t* to, const char* from) {
    store(to, _mm256_cvtepi8_epi32(sse2::loadLow<long>(from)));
}

#include "core/OCKernelLanes.h"
#include "core/OCKernelVector.h"

} // namespace
} // namespace avx2

constexpr Form avx2Form = avx2::makeForm("AVX2");

} // namespace orvabase::kernels
