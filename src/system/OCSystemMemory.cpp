#include "OCSystemMemory.h"

#include "OCFilePath.h"
#include "OCInteger.h"

OXSystemMemory::OXSystemMemory() = default;
OXSystemMemory::~OXSystemMemory() noexcept = default;

OXSystemMemory_MeasureMemoryError::OXSystemMemory_MeasureMemoryError() {
    setClass("OXSystemMemory_MeasureMemoryError");
    setMessage("Error measuring physical memory");
}
OXSystemMemory_MeasureMemoryError::~OXSystemMemory_MeasureMemoryError() noexcept = default;

OXSystemMemory_MeasureSwapError::OXSystemMemory_MeasureSwapError() {
    setClass("OXSystemMemory_MeasureSwapError");
    setMessage("Error measuring swap memory");
}
OXSystemMemory_MeasureSwapError::~OXSystemMemory_MeasureSwapError() noexcept = default;

namespace {

/// The number that the entry `key` begins with.
template<class MeasureError>
unsigned int measure(const char* key) {
    OCNamedList information(NamedListCaseInsensitive, NamedListModeUnsorted);
    OCSystemMemory::readInformation(information);
    const OCAnsiString value = information.getValue(key, "");
    if (value.getLength() == 0)
        throw MeasureError();
    // The conversion ends at the unit, as at anything else that is no digit.
    return OCUnsignedIntegerConversion::fromString(value, 10);
}

} // namespace

void OCSystemMemory::readInformation(OCNamedList& information) {
    OCStringList lines(StringListCaseInsensitive, StringListModeUnsorted);
    lines.loadFromFile("/proc/meminfo");
    for (unsigned long i = 0; i < lines.getCount(); ++i) {
        const OCAnsiString& line = lines.getString(i);
        unsigned long colon = 0;
        if (!line.indexOf(':', colon))
            continue;
        const char* const text = line.getString();
        OCAnsiString name(text, colon);
        OCAnsiString value(text + colon + 1, line.getLength() - colon - 1);
        information.addElement(name.trim(), value.trim());
    }
}

unsigned int OCSystemMemory::measureMemory(bool total) {
    return measure<OXSystemMemory_MeasureMemoryError>(total ? "MemTotal" : "MemFree");
}

unsigned int OCSystemMemory::measureSwap(bool total) {
    return measure<OXSystemMemory_MeasureSwapError>(total ? "SwapTotal" : "SwapFree");
}
