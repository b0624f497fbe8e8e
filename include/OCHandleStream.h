#ifndef ORVABASE_OCHANDLESTREAM_H
#define ORVABASE_OCHANDLESTREAM_H

#include "OCStream.h"

/// The stream over a POSIX file descriptor: each primitive is one system call.
///
/// It owns the descriptor that it was given until `destroyHandle`, `dropHandle` or its end. Calls
/// that were interrupted or came back short are not repeated here; `readBuffer` and `writeBuffer`
/// repeat short ones. For use by one thread at a time.
///
///     OCHandleStream stream;
///     stream.setHandle(dup(STDIN_FILENO));
///     char block[4096];
///     unsigned long count = sizeof block;
///     while (stream.read(block, count)) {
///         use(block, count);
///         count = sizeof block;
///     }
class ORVABASE_EXPORT OCHandleStream : public OCStream {
public:
    /// A stream without a descriptor.
    OCHandleStream() noexcept : handle(-1) {}
    /// Closes the descriptor.
    ~OCHandleStream() noexcept override;

    /// One `read`; false at the end of the data.
    /// @throws OXHandleStream_ReadError with the system's text.
    bool read(void* buffer, unsigned long& count) override;
    /// One `lseek`; the position may lie beyond the end. An origin beyond the three of
    /// `OEStreamSeek` goes to the system as it is, which refuses most of them.
    /// @throws OXHandleStream_SeekError with the system's text.
    unsigned long seek(long offset, OEStreamSeek origin) override;
    /// Makes the file `size` bytes long: cut by `ftruncate`, or extended by a zero byte written at
    /// its new end. The position stays, also when it then lies beyond the end.
    /// @throws OXHandleStream_SetSizeError, OXHandleStream_SeekError, OXHandleStream_WriteError,
    /// each with the system's text; OXStream_WriteError when the byte cannot be written. The
    /// position may then have moved.
    void setSize(unsigned long size) override;
    /// One `write`; true, with what it wrote in `count`, also when that is less than asked for.
    /// @throws OXHandleStream_WriteError with the system's text.
    bool write(const void* buffer, unsigned long& count) override;

    /// The descriptor, or -1 for none. The stream keeps it.
    int getHandle() const { return handle; }
    /// Takes ownership of descriptor `newHandle`; an earlier one is not closed.
    void setHandle(int newHandle) { handle = newHandle; }
    /// Gives the descriptor up without closing it; it is the caller's from now on.
    void dropHandle() { handle = -1; }
    /// Closes the descriptor, if there is one.
    void destroyHandle();
    void destroy() { destroyHandle(); }

private:
    int handle;
};

/// The family of the handle stream's failures.
class ORVABASE_EXPORT OXHandleStream : public OXStream {
public:
    ~OXHandleStream() noexcept override;

protected:
    OXHandleStream();
};

/// "Can not read from file stream", with the system's text for `code`.
class ORVABASE_EXPORT OXHandleStream_ReadError : public OXHandleStream {
public:
    explicit OXHandleStream_ReadError(unsigned int code);
    ~OXHandleStream_ReadError() noexcept override;
};

/// "Can not move to the specified file stream position", with the system's text for `code`.
class ORVABASE_EXPORT OXHandleStream_SeekError : public OXHandleStream {
public:
    explicit OXHandleStream_SeekError(unsigned int code);
    ~OXHandleStream_SeekError() noexcept override;
};

/// "Can not set the file stream size", with the system's text for `code`.
class ORVABASE_EXPORT OXHandleStream_SetSizeError : public OXHandleStream {
public:
    explicit OXHandleStream_SetSizeError(unsigned int code);
    ~OXHandleStream_SetSizeError() noexcept override;
};

/// "Can not write to the file stream", with the system's text for `code`.
class ORVABASE_EXPORT OXHandleStream_WriteError : public OXHandleStream {
public:
    explicit OXHandleStream_WriteError(unsigned int code);
    ~OXHandleStream_WriteError() noexcept override;
};

#endif
