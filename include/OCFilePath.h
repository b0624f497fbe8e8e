#ifndef ORVABASE_OCFILEPATH_H
#define ORVABASE_OCFILEPATH_H

#include "OCAnsiString.h"
#include "OCDateTime.h"

/// The slash that an operation uses. Any value but 1 and 2 is automatic.
enum OEFilePathSystem : int {
    FilePathSystemAutomatic = 0, ///< the slash that the path itself uses first
    FilePathSystemUnix = 1,      ///< `/`
    FilePathSystemWindows = 2    ///< `\`
};

/// What a path refers to.
enum OEFileType : int {
    FileTypeBlockDevice = 0,
    FileTypeCharacterDevice = 1,
    FileTypeDirectory = 2,
    FileTypeSymbolicLink = 3,
    FileTypeFifo = 4,
    FileTypeRegular = 5,
    FileTypeSocket = 6,
    FileTypeUnknown = 7 ///< also when the path cannot be examined
};

/// A string that holds a file-system path, takes it apart and puts it together.
///
/// Both `/` and `\` are slashes everywhere, and a colon ends a drive, on Linux too. Two grammars
/// are understood, and each operation picks the one that fits the path:
///
/// - the classic one: an optional drive that ends in a colon (`C:`), directories, a filename, an
///   extension that starts at the last period of the filename;
/// - the universal one (a network path): the path begins with two slashes and has a third further
///   on; its drive is the server and the share, up to but not including the fourth slash.
///
/// The operations change the path itself and return it, so that they chain. An operation that
/// throws leaves the path as it was. Each has a `…Classic` and a `…Universal` form, which applies
/// one grammar and says with false instead of an exception that it could not be done; the path is
/// then unchanged too. All operations take linear time; those that only cut need no memory. Not for
/// use by several threads at once.
///
///     OCFilePath path("/home/ann/letter.txt");
///     OCFilePath(path).extractFilename();           // letter.txt
///     OCFilePath(path).changeExtension("pdf");      // /home/ann/letter.pdf
///     OCFilePath(path).removeFilename() / "notes";  // /home/ann/notes
class ORVABASE_EXPORT OCFilePath : public OCAnsiString {
public:
    /// An empty path.
    OCFilePath() noexcept {}
    /// The path that a text holds.
    OCFilePath(const char* path) : OCAnsiString(path) {}
    OCFilePath(const OCAnsiString& path) : OCAnsiString(path) {}
    /// Takes the string's content, which is empty afterwards.
    OCFilePath(OCAnsiString&& path) noexcept : OCAnsiString(static_cast<OCAnsiString&&>(path)) {}
    OCFilePath(const OCFilePath&) = default;
    OCFilePath(OCFilePath&&) noexcept = default;
    OCFilePath& operator=(const OCFilePath&) = default;
    OCFilePath& operator=(OCFilePath&&) noexcept = default;
    ~OCFilePath() noexcept override;

    /// Whether `c` is `/` or `\`.
    static bool testSlash(char c) noexcept { return c == '/' || c == '\\'; }
    /// Whether `c` is `:`, or `.`.
    static bool testColon(char c) noexcept { return c == ':'; }
    static bool testPeriod(char c) noexcept { return c == '.'; }

    /// Turn all slashes into `/`, into `\`, or into those of `system`; automatic means `/` here.
    OCFilePath& convertSlashesUnix();
    OCFilePath& convertSlashesWindows();
    OCFilePath& convertSlashes(OEFilePathSystem system);
    /// The slash of `system`.
    char makeSlash(OEFilePathSystem system) const;
    /// The first slash that the path has; `/` when it has none.
    char makeSlashAutomatic() const;
    /// Whether all slashes of the path are those of `system`. True for a path without one.
    ///
    /// Note: automatic means `/` here, whatever slashes the path has, unlike in `makeSlash` and
    /// `addTrailingSlash`.
    bool validateSlashes(OEFilePathSystem system) const;
    /// Whether there is a slash at one end.
    bool hasLeadingSlash() const { return getLength() != 0 && testSlash(getString()[0]); }
    bool hasTrailingSlash() const {
        return getLength() != 0 && testSlash(getString()[getLength() - 1]);
    }
    /// Add a slash at one end unless there is one.
    /// @throws OXMemory_AllocationError
    OCFilePath& addLeadingSlash(OEFilePathSystem system);
    OCFilePath& addTrailingSlash(OEFilePathSystem system);
    /// Remove one slash at one end if there is one, never more.
    OCFilePath& removeLeadingSlash();
    OCFilePath& removeTrailingSlash();
    /// Whether the first character is a period.
    bool hasLeadingPeriod() const { return getLength() != 0 && testPeriod(getString()[0]); }
    /// Adds a period at the front unless there is one.
    /// @throws OXMemory_AllocationError
    OCFilePath& addLeadingPeriod();

    /// Whether this is a network path: two slashes at the front and a third further on. `///` is
    /// one, `//server` is not.
    bool isUniversal() const;
    /// Whether the path is neither a network path nor one with a drive or a leading slash. An empty
    /// path is relative.
    ///
    /// Note: a colon makes a path absolute only in front of the first slash.
    bool isRelative() const;

    /// Whether the path has a drive: `C:` or `\\server\share`.
    bool hasDrive() const;
    /// Makes the path its drive. The classic drive keeps its colon, the universal drive has no
    /// trailing slash.
    /// @throws OXFilePath_ExtractDriveError when there is none.
    OCFilePath& extractDrive();
    /// Removes the drive. A path without one stays as it is.
    /// @throws OXFilePath_RemoveDriveError
    OCFilePath& removeDrive();
    /// The forms for one grammar each.
    bool hasDriveClassic() const;
    /// Note: true for an empty path, and for a network path without a share.
    bool hasDriveUniversal() const;
    /// The forms for one grammar each.
    bool extractDriveClassic();
    bool extractDriveUniversal();
    bool removeDriveClassic();
    bool removeDriveUniversal();

    /// Whether the path ends neither in a slash nor in a colon.
    bool hasFilename() const;
    /// Makes the path its filename: what follows the last slash or colon.
    /// @throws OXFilePath_ExtractFilenameError when the path is empty or ends in a slash or colon.
    OCFilePath& extractFilename();
    /// Removes the filename and keeps the path up to its last slash or colon.
    /// @throws OXFilePath_RemoveFilenameError
    OCFilePath& removeFilename();
    /// Replaces the filename, or adds one where there is none.
    /// @throws OXFilePath_ChangeFilenameError, OXMemory_AllocationError
    OCFilePath& changeFilename(const OCAnsiString& name);
    /// The forms for one grammar each.
    bool hasFilenameClassic() const;
    bool hasFilenameUniversal() const;
    bool extractFilenameClassic();
    bool extractFilenameUniversal();
    bool removeFilenameClassic();
    bool removeFilenameUniversal();
    bool changeFilenameClassic(OCFilePath name);
    bool changeFilenameUniversal(OCFilePath name);

    /// Whether the filename has a period.
    ///
    /// Note: `.profile` is an extension as a whole.
    bool hasExtension() const;
    /// Makes the path its extension, the period included.
    /// @throws OXFilePath_ExtractExtensionError when there is none.
    OCFilePath& extractExtension();
    /// Removes the extension and its period. A path without one stays as it is.
    /// @throws OXFilePath_RemoveExtensionError
    OCFilePath& removeExtension();
    /// Replaces the extension, or adds one where there is none. The period in front of `extension`
    /// may be left out.
    /// @throws OXFilePath_ChangeExtensionError when there is no filename, OXMemory_AllocationError
    OCFilePath& changeExtension(const OCAnsiString& extension);
    /// The forms for one grammar each.
    bool hasExtensionClassic() const;
    bool hasExtensionUniversal() const;
    bool extractExtensionClassic();
    bool extractExtensionUniversal();
    bool removeExtensionClassic();
    bool removeExtensionUniversal();
    bool changeExtensionClassic(OCFilePath extension);
    bool changeExtensionUniversal(OCFilePath extension);

    /// Makes the path the name of its first directory, without slashes: `/usr/local/bin` becomes
    /// `usr`.
    /// @throws OXFilePath_RemoveDriveError
    OCFilePath& extractFirstDirectory();
    /// Removes the drive and the first directory: `/usr/local/bin` becomes `local/bin`.
    /// @throws OXFilePath_RemoveDriveError
    OCFilePath& removeFirstDirectory();
    /// Removes the last directory or filename and keeps the slash before it: `/usr/local/bin` and
    /// `/usr/local/bin/` both become `/usr/local/`. A path without such a slash becomes empty.
    OCFilePath& removeLastDirectory();

    // The following ask the file system, with one system call each, about the path as it stands.

    /// What the path refers to; with `followLinks` false, a symbolic link is a symbolic link. Never
    /// throws.
    OEFileType getFileType(bool followLinks) const;
    /// Whether the path refers to a regular file: a directory, a device or a socket is none. Never
    /// throws.
    bool existsFile(bool followLinks) const;
    /// Whether the path, less one trailing slash, refers to a directory. Never throws.
    ///
    /// Note: false for `/` alone.
    bool existsDirectory(bool followLinks) const;
    /// The size in bytes, links followed.
    /// @throws OXFilePath_GetFileSizeError
    long getFileSize() const;
    /// The time of the last access, of the last modification of the content, and of the last change
    /// of the file's status (Linux keeps no time of creation here), links followed, in UTC, without
    /// fractions of a second.
    /// @throws OXFilePath_GetFileTimeError
    OCDateTime getTimeAccessed() const;
    OCDateTime getTimeModified() const;
    OCDateTime getTimeCreated() const;
};

/// The family of the file path's failures.
class ORVABASE_EXPORT OXFilePath : public OXAutoException {
public:
    ~OXFilePath() noexcept override;

protected:
    OXFilePath();
};

/// "Error changing extension of file path"
class ORVABASE_EXPORT OXFilePath_ChangeExtensionError : public OXFilePath {
public:
    OXFilePath_ChangeExtensionError();
    ~OXFilePath_ChangeExtensionError() noexcept override;
};

/// "Error changing filename of file path"
class ORVABASE_EXPORT OXFilePath_ChangeFilenameError : public OXFilePath {
public:
    OXFilePath_ChangeFilenameError();
    ~OXFilePath_ChangeFilenameError() noexcept override;
};

/// "Error extracting drive from file path"
class ORVABASE_EXPORT OXFilePath_ExtractDriveError : public OXFilePath {
public:
    OXFilePath_ExtractDriveError();
    ~OXFilePath_ExtractDriveError() noexcept override;
};

/// "Error extracting extension from file path"
class ORVABASE_EXPORT OXFilePath_ExtractExtensionError : public OXFilePath {
public:
    OXFilePath_ExtractExtensionError();
    ~OXFilePath_ExtractExtensionError() noexcept override;
};

/// "Error extracting filename from file path"
class ORVABASE_EXPORT OXFilePath_ExtractFilenameError : public OXFilePath {
public:
    OXFilePath_ExtractFilenameError();
    ~OXFilePath_ExtractFilenameError() noexcept override;
};

/// "Error getting file size of file path"
class ORVABASE_EXPORT OXFilePath_GetFileSizeError : public OXFilePath {
public:
    OXFilePath_GetFileSizeError();
    ~OXFilePath_GetFileSizeError() noexcept override;
};

/// "Error getting file time of file path"
class ORVABASE_EXPORT OXFilePath_GetFileTimeError : public OXFilePath {
public:
    OXFilePath_GetFileTimeError();
    ~OXFilePath_GetFileTimeError() noexcept override;
};

/// "Error removing drive from file path"
class ORVABASE_EXPORT OXFilePath_RemoveDriveError : public OXFilePath {
public:
    OXFilePath_RemoveDriveError();
    ~OXFilePath_RemoveDriveError() noexcept override;
};

/// "Error removing extension from file path"
class ORVABASE_EXPORT OXFilePath_RemoveExtensionError : public OXFilePath {
public:
    OXFilePath_RemoveExtensionError();
    ~OXFilePath_RemoveExtensionError() noexcept override;
};

/// "Error removing filename from file path"
class ORVABASE_EXPORT OXFilePath_RemoveFilenameError : public OXFilePath {
public:
    OXFilePath_RemoveFilenameError();
    ~OXFilePath_RemoveFilenameError() noexcept override;
};

/// "Error setting file time of file path". The library itself does not throw it.
class ORVABASE_EXPORT OXFilePath_SetFileTimeError : public OXFilePath {
public:
    OXFilePath_SetFileTimeError();
    ~OXFilePath_SetFileTimeError() noexcept override;
};

#endif
