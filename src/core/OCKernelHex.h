#ifndef ORVABASE_OCKERNELHEX_H
#define ORVABASE_OCKERNELHEX_H

#include <emmintrin.h>

// Hexadecimal digits of 16 bytes, from and to registers: for texts so short that a call, or a way
// through memory, would take longer than the work. Words hold bytes and digits in the order in
// which they lie in memory.

namespace orvabase::kernels {

constexpr unsigned long hexWordCount = 4;

/// The lower-case digits for values from 0 to 15.
inline __m128i hexDigitsOfValues(__m128i values) noexcept {
    const __m128i letters =
        _mm_and_si128(_mm_cmpgt_epi8(values, _mm_set1_epi8(9)), _mm_set1_epi8('a' - '9' - 1));
    return _mm_add_epi8(_mm_add_epi8(values, _mm_set1_epi8('0')), letters);
}

/// Stores the values of hexadecimal digits of either case. False when a character is none.
inline bool hexValuesOfDigits(__m128i digits, __m128i& values) noexcept {
    const auto within = [](__m128i characters, char first, char last) {
        return _mm_and_si128(
            _mm_cmpgt_epi8(characters, _mm_set1_epi8(static_cast<char>(first - 1))),
            _mm_cmpgt_epi8(_mm_set1_epi8(static_cast<char>(last + 1)), characters));
    };
    const __m128i decimals = within(digits, '0', '9');
    const __m128i letters = within(_mm_or_si128(digits, _mm_set1_epi8(0x20)), 'a', 'f');
    values = _mm_add_epi8(_mm_and_si128(digits, _mm_set1_epi8(0x0F)),
                          _mm_and_si128(letters, _mm_set1_epi8(9)));
    return _mm_movemask_epi8(_mm_or_si128(decimals, letters)) == 0xFFFF;
}

/// The 32 lower-case digits of 16 bytes.
inline void hexDigitsOf(unsigned long front, unsigned long back,
                        unsigned long (&digits)[hexWordCount]) noexcept {
    const __m128i bytes =
        _mm_set_epi64x(static_cast<long long>(back), static_cast<long long>(front));
    const __m128i lowHalves = _mm_set1_epi8(0x0F);
    const __m128i high = _mm_and_si128(_mm_srli_epi16(bytes, 4), lowHalves);
    const __m128i low = _mm_and_si128(bytes, lowHalves);
    const __m128i first = hexDigitsOfValues(_mm_unpacklo_epi8(high, low));
    const __m128i second = hexDigitsOfValues(_mm_unpackhi_epi8(high, low));
    const auto lowWord = [](__m128i v) { return static_cast<unsigned long>(_mm_cvtsi128_si64(v)); };
    digits[0] = lowWord(first);
    digits[1] = lowWord(_mm_unpackhi_epi64(first, first));
    digits[2] = lowWord(second);
    digits[3] = lowWord(_mm_unpackhi_epi64(second, second));
}

/// The 16 bytes that 32 digits of either case stand for. False, with the bytes undefined, when a
/// character is no hexadecimal digit.
inline bool hexBytesOf(const unsigned long (&digits)[hexWordCount], unsigned long& front,
                       unsigned long& back) noexcept {
    const auto load = [](unsigned long low, unsigned long high) {
        return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
    };
    __m128i first;
    __m128i second;
    if (!hexValuesOfDigits(load(digits[0], digits[1]), first) ||
        !hexValuesOfDigits(load(digits[2], digits[3]), second))
        return false;
    const auto join = [](__m128i values) {
        return _mm_and_si128(_mm_or_si128(_mm_slli_epi16(values, 4), _mm_srli_epi16(values, 8)),
                             _mm_set1_epi16(0x00FF));
    };
    const __m128i bytes = _mm_packus_epi16(join(first), join(second));
    front = static_cast<unsigned long>(_mm_cvtsi128_si64(bytes));
    back = static_cast<unsigned long>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(bytes, bytes)));
    return true;
}

} // namespace orvabase::kernels

#endif
