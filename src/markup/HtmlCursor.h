#ifndef ORVABASE_HTMLCURSOR_H
#define ORVABASE_HTMLCURSOR_H

#include "OCHtmlParser.h"
#include "OCMemoryBuffer.h"
#include "markup/MarkupCursor.h"

namespace orvabase {

/// What the input of the HTML parser is made of.
class HtmlInput {
public:
    using Reader = OCHtmlParserReader;
    using String = OCAnsiString;
    using Character = char;

    /// A reader grows by one read after the other, until as much is buffered as is asked for.
    static constexpr bool growsToCount = true;

    /// Finds a text whose first character must have its case. It looks at each byte of the input
    /// once, however little is added at a time.
    class Search {
    public:
        Search(const char* wanted, unsigned long wantedCount);
        /// The input goes on so many bytes further.
        void pass(unsigned long passed) noexcept;
        /// Searches the available input, as far as it has not been searched yet.
        unsigned long find(const char* from, unsigned long available) noexcept;

    private:
        unsigned long* borders() { return reinterpret_cast<unsigned long*>(table.getData()); }
        unsigned long shorter(unsigned long length, char folded) noexcept;

        const char* text;
        unsigned long count;
        // For each beginning of the text the length of the longest shorter one that it ends with.
        OCMemoryBuffer table;
        // How far the input was searched, and how much of the text it ends with there.
        unsigned long searched;
        unsigned long matched;
    };

    static OCAnsiString& bufferOf(OCHtmlParserReader& reader) { return reader.buffer; }
    /// Reads up to a batch of bytes behind the end; false when there are no more. What it throws
    /// leaves the end as it is.
    static bool read(OCHtmlParserReader& reader, char*& end);
    static char fold(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
    static bool isWhiteSpace(char c) { return static_cast<unsigned char>(c) <= 32; }
    static bool equal(const char* a, const char* b, unsigned long count) noexcept {
        for (unsigned long i = 0; i < count; ++i)
            if (fold(a[i]) != fold(b[i]))
                return false;
        return true;
    }
    static unsigned long find(const char* text, unsigned long count, char c) noexcept {
        return kernels::findByte(text, count, c);
    }
    static unsigned long skipName(const char* text, unsigned long count) noexcept {
        return kernels::skipHtmlName(text, count);
    }
    static unsigned long skipWhiteSpace(const char* text, unsigned long count) noexcept {
        return kernels::skipWhiteSpace(text, count);
    }
};

extern template class MarkupCursor<HtmlInput>;

/// The place of a running HTML parse in its reader.
class HtmlCursor : public MarkupCursor<HtmlInput> {
public:
    using MarkupCursor<HtmlInput>::MarkupCursor;

    /// Consumes everything before white space or `>` and makes it the content of `value`, also when
    /// the input ends first, which is false.
    bool takeSimpleValue(OCAnsiString& value);
};

} // namespace orvabase

#endif
