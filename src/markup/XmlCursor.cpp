#include "markup/XmlCursor.h"

#include "OCMemory.h"
#include "core/OCKernels.h"

#include <cwchar>

namespace orvabase {

namespace {

/// The storage of a private reader: small enough for the first-level cache, and large against a
/// batch, so that moving what is left of it to the front costs little.
constexpr unsigned long storageLength = 4095;

/// How much of a token is put aside before the token's own string grows. A string grows in small
/// steps; in steps of this size even the largest text takes few.
constexpr unsigned long pendingMaximum = 128 * 1024 - 1;

/// Texts up to this length are searched for by their first character; longer ones by a search that
/// stays linear when they repeat themselves.
constexpr unsigned long shortText = 8;

/// The characters below 128 that end a name: white space and `( ) * + / = > ? [`.
struct NameEnds {
    bool ends[128];

    constexpr NameEnds() : ends() {
        for (int c = 0; c <= 32; ++c)
            ends[c] = true;
        for (const char c : "()*+/=>?[")
            ends[static_cast<int>(c)] = true;
    }
};
constexpr NameEnds nameEnds;

bool endsName(wchar_t c) {
    const auto value = static_cast<unsigned int>(c);
    return value < 128 ? nameEnds.ends[value] : c < 0;
}

} // namespace

XmlCursor::XmlCursor(OCXmlParserReader& input, Access inputAccess)
    : reader(input), access(inputAccess), at(nullptr), end(nullptr), storageEnd(nullptr),
      mark(nullptr), sink(nullptr), sinkLength(0), pendingLength(0) {
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

/// Reads one batch behind the end, as the source does. What it throws leaves the cursor as it is.
void XmlCursor::fill() {
    OCStream& stream = reader.source.stream;
    wchar_t* to = end;
    unsigned long remaining = batch;
    while (remaining > 0) {
        unsigned long count;
        if (reader.source.encoding == XmlEncodingAnsi) {
            char bytes[batch];
            count = remaining;
            if (!stream.read(bytes, count) || count == 0)
                break;
            if (count > remaining)
                count = remaining;
            kernels::widen(to, bytes, count);
        } else if (reader.source.encoding == XmlEncodingWide) {
            count = remaining * sizeof(wchar_t);
            if (!stream.read(to, count) || count == 0)
                break;
            if (count % sizeof(wchar_t) != 0)
                throw OXXmlParserSource_CharacterTruncated();
            count /= sizeof(wchar_t);
            if (count > remaining)
                count = remaining;
        } else
            break;
        to += count;
        remaining -= count;
    }
    end = to;
}

/// Puts the collected characters aside, so that their place can be reused.
void XmlCursor::stash() {
    const auto count = static_cast<unsigned long>(at - mark);
    if (count == 0)
        return;
    if (count > pendingMaximum - pendingLength)
        flush();
    if (count > pendingMaximum) {
        sink->setLength(sinkLength);
        sink->append(mark, count);
        sinkLength += count;
    } else {
        reservePending(pendingLength + count);
        std::wmemcpy(pending.getString() + pendingLength, mark, count);
        pendingLength += count;
    }
    mark = at;
}

void XmlCursor::flush() {
    sink->setLength(sinkLength);
    sink->append(pending.getString(), pendingLength);
    sinkLength += pendingLength;
    pendingLength = 0;
}

void XmlCursor::reservePending(unsigned long length) {
    unsigned long reserved = pending.getLength();
    if (length <= reserved)
        return;
    while (reserved < length)
        reserved = reserved * 2 + 1;
    pending.setLength(reserved < pendingMaximum ? reserved : pendingMaximum);
}

void XmlCursor::endToken() {
    const auto count = static_cast<unsigned long>(at - mark);
    if (sinkLength == 0 && pendingLength == 0)
        sink->assign(mark, count);
    else {
        sink->setLength(sinkLength + pendingLength + count);
        wchar_t* const to = sink->getString() + sinkLength;
        std::wmemcpy(to, pending.getString(), pendingLength);
        std::wmemcpy(to + pendingLength, mark, count);
    }
    sink = nullptr;
}

bool XmlCursor::skipWhiteSpace() {
    if (!need(1) || *at > 32)
        return false;
    do {
        do
            ++at;
        while (at != end && *at <= 32);
    } while (at == end && need(1) && *at <= 32);
    return true;
}

bool XmlCursor::skipName() {
    if (!need(1) || endsName(*at))
        return false;
    do {
        do
            ++at;
        while (at != end && !endsName(*at));
    } while (at == end && need(1) && !endsName(*at));
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
    if (count == 0 || available() <= count || !endsName(at[count]) || std::wmemcmp(at, name, count) != 0)
        return false;
    at += count;
    return true;
}

} // namespace orvabase
