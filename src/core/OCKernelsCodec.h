#ifndef ORVABASE_OCKERNELSCODEC_H
#define ORVABASE_OCKERNELSCODEC_H

// Kernels of the coders: Base64 and hexadecimal digits. Nothing is read or written outside the runs
// that are given, and what is written never overlaps what is read.

namespace orvabase::kernels {

/// Encodes `groups` times 3 bytes to 4 characters each.
void encodeBase64(char* to, const char* from, unsigned long groups) noexcept;
/// Encodes `lines` times 48 bytes to 64 characters, CR and LF.
void encodeBase64Lines(char* to, const char* from, unsigned long lines) noexcept;
/// Where decoding has come to: how many characters were read and how many bytes written.
struct Decoded {
    unsigned long read;
    unsigned long written;
};
/// Decodes groups of 4 characters to 3 bytes each and passes over control characters (whose signed
/// value is below 32) between them. Stops before the first group that is not made of 4 characters
/// of the alphabet in a row, or for which there is no room. Of the room only what is written
/// changes.
Decoded decodeBase64(char* to, unsigned long room, const char* from, unsigned long count) noexcept;
/// Writes two lower-case hexadecimal digits for each byte.
void encodeHex(char* to, const char* from, unsigned long count) noexcept;
/// The same with `separator` behind each two digits.
void encodeHexSeparated(char* to, const char* from, unsigned long count, char separator) noexcept;
/// The same for `lines` times `perLine` bytes, with the text `end` behind each of these.
void encodeHexLines(char* to, const char* from, unsigned long lines, unsigned long perLine,
                    char separator, const char* end, unsigned long endCount) noexcept;

/// One way to do all of that.
struct CodecForm {
    const char* name;
    decltype(&kernels::encodeBase64) encodeBase64;
    decltype(&kernels::encodeBase64Lines) encodeBase64Lines;
    decltype(&kernels::decodeBase64) decodeBase64;
    decltype(&kernels::encodeHex) encodeHex;
    decltype(&kernels::encodeHexSeparated) encodeHexSeparated;
    decltype(&kernels::encodeHexLines) encodeHexLines;
};

/// By tables, for every machine. (SSE2 has no instruction that looks bytes up.)
extern const CodecForm plainCodecForm;
/// Only for a machine that has AVX2.
extern const CodecForm avx2CodecForm;

/// The form that the kernels use: the fastest that this machine can.
const CodecForm& codecFormInUse() noexcept;

} // namespace orvabase::kernels

#endif
