#include "OCTemporaryFile.h"

#include "support/DirectoryCalls.h"
#include "support/FaultInjection.h"
#include "support/FileCalls.h"
#include "support/Forked.h"
#include "support/ScratchDirectory.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <type_traits>

namespace {

/// Whether `path` is the template with its six last characters replaced.
bool isFilledTemplate(const OCFilePath& path) {
    return path.getLength() == 18 && std::strncmp(path.getString(), "/var/tmp/orv", 12) == 0 &&
           std::strchr(path.getString() + 12, '/') == nullptr &&
           std::strcmp(path.getString(), "/var/tmp/orvXXXXXX") != 0;
}

bool isOpen(int handle) {
    struct stat status;
    return fstat(handle, &status) == 0;
}

} // namespace

TEST(OCTemporaryFileTest, HoldsAPathAndADescriptor) {
    EXPECT_EQ(sizeof(OCTemporaryFile), 8 + sizeof(OCFilePath) + 8);
    OCTemporaryFile file;
    int handle = -1;
    std::memcpy(&handle, reinterpret_cast<const char*>(&file) + 8 + sizeof(OCFilePath), 4);
    EXPECT_EQ(handle, file.getHandle());
    EXPECT_EQ(static_cast<const void*>(&file.getPath()), reinterpret_cast<const char*>(&file) + 8);
}

TEST(OCTemporaryFileTest, HasNoVirtualOperationButTheDestructorAndIsNotCopied) {
    EXPECT_EQ(slots::slotCount<OCTemporaryFile>(), 2U);
    static_assert(std::is_base_of_v<OCObject, OCTemporaryFile>);
    static_assert(std::is_nothrow_destructible_v<OCTemporaryFile>);
    static_assert(!std::is_copy_constructible_v<OCTemporaryFile>);
    static_assert(!std::is_copy_assignable_v<OCTemporaryFile>);
}

TEST(OCTemporaryFileTest, HasNoNameAnyMoreYetReadsAndWrites) {
    OCTemporaryFile file;
    EXPECT_TRUE(isFilledTemplate(file.getPath())) << file.getPath();
    EXPECT_EQ(file.getPath().getFileType(false), FileTypeUnknown);
    ASSERT_GE(file.getHandle(), 0);
    EXPECT_EQ(write(file.getHandle(), "scratch", 7), 7);
    EXPECT_EQ(lseek(file.getHandle(), 0, SEEK_SET), 0);
    char text[8] = {};
    EXPECT_EQ(read(file.getHandle(), text, 8), 7);
    EXPECT_STREQ(text, "scratch");
}

TEST(OCTemporaryFileTest, IsAnEmptyRegularFileOfItsUserAlone) {
    OCTemporaryFile file;
    struct stat status;
    ASSERT_EQ(fstat(file.getHandle(), &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_EQ(status.st_size, 0);
    EXPECT_EQ(status.st_nlink, 0U);
    // For reading and writing anywhere, also by the programs that the process starts.
    EXPECT_EQ(fcntl(file.getHandle(), F_GETFL) & (O_ACCMODE | O_APPEND | O_NONBLOCK | O_SYNC),
              O_RDWR);
    EXPECT_EQ(fcntl(file.getHandle(), F_GETFD), 0);
}

TEST(OCTemporaryFileTest, TwoFilesHaveDifferentNamesAndContents) {
    OCTemporaryFile one, two;
    EXPECT_TRUE(one.getPath() != two.getPath());
    EXPECT_NE(one.getHandle(), two.getHandle());
    EXPECT_EQ(write(one.getHandle(), "x", 1), 1);
    struct stat status;
    ASSERT_EQ(fstat(two.getHandle(), &status), 0);
    EXPECT_EQ(status.st_size, 0);
}

TEST(OCTemporaryFileTest, IsMadeFromTheTemplate) {
    std::string asked;
    Replacement making(calls::mkstemp, [&](char* path) {
        asked = path;
        return calls::mkstemp.original(path);
    });
    OCTemporaryFile file;
    EXPECT_EQ(asked, "/var/tmp/orvXXXXXX");
}

TEST(OCTemporaryFileTest, IgnoresTheDirectoryOfTheEnvironment) {
    ScratchDirectory directory;
    EXPECT_EQ(inChild([&] {
                  setenv("TMPDIR", directory.path.c_str(), 1);
                  OCTemporaryFile file;
                  return std::string(file.getPath().getString(), 12);
              }),
              "/var/tmp/orv");
}

TEST(OCTemporaryFileTest, ItsNameIsRemovedRightAfterItsCreation) {
    std::string log, removed;
    Replacement making(calls::mkstemp, [&](char* path) {
        log += "make ";
        return calls::mkstemp.original(path);
    });
    Replacement unlinking(calls::unlink, [&](const char* path) {
        log += "unlink ";
        removed = path;
        EXPECT_EQ(OCFilePath(path).getFileType(false), FileTypeRegular);
        return calls::unlink.original(path);
    });
    Replacement closing(calls::close, [&](int handle) {
        log += "close ";
        return calls::close.original(handle);
    });
    {
        OCTemporaryFile file;
        EXPECT_EQ(log, "make unlink ");
        EXPECT_EQ(removed, file.getPath().getString());
    }
    EXPECT_EQ(log, "make unlink close ");
}

TEST(OCTemporaryFileTest, AFailingMkstempThrowsWithTheSystemsText) {
    Counting unlinking(calls::unlink);
    Counting closing(calls::close);
    Failing failing(calls::mkstemp, EACCES);
    EXPECT_EQ(thrown<OXTemporaryFile_CreateError>([] { OCTemporaryFile file; }),
              "OXTemporaryFile_CreateError: Can not create the temporary file (Permission denied)");
    EXPECT_EQ(failing.calls(), 1U);
    EXPECT_EQ(unlinking.calls(), 0U);
    EXPECT_EQ(closing.calls(), 0U);
}

TEST(OCTemporaryFileTest, AFailingUnlinkThrowsWithTheSystemsTextAndClosesTheFile) {
    const long descriptors = openDescriptors();
    std::string name;
    int closed = 0;
    {
        Replacement unlinking(calls::unlink, [&](const char* path) {
            name = path;
            errno = EPERM;
            return -1;
        });
        Replacement closing(calls::close, [&](int handle) {
            ++closed;
            const int result = calls::close.original(handle);
            errno = EIO; // too late to be told
            return result;
        });
        EXPECT_EQ(thrown<OXTemporaryFile_CreateError>([] { OCTemporaryFile file; }),
                  "OXTemporaryFile_CreateError: Can not create the temporary file (Operation not "
                  "permitted)");
    }
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_TRUE(OCFilePath(name.c_str()).existsFile(false)); // only its descriptor is given up
    EXPECT_EQ(unlink(name.c_str()), 0);
}

TEST(OCTemporaryFileTest, ANameThatIsGoneAlreadyIsAFailureToo) {
    const long descriptors = openDescriptors();
    {
        Replacement unlinking(calls::unlink, [](const char* path) {
            calls::unlink.original(path);
            return calls::unlink.original(path);
        });
        EXPECT_EQ(thrown<OXTemporaryFile_CreateError>([] { OCTemporaryFile file; }),
                  "OXTemporaryFile_CreateError: Can not create the temporary file (No such file or "
                  "directory)");
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(OCTemporaryFileTest, InterruptedCallsAreNotRepeated) {
    const std::string expected = "OXTemporaryFile_CreateError: Can not create the temporary file "
                                 "(Interrupted system call)";
    {
        Failing interrupted(calls::mkstemp, EINTR, 1, 1);
        EXPECT_EQ(thrown<OXTemporaryFile_CreateError>([] { OCTemporaryFile file; }), expected);
    }
    unsigned long tries = 0;
    Replacement unlinking(calls::unlink, [&](const char* path) {
        calls::unlink.original(path);
        errno = EINTR;
        return ++tries == 1 ? -1 : 0;
    });
    EXPECT_EQ(thrown<OXTemporaryFile_CreateError>([] { OCTemporaryFile file; }), expected);
    EXPECT_EQ(tries, 1U);
}

TEST(OCTemporaryFileTest, AfterAFailedStepTheDescriptorStaysUntilTheEnd) {
    std::string name;
    int handle = -1;
    {
        OCTemporaryFile file;
        Replacement unlinking(calls::unlink, [&](const char* path) {
            name = path;
            errno = EPERM;
            return -1;
        });
        EXPECT_THROW(file.initializeFile(), OXTemporaryFile_CreateError);
        handle = file.getHandle();
        EXPECT_TRUE(isOpen(handle));
        EXPECT_EQ(name, file.getPath().getString());
    }
    EXPECT_FALSE(isOpen(handle));
    EXPECT_EQ(unlink(name.c_str()), 0);
}

TEST(OCTemporaryFileTest, ClosesOnce) {
    const long descriptors = openDescriptors();
    {
        OCTemporaryFile file;
        EXPECT_EQ(openDescriptors(), descriptors + 1);
        Counting closing(calls::close);
        file.destroy();
        EXPECT_EQ(file.getHandle(), -1);
        EXPECT_TRUE(isFilledTemplate(file.getPath()));
        file.destroy();
        file.destroyFile();
        EXPECT_EQ(closing.calls(), 1U);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(OCTemporaryFileTest, AFailingCloseIsSilent) {
    const long descriptors = openDescriptors();
    {
        OCTemporaryFile file;
        Replacement closing(calls::close, [](int handle) {
            calls::close.original(handle);
            errno = EIO;
            return -1;
        });
        EXPECT_NO_THROW(file.destroy());
        EXPECT_EQ(file.getHandle(), -1);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(OCTemporaryFileTest, CreatingAgainClosesWhatWasOpen) {
    OCTemporaryFile file;
    const long descriptors = openDescriptors();
    const OCFilePath before(file.getPath());
    file.initialize();
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_TRUE(isFilledTemplate(file.getPath()));
    EXPECT_TRUE(file.getPath() != before);
    Failing failing(calls::mkstemp, EMFILE);
    EXPECT_THROW(file.initialize(), OXTemporaryFile_CreateError);
    EXPECT_EQ(file.getHandle(), -1);
    EXPECT_EQ(openDescriptors(), descriptors - 1);
}

TEST(OCTemporaryFileTest, TakesNoHeapMemory) {
    const long descriptors = openDescriptors();
    {
        fault::HeapFault heap(1, fault::HeapFault::Following);
        EXPECT_NO_THROW(OCTemporaryFile file);
        EXPECT_NO_THROW(OCTemporaryFileStream stream);
        EXPECT_FALSE(heap.triggered());
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(OCTemporaryFileTest, ManyFilesLeaveNeitherNamesNorDescriptors) {
    const long descriptors = openDescriptors();
    for (int i = 0; i < 2000; ++i) {
        OCTemporaryFile file;
        ASSERT_EQ(file.getPath().getFileType(false), FileTypeUnknown);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(OCTemporaryFileStreamTest, HoldsAFileBehindItsBase) {
    EXPECT_EQ(sizeof(OCTemporaryFileStream), sizeof(OCHandleStream) + sizeof(OCTemporaryFile));
    EXPECT_EQ(sizeof(OCHandleStream), 16U);
}

TEST(OCTemporaryFileStreamTest, InheritsThePrimitives) {
    EXPECT_TRUE((std::is_same_v<decltype(&OCTemporaryFileStream::read),
                                bool (OCHandleStream::*)(void*, unsigned long&)>));
    EXPECT_TRUE((std::is_same_v<decltype(&OCTemporaryFileStream::seek),
                                unsigned long (OCHandleStream::*)(long, OEStreamSeek)>));
    EXPECT_TRUE((std::is_same_v<decltype(&OCTemporaryFileStream::setSize),
                                void (OCHandleStream::*)(unsigned long)>));
    EXPECT_TRUE((std::is_same_v<decltype(&OCTemporaryFileStream::write),
                                bool (OCHandleStream::*)(const void*, unsigned long&)>));
    EXPECT_EQ(slots::slotOf(&OCTemporaryFileStream::read), 2U);
    EXPECT_EQ(slots::slotOf(&OCTemporaryFileStream::write), 5U);
    EXPECT_EQ(slots::slotCount<OCTemporaryFileStream>(), 6U);
    static_assert(!std::is_copy_constructible_v<OCTemporaryFileStream>);
    static_assert(std::is_nothrow_destructible_v<OCTemporaryFileStream>);
}

TEST(OCTemporaryFileStreamTest, WritesSeeksCutsAndReads) {
    OCTemporaryFileStream stream;
    EXPECT_TRUE(stream.isEmpty());
    stream.writeBuffer("hello world", 11);
    EXPECT_EQ(stream.getSize(), 11U);
    stream.setSize(5);
    stream.setPosition(0);
    char text[6] = {};
    stream.readBuffer(text, 5);
    EXPECT_STREQ(text, "hello");
    unsigned long count = 1;
    EXPECT_FALSE(stream.read(text, count));
}

TEST(OCTemporaryFileStreamTest, ItsFileHasNoName) {
    OCTemporaryFileStream stream;
    struct stat status;
    ASSERT_EQ(fstat(stream.getHandle(), &status), 0);
    EXPECT_EQ(status.st_nlink, 0U);
    EXPECT_TRUE(S_ISREG(status.st_mode));
}

TEST(OCTemporaryFileStreamTest, TheFileClosesTheDescriptorOnce) {
    const long descriptors = openDescriptors();
    {
        Counting closing(calls::close);
        {
            OCTemporaryFileStream stream;
            EXPECT_TRUE(isOpen(stream.getHandle()));
        }
        EXPECT_EQ(closing.calls(), 1U);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(OCTemporaryFileStreamTest, DroppingTheHandleLeavesTheDescriptorToTheFile) {
    int handle = -1;
    {
        OCTemporaryFileStream stream;
        handle = stream.getHandle();
        stream.dropHandle();
        EXPECT_TRUE(isOpen(handle));
        stream.initialize();
        EXPECT_EQ(stream.getHandle(), handle);
    }
    EXPECT_FALSE(isOpen(handle));
}

TEST(OCTemporaryFileStreamTest, DestroyingTheHandleClosesTheFileOnce) {
    OCTemporaryFileStream stream;
    const int handle = stream.getHandle();
    Counting closing(calls::close);
    stream.destroyHandle();
    EXPECT_EQ(stream.getHandle(), -1);
    EXPECT_FALSE(isOpen(handle));
    stream.destroy();
    EXPECT_EQ(closing.calls(), 1U);
}

TEST(OCTemporaryFileStreamTest, IsDestroyedThroughItsBase) {
    const long descriptors = openDescriptors();
    OCStream* const stream = new OCTemporaryFileStream;
    stream->writeBuffer("x", 1);
    delete stream;
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(OCTemporaryFileStreamTest, AFailingCreationGoesThrough) {
    const long descriptors = openDescriptors();
    {
        Failing failing(calls::mkstemp, ENOSPC);
        EXPECT_EQ(thrown<OXTemporaryFile_CreateError>([] { OCTemporaryFileStream stream; }),
                  "OXTemporaryFile_CreateError: Can not create the temporary file (No space left "
                  "on device)");
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}
