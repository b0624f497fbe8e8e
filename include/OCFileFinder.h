#ifndef ORVABASE_OCFILEFINDER_H
#define ORVABASE_OCFILEFINDER_H

#include "OCFilePath.h"

#include <dirent.h>

/// Lists the entries of one directory.
///
/// Every entry is found: `.` and `..`, hidden files, links and devices too, in the order in which
/// the system gives them. There is no pattern. A failure of the system while it reads counts as the
/// end of the directory. For use by one thread at a time; takes one descriptor as long as it
/// exists.
///
///     OCFileFinder finder("/etc");
///     for (bool found = finder.findFirst(); found; found = finder.findNext())
///         use(finder.getFilename());
class ORVABASE_EXPORT OCFileFinder : public OCObject {
public:
    /// Opens `directory`.
    /// @throws OXFileFinder_OpenDirectory with the path, OXMemory_AllocationError
    explicit OCFileFinder(const OCFilePath& directory);
    OCFileFinder(const OCFileFinder&) = delete;
    OCFileFinder& operator=(const OCFileFinder&) = delete;
    /// Closes the directory.
    ~OCFileFinder() noexcept override;

    /// Finds the first entry, also after others have been found: the directory is read anew. False
    /// when there is none, or when the finder is closed.
    bool findFirst();
    /// Finds the next entry, which is the first one after the construction. False at the end, or
    /// when the finder is closed.
    bool findNext();
    /// The name of the entry that was found last, without the directory.
    ///
    /// Note: only valid after a find that returned true; otherwise it is empty.
    /// @throws OXMemory_AllocationError
    OCFilePath getFilename() const;

    /// The steps of opening and closing, for derived classes. Opening closes first what is open;
    /// closing twice is harmless.
    /// @throws OXFileFinder_OpenDirectory with the path (the first two).
    void initialize();
    void initializeEnumeration();
    void destroy() noexcept;
    void destroyEnumeration() noexcept;

private:
    OCFilePath path;
    DIR* stream;
    struct dirent* entry;
};

/// The family of the file finder's failures.
class ORVABASE_EXPORT OXFileFinder : public OXAutoException {
public:
    ~OXFileFinder() noexcept override;

protected:
    OXFileFinder();
};

/// "Error opening directory for reading", with the directory's path.
class ORVABASE_EXPORT OXFileFinder_OpenDirectory : public OXFileFinder {
public:
    explicit OXFileFinder_OpenDirectory(const OCFilePath& path);
    ~OXFileFinder_OpenDirectory() noexcept override;
};

#endif
