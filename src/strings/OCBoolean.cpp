#include "OCBoolean.h"

#include "core/OCKernels.h"

#include <ostream>

namespace {

/// Whether `text` is `word`, a text in lower case, but for the case of its letters.
template<unsigned long size>
bool isWord(const OCAnsiString& text, const char (&word)[size]) {
    constexpr unsigned long length = size - 1;
    return text.getLength() == length &&
           orvabase::kernels::mismatchFolded(text.getString(), word, length) == length;
}

} // namespace

OCBoolean::~OCBoolean() noexcept = default;

std::ostream& operator<<(std::ostream& stream, const OCBoolean& boolean) {
    return stream << (boolean.getValue() ? "true" : "false");
}

bool OCBooleanConversion::meansTrue(const OCAnsiString& text) {
    return isWord(text, "true") || isWord(text, "1") || isWord(text, "y") || isWord(text, "yes");
}

bool OCBooleanConversion::meansFalse(const OCAnsiString& text) {
    return isWord(text, "false") || isWord(text, "0") || isWord(text, "n") || isWord(text, "no");
}

bool OCBooleanConversion::fromString(const OCAnsiString& text) {
    if (meansTrue(text))
        return true;
    if (meansFalse(text))
        return false;
    throw OXBooleanConversion_ConvertStringError();
}

OXBooleanConversion::OXBooleanConversion() = default;
OXBooleanConversion::~OXBooleanConversion() noexcept = default;

OXBooleanConversion_ConvertError::OXBooleanConversion_ConvertError() = default;
OXBooleanConversion_ConvertError::~OXBooleanConversion_ConvertError() noexcept = default;

OXBooleanConversion_ConvertStringError::OXBooleanConversion_ConvertStringError() {
    setClass("OXBooleanConversion_ConvertStringError");
    setMessage("Error converting string to boolean");
}

OXBooleanConversion_ConvertStringError::~OXBooleanConversion_ConvertStringError() noexcept =
    default;
