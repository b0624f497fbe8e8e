#include "OCFileStream.h"

#include "support/CalendarCalls.h"
#include "support/FaultInjection.h"
#include "support/FileCalls.h"
#include "support/ScratchDirectory.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <sys/stat.h>
#include <type_traits>
#include <vector>

namespace {

struct OpenCall {
    std::string path;
    int flags;
    mode_t mode;
};

/// The call of `open` that a file stream makes.
OpenCall openedBy(OEFileCreateMode createMode, OEFileShareMode shareMode) {
    OpenCall call{"", -1, 0};
    Replacement opening(calls::open, [&](const char* path, int flags, mode_t mode) {
        call = {path, flags, mode};
        return calls::open.original("/dev/null", O_RDWR, 0);
    });
    OCFileStream stream("some/path", createMode, shareMode);
    return call;
}

std::string text(const OCDateTime& time) {
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%04u-%02u-%02u %02u:%02u:%02u", time.year, time.month,
                  time.day, time.hour, time.minute, time.second);
    return buffer;
}

} // namespace

TEST(OCFileStream, HoldsAPathAndTwoNumbersBehindTheDescriptor) {
    EXPECT_EQ(sizeof(OCFileStream), 16 + sizeof(OCFilePath) + 8);
    EXPECT_EQ(sizeof(OEFileCreateMode), 4U);
    EXPECT_EQ(sizeof(OEFileShareMode), 4U);
}

TEST(OCFileStream, InheritsThePrimitives) {
    EXPECT_TRUE((std::is_same_v<decltype(&OCFileStream::read),
                                bool (OCHandleStream::*)(void*, unsigned long&)>));
    EXPECT_TRUE((std::is_same_v<decltype(&OCFileStream::seek),
                                unsigned long (OCHandleStream::*)(long, OEStreamSeek)>));
    EXPECT_TRUE((
        std::is_same_v<decltype(&OCFileStream::setSize), void (OCHandleStream::*)(unsigned long)>));
    EXPECT_TRUE((std::is_same_v<decltype(&OCFileStream::write),
                                bool (OCHandleStream::*)(const void*, unsigned long&)>));
    EXPECT_EQ(slots::slotCount<OCFileStream>(), 6U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCFileStream>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCFileStream>);
}

TEST(OCFileStream, ModesHaveTheirValues) {
    EXPECT_EQ(FileCreateModeCreate, 0);
    EXPECT_EQ(FileCreateModeReadWrite, 1);
    EXPECT_EQ(FileCreateModeRead, 2);
    EXPECT_EQ(FileCreateModeWrite, 3);
    EXPECT_EQ(FileShareModeNone, 0);
    EXPECT_EQ(FileShareModeRead, 1);
    EXPECT_EQ(FileShareModeWrite, 2);
    EXPECT_EQ(FileShareModeReadWrite, 3);
}

TEST(OCFileStream, TheCreateModeSelectsTheFlagsOfOpen) {
    EXPECT_EQ(openedBy(FileCreateModeCreate, FileShareModeNone).flags, O_RDWR | O_CREAT | O_TRUNC);
    EXPECT_EQ(openedBy(FileCreateModeReadWrite, FileShareModeNone).flags, O_RDWR);
    EXPECT_EQ(openedBy(FileCreateModeRead, FileShareModeNone).flags, O_RDONLY);
    EXPECT_EQ(openedBy(FileCreateModeWrite, FileShareModeNone).flags, O_WRONLY);
    for (const int other : {4, 5, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(openedBy(static_cast<OEFileCreateMode>(other), FileShareModeNone).flags,
                  O_RDONLY);
}

TEST(OCFileStream, ThePathAndThePermissionsAreTheSameInEveryMode) {
    for (int mode = 0; mode < 5; ++mode) {
        const OpenCall call = openedBy(static_cast<OEFileCreateMode>(mode), FileShareModeRead);
        EXPECT_EQ(call.path, "some/path");
        EXPECT_EQ(call.mode, 0644U);
    }
}

TEST(OCFileStream, TheShareModeHasNoEffect) {
    Counting locking(calls::fcntl);
    for (const int mode : {0, 1, 2, 3, 4, -1}) {
        const OpenCall call = openedBy(FileCreateModeRead, static_cast<OEFileShareMode>(mode));
        EXPECT_EQ(call.flags, O_RDONLY);
        EXPECT_EQ(call.mode, 0644U);
    }
    EXPECT_EQ(locking.calls(), 0U);
}

TEST(OCFileStream, CreatesAFileForReadingAndWriting) {
    ScratchDirectory directory;
    const std::string name = directory.file("new");
    const mode_t before = umask(027);
    {
        OCFileStream stream(name.c_str(), FileCreateModeCreate, FileShareModeNone);
        EXPECT_TRUE(stream.getPath() == name.c_str());
        EXPECT_GE(stream.getHandle(), 0);
        stream.writeBuffer("hello", 5);
        stream.setPosition(1);
        char buffer[4];
        stream.readBuffer(buffer, 4);
        EXPECT_EQ(std::string(buffer, 4), "ello");
    }
    umask(before);
    EXPECT_EQ(directory.read("new"), "hello");
    struct stat status;
    ASSERT_EQ(::stat(name.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST(OCFileStream, CreatingEmptiesAnExistingFile) {
    ScratchDirectory directory;
    const std::string name = directory.write("old", "content");
    OCFileStream stream(name.c_str(), FileCreateModeCreate, FileShareModeNone);
    EXPECT_EQ(stream.getSize(), 0U);
    EXPECT_EQ(directory.read("old"), "");
}

TEST(OCFileStream, OpensAnExistingFileForReadingAndWritingAsItIs) {
    ScratchDirectory directory;
    const std::string name = directory.write("old", "content");
    OCFileStream stream(name.c_str(), FileCreateModeReadWrite, FileShareModeNone);
    EXPECT_EQ(stream.getSize(), 7U);
    EXPECT_EQ(stream.getPosition(), 0U);
    stream.writeBuffer("C", 1);
    char next;
    stream.readBuffer(&next, 1);
    EXPECT_EQ(next, 'o');
    EXPECT_EQ(directory.read("old"), "Content");
}

TEST(OCFileStream, AStreamForReadingCannotWrite) {
    ScratchDirectory directory;
    const std::string name = directory.write("old", "content");
    OCFileStream stream(name.c_str(), FileCreateModeRead, FileShareModeRead);
    char byte;
    stream.readBuffer(&byte, 1);
    EXPECT_EQ(byte, 'c');
    EXPECT_EQ(thrown<OXHandleStream_WriteError>([&] { stream.writeBuffer("x", 1); }),
              "OXHandleStream_WriteError: Can not write to the file stream (Bad file descriptor)");
    EXPECT_EQ(thrown<OXHandleStream_SetSizeError>([&] { stream.setSize(1); }),
              "OXHandleStream_SetSizeError: Can not set the file stream size (Invalid argument)");
    EXPECT_EQ(directory.read("old"), "content");
}

TEST(OCFileStream, AStreamForWritingCannotRead) {
    ScratchDirectory directory;
    const std::string name = directory.write("old", "content");
    OCFileStream stream(name.c_str(), FileCreateModeWrite, FileShareModeNone);
    stream.writeBuffer("C", 1);
    EXPECT_EQ(directory.read("old"), "Content");
    char byte;
    EXPECT_EQ(thrown<OXHandleStream_ReadError>([&] { stream.readBuffer(&byte, 1); }),
              "OXHandleStream_ReadError: Can not read from file stream (Bad file descriptor)");
}

TEST(OCFileStream, AMissingFileIsCreatedOnlyByTheCreatingMode) {
    ScratchDirectory directory;
    const std::string name = directory.file("missing");
    for (const int mode : {1, 2, 3, 4})
        EXPECT_EQ(thrown<OXFileStream_CreateError>([&] {
                      OCFileStream stream(name.c_str(), static_cast<OEFileCreateMode>(mode),
                                          FileShareModeNone);
                  }),
                  "OXFileStream_CreateError: Can not create the file stream (No such file or "
                  "directory)");
    OCFileStream stream(name.c_str(), FileCreateModeCreate, FileShareModeNone);
    EXPECT_TRUE(stream.isEmpty());
}

TEST(OCFileStream, AFailingOpenThrowsWithTheSystemsTextAndClosesNothing) {
    Counting closing(calls::close);
    Failing failing(calls::open, EMFILE);
    EXPECT_EQ(thrown<OXFileStream_CreateError>(
                  [] { OCFileStream stream("x", FileCreateModeRead, FileShareModeNone); }),
              "OXFileStream_CreateError: Can not create the file stream (Too many open files)");
    EXPECT_EQ(failing.calls(), 1U);
    EXPECT_EQ(closing.calls(), 0U);
}

TEST(OCFileStream, ADirectoryCannotBeOpenedForWriting) {
    ScratchDirectory directory;
    EXPECT_EQ(thrown<OXFileStream_CreateError>([&] {
                  OCFileStream stream(directory.path.c_str(), FileCreateModeReadWrite,
                                      FileShareModeNone);
              }),
              "OXFileStream_CreateError: Can not create the file stream (Is a directory)");
}

TEST(OCFileStream, DestructionClosesTheFile) {
    ScratchDirectory directory;
    const std::string name = directory.write("file", "");
    const long before = openDescriptors();
    {
        OCFileStream stream(name.c_str(), FileCreateModeRead, FileShareModeRead);
        EXPECT_EQ(openDescriptors(), before + 1);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(OCFileStream, SetSizeExtendsWithZerosAndTruncates) {
    ScratchDirectory directory;
    const std::string name = directory.file("file");
    OCFileStream stream(name.c_str(), FileCreateModeCreate, FileShareModeNone);
    stream.setSize(10);
    EXPECT_EQ(stream.getPosition(), 0U);
    EXPECT_EQ(directory.read("file"), std::string(10, '\0'));
    stream.setSize(3);
    EXPECT_EQ(directory.read("file"), std::string(3, '\0'));
    EXPECT_EQ(stream.getPosition(), 0U);
}

TEST(OCFileStream, TheTimesAreThoseOfTheDescriptorsStatusInUtc) {
    ScratchDirectory directory;
    const std::string name = directory.write("file", "");
    OCFileStream stream(name.c_str(), FileCreateModeRead, FileShareModeRead);
    setenv("TZ", "XXX-5", 1);
    tzset();
    int examined = -1;
    Replacement status(calls::fstat, [&](int handle, struct stat* result) {
        examined = handle;
        *result = {};
        result->st_atim = {1456790399, 999999999}; // 2016-02-29 23:59:59
        result->st_mtim = {0, 1};
        result->st_ctim = {951782400, 0}; // 2000-02-29 00:00:00
        return 0;
    });
    const OCFileStream& constant = stream;
    EXPECT_EQ(text(constant.getTimeAccessed()), "2016-02-29 23:59:59");
    EXPECT_EQ(text(constant.getTimeModified()), "1970-01-01 00:00:00");
    EXPECT_EQ(text(constant.getTimeCreated()), "2000-02-29 00:00:00");
    EXPECT_EQ(examined, stream.getHandle());
    unsetenv("TZ");
    tzset();
}

TEST(OCFileStream, TheTimesFollowTheFile) {
    ScratchDirectory directory;
    const std::string name = directory.write("file", "");
    const struct timespec times[2] = {{1000000000, 0}, {1234567890, 500000000}};
    ASSERT_EQ(utimensat(AT_FDCWD, name.c_str(), times, 0), 0);
    OCFileStream stream(name.c_str(), FileCreateModeRead, FileShareModeRead);
    EXPECT_EQ(text(stream.getTimeAccessed()), "2001-09-09 01:46:40");
    EXPECT_EQ(text(stream.getTimeModified()), "2009-02-13 23:31:30");
    EXPECT_GT(text(stream.getTimeCreated()), "2024");
}

TEST(OCFileStream, AFailingStatusOrConversionOfATimeThrowsWithTheSystemsText) {
    ScratchDirectory directory;
    const std::string name = directory.write("file", "");
    const OCFileStream stream(name.c_str(), FileCreateModeRead, FileShareModeRead);
    {
        const char* expected = "OXFileStream_GetTimeError: Can not get the file stream time "
                               "(Input/output error)";
        Failing failing(calls::fstat, EIO);
        EXPECT_EQ(thrown<OXFileStream_GetTimeError>([&] { stream.getTimeAccessed(); }), expected);
        EXPECT_EQ(thrown<OXFileStream_GetTimeError>([&] { stream.getTimeModified(); }), expected);
        EXPECT_EQ(thrown<OXFileStream_GetTimeError>([&] { stream.getTimeCreated(); }), expected);
        EXPECT_EQ(failing.calls(), 3U);
    }
    {
        const char* expected = "OXFileStream_GetTimeError: Can not get the file stream time "
                               "(Value too large for defined data type)";
        Failing failing(calls::gmtime_r, EOVERFLOW);
        EXPECT_EQ(thrown<OXFileStream_GetTimeError>([&] { stream.getTimeAccessed(); }), expected);
        EXPECT_EQ(thrown<OXFileStream_GetTimeError>([&] { stream.getTimeModified(); }), expected);
        EXPECT_EQ(thrown<OXFileStream_GetTimeError>([&] { stream.getTimeCreated(); }), expected);
        EXPECT_EQ(failing.calls(), 3U);
    }
}

TEST(OCFileStream, ATimeBeyondTheCalendarThrows) {
    ScratchDirectory directory;
    const std::string name = directory.write("file", "");
    const OCFileStream stream(name.c_str(), FileCreateModeRead, FileShareModeRead);
    Replacement status(calls::fstat, [](int, struct stat* result) {
        *result = {};
        result->st_mtim.tv_sec = LONG_MAX;
        return 0;
    });
    EXPECT_EQ(thrown<OXFileStream_GetTimeError>([&] { stream.getTimeModified(); }),
              "OXFileStream_GetTimeError: Can not get the file stream time (Value too large for "
              "defined data type)");
}

TEST(OCFileStream, TheStepsOfOpeningCanBeTakenAgain) {
    ScratchDirectory directory;
    const std::string name = directory.write("file", "content");
    const long before = openDescriptors();
    {
        OCFileStream stream(name.c_str(), FileCreateModeRead, FileShareModeRead);
        stream.destroyHandle();
        stream.initializeOpenFlags(FileCreateModeWrite);
        stream.initializeOpenMode();
        stream.initializeHandle();
        stream.writeBuffer("C", 1);
        stream.destroyHandle();
        stream.initialize(FileCreateModeRead, FileShareModeRead);
        char byte;
        stream.readBuffer(&byte, 1);
        EXPECT_EQ(byte, 'C');
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(OCFileStream, NothingLeaksWhenMemoryIsExhausted) {
    ScratchDirectory directory;
    const std::string name =
        directory.write("file-" + std::string(150, 'x'), "longer than the inline part of a path");
    const OCFilePath path(name.c_str());
    const long before = openDescriptors();
    EXPECT_EQ(fault::failEachRequest(
                  [&] { OCFileStream stream(path, FileCreateModeRead, FileShareModeRead); }),
              1U);
    EXPECT_GE(fault::failEachRequest([&] {
                  try {
                      OCFileStream stream("/nowhere/at/all", FileCreateModeRead, FileShareModeRead);
                  } catch (const OXFileStream_CreateError&) {
                  }
              }),
              1U);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(fault::blocksLeftBy(
                  [&] { OCFileStream stream(path, FileCreateModeRead, FileShareModeRead); }),
              0);
}

TEST(OXFileStream, LeavesStoreTheirClassMessageAndTheSystemsText) {
    const unsigned int code = EACCES;
    EXPECT_EQ(thrown<OXFileStream_CreateError>([=] { throw OXFileStream_CreateError(code); }),
              "OXFileStream_CreateError: Can not create the file stream (Permission denied)");
    EXPECT_EQ(thrown<OXFileStream_GetTimeError>([=] { throw OXFileStream_GetTimeError(code); }),
              "OXFileStream_GetTimeError: Can not get the file stream time (Permission denied)");
    EXPECT_EQ(thrown<OXFileStream_UnlinkError>([=] { throw OXFileStream_UnlinkError(code); }),
              "OXFileStream_UnlinkError: Can not unlink the file stream (Permission denied)");
    EXPECT_EQ(OXFileStream_UnlinkError(code).getDetails().getCount(), 1U);
    EXPECT_TRUE((std::is_base_of_v<OXHandleStream, OXFileStream>));
    EXPECT_TRUE((std::is_base_of_v<OXFileStream, OXFileStream_CreateError>));
    EXPECT_TRUE((std::is_base_of_v<OXFileStream, OXFileStream_GetTimeError>));
    EXPECT_TRUE((std::is_base_of_v<OXFileStream, OXFileStream_UnlinkError>));
    EXPECT_FALSE(std::is_default_constructible_v<OXFileStream>);
    EXPECT_EQ(sizeof(OXFileStream_CreateError), sizeof(OXAutoException));
}
