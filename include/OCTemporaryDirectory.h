#ifndef ORVABASE_OCTEMPORARYDIRECTORY_H
#define ORVABASE_OCTEMPORARYDIRECTORY_H

#include "OCFilePath.h"

/// A fresh directory under `/var/tmp`, open to the process's user alone, that is deleted with all
/// that is in it when the object dies.
///
/// What cannot be deleted stays: see `OCFileManager::deleteDirectory`. For use by one thread at a
/// time.
///
///     OCTemporaryDirectory scratch;
///     OCFilePath list(scratch.getPath() / "list.txt");
class ORVABASE_EXPORT OCTemporaryDirectory : public OCObject {
public:
    /// Creates the directory.
    /// @throws OXTemporaryDirectory_CreateError with the system's text.
    OCTemporaryDirectory();
    OCTemporaryDirectory(const OCTemporaryDirectory&) = delete;
    OCTemporaryDirectory& operator=(const OCTemporaryDirectory&) = delete;
    /// Deletes the directory; a failure is discarded.
    ~OCTemporaryDirectory() noexcept override;

    /// The directory's path, `/var/tmp/orv` and six further characters; empty when it has been
    /// deleted.
    const OCFilePath& getPath() const { return path; }

    /// The steps of creation and deletion, for derived classes. Creation deletes the object's
    /// directory first, if there is one. A deletion that throws keeps the path; without a directory
    /// it does nothing.
    /// @throws OXTemporaryDirectory_CreateError (the first two); what
    /// `OCFileManager::deleteDirectory` throws
    void initialize();
    void initializeDirectory();
    void destroy();
    void destroyDirectory();
    /// Does nothing: the directory has nothing beside it.
    void destroySibling();

private:
    OCFilePath path;
};

/// The family of the temporary directory's failures.
class ORVABASE_EXPORT OXTemporaryDirectory : public OXAutoException {
public:
    ~OXTemporaryDirectory() noexcept override;

protected:
    OXTemporaryDirectory();
};

/// "Can not create the temporary directory", with the system's text for `code`.
class ORVABASE_EXPORT OXTemporaryDirectory_CreateError : public OXTemporaryDirectory {
public:
    explicit OXTemporaryDirectory_CreateError(unsigned int code);
    ~OXTemporaryDirectory_CreateError() noexcept override;
};

#endif
