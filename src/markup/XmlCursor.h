#ifndef ORVABASE_XMLCURSOR_H
#define ORVABASE_XMLCURSOR_H

#include "OCXmlParserReader.h"
#include "markup/MarkupCursor.h"

namespace orvabase {

/// What the input of the XML and DTD parsers is made of.
class XmlInput {
public:
    using Reader = OCXmlParserReader;
    using String = OCWideString;
    using Character = wchar_t;

    /// A reader grows by one reading of the source, whatever is buffered.
    static constexpr bool growsToCount = false;

    /// Finds a text; what it has seen of the input it looks at again.
    class Search {
    public:
        Search(const wchar_t* wanted, unsigned long wantedCount) noexcept
            : text(wanted), count(wantedCount) {}
        void pass(unsigned long) noexcept {}
        unsigned long find(const wchar_t* from, unsigned long available) const noexcept {
            return kernels::findWideText(from, available, text, count);
        }

    private:
        const wchar_t* text;
        unsigned long count;
    };

    static OCWideString& bufferOf(OCXmlParserReader& reader) { return reader.buffer; }
    static OCXmlParserSource& sourceOf(OCXmlParserReader& reader) { return reader.source; }
    /// Reads one batch of bytes behind the end, as the source does; private readers have no wide
    /// characters. False: a reader reads no further. What it throws leaves the end as it is.
    static bool read(OCXmlParserReader& reader, wchar_t*& end);
    static bool isWhiteSpace(wchar_t c) { return c <= 32; }
    static bool equal(const wchar_t* a, const wchar_t* b, unsigned long count) noexcept {
        for (unsigned long i = 0; i < count; ++i)
            if (a[i] != b[i])
                return false;
        return true;
    }
    static unsigned long find(const wchar_t* text, unsigned long count, wchar_t c) noexcept {
        return kernels::findWide(text, count, c);
    }
    static unsigned long skipName(const wchar_t* text, unsigned long count) noexcept {
        return kernels::skipWideName(text, count);
    }
    static unsigned long skipWhiteSpace(const wchar_t* text, unsigned long count) noexcept {
        return kernels::skipWideWhiteSpace(text, count);
    }
};

extern template class MarkupCursor<XmlInput>;

/// The place of a running XML or DTD parse in its reader.
class XmlCursor : public MarkupCursor<XmlInput> {
public:
    using MarkupCursor<XmlInput>::MarkupCursor;

    /// What the reader's `more` says.
    bool more() { return available() > 0 || XmlInput::sourceOf(getReader()).more(); }
    /// Consumes an attribute and makes its parts the contents of `name` and `value`, if all of it
    /// is available and well-formed. Else it does nothing.
    bool takeAvailableAttribute(OCWideString& name, OCWideString& value);
    /// Consumes the `count` characters of `name` if they are available and a whole name.
    bool acceptAvailableName(const wchar_t* name, unsigned long count);
};

} // namespace orvabase

#endif
