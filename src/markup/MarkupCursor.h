#ifndef ORVABASE_MARKUPCURSOR_H
#define ORVABASE_MARKUPCURSOR_H

#include "OCMemory.h"
#include "core/OCKernels.h"

#include <cstring>

namespace orvabase {

/// Copies a short run in blocks, the last of which overlaps the one before. Most names and values
/// are so short that calling a general copy takes longer than copying.
inline void copyShort(void* to, const void* from, unsigned long size) noexcept {
    constexpr unsigned long block = 16;
    auto* target = static_cast<char*>(to);
    const auto* source = static_cast<const char*>(from);
    const auto copyEnds = [&](auto head) {
        auto tail = head;
        std::memcpy(&head, source, sizeof head);
        std::memcpy(&tail, source + size - sizeof tail, sizeof tail);
        std::memcpy(target, &head, sizeof head);
        std::memcpy(target + size - sizeof tail, &tail, sizeof tail);
    };
    if (size >= block) {
        const unsigned long last = size - block;
        for (unsigned long i = 0; i < last; i += block)
            std::memcpy(target + i, source + i, block);
        std::memcpy(target + last, source + last, block);
    } else if (size >= 8)
        copyEnds(0UL);
    else if (size >= 4)
        copyEnds(0U);
    else
        for (unsigned long i = 0; i < size; ++i)
            target[i] = source[i];
}

/// The place of a running parse in its reader.
///
/// Removing every consumed token from the front of the reader's buffer costs several times what
/// recognising it does. A cursor moves within the buffer instead, and the buffer catches up when it
/// must grow or when somebody else could look. It grows exactly when the reader's own operations
/// would grow it, so the stream sees the same reads.
///
/// A shared reader is one that the caller passed in: `leave` brings it up to date, `enter` goes on
/// from wherever it is then, and the destructor brings it up to date too. A private reader is not
/// seen by anybody else: its buffer is merely storage, filled and reused without being resized.
///
/// `Input` says what the input is made of: its reader, its strings and characters, the kernels that
/// scan it, and how a reader grows.
template<typename Input>
class MarkupCursor {
public:
    using Reader = typename Input::Reader;
    using String = typename Input::String;
    using Character = typename Input::Character;

    enum Access { Shared, Private };

    /// The least number of characters that a source is asked for.
    static constexpr unsigned long batch = 128;
    /// A string that is longer than this is large.
    static constexpr unsigned long ordinaryLength = 4096;

    MarkupCursor(Reader& input, Access inputAccess);
    MarkupCursor(const MarkupCursor&) = delete;
    MarkupCursor& operator=(const MarkupCursor&) = delete;
    ~MarkupCursor() noexcept;

    /// Brings a shared reader up to date. The cursor must not be used before `enter`, unless to
    /// destroy it.
    void leave() noexcept {
        if (access == Shared)
            commit();
    }
    /// Goes on at a shared reader's current character.
    void enter() noexcept {
        if (access == Shared)
            load();
    }

    /// What the reader's `growBuffer` says. `count` is at most a batch when the reader is private.
    bool need(unsigned long count) { return available() >= count || grow(count); }

    bool preview(Character& c) {
        if (!need(1))
            return false;
        c = *at;
        return true;
    }
    bool peek(Character c) { return need(1) && *at == c; }
    /// Whether the input continues with a literal text.
    template<unsigned long size>
    bool peek(const Character (&text)[size]) {
        return need(size - 1) && begins(text);
    }
    /// Consumes characters that are known to be available.
    void advance(unsigned long count) { at += count; }
    /// Consumes a literal text if the input continues with it.
    template<unsigned long size>
    bool accept(const Character (&text)[size]) {
        if (!peek(text))
            return false;
        at += size - 1;
        return true;
    }
    bool accept(Character c) {
        if (!peek(c))
            return false;
        ++at;
        return true;
    }
    /// Consumes `count` characters, or all when there are fewer.
    void skip(unsigned long count) {
        if (need(count))
            at += count;
        else
            at = end;
    }

    /// Consume a run of white space or of name characters; false when there is none.
    bool skipWhiteSpace() {
        if (at != end && !Input::isWhiteSpace(*at))
            return false; // which is what mostly stands behind a name
        return skipSomeWhiteSpace();
    }
    bool skipName();
    /// Consume everything before a character or a text; false, with everything consumed, when the
    /// input ends first.
    bool find(Character c);
    bool find(const Character* text, unsigned long count);
    /// Finds a literal text and consumes it too.
    template<unsigned long size>
    bool findAndSkip(const Character (&text)[size]) {
        if (!find(text, size - 1))
            return false;
        at += size - 1;
        return true;
    }

    /// Consumes a run of name characters and makes it the content of `name`, which is untouched
    /// when there is none.
    bool takeName(String& name);
    /// Consumes everything before a character and makes it the content of `text`, also when the
    /// input ends first.
    bool takeUntil(Character c, String& text);
    /// Collects what is consumed from here on until `endToken`. `target` keeps its first `kept`
    /// characters and has no defined content before the token has ended.
    void beginToken(String& target, unsigned long kept = 0) {
        mark = at;
        sink = &target;
        sinkLength = kept;
    }
    void endToken();
    /// Takes a string's storage back when its content is no longer needed, if it is large. The next
    /// large token gets it, so that a parse holds one large text at a time and allocates it once.
    void giveBack(String& text) noexcept {
        if (text.getLength() > ordinaryLength)
            keepSpare(text);
    }

    /// The characters that are available, for scanning by hand; `advance` consumes them.
    const Character* begin() const { return at; }
    unsigned long available() const { return static_cast<unsigned long>(end - at); }

protected:
    /// Consumes `count` available characters and makes them the content of `text`.
    void take(unsigned long count, String& text) {
        constexpr unsigned long block = 16 / sizeof(Character);
        if (count <= block && available() >= block) {
            // What is copied too much is within the string's own storage.
            Character* const to = text.setLength(count).getString();
            std::memcpy(to, at, block * sizeof(Character));
            to[count] = 0;
        } else if (count < shortToken)
            copyShort(text.setLength(count).getString(), at, count * sizeof(Character));
        else
            text.assign(at, count);
        at += count;
    }
    Reader& getReader() { return reader; }

private:
    /// Keeps a cursor's place in the buffer while that grows, which may move it.
    class Place {
    public:
        explicit Place(MarkupCursor& owner) noexcept
            : cursor(owner), offset(cursor.offsetOf(cursor.at)), used(cursor.offsetOf(cursor.end)),
              marked(cursor.sink ? cursor.offsetOf(cursor.mark) : 0) {}
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;
        ~Place() noexcept {
            String& buffer = Input::bufferOf(cursor.reader);
            cursor.at = buffer.getString() + offset;
            cursor.storageEnd = buffer.getString() + buffer.getLength();
            cursor.end = Input::growsToCount ? buffer.getString() + used : cursor.storageEnd;
            if (cursor.sink)
                cursor.mark = buffer.getString() + marked;
        }

        unsigned long getUsed() const { return used; }

    private:
        MarkupCursor& cursor;
        const unsigned long offset;
        const unsigned long used;
        const unsigned long marked;
    };

    /// The storage of a private reader: small enough for the first-level cache, and large against a
    /// batch, so that moving what is left of it to the front costs little.
    static constexpr unsigned long storageLength = 4095;

    /// A string grows to exactly what it holds. While a long token is collected its string grows by
    /// the token's length at a time until this, and by the longest step from then on. What it has
    /// too much in the end is given back, and is never more than a step.
    static constexpr unsigned long longToken = 32UL * 1024;
    static constexpr unsigned long longestStep = 128UL * 1024;

    /// Texts up to this length are searched for by their first character; longer ones by a search
    /// that stays linear when they repeat themselves.
    static constexpr unsigned long shortText = 8;

    /// Strings below this length are always held inside the object.
    static constexpr unsigned long shortToken = 64;

    static void copy(Character* to, const Character* from, unsigned long count) noexcept {
        std::memcpy(to, from, count * sizeof(Character));
    }
    unsigned long offsetOf(const Character* place) const noexcept {
        return static_cast<unsigned long>(place - Input::bufferOf(reader).getString());
    }

    template<unsigned long size>
    bool begins(const Character (&text)[size]) const {
        return Input::equal(at, text, size - 1);
    }

    bool skipSomeWhiteSpace();
    bool findLong(const Character* text, unsigned long count);
    bool grow(unsigned long count);
    bool growShared(unsigned long count);
    void enlargeShared();
    void commit() noexcept;
    void load() noexcept;
    void makeRoom();
    void stash();
    void enlargeSink(unsigned long length);
    void keepSpare(String& text) noexcept;

    Reader& reader;
    const Access access;
    Character* at;
    Character* end;
    Character* storageEnd;

    // The token that is being collected: the first `sinkLength` characters of the sink, then those
    // from the mark on.
    Character* mark;
    String* sink;
    unsigned long sinkLength;
    String spare;
};

template<typename Input>
MarkupCursor<Input>::MarkupCursor(Reader& input, Access inputAccess)
    : reader(input), access(inputAccess), at(nullptr), end(nullptr), storageEnd(nullptr),
      mark(nullptr), sink(nullptr), sinkLength(0) {
    if (access == Private)
        Input::bufferOf(reader).setLength(storageLength);
    load();
    if (access == Private)
        end = at;
}

template<typename Input>
MarkupCursor<Input>::~MarkupCursor() noexcept {
    if (sink) {
        // An exception passes: what was consumed is at least where the caller wanted it, or, if
        // there is no memory for that, in the reader.
        try {
            endToken();
        } catch (const OXMemory_AllocationError&) {
            sink->setLength(sinkLength);
            at = mark;
        }
    }
    leave();
}

template<typename Input>
void MarkupCursor<Input>::load() noexcept {
    at = Input::bufferOf(reader).getString();
    end = storageEnd = at + Input::bufferOf(reader).getLength();
    if (sink)
        mark = at;
}

template<typename Input>
void MarkupCursor<Input>::commit() noexcept {
    if (!at)
        return;
    const unsigned long consumed = offsetOf(at);
    if (end != storageEnd) {
        Input::bufferOf(reader).setLength(offsetOf(end));
        at = Input::bufferOf(reader).getString() + consumed;
        end = storageEnd = at - consumed + Input::bufferOf(reader).getLength();
    }
    if (consumed > 0)
        Input::bufferOf(reader).remove(0, consumed);
    at = nullptr;
}

template<typename Input>
bool MarkupCursor<Input>::grow(unsigned long count) {
    if (access == Shared)
        return growShared(count);
    bool more = true;
    while (more && available() < count) {
        if (static_cast<unsigned long>(storageEnd - end) < batch)
            makeRoom();
        more = Input::read(reader, end);
    }
    return available() >= count;
}

template<typename Input>
bool MarkupCursor<Input>::growShared(unsigned long count) {
    if (!Input::growsToCount || offsetOf(at) > available()) {
        if (sink)
            stash();
        commit();
        load();
    }
    if constexpr (Input::growsToCount) {
        bool more = true;
        while (more && available() < count) {
            if (static_cast<unsigned long>(storageEnd - end) < batch)
                enlargeShared();
            more = Input::read(reader, end);
        }
        return available() >= count;
    } else {
        Place place(*this);
        return reader.growBuffer(count);
    }
}

/// Makes room for another batch in a shared reader's buffer, and the more the larger that is.
template<typename Input>
void MarkupCursor<Input>::enlargeShared() {
    Place place(*this);
    String& buffer = Input::bufferOf(reader);
    buffer.setLength(place.getUsed() + place.getUsed() / 4 + batch);
}

/// Moves what is still wanted to the front of the storage.
template<typename Input>
void MarkupCursor<Input>::makeRoom() {
    Character* const storage = Input::bufferOf(reader).getString();
    if (sink && static_cast<unsigned long>(end - mark) > storageLength / 2)
        stash();
    Character* const kept = sink ? mark : at;
    std::memmove(storage, kept, static_cast<unsigned long>(end - kept) * sizeof(Character));
    end -= kept - storage;
    at -= kept - storage;
    mark = storage;
}

/// Puts the collected characters into the sink, so that their place can be reused.
template<typename Input>
void MarkupCursor<Input>::stash() {
    const auto count = static_cast<unsigned long>(at - mark);
    const unsigned long total = sinkLength + count;
    if (sink->getLength() < total)
        enlargeSink(total);
    copy(sink->getString() + sinkLength, mark, count);
    sinkLength = total;
    mark = at;
}

template<typename Input>
void MarkupCursor<Input>::enlargeSink(unsigned long length) {
    if (length > ordinaryLength && length <= spare.getLength()) {
        copy(spare.getString(), sink->getString(), sinkLength);
        *sink = static_cast<String&&>(spare);
    } else
        sink->setLength(length + (length < longToken ? length : longestStep));
}

/// Keeps `text` as the spare string, unless that is larger; the other one is given up.
template<typename Input>
void MarkupCursor<Input>::keepSpare(String& text) noexcept {
    if (text.getLength() > spare.getLength()) {
        String smaller(static_cast<String&&>(spare));
        spare = static_cast<String&&>(text);
        text = static_cast<String&&>(smaller);
    }
    // The heap of the C library keeps blocks of the size that it has seen freed once, and grows
    // them by copying from then on. So a large block is made small before it is freed.
    if (text.getLength() > ordinaryLength)
        text.setLength(ordinaryLength);
    text.clear();
}

template<typename Input>
void MarkupCursor<Input>::endToken() {
    const auto count = static_cast<unsigned long>(at - mark);
    if (sinkLength == 0)
        sink->assign(mark, count);
    else {
        sink->setLength(sinkLength + count);
        copy(sink->getString() + sinkLength, mark, count);
    }
    sink = nullptr;
}

template<typename Input>
bool MarkupCursor<Input>::skipSomeWhiteSpace() {
    if (!need(1) || !Input::isWhiteSpace(*at))
        return false;
    ++at;
    if (at != end && !Input::isWhiteSpace(*at))
        return true; // a single space, which is what mostly stands before an attribute
    do
        at += Input::skipWhiteSpace(at, available());
    while (at == end && need(1) && Input::isWhiteSpace(*at));
    return true;
}

template<typename Input>
bool MarkupCursor<Input>::skipName() {
    bool any = false;
    while (need(1)) {
        const unsigned long count = Input::skipName(at, available());
        at += count;
        any = any || count > 0;
        if (at != end)
            break;
    }
    return any;
}

template<typename Input>
bool MarkupCursor<Input>::takeName(String& name) {
    const unsigned long count = Input::skipName(at, available());
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

template<typename Input>
bool MarkupCursor<Input>::takeUntil(Character c, String& text) {
    const unsigned long count = Input::find(at, available(), c);
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

template<typename Input>
bool MarkupCursor<Input>::find(Character c) {
    while (need(1)) {
        const unsigned long place = Input::find(at, available(), c);
        if (place != kernels::notFound) {
            at += place;
            return true;
        }
        at = end;
    }
    return false;
}

template<typename Input>
bool MarkupCursor<Input>::find(const Character* text, unsigned long count) {
    if (count == 0)
        return false;
    if (count > shortText)
        return findLong(text, count);
    while (find(*text)) {
        if (need(count) && Input::equal(at, text, count))
            return true;
        ++at;
    }
    return false;
}

template<typename Input>
bool MarkupCursor<Input>::findLong(const Character* text, unsigned long count) {
    typename Input::Search search(text, count);
    for (;;) {
        unsigned long passed = Input::find(at, available(), *text);
        if (passed != kernels::notFound)
            at += passed;
        else {
            at = end;
            if (!find(*text))
                return false;
            passed = ~0UL;
        }
        if (need(count)) {
            search.pass(passed);
            const unsigned long place = search.find(at, available());
            if (place != kernels::notFound) {
                at += place;
                return true;
            }
            passed = available() - (count - 1);
        } else {
            search.pass(passed);
            passed = 1;
        }
        at += passed;
        search.pass(passed);
    }
}

} // namespace orvabase

#endif
