#include "OCFileStream.h"

#include "OCCountdown.h"
#include "OCSystemError.h"

#include <cerrno>
#include <climits>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

// To be called before an exception is made: that allocates, which may change errno.
unsigned int lastError() noexcept {
    return static_cast<unsigned int>(errno);
}

struct stat fileStatus(int handle) {
    struct stat status;
    if (fstat(handle, &status) == -1) {
        const unsigned int code = lastError();
        throw OXFileStream_GetTimeError(code);
    }
    return status;
}

OCDateTime fileTime(time_t seconds) {
    struct tm fields;
    if (gmtime_r(&seconds, &fields) == nullptr) {
        const unsigned int code = lastError();
        throw OXFileStream_GetTimeError(code);
    }
    return OCDateTime(fields);
}

struct flock lockRecord(short type, unsigned long start, unsigned long length) noexcept {
    struct flock record = {};
    record.l_type = type;
    record.l_whence = SEEK_SET;
    record.l_start = static_cast<off_t>(start);
    record.l_len = static_cast<off_t>(length);
    return record;
}

} // namespace

OCFileStream::OCFileStream(const OCFilePath& filePath, OEFileCreateMode createMode,
                           OEFileShareMode shareMode)
    : path(filePath), openFlags(0), openMode(0) {
    // If this throws, the base's destructor does what destroy() would.
    initialize(createMode, shareMode);
}

OCFileStream::~OCFileStream() noexcept = default;

void OCFileStream::initialize(OEFileCreateMode createMode, OEFileShareMode) {
    initializeOpenFlags(createMode);
    initializeOpenMode();
    initializeHandle();
}

void OCFileStream::initializeOpenFlags(OEFileCreateMode createMode) {
    switch (static_cast<int>(createMode)) {
    case FileCreateModeCreate:
        openFlags = O_RDWR | O_CREAT | O_TRUNC;
        break;
    case FileCreateModeReadWrite:
        openFlags = O_RDWR;
        break;
    case FileCreateModeWrite:
        openFlags = O_WRONLY;
        break;
    default:
        openFlags = O_RDONLY;
        break;
    }
}

void OCFileStream::initializeOpenMode() {
    openMode = 0644;
}

void OCFileStream::initializeHandle() {
    const int opened = open(path.getString(), openFlags, openMode);
    if (opened == -1) {
        const unsigned int code = lastError();
        throw OXFileStream_CreateError(code);
    }
    setHandle(opened);
}

OCDateTime OCFileStream::getTimeAccessed() const {
    return fileTime(fileStatus(getHandle()).st_atime);
}

OCDateTime OCFileStream::getTimeModified() const {
    return fileTime(fileStatus(getHandle()).st_mtime);
}

OCDateTime OCFileStream::getTimeCreated() const {
    return fileTime(fileStatus(getHandle()).st_ctime);
}

OCFileStreamLock::~OCFileStreamLock() noexcept {
    unlock();
}

bool OCFileStreamLock::lock(unsigned long first, unsigned long byteCount) {
    unlock();
    if (byteCount == 0)
        return true;
    if (first > LONG_MAX || byteCount > LONG_MAX)
        throw OXFileStreamLock_AcquireError(EINVAL);
    struct flock record = lockRecord(F_WRLCK, first, byteCount);
    if (fcntl(stream.getHandle(), F_SETLK, &record) == -1) {
        const unsigned int code = lastError();
        if (code == EAGAIN || code == EACCES)
            return false;
        throw OXFileStreamLock_AcquireError(code);
    }
    length = byteCount;
    start = first;
    return true;
}

bool OCFileStreamLock::lock(unsigned long first, unsigned long byteCount, unsigned int timeout) {
    OCCountdown countdown(timeout);
    while (!countdown.timeout()) {
        if (lock(first, byteCount))
            return true;
        OCCountdown::delay(100);
    }
    return false;
}

void OCFileStreamLock::unlock() {
    if (length == 0)
        return;
    struct flock record = lockRecord(F_UNLCK, start, length);
    fcntl(stream.getHandle(), F_SETLK, &record);
    length = 0;
    start = 0;
}

OXFileStream::OXFileStream() = default;
OXFileStream::~OXFileStream() noexcept = default;

OXFileStream_CreateError::OXFileStream_CreateError(unsigned int code) {
    setClass("OXFileStream_CreateError");
    setMessage("Can not create the file stream");
    getDetails().addString(systemErrorText(code));
}
OXFileStream_CreateError::~OXFileStream_CreateError() noexcept = default;

OXFileStream_GetTimeError::OXFileStream_GetTimeError(unsigned int code) {
    setClass("OXFileStream_GetTimeError");
    setMessage("Can not get the file stream time");
    getDetails().addString(systemErrorText(code));
}
OXFileStream_GetTimeError::~OXFileStream_GetTimeError() noexcept = default;

OXFileStream_UnlinkError::OXFileStream_UnlinkError(unsigned int code) {
    setClass("OXFileStream_UnlinkError");
    setMessage("Can not unlink the file stream");
    getDetails().addString(systemErrorText(code));
}
OXFileStream_UnlinkError::~OXFileStream_UnlinkError() noexcept = default;

OXFileStreamLock::OXFileStreamLock() = default;
OXFileStreamLock::~OXFileStreamLock() noexcept = default;

OXFileStreamLock_AcquireError::OXFileStreamLock_AcquireError(unsigned int code) {
    setClass("OXFileStreamLock_AcquireError");
    setMessage("Can not acquire the file stream lock");
    getDetails().addString(systemErrorText(code));
}
OXFileStreamLock_AcquireError::~OXFileStreamLock_AcquireError() noexcept = default;
