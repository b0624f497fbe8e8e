#ifndef ORVABASE_OCFILEMANAGER_H
#define ORVABASE_OCFILEMANAGER_H

#include "OCFilePath.h"

/// What a file manager tells about its work. A class of an application overrides what it wants to
/// know; what an override throws goes through to the manager's caller and stops the work there.
///
///     class Progress : public OCFileManagerEvents {
///     public:
///         void onDeleteFile(const OCFilePath& path) override { std::cout << path << '\n'; }
///     };
class ORVABASE_EXPORT OCFileManagerEvents : public OCObject {
public:
    OCFileManagerEvents() noexcept = default;
    ~OCFileManagerEvents() override;

    /// Each is called just before the manager acts on the path, so also when that then fails. They
    /// do nothing here. The path lasts until the call returns; the one that was given to the
    /// manager may be changed meanwhile, the manager has its own copy.
    virtual void onCreateDirectory(const OCFilePath& path);
    virtual void onDeleteDirectory(const OCFilePath& path);
    virtual void onDeleteFile(const OCFilePath& path);
};

/// Creates directories and deletes files and whole directory trees.
///
/// Paths go to the system as they stand. Work that fails stops at the first failure: what has been
/// created or deleted until then stays so. For use by one thread at a time.
///
///     OCFileManager manager;
///     manager.createDirectory("out/2024/may");
///     manager.deleteDirectory("out", true);
class ORVABASE_EXPORT OCFileManager : public OCObject {
public:
    /// A manager that tells nobody.
    OCFileManager() noexcept : observer(nullptr) {}
    /// A manager that tells `events`, which stays the caller's and must outlive it.
    explicit OCFileManager(OCFileManagerEvents& events) noexcept : observer(&events) {}
    OCFileManager(const OCFileManager&) = delete;
    OCFileManager& operator=(const OCFileManager&) = delete;
    ~OCFileManager() noexcept override;

    /// Creates the directory and the parents that are missing, the outermost first, with the
    /// permissions 0755 less the process's umask.
    ///
    /// Note: a directory that exists already is an error. So is a missing one directly under the
    /// root (`/name`), because the root never counts as an existing directory (see
    /// `OCFilePath::existsDirectory`).
    /// @throws OXFileManager_CreateDirectoryError with the system's text, OXMemory_AllocationError
    void createDirectory(const OCFilePath& path);
    /// Deletes a file, or what else the system removes under this name (an empty directory, too).
    /// @throws OXFileManager_DeleteFileError with the system's text, OXMemory_AllocationError
    void deleteFile(const OCFilePath& path);
    /// Deletes a directory: with all that is in it when `recursive`, otherwise only an empty one. A
    /// symbolic link is removed itself, and its target stays.
    ///
    /// Neither descriptors nor the call stack grow with the depth of the tree: the names of the
    /// directories on the way down are held in memory, and one directory is open at a time.
    ///
    /// Note: FIFOs, sockets, devices and links that lead nowhere are not deleted, so a tree that
    /// holds one is an error; the regular files and other directories before it are gone then.
    /// @throws OXFileManager_DeleteDirectoryError and OXFileManager_DeleteFileError with the
    /// system's text, OXFileFinder_OpenDirectory with the path of a directory that cannot be read,
    /// OXMemory_AllocationError
    void deleteDirectory(const OCFilePath& path, bool recursive);
    /// The two passes of a recursive deletion: the regular files in a directory and the links to
    /// such files; then its subdirectories, with all that is in them, and the links to directories.
    /// The directory itself stays.
    /// @throws as `deleteDirectory`.
    void recursiveDeleteFiles(const OCFilePath& path);
    void recursiveDeleteDirectories(const OCFilePath& path);

    /// Tell the observer, if there is one.
    void onCreateDirectory(const OCFilePath& path);
    void onDeleteDirectory(const OCFilePath& path);
    void onDeleteFile(const OCFilePath& path);

private:
    OCFileManagerEvents* observer;
};

/// The family of the file manager's failures.
class ORVABASE_EXPORT OXFileManager : public OXAutoException {
public:
    ~OXFileManager() noexcept override;

protected:
    OXFileManager();
};

/// "Creating the directory failed", with the system's text for `code`.
class ORVABASE_EXPORT OXFileManager_CreateDirectoryError : public OXFileManager {
public:
    explicit OXFileManager_CreateDirectoryError(unsigned int code);
    ~OXFileManager_CreateDirectoryError() noexcept override;
};

/// "Deleting the directory failed", with the system's text for `code`.
class ORVABASE_EXPORT OXFileManager_DeleteDirectoryError : public OXFileManager {
public:
    explicit OXFileManager_DeleteDirectoryError(unsigned int code);
    ~OXFileManager_DeleteDirectoryError() noexcept override;
};

/// "Deleting the file failed", with the system's text for `code`.
class ORVABASE_EXPORT OXFileManager_DeleteFileError : public OXFileManager {
public:
    explicit OXFileManager_DeleteFileError(unsigned int code);
    ~OXFileManager_DeleteFileError() noexcept override;
};

#endif
