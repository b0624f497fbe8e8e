#include "markup/XmlCursor.h"

#include <cwchar>

namespace orvabase {

template class MarkupCursor<XmlInput>;

bool XmlInput::read(OCXmlParserReader& reader, wchar_t*& end) {
    constexpr unsigned long batch = XmlCursor::batch;
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
    return false;
}

bool XmlCursor::takeAvailableAttribute(OCWideString& name, OCWideString& value) {
    const unsigned long count = available();
    const unsigned long nameCount = kernels::skipWideName(begin(), count);
    if (nameCount == 0 || nameCount + 2 >= count || begin()[nameCount] != L'=')
        return false;
    const wchar_t quote = begin()[nameCount + 1];
    if (quote != L'"' && quote != L'\'')
        return false;
    const wchar_t* const start = begin() + nameCount + 2;
    const unsigned long valueCount = kernels::findWide(start, count - nameCount - 2, quote);
    if (valueCount == kernels::notFound)
        return false;
    take(nameCount, name);
    advance(2);
    take(valueCount, value);
    advance(1);
    return true;
}

bool XmlCursor::acceptAvailableName(const wchar_t* name, unsigned long count) {
    if (count == 0 || available() <= count || std::wmemcmp(begin(), name, count) != 0 ||
        kernels::skipWideName(begin() + count, 1) != 0)
        return false;
    advance(count);
    return true;
}

} // namespace orvabase
