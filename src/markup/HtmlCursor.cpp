#include "markup/HtmlCursor.h"

#include "OCMemory.h"

namespace orvabase {

template class MarkupCursor<HtmlInput>;

namespace {

/// Most values end soon.
unsigned long findValueEnd(const char* text, unsigned long count) noexcept {
    unsigned long i = 0;
    while (i < count && !HtmlInput::isWhiteSpace(text[i]) && text[i] != '>')
        ++i;
    return i;
}

unsigned long tableSize(unsigned long count) {
    if (count > ~0UL / sizeof(unsigned long) - 1)
        throw OXMemory_AllocationError();
    return (count + 1) * sizeof(unsigned long);
}

} // namespace

bool HtmlInput::read(OCHtmlParserReader& reader, char*& end) {
    unsigned long count = HtmlCursor::batch;
    if (!reader.stream.read(end, count))
        return false;
    end += count < HtmlCursor::batch ? count : HtmlCursor::batch;
    return count > 0;
}

HtmlInput::Search::Search(const char* wanted, unsigned long wantedCount)
    : text(wanted), count(wantedCount), table(tableSize(wantedCount)), searched(0), matched(0) {
    borders()[0] = 0;
    borders()[1] = 0;
    unsigned long length = 0;
    for (unsigned long i = 1; i < count; ++i) {
        length = shorter(length, fold(text[i]));
        borders()[i + 1] = length;
    }
}

/// How much of the text there is behind a character that follows its first `length` characters.
unsigned long HtmlInput::Search::shorter(unsigned long length, char folded) noexcept {
    const unsigned long* const border = borders();
    while (length > 0 && (length == count || fold(text[length]) != folded))
        length = border[length];
    return fold(text[length]) == folded ? length + 1 : 0;
}

void HtmlInput::Search::pass(unsigned long passed) noexcept {
    searched = searched > passed ? searched - passed : 0;
    while (matched > searched)
        matched = borders()[matched];
}

unsigned long HtmlInput::Search::find(const char* from, unsigned long available) noexcept {
    while (searched < available) {
        matched = shorter(matched, fold(from[searched]));
        ++searched;
        if (matched == count && from[searched - count] == *text)
            return searched - count;
    }
    return kernels::notFound;
}

bool HtmlCursor::takeSimpleValue(OCAnsiString& value) {
    const unsigned long count = findValueEnd(begin(), available());
    if (count < available()) {
        take(count, value);
        return true;
    }
    beginToken(value);
    advance(count);
    bool ended = false;
    while (!ended && need(1)) {
        const unsigned long further = findValueEnd(begin(), available());
        ended = further < available();
        advance(further);
    }
    endToken();
    return ended;
}

} // namespace orvabase
