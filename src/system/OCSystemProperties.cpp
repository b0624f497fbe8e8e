#include "OCSystemProperties.h"

#include <unistd.h>

OXSystemProperties::OXSystemProperties() = default;
OXSystemProperties::~OXSystemProperties() noexcept = default;

OXSystemProperties_GetNodeNameError::OXSystemProperties_GetNodeNameError() {
    setClass("OXSystemProperties_GetNodeNameError");
    setMessage("Error getting the node name of the system");
}
OXSystemProperties_GetNodeNameError::~OXSystemProperties_GetNodeNameError() noexcept = default;

OXSystemProperties_SwitchModeError::OXSystemProperties_SwitchModeError() {
    setClass("OXSystemProperties_SwitchModeError");
    setMessage("Error switching the system mode");
}
OXSystemProperties_SwitchModeError::~OXSystemProperties_SwitchModeError() noexcept = default;

OCAnsiString OCSystemProperties::getNodeName() {
    char name[256] = {};
    if (gethostname(name, sizeof name - 1) != 0) // so the last byte stays zero
        throw OXSystemProperties_GetNodeNameError();
    return name;
}

OESystemArchitecture OCSystemProperties::identifyArchitecture() noexcept {
    return SystemArchitectureX86_64;
}

OESystemPlatform OCSystemProperties::identifyPlatform() noexcept {
    return SystemPlatformLinux;
}

OESystemMode OCSystemProperties::identifyMode() noexcept {
    return SystemModeNormal;
}

void OCSystemProperties::switchMode(OESystemMode) {
    throw OXSystemProperties_SwitchModeError();
}
