#include "OCStringUtilities.h"

#include "OCMemory.h"
#include "OCStream.h"

namespace {

constexpr unsigned long chunkSize = 8192;

OCAnsiString enclose(const OCAnsiString& text, bool always, char before, char after) {
    if (!always && !text.contains(' '))
        return text;
    const unsigned long length = text.getLength();
    OCAnsiString result;
    result.setLength(length + 2);
    char* characters = result.getString();
    characters[0] = before;
    stringCopy(characters + 1, text.getString(), length);
    characters[length + 1] = after;
    return result;
}

} // namespace

void OCStringUtilities::exportStream(const OCAnsiString& text, OCStream& stream) {
    if (text.getLength() > 0)
        stream.writeBuffer(text.getString(), text.getLength());
}

OCAnsiString OCStringUtilities::importStream(OCStream& stream) {
    OCAnsiString result;
    unsigned long length = 0;
    for (;;) {
        // Room at least doubles, so that long streams are not copied once a chunk.
        if (result.getLength() - length < chunkSize)
            result.setLength(length + (length < chunkSize ? chunkSize : length));
        unsigned long count = chunkSize;
        if (!stream.read(result.getString() + length, count) || count == 0)
            break;
        length += count < chunkSize ? count : chunkSize;
    }
    result.setLength(length);
    return result;
}

OCAnsiString OCStringUtilities::addParentheses(const OCAnsiString& text, bool always) {
    return enclose(text, always, '(', ')');
}

OCAnsiString OCStringUtilities::addQuotes(const OCAnsiString& text, bool always) {
    return enclose(text, always, '"', '"');
}
