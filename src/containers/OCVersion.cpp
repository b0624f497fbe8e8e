#include "OCVersion.h"

#include "OCStringConversion.h"

OCVersion::~OCVersion() noexcept = default;

OCAnsiString OCVersion::toString() const {
    OCAnsiString text(OCStringConversion::fromInteger(majorPart, 10));
    text += '.';
    text += OCStringConversion::fromInteger(minorPart, 10);
    return text;
}
