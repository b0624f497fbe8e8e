#include "core/OCKernelsCodec.h"

#include <immintrin.h>

#define KERNEL_TARGET __attribute__((target("avx2")))
#define KERNEL_INLINE KERNEL_TARGET inline __attribute__((always_inline))

namespace orvabase::kernels {
namespace {

KERNEL_INLINE __m128i loadHalf(const char* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

KERNEL_INLINE void storeHalf(char* p, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

KERNEL_INLINE void storeQuarter(char* p, __m128i v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v);
}

// Base64

/// Encodes 12 bytes in each half, that `places` brings into the order of the groups.
KERNEL_INLINE __m256i base64Characters(__m128i low, __m128i high, __m256i places) {
    const __m256i in = _mm256_shuffle_epi8(_mm256_set_m128i(high, low), places);
    // The four values of 6 bits of a group are moved to the low ends of its four bytes, two of them
    // to the right by the high half of a product, two to the left by the low half.
    const __m256i right = _mm256_mulhi_epu16(_mm256_and_si256(in, _mm256_set1_epi32(0x0FC0FC00)),
                                             _mm256_set1_epi32(0x04000040));
    const __m256i left = _mm256_mullo_epi16(_mm256_and_si256(in, _mm256_set1_epi32(0x003F03F0)),
                                            _mm256_set1_epi32(0x01000010));
    const __m256i values = _mm256_or_si256(right, left);
    // The distance from a value to its character depends on the run of the alphabet: 0 stands for
    // the capitals, 1 for the small letters, 2 to 11 for the digits, 12 for "+", 13 for "/".
    const __m256i runs = _mm256_sub_epi8(_mm256_subs_epu8(values, _mm256_set1_epi8(51)),
                                         _mm256_cmpgt_epi8(values, _mm256_set1_epi8(25)));
    const __m256i distances = _mm256_broadcastsi128_si256(_mm_setr_epi8(
        'A', 'a' - 26, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, '+' - 62, '/' - 63, 0, 0));
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(distances, runs));
}

/// For bytes that begin at the low end of a half.
KERNEL_INLINE __m256i placesFromLow() {
    return _mm256_broadcastsi128_si256(
        _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
}

/// For bytes that end at the high end.
KERNEL_INLINE __m256i placesToHigh() {
    return _mm256_add_epi8(placesFromLow(), _mm256_set1_epi8(4));
}

KERNEL_INLINE void store(char* p, __m256i v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
}

KERNEL_TARGET void avx2EncodeBase64(char* to, const char* from, unsigned long groups) noexcept {
    const __m256i places = placesFromLow();
    // Eight groups are 24 bytes, of which 28 are loaded.
    for (; groups >= 10; groups -= 8) {
        store(to, base64Characters(loadHalf(from), loadHalf(from + 12), places));
        from += 24;
        to += 32;
    }
    plainCodecForm.encodeBase64(to, from, groups);
}

KERNEL_TARGET void avx2EncodeBase64Lines(char* to, const char* from, unsigned long lines) noexcept {
    const __m256i front = placesFromLow();
    const __m256i back = placesToHigh();
    for (; lines > 0; --lines) {
        store(to, base64Characters(loadHalf(from), loadHalf(from + 12), front));
        store(to + 32, base64Characters(loadHalf(from + 20), loadHalf(from + 32), back));
        to[64] = '\r';
        to[65] = '\n';
        from += 48;
        to += 66;
    }
}

/// Decodes 32 characters to 24 bytes. A bit of the result tells that its character is foreign;
/// nothing is written then.
KERNEL_INLINE unsigned int decodeBytes(char* to, const char* from) {
    // A character is foreign when the sets that belong to its two digits have a bit in common: each
    // bit of the low digit's set stands for high digits with which it is none of the alphabet.
    const __m256i lowSets =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                                  0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A));
    const __m256i highSets =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08,
                                                  0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10));
    // From a character to its value, by its high digit; "/" stands one before those of "+".
    const __m256i distances = _mm256_broadcastsi128_si256(_mm_setr_epi8(
        0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0));
    const __m256i places = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
    // Only the low four bits of an index, and the highest, count: 0x2F keeps that one clear.
    const __m256i slash = _mm256_set1_epi8('/');
    const __m256i in = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(in, 4), slash);
    const __m256i low = _mm256_and_si256(in, slash);
    const __m256i known = _mm256_cmpeq_epi8(
        _mm256_and_si256(_mm256_shuffle_epi8(lowSets, low), _mm256_shuffle_epi8(highSets, high)),
        _mm256_setzero_si256());
    const __m256i rows = _mm256_add_epi8(high, _mm256_cmpeq_epi8(in, slash));
    const __m256i values = _mm256_add_epi8(in, _mm256_shuffle_epi8(distances, rows));
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i quads = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i packed = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(quads, places),
                                                       _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
    const unsigned int foreign = ~static_cast<unsigned int>(_mm256_movemask_epi8(known));
    if (foreign == 0) {
        storeHalf(to, _mm256_castsi256_si128(packed));
        storeQuarter(to + 16, _mm256_extracti128_si256(packed, 1));
    }
    return foreign;
}

KERNEL_TARGET Decoded avx2DecodeBase64(char* to, unsigned long room, const char* from,
                                       unsigned long count) noexcept {
    unsigned long read = 0;
    unsigned long written = 0;
    while (count - read >= 32 && room - written >= 24) {
        // The lines that the encoder makes. Their ends are looked for where they should be, because
        // finding them makes every step wait for the one before.
        while (count - read >= 66 && room - written >= 48 && from[read + 64] == '\r' &&
               from[read + 65] == '\n') {
            if (decodeBytes(to + written, from + read) != 0 ||
                decodeBytes(to + written + 24, from + read + 32) != 0)
                break;
            read += 66;
            written += 48;
        }
        if (count - read < 32 || room - written < 24)
            break;
        const unsigned int foreign = decodeBytes(to + written, from + read);
        if (foreign == 0) {
            read += 32;
            written += 24;
            continue;
        }
        const unsigned long place = static_cast<unsigned long>(__builtin_ctz(foreign));
        plainCodecForm.decodeBase64(to + written, room - written, from + read, place / 4 * 4);
        read += place / 4 * 4;
        written += place / 4 * 3;
        if (place % 4 != 0 || static_cast<signed char>(from[read]) >= 32)
            return {read, written};
        do
            ++read;
        while (read < count && static_cast<signed char>(from[read]) < 32);
    }
    const Decoded rest =
        plainCodecForm.decodeBase64(to + written, room - written, from + read, count - read);
    return {read + rest.read, written + rest.written};
}

// Hexadecimal digits

/// The digits of 8 bytes.
KERNEL_INLINE __m128i hexDigits(const char* from) {
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
    const __m128i digit = _mm_set1_epi8(15);
    const __m128i high = _mm_and_si128(_mm_srli_epi16(bytes, 4), digit);
    const __m128i low = _mm_and_si128(bytes, digit);
    const __m128i texts = _mm_setr_epi8('0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b',
                                        'c', 'd', 'e', 'f');
    return _mm_shuffle_epi8(texts, _mm_unpacklo_epi8(high, low));
}

KERNEL_TARGET void avx2EncodeHex(char* to, const char* from, unsigned long count) noexcept {
    for (; count >= 8; count -= 8) {
        storeHalf(to, hexDigits(from));
        from += 8;
        to += 16;
    }
    plainCodecForm.encodeHex(to, from, count);
}

/// Writes bytes with a separator behind each.
class SeparatedHex {
public:
    KERNEL_INLINE explicit SeparatedHex(char separatorCharacter)
        : separator(separatorCharacter),
          front(_mm_setr_epi8(0, 1, -1, 2, 3, -1, 4, 5, -1, 6, 7, -1, 8, 9, -1, 10)),
          back(_mm_setr_epi8(11, -1, 12, 13, -1, 14, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1)) {
        // Where a separator goes, the place is below 0.
        const __m128i separators = _mm_set1_epi8(separator);
        frontSeparators = _mm_and_si128(separators, _mm_cmpgt_epi8(_mm_setzero_si128(), front));
        backSeparators = _mm_and_si128(separators, _mm_cmpgt_epi8(_mm_setzero_si128(), back));
    }

    KERNEL_INLINE void write(char* to, const char* from, unsigned long count) const {
        for (; count >= 8; count -= 8) {
            const __m128i digits = hexDigits(from);
            storeHalf(to, _mm_or_si128(_mm_shuffle_epi8(digits, front), frontSeparators));
            storeQuarter(to + 16, _mm_or_si128(_mm_shuffle_epi8(digits, back), backSeparators));
            from += 8;
            to += 24;
        }
        if (count > 0)
            plainCodecForm.encodeHexSeparated(to, from, count, separator);
    }

private:
    char separator;
    __m128i front;
    __m128i back;
    __m128i frontSeparators;
    __m128i backSeparators;
};

KERNEL_TARGET void avx2EncodeHexSeparated(char* to, const char* from, unsigned long count,
                                          char separator) noexcept {
    SeparatedHex(separator).write(to, from, count);
}

KERNEL_TARGET void avx2EncodeHexLines(char* to, const char* from, unsigned long lines,
                                      unsigned long perLine, char separator, const char* end,
                                      unsigned long endCount) noexcept {
    const SeparatedHex hex(separator);
    for (; lines > 0; --lines) {
        hex.write(to, from, perLine);
        from += perLine;
        to += 3 * perLine;
        // Most are two characters, too few for a call.
        for (unsigned long i = 0; i < endCount; ++i)
            *to++ = end[i];
    }
}

} // namespace

const CodecForm avx2CodecForm = {
    "AVX2",        avx2EncodeBase64,       avx2EncodeBase64Lines, avx2DecodeBase64,
    avx2EncodeHex, avx2EncodeHexSeparated, avx2EncodeHexLines,
};

} // namespace orvabase::kernels
