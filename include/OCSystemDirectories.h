#ifndef ORVABASE_OCSYSTEMDIRECTORIES_H
#define ORVABASE_OCSYSTEMDIRECTORIES_H

#include "OCFilePath.h"
#include "OXSystem.h"

/// The user's and the system's directories. It cannot be instantiated.
///
///     OCFilePath settings = OCSystemDirectories::locateHome() / ".config";
class ORVABASE_EXPORT OCSystemDirectories {
public:
    OCSystemDirectories() = delete;

    /// The value of the environment variable `HOME` as it stands. The account database is not
    /// asked. No thread may change the environment meanwhile.
    /// @throws OXSystemDirectories_LocateHomeError when the variable is not set or empty.
    static OCFilePath locateHome();
    /// `/tmp`, whatever the environment says.
    ///
    /// Note: the library's own temporary files are made in `/var/tmp`.
    static OCFilePath locateTemporary();
};

/// The family of the failures of `OCSystemDirectories`.
class ORVABASE_EXPORT OXSystemDirectories : public OXSystem {
public:
    ~OXSystemDirectories() noexcept override;

protected:
    OXSystemDirectories();
};

/// "Error locating home directory", perhaps with the system's text for an error number. The library
/// itself throws it without one.
class ORVABASE_EXPORT OXSystemDirectories_LocateHomeError : public OXSystemDirectories {
public:
    OXSystemDirectories_LocateHomeError();
    explicit OXSystemDirectories_LocateHomeError(unsigned int code);
    ~OXSystemDirectories_LocateHomeError() noexcept override;
};

#endif
