#ifndef ORVABASE_OCSYSTEMPROPERTIES_H
#define ORVABASE_OCSYSTEMPROPERTIES_H

#include "OXSystem.h"

/// The processor that the library is built for.
enum OESystemArchitecture : int { SystemArchitectureX86_64 = 2 };

/// The operating system that the library is built for.
enum OESystemPlatform : int { SystemPlatformLinux = 1 };

/// How the system runs.
enum OESystemMode : int { SystemModeNormal = 0 };

/// What the machine is called, and what kind of system this is. It cannot be instantiated.
/// Thread-safe.
///
///     std::cout << OCSystemProperties::getNodeName();
class ORVABASE_EXPORT OCSystemProperties {
public:
    OCSystemProperties() = delete;

    /// The host name.
    /// @throws OXSystemProperties_GetNodeNameError
    static OCAnsiString getNodeName();
    /// The kind of the machine, of its system, and the mode that the system runs in.
    static OESystemArchitecture identifyArchitecture() noexcept;
    static OESystemPlatform identifyPlatform() noexcept;
    static OESystemMode identifyMode() noexcept;
    /// Note: there is no mode that could be switched to, so this always throws.
    /// @throws OXSystemProperties_SwitchModeError
    static void switchMode(OESystemMode mode);
};

/// The family of the failures of `OCSystemProperties`.
class ORVABASE_EXPORT OXSystemProperties : public OXSystem {
public:
    ~OXSystemProperties() noexcept override;

protected:
    OXSystemProperties();
};

/// "Error getting the node name of the system".
class ORVABASE_EXPORT OXSystemProperties_GetNodeNameError : public OXSystemProperties {
public:
    OXSystemProperties_GetNodeNameError();
    ~OXSystemProperties_GetNodeNameError() noexcept override;
};

/// "Error switching the system mode".
class ORVABASE_EXPORT OXSystemProperties_SwitchModeError : public OXSystemProperties {
public:
    OXSystemProperties_SwitchModeError();
    ~OXSystemProperties_SwitchModeError() noexcept override;
};

#endif
