#ifndef ORVABASE_XMLCURSOR_H
#define ORVABASE_XMLCURSOR_H

#include "OCXmlParserReader.h"

namespace orvabase {

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
class XmlCursor {
public:
    enum Access { Shared, Private };

    /// The least number of characters that a source is asked for.
    static constexpr unsigned long batch = 128;
    /// A string that is longer than this is large.
    static constexpr unsigned long ordinaryLength = 4096;

    XmlCursor(OCXmlParserReader& input, Access inputAccess);
    XmlCursor(const XmlCursor&) = delete;
    XmlCursor& operator=(const XmlCursor&) = delete;
    ~XmlCursor() noexcept;

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
    bool more() const { return at != end || reader.source.more(); }

    bool preview(wchar_t& c) {
        if (!need(1))
            return false;
        c = *at;
        return true;
    }
    bool peek(wchar_t c) { return need(1) && *at == c; }
    /// Whether the input continues with a literal text.
    template<unsigned long size>
    bool peek(const wchar_t (&text)[size]) {
        return need(size - 1) && begins(text);
    }
    /// Consumes characters that are known to be available.
    void advance(unsigned long count) { at += count; }
    /// Consumes a literal text if the input continues with it.
    template<unsigned long size>
    bool accept(const wchar_t (&text)[size]) {
        if (!peek(text))
            return false;
        at += size - 1;
        return true;
    }
    bool accept(wchar_t c) {
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
    bool skipWhiteSpace();
    bool skipName();
    /// Consume everything before a character or a text; false, with everything consumed, when the
    /// input ends first.
    bool find(wchar_t c);
    bool find(const wchar_t* text, unsigned long count);
    /// Finds a literal text and consumes it too.
    template<unsigned long size>
    bool findAndSkip(const wchar_t (&text)[size]) {
        if (!find(text, size - 1))
            return false;
        at += size - 1;
        return true;
    }

    /// Consumes a run of name characters and makes it the content of `name`, which is untouched
    /// when there is none.
    bool takeName(OCWideString& name);
    /// Consumes everything before a character and makes it the content of `text`, also when the
    /// input ends first.
    bool takeUntil(wchar_t c, OCWideString& text);
    /// Consumes an attribute and makes its parts the contents of `name` and `value`, if all of it
    /// is available and well-formed. Else it does nothing.
    bool takeAvailableAttribute(OCWideString& name, OCWideString& value);
    /// Consumes the `count` characters of `name` if they are available and a whole name.
    bool acceptAvailableName(const wchar_t* name, unsigned long count);

    /// Collects what is consumed from here on until `endToken`. `target` keeps its first `kept`
    /// characters and has no defined content before the token has ended.
    void beginToken(OCWideString& target, unsigned long kept = 0) {
        mark = at;
        sink = &target;
        sinkLength = kept;
    }
    void endToken();
    /// Takes a string's storage back when its content is no longer needed, if it is large. The next
    /// large token gets it, so that a parse holds one large text at a time and allocates it once.
    void giveBack(OCWideString& text) noexcept {
        if (text.getLength() > ordinaryLength)
            keepSpare(text);
    }

    /// The characters that are available, for scanning by hand; `advance` consumes them.
    const wchar_t* begin() const { return at; }
    unsigned long available() const { return static_cast<unsigned long>(end - at); }

private:
    template<unsigned long size>
    bool begins(const wchar_t (&text)[size]) const {
        for (unsigned long i = 0; i + 1 < size; ++i)
            if (at[i] != text[i])
                return false;
        return true;
    }

    bool grow(unsigned long count);
    bool growShared(unsigned long count);
    void commit() noexcept;
    void load() noexcept;
    void makeRoom();
    void fill();
    void stash();
    void enlargeSink(unsigned long length);
    void keepSpare(OCWideString& text) noexcept;
    void take(unsigned long count, OCWideString& text);

    OCXmlParserReader& reader;
    const Access access;
    wchar_t* at;
    wchar_t* end;
    wchar_t* storageEnd;

    // The token that is being collected: the first `sinkLength` characters of the sink, then those
    // from the mark on.
    wchar_t* mark;
    OCWideString* sink;
    unsigned long sinkLength;
    OCWideString spare;
};

} // namespace orvabase

#endif
