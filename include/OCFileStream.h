#ifndef ORVABASE_OCFILESTREAM_H
#define ORVABASE_OCFILESTREAM_H

#include "OCDateTime.h"
#include "OCFilePath.h"
#include "OCHandleStream.h"

/// How a file stream opens its file. Any other value opens for reading.
enum OEFileCreateMode : int {
    FileCreateModeCreate = 0,    ///< Creates the file or empties it; for reading and writing.
    FileCreateModeReadWrite = 1, ///< Opens an existing file for reading and writing.
    FileCreateModeRead = 2,      ///< Opens an existing file for reading.
    FileCreateModeWrite = 3      ///< Opens an existing file for writing.
};

/// What others may do with the file meanwhile.
///
/// Note: accepted and ignored; see `OCFileStreamLock` for keeping other processes out.
enum OEFileShareMode : int {
    FileShareModeNone = 0,
    FileShareModeRead = 1,
    FileShareModeWrite = 2,
    FileShareModeReadWrite = 3
};

/// The stream over a file, which it opens in the constructor and closes in the destructor. For use
/// by one thread at a time.
///
///     OCFileStream file("/etc/hostname", FileCreateModeRead, FileShareModeRead);
///     OCAnsiString name;
///     name.setLength(file.getSize());
///     file.readBuffer(name.getString(), name.getLength());
class ORVABASE_EXPORT OCFileStream : public OCHandleStream {
public:
    /// Opens `filePath`. A new file gets the permissions 0644 less the process's umask.
    /// @throws OXFileStream_CreateError with the system's text.
    OCFileStream(const OCFilePath& filePath, OEFileCreateMode createMode,
                 OEFileShareMode shareMode);
    ~OCFileStream() noexcept override;

    /// The path that the file was opened with.
    const OCFilePath& getPath() const { return path; }

    /// When the file was last read, written, or changed in its content or attributes: UTC, whole
    /// seconds.
    ///
    /// Note: the system keeps no time of creation; `getTimeCreated` tells the last change of
    /// content or attributes.
    /// @throws OXFileStream_GetTimeError with the system's text.
    OCDateTime getTimeAccessed() const;
    OCDateTime getTimeModified() const;
    OCDateTime getTimeCreated() const;

    /// The steps of opening, for derived classes: the flags, the permissions, the `open`. They do
    /// not close a descriptor that the stream already has.
    /// @throws OXFileStream_CreateError with the system's text (the first and the last).
    void initialize(OEFileCreateMode createMode, OEFileShareMode shareMode);
    void initializeOpenFlags(OEFileCreateMode createMode);
    void initializeOpenMode();
    void initializeHandle();

private:
    OCFilePath path;
    int openFlags;
    int openMode;
};

/// Keeps other processes from locking a range of bytes of a file, as long as it exists.
///
/// The lock is exclusive and advisory: it stops only those who ask for a lock too. It holds one
/// range at a time. It refers to the stream, which must outlive it and be open for writing.
///
/// Note: these locks belong to the process. Two lock objects of one process do not keep each other
/// out, and closing any descriptor of the file gives up all of the process's locks on it.
///
///     OCFileStreamLock lock(file);
///     if (!lock.lock(0, 100, 5000))
///         return;              // another process has held it for five seconds
///     update(file);
class ORVABASE_EXPORT OCFileStreamLock : public OCObject {
public:
    /// Locks nothing yet.
    explicit OCFileStreamLock(OCFileStream& target) noexcept
        : stream(target), length(0), start(0) {}
    OCFileStreamLock(const OCFileStreamLock&) = delete;
    OCFileStreamLock& operator=(const OCFileStreamLock&) = delete;
    /// Gives the range up.
    ~OCFileStreamLock() noexcept override;

    /// Gives up the range held and tries once to lock `byteCount` bytes from `first` on. False when
    /// another process holds a part of them. A count of 0 locks nothing and is true.
    /// @throws OXFileStreamLock_AcquireError with the system's text (`EINVAL` for a number of 2^63
    /// or more). The range held before is gone then.
    bool lock(unsigned long first, unsigned long byteCount);
    /// The same, tried every 100 milliseconds until it succeeds or `timeout` milliseconds are over.
    ///
    /// Note: the time is looked at before each attempt. So a time-out of 0 is false without any
    /// attempt, and the range held before is kept.
    /// @throws OXFileStreamLock_AcquireError with the system's text; OXCountdown_AcquireTimeError
    bool lock(unsigned long first, unsigned long byteCount, unsigned int timeout);
    /// Gives up the range held, if there is one.
    void unlock();

private:
    OCFileStream& stream;
    unsigned long length;
    unsigned long start;
};

/// The family of the file stream's failures.
class ORVABASE_EXPORT OXFileStream : public OXHandleStream {
public:
    ~OXFileStream() noexcept override;

protected:
    OXFileStream();
};

/// "Can not create the file stream", with the system's text for `code`.
class ORVABASE_EXPORT OXFileStream_CreateError : public OXFileStream {
public:
    explicit OXFileStream_CreateError(unsigned int code);
    ~OXFileStream_CreateError() noexcept override;
};

/// "Can not get the file stream time", with the system's text for `code`.
class ORVABASE_EXPORT OXFileStream_GetTimeError : public OXFileStream {
public:
    explicit OXFileStream_GetTimeError(unsigned int code);
    ~OXFileStream_GetTimeError() noexcept override;
};

/// "Can not unlink the file stream", with the system's text for `code`. For streams that remove
/// their file.
class ORVABASE_EXPORT OXFileStream_UnlinkError : public OXFileStream {
public:
    explicit OXFileStream_UnlinkError(unsigned int code);
    ~OXFileStream_UnlinkError() noexcept override;
};

/// The family of the file lock's failures.
class ORVABASE_EXPORT OXFileStreamLock : public OXFileStream {
public:
    ~OXFileStreamLock() noexcept override;

protected:
    OXFileStreamLock();
};

/// "Can not acquire the file stream lock", with the system's text for `code`.
class ORVABASE_EXPORT OXFileStreamLock_AcquireError : public OXFileStreamLock {
public:
    explicit OXFileStreamLock_AcquireError(unsigned int code);
    ~OXFileStreamLock_AcquireError() noexcept override;
};

#endif
