#include "markup/XmlCursor.h"

#include "OCMemory.h"
#include "core/OCKernels.h"

#include <cstring>
#include <cwchar>

namespace orvabase {

namespace {

/// The storage of a private reader: small enough for the first-level cache, and large against a
/// batch, so that moving what is left of it to the front costs little.
constexpr unsigned long storageLength = 4095;

/// A string grows to exactly what it holds. While a long token is collected its string grows by
/// the token's length at a time until this, and by the longest step from then on. What it has too
/// much in the end is given back, and is never more than a step.
constexpr unsigned long longToken = 32UL * 1024;
constexpr unsigned long longestStep = 128UL * 1024;

/// Texts up to this length are searched for by their first character; longer ones by a search that
/// stays linear when they repeat themselves.
constexpr unsigned long shortText = 8;

/// Strings below this length are always held inside the object.
constexpr unsigned long shortToken = 64;

/// Copies a short run in blocks of four characters, the last of which overlaps the one before. Most
/// names and values are so short that calling a general copy takes longer than copying.
void copyShort(wchar_t* to, const wchar_t* from, unsigned long count) noexcept {
    constexpr unsigned long block = 4;
    if (count < block) {
        for (unsigned long i = 0; i < count; ++i)
            to[i] = from[i];
        return;
    }
    const unsigned long last = count - block;
    for (unsigned long i = 0; i < last; i += block)
        std::memcpy(to + i, from + i, block * sizeof(wchar_t));
    std::memcpy(to + last, from + last, block * sizeof(wchar_t));
}

} // namespace

XmlCursor::XmlCursor(OCXmlParserReader& input, Access inputAccess)
    : reader(input), access(inputAccess), at(nullptr), end(nullptr), storageEnd(nullptr),
      mark(nullptr), sink(nullptr), sinkLength(0) {
    if (access == Private)
        reader.buffer.setLength(storageLength);
    load();
    if (access == Private) {
        storageEnd = end;
        end = at;
    }
}

XmlCursor::~XmlCursor() noexcept {
    if (sink) {
        // An exception passes: what was consumed is at least where the caller wanted it.
        try {
            endToken();
        } catch (...) {
        }
    }
    leave();
}

void XmlCursor::load() noexcept {
    at = reader.buffer.getString();
    end = at + reader.buffer.getLength();
    if (sink)
        mark = at;
}

void XmlCursor::commit() noexcept {
    if (!at)
        return;
    const auto consumed = static_cast<unsigned long>(at - reader.buffer.getString());
    if (consumed > 0)
        reader.buffer.remove(0, consumed);
    at = nullptr;
}

bool XmlCursor::grow(unsigned long count) {
    if (access == Shared)
        return growShared(count);
    if (static_cast<unsigned long>(storageEnd - end) < batch)
        makeRoom();
    fill();
    return available() >= count;
}

bool XmlCursor::growShared(unsigned long count) {
    if (sink)
        stash();
    commit();
    load();
    const bool grown = reader.growBuffer(count);
    load();
    return grown;
}

/// Moves what is still wanted to the front of the storage.
void XmlCursor::makeRoom() {
    wchar_t* const storage = reader.buffer.getString();
    if (sink && static_cast<unsigned long>(end - mark) > storageLength / 2)
        stash();
    wchar_t* const kept = sink ? mark : at;
    std::wmemmove(storage, kept, static_cast<unsigned long>(end - kept));
    end -= kept - storage;
    at -= kept - storage;
    mark = storage;
}

/// Reads one batch of bytes behind the end, as the source does; private readers have no wide
/// characters. What it throws leaves the cursor as it is.
void XmlCursor::fill() {
    wchar_t* to = end;
    unsigned long remaining = batch;
    while (remaining > 0) {
        char bytes[batch];
        unsigned long count = remaining;
        if (!reader.source.stream.read(bytes, count) || count == 0)
            break;
        if (count > remaining)
            count = remaining;
        kernels::widen(to, bytes, count);
        to += count;
        remaining -= count;
    }
    end = to;
}

/// Puts the collected characters into the sink, so that their place can be reused.
void XmlCursor::stash() {
    const auto count = static_cast<unsigned long>(at - mark);
    const unsigned long total = sinkLength + count;
    if (sink->getLength() < total)
        enlargeSink(total);
    std::wmemcpy(sink->getString() + sinkLength, mark, count);
    sinkLength = total;
    mark = at;
}

void XmlCursor::enlargeSink(unsigned long length) {
    if (length > ordinaryLength && length <= spare.getLength()) {
        std::wmemcpy(spare.getString(), sink->getString(), sinkLength);
        *sink = static_cast<OCWideString&&>(spare);
    } else
        sink->setLength(length + (length < longToken ? length : longestStep));
}

/// Keeps `text` as the spare string, unless that is larger; the other one is given up.
void XmlCursor::keepSpare(OCWideString& text) noexcept {
    if (text.getLength() > spare.getLength()) {
        OCWideString smaller(static_cast<OCWideString&&>(spare));
        spare = static_cast<OCWideString&&>(text);
        text = static_cast<OCWideString&&>(smaller);
    }
    // The heap of the C library keeps blocks of the size that it has seen freed once, and grows
    // them by copying from then on. So a large block is made small before it is freed.
    if (text.getLength() > ordinaryLength)
        text.setLength(ordinaryLength);
    text.clear();
}

void XmlCursor::endToken() {
    const auto count = static_cast<unsigned long>(at - mark);
    if (sinkLength == 0)
        sink->assign(mark, count);
    else {
        sink->setLength(sinkLength + count);
        std::wmemcpy(sink->getString() + sinkLength, mark, count);
    }
    sink = nullptr;
}

/// Consumes `count` available characters and makes them the content of `text`.
void XmlCursor::take(unsigned long count, OCWideString& text) {
    if (count < shortToken)
        copyShort(text.setLength(count).getString(), at, count);
    else
        text.assign(at, count);
    at += count;
}

bool XmlCursor::skipWhiteSpace() {
    if (!need(1) || *at > 32)
        return false;
    ++at;
    if (at != end && *at > 32)
        return true; // a single space, which is what mostly stands before an attribute
    do
        at += kernels::skipWideWhiteSpace(at, available());
    while (at == end && need(1) && *at <= 32);
    return true;
}

bool XmlCursor::skipName() {
    bool any = false;
    while (need(1)) {
        const unsigned long count = kernels::skipWideName(at, available());
        at += count;
        any = any || count > 0;
        if (at != end)
            break;
    }
    return any;
}

bool XmlCursor::takeName(OCWideString& name) {
    const unsigned long count = kernels::skipWideName(at, available());
    if (count < available()) {
        if (count == 0)
            return false;
        take(count, name);
        return true;
    }
    // It may go on in the next batch.
    beginToken(name);
    const bool any = skipName();
    if (any)
        endToken();
    sink = nullptr;
    return any;
}

bool XmlCursor::takeUntil(wchar_t c, OCWideString& text) {
    const unsigned long count = kernels::findWide(at, available(), c);
    if (count != kernels::notFound) {
        take(count, text);
        return true;
    }
    beginToken(text);
    at = end;
    const bool found = find(c);
    endToken();
    return found;
}

bool XmlCursor::takeAvailableAttribute(OCWideString& name, OCWideString& value) {
    const unsigned long count = available();
    const unsigned long nameCount = kernels::skipWideName(at, count);
    if (nameCount == 0 || nameCount + 2 >= count || at[nameCount] != L'=')
        return false;
    const wchar_t quote = at[nameCount + 1];
    if (quote != L'"' && quote != L'\'')
        return false;
    const wchar_t* const start = at + nameCount + 2;
    const unsigned long valueCount = kernels::findWide(start, count - nameCount - 2, quote);
    if (valueCount == kernels::notFound)
        return false;
    take(nameCount, name);
    at += 2;
    take(valueCount, value);
    ++at;
    return true;
}

bool XmlCursor::find(wchar_t c) {
    while (need(1)) {
        const unsigned long place = kernels::findWide(at, available(), c);
        if (place != kernels::notFound) {
            at += place;
            return true;
        }
        at = end;
    }
    return false;
}

bool XmlCursor::find(const wchar_t* text, unsigned long count) {
    if (count == 0)
        return false;
    while (find(*text)) {
        if (count > shortText && available() >= count) {
            const unsigned long place = kernels::findWideText(at, available(), text, count);
            if (place != kernels::notFound) {
                at += place;
                return true;
            }
            at = end - (count - 1);
        } else if (!need(count))
            ++at;
        else if (count <= shortText) {
            if (std::wmemcmp(at, text, count) == 0)
                return true;
            ++at;
        }
    }
    return false;
}

bool XmlCursor::acceptAvailableName(const wchar_t* name, unsigned long count) {
    if (count == 0 || available() <= count || std::wmemcmp(at, name, count) != 0 ||
        kernels::skipWideName(at + count, 1) != 0)
        return false;
    at += count;
    return true;
}

} // namespace orvabase
