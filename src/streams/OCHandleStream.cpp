#include "OCHandleStream.h"

#include "OCSystemError.h"

#include <cerrno>
#include <unistd.h>

namespace {

// To be called before an exception is made: that allocates, which may change errno.
unsigned int lastError() noexcept {
    return static_cast<unsigned int>(errno);
}

} // namespace

OCHandleStream::~OCHandleStream() noexcept {
    destroy();
}

bool OCHandleStream::read(void* buffer, unsigned long& count) {
    if (count == 0)
        return true;
    const ssize_t n = ::read(handle, buffer, count);
    if (n == -1) {
        const unsigned int code = lastError();
        throw OXHandleStream_ReadError(code);
    }
    if (n == 0)
        return false;
    count = static_cast<unsigned long>(n);
    return true;
}

unsigned long OCHandleStream::seek(long offset, OEStreamSeek origin) {
    const off_t position = lseek(handle, offset, static_cast<int>(origin));
    if (position == -1) {
        const unsigned int code = lastError();
        throw OXHandleStream_SeekError(code);
    }
    return static_cast<unsigned long>(position);
}

void OCHandleStream::setSize(unsigned long size) {
    const unsigned long position = getPosition();
    const unsigned long current = getSize();
    if (current > size) {
        if (ftruncate(handle, static_cast<off_t>(size)) == -1) {
            const unsigned int code = lastError();
            throw OXHandleStream_SetSizeError(code);
        }
    } else if (current < size) {
        setPosition(size - 1);
        writeBuffer("", 1);
    }
    setPosition(position);
}

bool OCHandleStream::write(const void* buffer, unsigned long& count) {
    if (count == 0)
        return true;
    const ssize_t n = ::write(handle, buffer, count);
    if (n == -1) {
        const unsigned int code = lastError();
        throw OXHandleStream_WriteError(code);
    }
    count = static_cast<unsigned long>(n);
    return true;
}

void OCHandleStream::destroyHandle() {
    if (handle == -1)
        return;
    const int closing = handle;
    handle = -1;
    close(closing);
}

OXHandleStream::OXHandleStream() = default;
OXHandleStream::~OXHandleStream() noexcept = default;

OXHandleStream_ReadError::OXHandleStream_ReadError(unsigned int code) {
    setClass("OXHandleStream_ReadError");
    setMessage("Can not read from file stream");
    getDetails().addString(systemErrorText(code));
}
OXHandleStream_ReadError::~OXHandleStream_ReadError() noexcept = default;

OXHandleStream_SeekError::OXHandleStream_SeekError(unsigned int code) {
    setClass("OXHandleStream_SeekError");
    setMessage("Can not move to the specified file stream position");
    getDetails().addString(systemErrorText(code));
}
OXHandleStream_SeekError::~OXHandleStream_SeekError() noexcept = default;

OXHandleStream_SetSizeError::OXHandleStream_SetSizeError(unsigned int code) {
    setClass("OXHandleStream_SetSizeError");
    setMessage("Can not set the file stream size");
    getDetails().addString(systemErrorText(code));
}
OXHandleStream_SetSizeError::~OXHandleStream_SetSizeError() noexcept = default;

OXHandleStream_WriteError::OXHandleStream_WriteError(unsigned int code) {
    setClass("OXHandleStream_WriteError");
    setMessage("Can not write to the file stream");
    getDetails().addString(systemErrorText(code));
}
OXHandleStream_WriteError::~OXHandleStream_WriteError() noexcept = default;
