#ifndef ORVABASE_OCTEMPORARYFILE_H
#define ORVABASE_OCTEMPORARYFILE_H

#include "OCFilePath.h"
#include "OCHandleStream.h"

/// A file without a name, for reading and writing, that vanishes when its descriptor is closed.
///
/// It is created under `/var/tmp`, open to the process's user alone, and its name is removed at
/// once. For use by one thread at a time.
///
///     OCTemporaryFile file;
///     write(file.getHandle(), "scratch", 7);
class ORVABASE_EXPORT OCTemporaryFile : public OCObject {
public:
    /// Creates the file.
    /// @throws OXTemporaryFile_CreateError with the system's text; nothing stays open then.
    OCTemporaryFile();
    OCTemporaryFile(const OCTemporaryFile&) = delete;
    OCTemporaryFile& operator=(const OCTemporaryFile&) = delete;
    /// Closes the file.
    ~OCTemporaryFile() noexcept override;

    /// The descriptor, which stays the object's; -1 when the file is closed.
    int getHandle() const { return handle; }
    /// The name that the file had when it was created.
    ///
    /// Note: it does not exist any more.
    const OCFilePath& getPath() const { return path; }

    /// The steps of creation and closing, for derived classes. Creation closes first what is open;
    /// closing twice is harmless.
    /// @throws OXTemporaryFile_CreateError (the first two). When it was the name that could not be
    /// removed, the file is open then, and still has it.
    void initialize();
    void initializeFile();
    void destroy() noexcept;
    void destroyFile() noexcept;

private:
    OCFilePath path;
    int handle;
};

/// A stream over a temporary file of its own.
///
///     OCTemporaryFileStream scratch;
///     scratch.writeBuffer("one", 3);
///     scratch.setPosition(0);
class ORVABASE_EXPORT OCTemporaryFileStream : public OCHandleStream {
public:
    /// Creates the file.
    /// @throws OXTemporaryFile_CreateError with the system's text.
    OCTemporaryFileStream();
    /// Closes the file.
    ~OCTemporaryFileStream() noexcept override;

    /// The step of the construction that gives the file's descriptor to the stream.
    ///
    /// Note: the descriptor is the file's, not the stream's.
    void initialize() noexcept;
    void initializeHandle() noexcept;
    /// Close the file, which the stream loses. (Those of the base class would close the file's
    /// descriptor behind its back.)
    void destroyHandle() noexcept;
    void destroy() noexcept;

private:
    OCTemporaryFile file;
};

/// The family of the temporary file's failures.
class ORVABASE_EXPORT OXTemporaryFile : public OXAutoException {
public:
    ~OXTemporaryFile() noexcept override;

protected:
    OXTemporaryFile();
};

/// "Can not create the temporary file", with the system's text for `code`.
class ORVABASE_EXPORT OXTemporaryFile_CreateError : public OXTemporaryFile {
public:
    explicit OXTemporaryFile_CreateError(unsigned int code);
    ~OXTemporaryFile_CreateError() noexcept override;
};

#endif
