#include "OCSystemDirectories.h"

#include "OCEnvironment.h"
#include "OCSystemError.h"

OXSystemDirectories::OXSystemDirectories() = default;
OXSystemDirectories::~OXSystemDirectories() noexcept = default;

OXSystemDirectories_LocateHomeError::OXSystemDirectories_LocateHomeError() {
    setClass("OXSystemDirectories_LocateHomeError");
    setMessage("Error locating home directory");
}
OXSystemDirectories_LocateHomeError::OXSystemDirectories_LocateHomeError(unsigned int code)
    : OXSystemDirectories_LocateHomeError() {
    getDetails().addString(systemErrorText(code));
}
OXSystemDirectories_LocateHomeError::~OXSystemDirectories_LocateHomeError() noexcept = default;

OCFilePath OCSystemDirectories::locateHome() {
    OCAnsiString home = OCEnvironmentVariable("HOME").getValue("");
    if (home.getLength() == 0)
        throw OXSystemDirectories_LocateHomeError();
    return home;
}

OCFilePath OCSystemDirectories::locateTemporary() {
    return "/tmp";
}
