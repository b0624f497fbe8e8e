#include "core/OCKernelsText.h"

#include "core/OCKernelSse2.h"
#include "core/OCKernels.h"

#include <cstring>

namespace orvabase::kernels {
namespace {

using sse2::Register;
using L = sse2::Lanes<char>;

constexpr unsigned long step = L::count;

unsigned long lowestBit(unsigned long bits) noexcept {
    return static_cast<unsigned long>(__builtin_ctzl(bits));
}

unsigned long wordAt(const char* text) noexcept {
    unsigned long word = 0;
    std::memcpy(&word, text, sizeof word);
    return word;
}

/// The occurrences that a search has come across, and what it cost.
class Occurrences {
public:
    Occurrences(const char* searched, unsigned long searchedCount, const char* wanted,
                unsigned long wantedCount, unsigned long start, unsigned long* results,
                unsigned long resultRoom) noexcept
        : text(searched), count(searchedCount), pattern(wanted), patternCount(wantedCount),
          next(start), places(results), room(resultRoom) {
        std::memcpy(&head, pattern, patternCount < sizeof head ? patternCount : sizeof head);
        if (patternCount < sizeof head)
            headMask = ~0UL >> (sizeof head - patternCount) * 8;
    }

    unsigned long found() const noexcept { return size; }
    bool isFull() const noexcept { return size == room; }
    /// Whether comparing has cost too much for the distance made.
    bool isSlow(unsigned long distance) const noexcept { return spent > 8 * distance + 4096; }

    /// Compares at a place where the pattern may be.
    void tryPlace(unsigned long place) noexcept {
        if (place < next)
            return;
        if (matches(place))
            take(place);
        else
            spent += patternCount;
    }

    /// Goes through what is left from `place` on, by searches that no text can make slow.
    void searchRest(unsigned long place) noexcept {
        next = place < next ? next : place;
        while (!isFull()) {
            const unsigned long distance =
                findText(text + next, count - next, pattern, patternCount);
            if (distance == notFound)
                return;
            take(next + distance);
        }
    }

private:
    bool matches(unsigned long place) const noexcept {
        if (count - place < sizeof head)
            return std::memcmp(text + place, pattern, patternCount) == 0;
        if (((wordAt(text + place) ^ head) & headMask) != 0)
            return false;
        return patternCount <= sizeof head ||
               std::memcmp(text + place + sizeof head, pattern + sizeof head,
                           patternCount - sizeof head) == 0;
    }

    void take(unsigned long place) noexcept {
        places[size++] = place;
        next = place + patternCount;
    }

    const char* text;
    unsigned long count;
    const char* pattern;
    unsigned long patternCount;
    unsigned long head = 0; // the pattern's first characters
    unsigned long headMask = ~0UL;
    unsigned long next; // where the next occurrence may begin
    unsigned long* places;
    unsigned long room;
    unsigned long size = 0;
    unsigned long spent = 0; // characters compared in vain
};

/// The last character of a pattern that differs from its first; the very last if none does.
unsigned long secondAnchor(const char* pattern, unsigned long count) noexcept {
    for (unsigned long i = count - 1; i > 0; --i) {
        if (pattern[i] != pattern[0])
            return i;
    }
    return count - 1;
}

// URL form

constexpr bool isKept(unsigned int byte) noexcept {
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z') || byte == '-' || byte == '_';
}

/// The same for all lanes, and the space.
Register keptLanes(Register v) noexcept {
    const Register letters = L::greater(
        L::add(sse2::either(v, L::splat(caseBit)), L::splat(127 - 'z')), L::splat(127 - 26));
    const Register digits = L::greater(L::add(v, L::splat(127 - '9')), L::splat(127 - 10));
    const Register dashes = sse2::either(L::equal(v, L::splat('-')), L::equal(v, L::splat('_')));
    return sse2::either(sse2::either(letters, digits),
                        sse2::either(dashes, L::equal(v, L::splat(' '))));
}

/// What each byte becomes.
struct EscapeTable {
    constexpr EscapeTable() noexcept : texts(), widths() {
        const char* const digits = "0123456789abcdef";
        for (unsigned int byte = 0; byte < 256; ++byte) {
            const bool escaped = !isKept(byte) && byte != ' ';
            texts[byte][0] = escaped ? '%' : byte == ' ' ? '+' : static_cast<char>(byte);
            texts[byte][1] = digits[byte / 16];
            texts[byte][2] = digits[byte % 16];
            widths[byte] = escaped ? 3 : 1;
        }
    }

    char texts[256][4];
    unsigned char widths[256];
};

constexpr EscapeTable escapeTable;

/// The values of the hexadecimal digits. Any other character has one that leaves the value of two
/// digits below 0.
struct DigitTable {
    constexpr DigitTable() noexcept : values() {
        for (int& value : values)
            value = -256;
        for (int i = 0; i < 10; ++i)
            values['0' + i] = i;
        for (int i = 0; i < 6; ++i)
            values['a' + i] = values['A' + i] = 10 + i;
    }

    int values[256];
};

constexpr DigitTable digitTable;

/// The byte that two digits spell, or a value below 0.
int byteAt(const char* digits) noexcept {
    return digitTable.values[static_cast<unsigned char>(digits[0])] * 16 +
           digitTable.values[static_cast<unsigned char>(digits[1])];
}

/// Copies text without `%`. Writes, and reads, up to a register more than that.
void copyWithSpaces(char* to, const char* from, unsigned long count) noexcept {
    const Register plus = L::splat('+');
    for (unsigned long i = 0; i < count; i += step) {
        const Register v = sse2::load(from + i);
        const Register pluses = L::equal(v, plus);
        sse2::store(to + i, _mm_xor_si128(v, sse2::both(pluses, L::splat('+' ^ ' '))));
    }
}

} // namespace

unsigned long findTexts(const char* text, unsigned long count, const char* pattern,
                        unsigned long patternCount, unsigned long start, unsigned long* places,
                        unsigned long room) noexcept {
    Occurrences occurrences(text, count, pattern, patternCount, start, places, room);
    const unsigned long second = secondAnchor(pattern, patternCount);
    const Register firstWanted = L::splat(pattern[0]);
    const Register secondWanted = L::splat(pattern[second]);
    const auto marks = [&](const char* p) {
        return static_cast<unsigned long>(L::bits(sse2::both(
            L::equal(sse2::load(p), firstWanted), L::equal(sse2::load(p + second), secondWanted))));
    };
    unsigned long at = start;
    for (; count - at >= patternCount + 2 * step; at += 2 * step) {
        const char* const p = text + at;
        unsigned long marked = marks(p) | marks(p + step) << step;
        for (; marked != 0; marked &= marked - 1) {
            occurrences.tryPlace(at + lowestBit(marked));
            if (occurrences.isFull())
                return room;
        }
        if (occurrences.isSlow(at - start))
            break;
    }
    occurrences.searchRest(at);
    return occurrences.found();
}

unsigned long countEscaped(const char* text, unsigned long count) noexcept {
    unsigned long kept = 0;
    unsigned long i = 0;
    while (count - i >= step) {
        // A lane can count to 255.
        unsigned long end = count - i < 255 * step ? count : i + 255 * step;
        Register sums = _mm_setzero_si128();
        for (; end - i >= step; i += step)
            sums = _mm_sub_epi8(sums, keptLanes(sse2::load(text + i)));
        const Register halves = _mm_sad_epu8(sums, _mm_setzero_si128());
        kept += static_cast<unsigned long>(_mm_cvtsi128_si64(halves)) +
                static_cast<unsigned long>(_mm_extract_epi16(halves, 4));
    }
    for (; i < count; ++i) {
        if (escapeTable.widths[static_cast<unsigned char>(text[i])] == 1)
            ++kept;
    }
    return count - kept;
}

void escape(char* to, const char* from, unsigned long count) noexcept {
    const char* const end = from + count;
    // Four bytes are written for each. For the last few, that could be too many.
    for (; end - from >= 4; ++from) {
        const auto byte = static_cast<unsigned char>(*from);
        std::memcpy(to, escapeTable.texts[byte], 4);
        to += escapeTable.widths[byte];
    }
    for (; from != end; ++from) {
        const auto byte = static_cast<unsigned char>(*from);
        std::memcpy(to, escapeTable.texts[byte], escapeTable.widths[byte]);
        to += escapeTable.widths[byte];
    }
}

unsigned long unescape(char* to, const char* from, unsigned long count) noexcept {
    constexpr long block = 4 * step;
    const char* in = from;
    const char* const end = from + count;
    char* out = to;
    // Marking every `%` of a block first keeps the steps from waiting for one another: where one
    // is does not depend on what became of those before.
    const Register percent = L::splat('%');
    while (end - in >= block + static_cast<long>(step)) {
        unsigned long marked = 0;
        for (unsigned long i = 4; i > 0; --i)
            marked = marked << step | L::bits(L::equal(sse2::load(in + (i - 1) * step), percent));
        const char* const base = in;
        for (; marked != 0; marked &= marked - 1) {
            const char* const place = base + lowestBit(marked);
            const auto run = static_cast<unsigned long>(place - in);
            copyWithSpaces(out, in, run);
            out += run;
            const int byte = byteAt(place + 1);
            *out++ = static_cast<char>(byte >= 0 ? byte : '%');
            in = place + (byte >= 0 ? 3 : 1);
        }
        if (in < base + block) {
            const auto run = static_cast<unsigned long>(base + block - in);
            copyWithSpaces(out, in, run);
            out += run;
            in += run;
        }
    }
    while (in != end) {
        const char c = *in++;
        *out++ = c == '+' ? ' ' : c;
        if (c == '%' && end - in >= 2) {
            const int byte = byteAt(in);
            if (byte >= 0) {
                out[-1] = static_cast<char>(byte);
                in += 2;
            }
        }
    }
    return static_cast<unsigned long>(out - to);
}

unsigned long markQuery(const char* text, unsigned long count) noexcept {
    char padded[4 * step];
    if (count < sizeof padded) {
        std::memset(padded, 0, sizeof padded);
        std::memcpy(padded, text, count);
        text = padded;
    }
    unsigned long marks = 0;
    for (unsigned long i = sizeof padded; i > 0; i -= step) {
        const Register v = sse2::load(text + i - step);
        const Register ends = sse2::either(L::equal(v, L::splat('&')), L::equal(v, L::splat('=')));
        const Register codes = sse2::either(L::equal(v, L::splat('%')), L::equal(v, L::splat('+')));
        marks = marks << step | L::bits(sse2::either(ends, codes));
    }
    return marks;
}

} // namespace orvabase::kernels
