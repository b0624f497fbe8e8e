#include "OCStream.h"

namespace {

constexpr unsigned long largestOffset = 0x7FFFFFFFFFFFFFFF;

} // namespace

OCStream::~OCStream() = default;

unsigned long OCStream::getPosition() const {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): the position stays
    return const_cast<OCStream*>(this)->seek(0, StreamSeekCurrent);
}

unsigned long OCStream::getSize() const {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): the position is put back
    OCStream& stream = const_cast<OCStream&>(*this);
    const unsigned long position = stream.seek(0, StreamSeekCurrent);
    const unsigned long size = stream.seek(0, StreamSeekEnd);
    stream.seek(static_cast<long>(position), StreamSeekBeginning);
    return size;
}

void OCStream::setPosition(unsigned long position) {
    unsigned long step = position < largestOffset ? position : largestOffset;
    seek(static_cast<long>(step), StreamSeekBeginning);
    for (position -= step; position > 0; position -= step) {
        step = position < largestOffset ? position : largestOffset;
        seek(static_cast<long>(step), StreamSeekCurrent);
    }
}

/// Goes on after a first read that answered `delivered` and left `n` of the `count` bytes.
void OCStream::continueReading(void* buffer, unsigned long count, bool delivered, unsigned long n) {
    char* to = static_cast<char*>(buffer);
    for (;;) {
        if (!delivered || n == 0)
            throw OXStream_ReadError();
        if (n >= count)
            return;
        to += n;
        count -= n;
        n = count;
        delivered = read(to, n);
    }
}

/// Goes on after a first write that answered `taken` and took `n` of the `count` bytes.
void OCStream::continueWriting(const void* buffer, unsigned long count, bool taken,
                               unsigned long n) {
    const char* from = static_cast<const char*>(buffer);
    bool stalled = false;
    for (;;) {
        if (!taken || (n == 0 && stalled))
            throw OXStream_WriteError();
        if (n >= count)
            return;
        stalled = n == 0;
        from += n;
        count -= n;
        n = count;
        taken = write(from, n);
    }
}

OCNullStream::~OCNullStream() noexcept = default;

bool OCNullStream::read(void*, unsigned long&) {
    return false;
}

unsigned long OCNullStream::seek(long, OEStreamSeek) {
    return 0;
}

void OCNullStream::setSize(unsigned long) {}

bool OCNullStream::write(const void*, unsigned long&) {
    return true;
}

OXStream::OXStream() = default;
OXStream::~OXStream() noexcept = default;

OXStream_OperationUnsupported::OXStream_OperationUnsupported(const OCAnsiString& operation) {
    setClass("OXStream_OperationUnsupported");
    setMessage("The stream operation is unsupported");
    getDetails().addString(operation);
}
OXStream_OperationUnsupported::~OXStream_OperationUnsupported() noexcept = default;

OXStream_ReadError::OXStream_ReadError() {
    setClass("OXStream_ReadError");
    setMessage("Read from the stream failed");
}
OXStream_ReadError::~OXStream_ReadError() noexcept = default;

OXStream_WriteError::OXStream_WriteError() {
    setClass("OXStream_WriteError");
    setMessage("Writing to the stream failed");
}
OXStream_WriteError::~OXStream_WriteError() noexcept = default;
