#include "OCHandleStream.h"

#include "support/FaultInjection.h"
#include "support/FileCalls.h"
#include "support/ScratchDirectory.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Log = std::vector<std::string>;

/// A handle stream over a new file with a content, at position 0.
class OpenFile : public OCHandleStream {
public:
    explicit OpenFile(const std::string& content) : name(directory.write("file", content)) {
        setHandle(::open(name.c_str(), O_RDWR, 0));
    }
    std::string content() const { return directory.read("file"); }

private:
    ScratchDirectory directory;
    std::string name;
};

bool isOpen(int handle) {
    return ::fcntl(handle, F_GETFD, nullptr) != -1;
}

} // namespace

TEST(OCHandleStream, HoldsADescriptor) {
    EXPECT_EQ(sizeof(OCHandleStream), 16U);
}

TEST(OCHandleStream, OverridesThePrimitivesInTheirSlots) {
    EXPECT_EQ(slots::slotOf(&OCHandleStream::read), 2U);
    EXPECT_EQ(slots::slotOf(&OCHandleStream::seek), 3U);
    EXPECT_EQ(slots::slotOf(&OCHandleStream::setSize), 4U);
    EXPECT_EQ(slots::slotOf(&OCHandleStream::write), 5U);
    EXPECT_EQ(slots::slotCount<OCHandleStream>(), 6U);
}

TEST(OCHandleStream, IsNotCopyable) {
    EXPECT_FALSE(std::is_copy_constructible_v<OCHandleStream>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCHandleStream>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCHandleStream>);
}

TEST(OCHandleStream, HasNoDescriptorAtFirst) {
    OCHandleStream stream;
    EXPECT_EQ(stream.getHandle(), -1);
    Counting closing(calls::close);
    stream.destroyHandle();
    stream.destroy();
    EXPECT_EQ(closing.calls(), 0U);
}

TEST(OCHandleStream, ReadsByOneCallAndReportsWhatItDelivered) {
    OpenFile stream("0123456789");
    Log log;
    Replacement reading(calls::read, [&](int handle, void* buffer, size_t count) {
        log.push_back(std::to_string(handle == stream.getHandle()) + " " + std::to_string(count));
        return calls::read.original(handle, buffer, count < 4 ? count : 4);
    });
    char buffer[11] = "----------";
    unsigned long count = 10;
    EXPECT_TRUE(stream.read(buffer, count));
    EXPECT_EQ(count, 4U);
    EXPECT_EQ(std::string(buffer), "0123------");
    EXPECT_EQ(log, Log({"1 10"}));
}

TEST(OCHandleStream, ReadIsFalseAtTheEndAndLeavesTheCount) {
    OpenFile stream("01");
    char buffer[4];
    unsigned long count = 4;
    EXPECT_TRUE(stream.read(buffer, count));
    EXPECT_EQ(count, 2U);
    count = 4;
    EXPECT_FALSE(stream.read(buffer, count));
    EXPECT_EQ(count, 4U);
}

TEST(OCHandleStream, ReadIsFalseWhenThePipesWriterHasClosed) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    OCHandleStream reader;
    reader.setHandle(ends[0]);
    ASSERT_EQ(::write(ends[1], "abc", 3), 3);
    ::close(ends[1]);
    char buffer[8];
    unsigned long count = 8;
    EXPECT_TRUE(reader.read(buffer, count));
    EXPECT_EQ(count, 3U);
    count = 8;
    EXPECT_FALSE(reader.read(buffer, count));
}

TEST(OCHandleStream, RequestsOfZeroBytesAreTrueWithoutACall) {
    OCHandleStream stream;
    Counting reading(calls::read);
    Counting writing(calls::write);
    unsigned long count = 0;
    EXPECT_TRUE(stream.read(nullptr, count));
    EXPECT_TRUE(stream.write(nullptr, count));
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(reading.calls(), 0U);
    EXPECT_EQ(writing.calls(), 0U);
}

TEST(OCHandleStream, AFailingReadThrowsWithTheSystemsText) {
    OpenFile stream("0123456789");
    char buffer[4];
    unsigned long count = 4;
    {
        Failing failing(calls::read, EIO);
        EXPECT_EQ(thrown<OXHandleStream_ReadError>([&] { stream.read(buffer, count); }),
                  "OXHandleStream_ReadError: Can not read from file stream (Input/output error)");
        EXPECT_EQ(failing.calls(), 1U);
    }
    EXPECT_EQ(count, 4U);
    EXPECT_TRUE(stream.read(buffer, count));
    EXPECT_EQ(std::string(buffer, 4), "0123");
}

TEST(OCHandleStream, AnInterruptedCallIsNotRepeated) {
    OpenFile stream("0123456789");
    char buffer[4];
    Failing reading(calls::read, EINTR);
    EXPECT_EQ(thrown<OXHandleStream_ReadError>([&] { stream.readBuffer(buffer, 4); }),
              "OXHandleStream_ReadError: Can not read from file stream (Interrupted system call)");
    EXPECT_EQ(reading.calls(), 1U);
    Failing writing(calls::write, EINTR);
    EXPECT_EQ(
        thrown<OXHandleStream_WriteError>([&] { stream.writeBuffer("abc", 3); }),
        "OXHandleStream_WriteError: Can not write to the file stream (Interrupted system call)");
    EXPECT_EQ(writing.calls(), 1U);
}

TEST(OCHandleStream, TheErrorNumberIsTakenBeforeTheExceptionIsMade) {
    // Memory is taken for the exception between the failure and the text: it must not matter.
    OCHandleStream stream;
    char byte;
    unsigned long count = 1;
    std::string text;
    {
        // The very first request, for the exception object itself, falls back to a reserve.
        Failing failing(calls::read, EIO);
        fault::HeapFault heap(1);
        try {
            stream.read(&byte, count);
        } catch (const OXHandleStream_ReadError& failure) {
            heap.disarm();
            text = failure.getMessage().getString();
        }
        EXPECT_TRUE(heap.triggered());
    }
    EXPECT_EQ(text, "Can not read from file stream (Input/output error)");
}

TEST(OCHandleStream, WritesByOneCallAndReportsWhatItTook) {
    OpenFile stream("");
    Log log;
    Replacement writing(calls::write, [&](int handle, const void* buffer, size_t count) {
        log.push_back(std::to_string(handle == stream.getHandle()) + " " + std::to_string(count));
        return calls::write.original(handle, buffer, count < 3 ? count : 3);
    });
    unsigned long count = 5;
    EXPECT_TRUE(stream.write("hello", count));
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(log, Log({"1 5"}));
    EXPECT_EQ(stream.content(), "hel");
}

TEST(OCHandleStream, AWriteOfNothingIsTrueWithACountOfZero) {
    OpenFile stream("");
    Replacement writing(calls::write, [](int, const void*, size_t) -> ssize_t { return 0; });
    unsigned long count = 5;
    EXPECT_TRUE(stream.write("hello", count));
    EXPECT_EQ(count, 0U);
}

TEST(OCHandleStream, WriteBufferGivesUpAfterTwoWritesOfNothing) {
    OpenFile stream("");
    unsigned long number = 0;
    Replacement writing(calls::write, [&](int, const void*, size_t) -> ssize_t {
        ++number;
        return 0;
    });
    EXPECT_EQ(thrown<OXStream_WriteError>([&] { stream.writeBuffer("hello", 5); }),
              "OXStream_WriteError: Writing to the stream failed");
    EXPECT_EQ(number, 2U);
}

TEST(OCHandleStream, WholeBuffersPassThroughShortTransfers) {
    OpenFile stream("");
    Replacement writing(calls::write, [](int handle, const void* buffer, size_t count) {
        return calls::write.original(handle, buffer, count < 3 ? count : 3);
    });
    Replacement reading(calls::read, [](int handle, void* buffer, size_t count) {
        return calls::read.original(handle, buffer, count < 2 ? count : 2);
    });
    stream.writeBuffer("0123456789", 10);
    EXPECT_EQ(stream.content(), "0123456789");
    stream.setPosition(0);
    char buffer[10];
    stream.readBuffer(buffer, 10);
    EXPECT_EQ(std::string(buffer, 10), "0123456789");
}

TEST(OCHandleStream, AFailingWriteThrowsWithTheSystemsText) {
    OpenFile stream("");
    unsigned long count = 4;
    Failing failing(calls::write, ENOSPC);
    EXPECT_EQ(
        thrown<OXHandleStream_WriteError>([&] { stream.write("0123", count); }),
        "OXHandleStream_WriteError: Can not write to the file stream (No space left on device)");
    EXPECT_EQ(failing.calls(), 1U);
    EXPECT_EQ(count, 4U);
    EXPECT_EQ(stream.content(), "");
}

TEST(OCHandleStream, WithoutADescriptorEveryPrimitiveThrows) {
    OCHandleStream stream;
    char byte = 0;
    unsigned long count = 1;
    EXPECT_EQ(thrown<OXHandleStream_ReadError>([&] { stream.read(&byte, count); }),
              "OXHandleStream_ReadError: Can not read from file stream (Bad file descriptor)");
    EXPECT_EQ(thrown<OXHandleStream_WriteError>([&] { stream.write(&byte, count); }),
              "OXHandleStream_WriteError: Can not write to the file stream (Bad file descriptor)");
    EXPECT_EQ(thrown<OXHandleStream_SeekError>([&] { stream.seek(0, StreamSeekCurrent); }),
              "OXHandleStream_SeekError: Can not move to the specified file stream position (Bad "
              "file descriptor)");
    EXPECT_EQ(thrown<OXHandleStream_SeekError>([&] { stream.setSize(1); }),
              "OXHandleStream_SeekError: Can not move to the specified file stream position (Bad "
              "file descriptor)");
}

TEST(OCHandleStream, SeeksByLseekWithTheOriginAsItIs) {
    OpenFile stream("0123456789");
    Log log;
    Replacement seeking(calls::lseek, [&](int handle, off_t offset, int origin) {
        log.push_back(std::to_string(handle == stream.getHandle()) + " " + std::to_string(offset) +
                      " " + std::to_string(origin));
        return calls::lseek.original(handle, offset, origin);
    });
    EXPECT_EQ(stream.seek(4, StreamSeekBeginning), 4U);
    EXPECT_EQ(stream.seek(-1, StreamSeekCurrent), 3U);
    EXPECT_EQ(stream.seek(-2, StreamSeekEnd), 8U);
    EXPECT_EQ(log, Log({"1 4 0", "1 -1 1", "1 -2 2"}));
    EXPECT_EQ(stream.getSize(), 10U);
    EXPECT_EQ(stream.getPosition(), 8U);
}

TEST(OCHandleStream, MayBePositionedBeyondItsEnd) {
    OpenFile stream("0123");
    EXPECT_EQ(stream.seek(10, StreamSeekBeginning), 10U);
    EXPECT_EQ(stream.seek(5, StreamSeekEnd), 9U);
    EXPECT_EQ(stream.getSize(), 4U);
    EXPECT_EQ(stream.getPosition(), 9U);
    stream.writeBuffer("x", 1);
    EXPECT_EQ(stream.content(), std::string("0123\0\0\0\0\0x", 10));
}

TEST(OCHandleStream, ASeekThatTheSystemRefusesThrows) {
    OpenFile stream("0123");
    const char* invalid = "OXHandleStream_SeekError: Can not move to the specified file stream "
                          "position (Invalid argument)";
    EXPECT_EQ(thrown<OXHandleStream_SeekError>([&] { stream.seek(-1, StreamSeekBeginning); }),
              invalid);
    EXPECT_EQ(thrown<OXHandleStream_SeekError>([&] { stream.seek(-5, StreamSeekEnd); }), invalid);
    EXPECT_EQ(
        thrown<OXHandleStream_SeekError>([&] { stream.seek(0, static_cast<OEStreamSeek>(77)); }),
        invalid);
    EXPECT_EQ(stream.getPosition(), 0U);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ::close(ends[1]);
    OCHandleStream reader;
    reader.setHandle(ends[0]);
    EXPECT_EQ(thrown<OXHandleStream_SeekError>([&] { reader.getPosition(); }),
              "OXHandleStream_SeekError: Can not move to the specified file stream position "
              "(Illegal seek)");
}

TEST(OCHandleStream, SetSizeExtendsByAZeroByteAtTheNewEnd) {
    OpenFile stream("");
    Log log;
    Replacement seeking(calls::lseek, [&](int handle, off_t offset, int origin) {
        log.push_back("lseek " + std::to_string(offset) + " " + std::to_string(origin));
        return calls::lseek.original(handle, offset, origin);
    });
    Replacement writing(calls::write, [&](int handle, const void* buffer, size_t count) {
        log.push_back("write " + std::to_string(count));
        return calls::write.original(handle, buffer, count);
    });
    Replacement cutting(calls::ftruncate, [&](int handle, off_t size) {
        log.push_back("ftruncate " + std::to_string(size));
        return calls::ftruncate.original(handle, size);
    });
    stream.setSize(10);
    EXPECT_EQ(log, Log({"lseek 0 1", "lseek 0 1", "lseek 0 2", "lseek 0 0", "lseek 9 0", "write 1",
                        "lseek 0 0"}));
    EXPECT_EQ(stream.content(), std::string(10, '\0'));
    EXPECT_EQ(stream.getPosition(), 0U);

    log.clear();
    stream.seek(7, StreamSeekBeginning);
    log.clear();
    stream.setSize(3);
    EXPECT_EQ(
        log, Log({"lseek 0 1", "lseek 0 1", "lseek 0 2", "lseek 7 0", "ftruncate 3", "lseek 7 0"}));
    EXPECT_EQ(stream.content(), std::string(3, '\0'));
    EXPECT_EQ(stream.getPosition(), 7U);

    log.clear();
    stream.setSize(3);
    EXPECT_EQ(log, Log({"lseek 0 1", "lseek 0 1", "lseek 0 2", "lseek 7 0", "lseek 7 0"}));
    stream.setSize(0);
    EXPECT_EQ(stream.content(), "");
}

TEST(OCHandleStream, SetSizeOfOneWritesTheFirstByte) {
    OpenFile stream("");
    stream.setSize(1);
    EXPECT_EQ(stream.content(), std::string(1, '\0'));
    EXPECT_EQ(stream.getPosition(), 0U);
}

TEST(OCHandleStream, SetSizeKeepsTheBytesAndThePosition) {
    OpenFile stream("0123456789");
    stream.setPosition(5);
    stream.setSize(12);
    EXPECT_EQ(stream.getPosition(), 5U);
    EXPECT_EQ(stream.content(), std::string("0123456789\0\0", 12));
    stream.setSize(4);
    EXPECT_EQ(stream.getPosition(), 5U);
    EXPECT_EQ(stream.content(), "0123");
}

TEST(OCHandleStream, AFailingTruncationThrowsAndDoesNotRestoreThePosition) {
    OpenFile stream("0123456789");
    stream.setPosition(5);
    Counting seeking(calls::lseek);
    Failing failing(calls::ftruncate, EPERM);
    EXPECT_EQ(thrown<OXHandleStream_SetSizeError>([&] { stream.setSize(3); }),
              "OXHandleStream_SetSizeError: Can not set the file stream size (Operation not "
              "permitted)");
    EXPECT_EQ(failing.calls(), 1U);
    EXPECT_EQ(seeking.calls(), 4U);
    EXPECT_EQ(stream.content(), "0123456789");
}

TEST(OCHandleStream, EveryStepOfSetSizeReportsItsFailure) {
    // Position, the three seeks of the size, to the new end, back.
    for (unsigned long number = 1; number <= 6; ++number) {
        SCOPED_TRACE(number);
        OpenFile stream("0123");
        Failing failing(calls::lseek, EOVERFLOW, number, 1);
        EXPECT_EQ(thrown<OXHandleStream_SeekError>([&] { stream.setSize(10); }),
                  "OXHandleStream_SeekError: Can not move to the specified file stream position "
                  "(Value too large for defined data type)");
        EXPECT_EQ(failing.calls(), number);
    }
    OpenFile stream("0123");
    {
        Failing failing(calls::write, EFBIG);
        EXPECT_EQ(thrown<OXHandleStream_WriteError>([&] { stream.setSize(10); }),
                  "OXHandleStream_WriteError: Can not write to the file stream (File too large)");
    }
    Replacement writing(calls::write, [](int, const void*, size_t) -> ssize_t { return 0; });
    EXPECT_EQ(thrown<OXStream_WriteError>([&] { stream.setSize(10); }),
              "OXStream_WriteError: Writing to the stream failed");
    EXPECT_EQ(stream.content(), "0123");
}

TEST(OCHandleStream, ASizeThatNoFileCanHaveIsTheSystemsFailure) {
    OpenFile stream("0123");
    EXPECT_EQ(thrown<OXHandleStream_SeekError>([&] { stream.setSize(~0UL); }),
              "OXHandleStream_SeekError: Can not move to the specified file stream position "
              "(Invalid argument)");
    EXPECT_EQ(stream.content(), "0123");
}

TEST(OCHandleStream, DestroyingClosesTheDescriptorOnce) {
    OpenFile stream("");
    const int handle = stream.getHandle();
    ASSERT_TRUE(isOpen(handle));
    Log closed;
    Replacement closing(calls::close, [&](int descriptor) {
        closed.push_back(std::to_string(descriptor));
        return calls::close.original(descriptor);
    });
    stream.destroyHandle();
    EXPECT_EQ(stream.getHandle(), -1);
    stream.destroyHandle();
    stream.destroy();
    EXPECT_EQ(closed, Log({std::to_string(handle)}));
    EXPECT_FALSE(isOpen(handle));
}

TEST(OCHandleStream, DestroyClosesTheDescriptor) {
    OpenFile stream("");
    const int handle = stream.getHandle();
    stream.destroy();
    EXPECT_EQ(stream.getHandle(), -1);
    EXPECT_FALSE(isOpen(handle));
}

TEST(OCHandleStream, TheDestructorClosesTheDescriptor) {
    int handle;
    {
        OpenFile stream("");
        handle = stream.getHandle();
        ASSERT_TRUE(isOpen(handle));
    }
    EXPECT_FALSE(isOpen(handle));
}

TEST(OCHandleStream, AFailingCloseIsNotReported) {
    int handle;
    {
        OpenFile stream("");
        handle = stream.getHandle();
        Failing failing(calls::close, EIO);
        stream.destroyHandle();
        EXPECT_EQ(failing.calls(), 1U);
        EXPECT_EQ(stream.getHandle(), -1);
    }
    ASSERT_TRUE(isOpen(handle));
    ::close(handle);
}

TEST(OCHandleStream, DroppingGivesTheDescriptorToTheCaller) {
    int handle;
    {
        OpenFile stream("");
        handle = stream.getHandle();
        Counting closing(calls::close);
        stream.dropHandle();
        EXPECT_EQ(stream.getHandle(), -1);
        stream.destroy();
        EXPECT_EQ(closing.calls(), 0U);
    }
    ASSERT_TRUE(isOpen(handle));
    ::close(handle);
}

TEST(OCHandleStream, SettingADescriptorDoesNotCloseTheEarlierOne) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    {
        OCHandleStream stream;
        stream.setHandle(ends[0]);
        stream.setHandle(ends[1]);
        EXPECT_EQ(stream.getHandle(), ends[1]);
        EXPECT_TRUE(isOpen(ends[0]));
    }
    EXPECT_TRUE(isOpen(ends[0]));
    EXPECT_FALSE(isOpen(ends[1]));
    ::close(ends[0]);
}

TEST(OCHandleStream, DescriptorZeroIsADescriptor) {
    OCHandleStream stream;
    stream.setHandle(0);
    Log closed;
    Replacement closing(calls::close, [&](int handle) {
        closed.push_back(std::to_string(handle));
        return 0;
    });
    stream.destroyHandle();
    EXPECT_EQ(closed, Log({"0"}));
}

TEST(OXHandleStream, LeavesStoreTheirClassMessageAndTheSystemsText) {
    const unsigned int code = ENOENT;
    EXPECT_EQ(thrown<OXHandleStream_ReadError>([=] { throw OXHandleStream_ReadError(code); }),
              "OXHandleStream_ReadError: Can not read from file stream (No such file or "
              "directory)");
    EXPECT_EQ(thrown<OXHandleStream_SeekError>([=] { throw OXHandleStream_SeekError(code); }),
              "OXHandleStream_SeekError: Can not move to the specified file stream position (No "
              "such file or directory)");
    EXPECT_EQ(thrown<OXHandleStream_SetSizeError>([=] { throw OXHandleStream_SetSizeError(code); }),
              "OXHandleStream_SetSizeError: Can not set the file stream size (No such file or "
              "directory)");
    EXPECT_EQ(thrown<OXHandleStream_WriteError>([=] { throw OXHandleStream_WriteError(code); }),
              "OXHandleStream_WriteError: Can not write to the file stream (No such file or "
              "directory)");
    EXPECT_EQ(OXHandleStream_ReadError(code).getDetails().getCount(), 1U);
    EXPECT_TRUE((std::is_base_of_v<OXStream, OXHandleStream>));
    EXPECT_TRUE((std::is_base_of_v<OXHandleStream, OXHandleStream_ReadError>));
    EXPECT_TRUE((std::is_base_of_v<OXHandleStream, OXHandleStream_SeekError>));
    EXPECT_TRUE((std::is_base_of_v<OXHandleStream, OXHandleStream_SetSizeError>));
    EXPECT_TRUE((std::is_base_of_v<OXHandleStream, OXHandleStream_WriteError>));
    EXPECT_FALSE(std::is_default_constructible_v<OXHandleStream>);
    EXPECT_EQ(sizeof(OXHandleStream_ReadError), sizeof(OXAutoException));
}
