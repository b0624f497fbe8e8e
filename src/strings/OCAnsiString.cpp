#include "OCAnsiString.h"

#include "OCMemory.h"
#include "OCStringConversion.h"
#include "OCWideString.h"
#include "core/OCKernels.h"
#include "core/OCKernelsText.h"

#include <cstring>
#include <ostream>

namespace kernels = orvabase::kernels;

namespace {

constexpr unsigned long step = 64;
constexpr unsigned long inlineCapacity = 128;
/// The heap gives a new block up to this size sooner than it makes a larger one smaller.
constexpr unsigned long quickBlock = 1024;
constexpr unsigned long notFound = kernels::notFound;
constexpr unsigned long longest = ~0UL - step;

/// The bytes that a text of `length` characters is stored in: the smallest multiple of the step
/// that leaves room for the terminator.
constexpr unsigned long wholeSteps(unsigned long length) {
    return length - length % step + step;
}

unsigned long capacityFor(unsigned long length) {
    if (length > longest)
        throw OXMemory_AllocationError();
    return wholeSteps(length);
}

unsigned long sum(unsigned long a, unsigned long b) {
    if (a > longest || b > longest - a)
        throw OXMemory_AllocationError();
    return a + b;
}

bool isBlank(char c) {
    return static_cast<unsigned char>(c) <= 32;
}

/// Copies the text of an inline string: whole buffers, which takes less time than to tell apart the
/// bytes that count.
void copyInline(char* to, const char* from, unsigned long length) {
    if (length < step)
        std::memcpy(to, from, step);
    else
        std::memcpy(to, from, inlineCapacity);
}

using Block __attribute__((vector_size(16))) = unsigned long;

/// A text of up to 15 characters, and zeros behind it.
Block shortText(const char* text, unsigned long count) {
    unsigned long front = 0;
    unsigned long back = 0;
    if (count >= 8) {
        std::memcpy(&front, text, 8);
        std::memcpy(&back, text + count - 8, 8);
        back = back >> 8 >> (15 - count) * 8;
    } else if (count >= 4) {
        unsigned int head = 0;
        unsigned int tail = 0;
        std::memcpy(&head, text, 4);
        std::memcpy(&tail, text + count - 4, 4);
        front = head | static_cast<unsigned long>(tail) << (count - 4) * 8;
    } else {
        for (unsigned long i = 0; i < count; ++i)
            front |= static_cast<unsigned long>(static_cast<unsigned char>(text[i])) << i * 8;
    }
    return Block{front, back};
}

/// Stores a text of 16 to 127 characters and zeros behind it, in whole blocks.
void fillInline(char* to, const char* text, unsigned long count) {
    const unsigned long rest = count % sizeof(Block);
    const char* const end = text + count;
    if (count >= step) {
        std::memcpy(to, text, step);
        to += step;
        text += step;
    }
    for (; text != end - rest; to += sizeof(Block), text += sizeof(Block))
        std::memcpy(to, text, sizeof(Block));
    // The rest is the last characters of the last 16.
    unsigned long front = 0;
    unsigned long back = 0;
    std::memcpy(&front, end - 16, 8);
    std::memcpy(&back, end - 8, 8);
    Block last;
    if (rest < 8) {
        last = Block{back >> 8 >> (7 - rest) * 8, 0};
    } else {
        const unsigned long shift = (15 - rest) * 8;
        last = Block{front >> shift >> 8 | back << (56 - shift), back >> shift >> 8};
    }
    std::memcpy(to, &last, sizeof(Block));
}

/// Moves `sizeof(Unit)` to twice as many characters.
template<typename Unit>
void moveEnds(char* to, const char* from, unsigned long count) {
    Unit head;
    Unit tail;
    std::memcpy(&head, from, sizeof(Unit));
    std::memcpy(&tail, from + count - sizeof(Unit), sizeof(Unit));
    std::memcpy(to, &head, sizeof(Unit));
    std::memcpy(to + count - sizeof(Unit), &tail, sizeof(Unit));
}

/// `memmove`, without a call for short texts.
[[gnu::always_inline]] inline void moveText(char* to, const char* from, unsigned long count) {
    if (count > 32) {
        std::memmove(to, from, count);
    } else if (count >= 16) {
        moveEnds<Block>(to, from, count);
    } else if (count >= 8) {
        moveEnds<unsigned long>(to, from, count);
    } else if (count >= 4) {
        moveEnds<unsigned int>(to, from, count);
    } else if (count >= 2) {
        moveEnds<unsigned short>(to, from, count);
    } else if (count == 1) {
        *to = *from;
    }
}

/// What a path join puts between its two texts, neither of them empty, or takes from the second.
struct Joint {
    Joint() = default;
    Joint(const char* left, unsigned long leftCount, const char* right) {
        const bool ends = left[leftCount - 1] == '/';
        const bool starts = *right == '/';
        slash = !ends && !starts ? 1 : 0;
        skipped = ends && starts ? 1 : 0;
    }

    unsigned long slash = 0;
    unsigned long skipped = 0;
};

OECompareResult order(unsigned long a, unsigned long b) {
    return static_cast<OECompareResult>((a > b) - (a < b));
}

OECompareResult orderBytes(signed char a, signed char b) {
    return static_cast<OECompareResult>((a > b) - (a < b));
}

/// The occurrences of a pattern in a text, from the left and without overlaps. Remembers the places
/// of a number of them at a time.
class Occurrences {
public:
    Occurrences(const char* text, unsigned long textCount, const OCAnsiString& wanted,
                OEStringCase matching)
        : pattern(wanted), sense(matching) {
        search(text, textCount, 0);
        first = held > 0 ? places[0] : 0;
        total = held;
        while (held == room) {
            search(text, textCount, places[room - 1] + pattern.getLength());
            total += held;
        }
        next = total < room ? 0 : held; // only then are they all remembered
    }

    unsigned long getTotal() const { return total; }
    unsigned long getFirst() const { return first; }
    /// The first occurrence, and then the one after each. The text is that of the constructor,
    /// which may have moved, from `at` on.
    unsigned long getNext(const char* text, unsigned long textCount, unsigned long at) {
        if (next == held)
            search(text, textCount, at);
        return places[next++];
    }

private:
    void search(const char* text, unsigned long textCount, unsigned long start) {
        next = 0;
        held = 0;
        if (sense != StringCaseInsensitive) {
            held = kernels::findTexts(text, textCount, pattern.getString(), pattern.getLength(),
                                      start, places, room);
            return;
        }
        for (unsigned long at = start; held < room; at = places[held++] + pattern.getLength()) {
            const unsigned long distance = kernels::findTextFolded(
                text + at, textCount - at, pattern.getString(), pattern.getLength());
            if (distance == notFound)
                return;
            places[held] = at + distance;
        }
    }

    static constexpr unsigned long room = 1024;

    const OCAnsiString& pattern;
    const OEStringCase sense;
    unsigned long total;
    unsigned long first;
    unsigned long next = 0;
    unsigned long held = 0;
    unsigned long places[room];
};

} // namespace

void OCAbstractString::throwNoSuchIndex(unsigned long index) {
    throw OXString_NoSuchIndex(index);
}

// Storage

void OCAnsiString::initializeText(const char* text, unsigned long count) {
    if (count < sizeof(Block))
        return initialize(shortText(text, count), count);
    if (count >= inlineCapacity)
        return initializeOnHeap(text, count);
    data = localBuffer;
    granularity = step;
    capacity = count < step ? step : inlineCapacity;
    length = count;
    fillInline(localBuffer, text, count);
}

void OCAnsiString::initializeCopy(const OCAnsiString& other) {
    if (other.length >= inlineCapacity)
        return initializeOnHeap(other.data, other.length);
    data = localBuffer;
    granularity = step;
    capacity = other.capacity;
    length = other.length;
    copyInline(localBuffer, other.localBuffer, length);
}

void OCAnsiString::initializeOnHeap(const char* text, unsigned long count) {
    const unsigned long needed = capacityFor(count);
    char* block = nullptr;
    stringAllocate(block, needed);
    std::memcpy(block, text, count);
    block[count] = 0;
    data = block;
    granularity = step;
    capacity = needed;
    length = count;
}

void OCAnsiString::take(OCAnsiString& other) noexcept {
    data = localBuffer;
    granularity = step;
    capacity = other.capacity;
    length = other.length;
    if (other.data == other.localBuffer)
        copyInline(localBuffer, other.localBuffer, length);
    else
        data = other.data;
    other.initialize(Block{0, 0}, 0);
}

void OCAnsiString::releaseBlock() noexcept {
    stringRelease(data);
}

/// Moves the text into storage for `n` characters.
void OCAnsiString::changeCapacity(unsigned long n) {
    const unsigned long needed = capacityFor(n);
    if (needed <= capacity || needed <= inlineCapacity) {
        keepStorage(needed, n);
        return;
    }
    char* block = data; // stays ours if the reallocation fails
    if (data == localBuffer) {
        stringAllocate(block, needed);
        stringCopy(block, localBuffer, length);
    } else {
        stringReallocate(block, needed);
    }
    data = block;
    capacity = needed;
}

/// Changes the capacity, for `n` characters, to one for which the inline buffer or the present
/// storage is large enough.
void OCAnsiString::keepStorage(unsigned long needed, unsigned long n) noexcept {
    if (data != localBuffer) {
        if (needed > inlineCapacity) {
            char* block = data;
            try {
                stringReallocate(block, needed);
            } catch (const OXMemory_AllocationError&) {
                block = data; // the larger block serves as well
            }
            data = block;
        } else {
            stringCopy(localBuffer, data, n < length ? n : length);
            stringRelease(data);
            data = localBuffer;
        }
    }
    capacity = needed;
}

bool OCAnsiString::holds(const char* text, unsigned long count) const noexcept {
    const auto begin = reinterpret_cast<unsigned long>(data);
    const auto source = reinterpret_cast<unsigned long>(text);
    return source < begin + capacity && begin < source + count;
}

OCAnsiString& OCAnsiString::keep(unsigned long head, unsigned long skip,
                                 unsigned long tail) noexcept {
    const unsigned long n = head + tail;
    const unsigned long needed = wholeSteps(n);
    const char* const rest = data + head + skip;
    if (skip > 0 && tail > 0 && needed != capacity && needed > inlineCapacity &&
        needed <= quickBlock) {
        try {
            char* block = nullptr;
            stringAllocate(block, needed);
            stringCopy(block, data, head);
            stringCopy(block + head, rest, tail);
            stringRelease(data);
            data = block;
            capacity = needed;
            return endAt(n);
        } catch (const OXMemory_AllocationError&) {
            // The block that there is serves as well.
        }
    }
    if (skip > 0)
        stringCopy(data + head, rest, tail);
    if (needed != capacity)
        keepStorage(needed, n);
    return endAt(n);
}

// Construction and assignment

OCAnsiString::OCAnsiString(const OCWideString& text) : OCAnsiString() {
    assign(text);
}

OCAnsiString& OCAnsiString::assign(char c) {
    return assign(&c, 1);
}

OCAnsiString& OCAnsiString::assign(const char* text, unsigned long count) {
    const unsigned long needed = capacityFor(count);
    if (needed == capacity || (needed <= inlineCapacity && data == localBuffer)) {
        stringCopy(data, text, count);
    } else {
        char* block = localBuffer;
        if (needed > inlineCapacity)
            stringAllocate(block, needed);
        stringCopy(block, text, count); // it may lie in the old block
        release();
        data = block;
    }
    capacity = needed;
    return endAt(count);
}

OCAnsiString& OCAnsiString::assign(const char* text) {
    return assign(text, stringLength(text));
}

OCAnsiString& OCAnsiString::assign(const OCAnsiString& other) {
    return assign(other.data, other.length);
}

OCAnsiString& OCAnsiString::assign(const OCWideString& text) {
    const unsigned long count = text.getLength();
    setLength(count);
    kernels::narrow(data, text.getString(), count);
    return *this;
}

OCAnsiString& OCAnsiString::clear() noexcept {
    release();
    data = localBuffer;
    capacity = step;
    return endAt(0);
}

OCAnsiString& OCAnsiString::fill(char c) {
    memoryFill(data, length, c);
    return *this;
}

// Concatenation

// NOLINTNEXTLINE(misc-no-recursion): once, with a copy
OCAnsiString& OCAnsiString::extend(bool slash, const char* text, unsigned long count) {
    const unsigned long front = length;
    const unsigned long behind = sum(front, slash ? 1 : 0);
    const unsigned long n = sum(behind, count);
    if (n >= capacity && holds(text, count)) {
        const OCAnsiString copy(text, count); // the storage may move
        return extend(slash, copy.data, count);
    }
    if (n >= capacity)
        changeCapacity(n);
    stringCopy(data + behind, text, count);
    if (slash)
        data[front] = '/';
    return endAt(n);
}

OCAnsiString& OCAnsiString::appendSlowly(char c, OEStringConcat mode) {
    if (mode == StringConcatPath)
        return appendPath(&c, 1);
    const unsigned long last = length;
    changeCapacity(last + 1);
    data[last] = c;
    return endAt(last + 1);
}

OCAnsiString& OCAnsiString::appendPlain(const char* text, unsigned long count) {
    if (count >= capacity - length)
        return extend(false, text, count);
    moveText(data + length, text, count);
    return endAt(length + count);
}

OCAnsiString& OCAnsiString::appendPath(const char* text, unsigned long count) {
    if (length == 0 || count == 0)
        return appendPlain(text, count);
    const Joint joint(data, length, text);
    return joint.slash ? extend(true, text, count)
                       : appendPlain(text + joint.skipped, count - joint.skipped);
}

OCAnsiString OCAnsiString::join(const char* left, unsigned long leftCount, const char* right,
                                unsigned long rightCount, OEStringConcat mode) {
    Joint joint;
    if (mode == StringConcatPath && leftCount > 0 && rightCount > 0)
        joint = Joint(left, leftCount, right);
    const unsigned long front = sum(leftCount, joint.slash);
    const unsigned long behind = rightCount - joint.skipped;
    const unsigned long n = sum(front, behind);
    OCAnsiString result;
    if (n >= step)
        result.changeCapacity(n);
    moveText(result.data, left, leftCount);
    if (joint.slash > 0)
        result.data[leftCount] = '/';
    moveText(result.data + front, right + joint.skipped, behind);
    result.endAt(n);
    return result;
}

OCAnsiString operator+(const char* left, const OCAnsiString& right) {
    return OCAnsiString(left) + right;
}

OCAnsiString operator/(const char* left, const OCAnsiString& right) {
    return OCAnsiString(left) / right;
}

// Parts

OCAnsiString& OCAnsiString::insertText(unsigned long position, const OCAnsiString& text) {
    const unsigned long count = text.length;
    const unsigned long tail = length - position;
    const unsigned long n = sum(length, count);
    if (n >= capacity)
        changeCapacity(n);
    // The string itself is still whole at the front then: its tail moves behind its end.
    stringCopy(data + position + count, data + position, tail);
    stringCopy(data + position, text.data, count);
    return endAt(n);
}

OCAnsiString& OCAnsiString::insert(unsigned long position, const OCAnsiString& text) {
    if (position >= length)
        throwNoSuchIndex(position);
    return insertText(position, text);
}

OCAnsiString& OCAnsiString::insert(const OCAnsiString& text) {
    return insertText(0, text);
}

OCAnsiString& OCAnsiString::left(unsigned long n) noexcept {
    return keep(n < length ? n : length, 0, 0);
}

OCAnsiString& OCAnsiString::right(unsigned long n) {
    if (n == 0)
        return clear();
    if (length == 0)
        throwNoSuchIndex(0);
    const unsigned long kept = n < length ? n : length;
    return keep(0, length - kept, kept);
}

OCAnsiString& OCAnsiString::mid(unsigned long position, unsigned long n) {
    if (position >= length)
        throwNoSuchIndex(position);
    const unsigned long rest = length - position;
    return keep(0, position, n < rest ? n : rest);
}

OCAnsiString& OCAnsiString::remove(unsigned long position, unsigned long n) {
    if (position >= length)
        throwNoSuchIndex(position);
    const unsigned long rest = length - position;
    const unsigned long removed = n < rest ? n : rest;
    return keep(position, removed, rest - removed);
}

OCAnsiString& OCAnsiString::trimLeft() noexcept {
    unsigned long blanks = 0;
    while (blanks < length && isBlank(data[blanks]))
        ++blanks;
    return keep(0, blanks, length - blanks);
}

OCAnsiString& OCAnsiString::trimRight() noexcept {
    unsigned long end = length;
    while (end > 0 && isBlank(data[end - 1]))
        --end;
    return keep(end, 0, 0);
}

OCAnsiString& OCAnsiString::trim() noexcept {
    unsigned long end = length;
    while (end > 0 && isBlank(data[end - 1]))
        --end;
    unsigned long blanks = 0;
    while (blanks < end && isBlank(data[blanks]))
        ++blanks;
    return keep(0, blanks, end - blanks);
}

OCAnsiString& OCAnsiString::padLeft(char c, unsigned long width) {
    const unsigned long old = length;
    if (old < width) {
        setLength(width);
        stringCopy(data + (width - old), data, old);
        memoryFill(data, width - old, c);
    }
    return *this;
}

OCAnsiString& OCAnsiString::padRight(char c, unsigned long width) {
    const unsigned long old = length;
    if (old < width) {
        setLength(width);
        memoryFill(data + old, width - old, c);
    }
    return *this;
}

OCAnsiString& OCAnsiString::lowerCase() {
    kernels::foldLower(data, data, length);
    return *this;
}

OCAnsiString& OCAnsiString::upperCase() {
    kernels::foldUpper(data, data, length);
    return *this;
}

// Comparison and search

OECompareResult OCAnsiString::compareFurther(const OCAnsiString& other) const noexcept {
    const unsigned long common = length < other.length ? length : other.length;
    if (common > step)
        return compareLong(other);
    unsigned long i = 0;
    for (; common - i >= 8; i += 8) {
        const unsigned long left = orderedWord(data + i);
        const unsigned long right = orderedWord(other.data + i);
        if (left != right)
            return left < right ? CompareResultLess : CompareResultGreater;
    }
    if (i < common) {
        const unsigned long behind = (8 - (common - i)) * 8;
        const unsigned long left = orderedWord(data + i) >> behind;
        const unsigned long right = orderedWord(other.data + i) >> behind;
        if (left != right)
            return left < right ? CompareResultLess : CompareResultGreater;
    }
    return order(length, other.length);
}

OECompareResult OCAnsiString::compareLong(const OCAnsiString& other) const noexcept {
    const unsigned long common = length < other.length ? length : other.length;
    const unsigned long i = kernels::mismatch(data, other.data, common);
    return i < common ? orderBytes(data[i], other.data[i]) : order(length, other.length);
}

OECompareResult OCAnsiString::compareFolded(const OCAnsiString& other) const noexcept {
    const unsigned long common = length < other.length ? length : other.length;
    // The storage of a string is a multiple of 64 bytes.
    if (const int first = kernels::orderFolded(data, other.data, common))
        return static_cast<OECompareResult>(first);
    return order(length, other.length);
}

bool operator==(const char* left, const OCAnsiString& right) {
    return right == OCAnsiString(left);
}

bool operator!=(const char* left, const OCAnsiString& right) {
    return right != OCAnsiString(left);
}

bool operator<(const char* left, const OCAnsiString& right) {
    return right > OCAnsiString(left);
}

bool operator<=(const char* left, const OCAnsiString& right) {
    return right >= OCAnsiString(left);
}

bool operator>(const char* left, const OCAnsiString& right) {
    return right < OCAnsiString(left);
}

bool operator>=(const char* left, const OCAnsiString& right) {
    return right <= OCAnsiString(left);
}

bool OCAnsiString::indexOf(char c, unsigned long& position, OEStringCase sense) const {
    const unsigned long index = sense == StringCaseInsensitive
                                    ? kernels::findByteFolded(data, length, c)
                                    : kernels::findByte(data, length, c);
    if (index == notFound)
        return false;
    position = index;
    return true;
}

bool OCAnsiString::indexOf(const OCAnsiString& text, unsigned long& position,
                           OEStringCase sense) const {
    if (text.length == 0 || text.length > length)
        return false;
    const unsigned long index = sense == StringCaseInsensitive
                                    ? kernels::findTextFolded(data, length, text.data, text.length)
                                    : kernels::findText(data, length, text.data, text.length);
    if (index == notFound)
        return false;
    position = index;
    return true;
}

bool OCAnsiString::contains(char c, OEStringCase sense) const {
    unsigned long position = 0;
    return indexOf(c, position, sense);
}

bool OCAnsiString::contains(const OCAnsiString& text, OEStringCase sense) const {
    unsigned long position = 0;
    return indexOf(text, position, sense);
}

// NOLINTNEXTLINE(misc-no-recursion): once, with a copy
OCAnsiString& OCAnsiString::replace(const OCAnsiString& from, const OCAnsiString& to,
                                    OEStringCase sense) {
    if (from.length == 0 || from.length > length)
        return *this;
    if (this == &from)
        return assign(to);
    Occurrences found(data, length, from, sense);
    const unsigned long total = found.getTotal();
    if (total == 0)
        return *this;
    const unsigned long kept = length - total * from.length;
    if (to.length > (longest - kept) / total)
        throw OXMemory_AllocationError();
    const unsigned long n = kept + total * to.length;
    if (this == &to && n > length)
        return replace(from, OCAnsiString(to), sense);

    // The text is put together in place; a longer one from the old one moved to the end of the
    // room.
    const unsigned long needed = capacityFor(n);
    const unsigned long first = found.getFirst();
    const char* source = data;
    if (n >= length) {
        if (needed != capacity)
            changeCapacity(n);
        source = data + (n - length);
        std::memmove(data + (n - length) + first, data + first, length - first);
    }
    char* out = data + first;
    unsigned long at = first;
    for (unsigned long i = 0; i < total; ++i) {
        const unsigned long hit = found.getNext(source, length, at);
        moveText(out, source + at, hit - at);
        out += hit - at;
        moveText(out, to.data, to.length);
        out += to.length;
        at = hit + from.length;
    }
    std::memmove(out, source + at, length - at);
    if (needed != capacity)
        changeCapacity(n);
    return endAt(n);
}

// URL form

OCAnsiString& OCAnsiString::escape() {
    const unsigned long escaped = kernels::countEscaped(data, length);
    if (escaped == 0 && !contains(' '))
        return *this;
    OCAnsiString result;
    result.setLength(length + 2 * escaped);
    kernels::escape(result.data, data, length);
    return *this = static_cast<OCAnsiString&&>(result);
}

OCAnsiString& OCAnsiString::unescape() {
    if (kernels::findEither(data, length, '%', '+') == notFound)
        return *this;
    OCAnsiString result;
    result.setLength(length);
    result.setLength(kernels::unescape(result.data, data, length));
    return *this = static_cast<OCAnsiString&&>(result);
}

// Streams

std::ostream& operator<<(std::ostream& stream, const OCAnsiString& text) {
    if (text.getLength() > 0)
        stream.write(text.getString(), static_cast<std::streamsize>(text.getLength()));
    return stream;
}

std::ostream& operator<<(std::ostream& stream, const OCWideString& text) {
    return stream << OCAnsiString(text);
}

// Exceptions

OXString::OXString() = default;
OXString::~OXString() noexcept = default;

OXString_NoSuchIndex::OXString_NoSuchIndex(unsigned long index) {
    setClass("OXString_NoSuchIndex");
    setMessage("String index out of bounds");
    getDetails().addString(OCStringConversion::fromSize(index, 10));
}

OXString_NoSuchIndex::~OXString_NoSuchIndex() noexcept = default;
