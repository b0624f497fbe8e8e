#include "OCTemporaryDirectory.h"

#include "OCFileFinder.h"
#include "OCFileManager.h"
#include "support/DirectoryCalls.h"
#include "support/FaultInjection.h"
#include "support/ScratchDirectory.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <type_traits>

namespace {

std::string within(const OCTemporaryDirectory& directory, const std::string& name) {
    return directory.getPath().getString() + ("/" + name);
}

void writeFile(const std::string& path) {
    std::ofstream(path) << "content";
}

} // namespace

TEST(OCTemporaryDirectoryTest, HoldsAPath) {
    EXPECT_EQ(sizeof(OCTemporaryDirectory), 8 + sizeof(OCFilePath));
    EXPECT_EQ(slots::slotCount<OCTemporaryDirectory>(), 2U);
    static_assert(std::is_base_of_v<OCObject, OCTemporaryDirectory>);
    static_assert(std::is_nothrow_destructible_v<OCTemporaryDirectory>);
    static_assert(!std::is_copy_constructible_v<OCTemporaryDirectory>);
    static_assert(!std::is_copy_assignable_v<OCTemporaryDirectory>);
}

TEST(OCTemporaryDirectoryTest, IsAFreshDirectoryOfItsUserAlone) {
    OCTemporaryDirectory directory;
    const OCFilePath& path = directory.getPath();
    EXPECT_EQ(path.getLength(), 18U);
    EXPECT_EQ(std::strncmp(path.getString(), "/var/tmp/orv", 12), 0);
    EXPECT_STRNE(path.getString(), "/var/tmp/orvXXXXXX");
    struct stat status;
    ASSERT_EQ(stat(path.getString(), &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
    EXPECT_TRUE(std::filesystem::is_empty(path.getString()));
}

TEST(OCTemporaryDirectoryTest, TwoDirectoriesHaveDifferentNames) {
    OCTemporaryDirectory one, two;
    EXPECT_TRUE(one.getPath() != two.getPath());
    EXPECT_TRUE(one.getPath().existsDirectory(false));
    EXPECT_TRUE(two.getPath().existsDirectory(false));
}

TEST(OCTemporaryDirectoryTest, IsMadeFromTheTemplate) {
    std::string asked;
    Replacement making(calls::mkdtemp, [&](char* path) {
        asked = path;
        return calls::mkdtemp.original(path);
    });
    OCTemporaryDirectory directory;
    EXPECT_EQ(asked, "/var/tmp/orvXXXXXX");
}

TEST(OCTemporaryDirectoryTest, IsGoneAtTheEndWithAllThatIsInIt) {
    ScratchDirectory outside;
    outside.write("kept", "");
    OCFilePath path;
    const long descriptors = openDescriptors();
    {
        OCTemporaryDirectory directory;
        path = directory.getPath();
        writeFile(within(directory, "file"));
        ASSERT_TRUE(std::filesystem::create_directories(within(directory, "a/b/c")));
        writeFile(within(directory, "a/b/file"));
        writeFile(within(directory, "a/b/c/.hidden"));
        ASSERT_EQ(symlink(outside.path.c_str(), within(directory, "a/link").c_str()), 0);
    }
    EXPECT_EQ(path.getFileType(false), FileTypeUnknown);
    EXPECT_TRUE(std::filesystem::exists(outside.file("kept")));
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(OCTemporaryDirectoryTest, AFailingMkdtempThrowsWithTheSystemsText) {
    Counting removing(calls::rmdir);
    Failing failing(calls::mkdtemp, EACCES);
    EXPECT_EQ(thrown<OXTemporaryDirectory_CreateError>([] { OCTemporaryDirectory directory; }),
              "OXTemporaryDirectory_CreateError: Can not create the temporary directory "
              "(Permission denied)");
    EXPECT_EQ(failing.calls(), 1U);
    EXPECT_EQ(removing.calls(), 0U);
}

TEST(OCTemporaryDirectoryTest, AnInterruptedCallIsNotRepeated) {
    Failing interrupted(calls::mkdtemp, EINTR, 1, 1);
    EXPECT_EQ(thrown<OXTemporaryDirectory_CreateError>([] { OCTemporaryDirectory directory; }),
              "OXTemporaryDirectory_CreateError: Can not create the temporary directory "
              "(Interrupted system call)");
}

TEST(OCTemporaryDirectoryTest, ADeletionThatThrowsKeepsThePath) {
    OCTemporaryDirectory directory;
    const OCFilePath path(directory.getPath());
    {
        Failing failing(calls::rmdir, EBUSY);
        EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>([&] { directory.destroy(); }),
                  "OXFileManager_DeleteDirectoryError: Deleting the directory failed (Device or "
                  "resource busy)");
        EXPECT_TRUE(directory.getPath() == path);
        EXPECT_THROW(directory.destroyDirectory(), OXFileManager_DeleteDirectoryError);
    }
    directory.destroy();
    EXPECT_EQ(directory.getPath().getLength(), 0U);
    EXPECT_FALSE(path.existsDirectory(false));
}

TEST(OCTemporaryDirectoryTest, ADirectoryThatIsGoneAlreadyIsAFailureToDeleteIt) {
    OCTemporaryDirectory directory;
    const std::string path = directory.getPath().getString();
    ASSERT_EQ(rmdir(path.c_str()), 0);
    EXPECT_EQ(thrown<OXFileFinder_OpenDirectory>([&] { directory.destroy(); }),
              "OXFileFinder_OpenDirectory: Error opening directory for reading (" + path + ")");
    EXPECT_EQ(directory.getPath().getString(), path);
}

TEST(OCTemporaryDirectoryTest, TheDestructorDiscardsAFailure) {
    OCFilePath path;
    {
        OCTemporaryDirectory directory;
        path = directory.getPath();
        ASSERT_EQ(mkfifo(within(directory, "fifo").c_str(), 0600), 0);
    }
    EXPECT_TRUE(path.existsDirectory(false)); // a FIFO is not deleted
    std::filesystem::remove_all(path.getString());
}

TEST(OCTemporaryDirectoryTest, DeletingOnceMoreDoesNothing) {
    OCTemporaryDirectory directory;
    directory.destroy();
    EXPECT_EQ(directory.getPath().getLength(), 0U);
    Counting removing(calls::rmdir);
    directory.destroy();
    directory.destroyDirectory();
    directory.destroySibling();
    EXPECT_EQ(removing.calls(), 0U);
}

TEST(OCTemporaryDirectoryTest, TheSiblingStepTouchesNothing) {
    OCTemporaryDirectory directory;
    directory.destroySibling();
    EXPECT_TRUE(directory.getPath().existsDirectory(false));
}

TEST(OCTemporaryDirectoryTest, CreatingAgainDeletesTheDirectoryBefore) {
    OCTemporaryDirectory directory;
    const OCFilePath before(directory.getPath());
    directory.initialize();
    EXPECT_FALSE(before.existsDirectory(false));
    EXPECT_TRUE(directory.getPath() != before);
    EXPECT_TRUE(directory.getPath().existsDirectory(false));
    Failing failing(calls::mkdtemp, EACCES);
    EXPECT_THROW(directory.initializeDirectory(), OXTemporaryDirectory_CreateError);
    EXPECT_EQ(directory.getPath().getLength(), 0U);
}

TEST(OCTemporaryDirectoryTest, ExhaustedMemoryAtTheEndIsDiscarded) {
    OCFilePath path;
    {
        auto* const directory = new OCTemporaryDirectory;
        path = directory->getPath();
        fault::HeapFault heap(1, fault::HeapFault::Following);
        delete directory;
        EXPECT_TRUE(heap.triggered());
    }
    EXPECT_TRUE(path.existsDirectory(false));
    EXPECT_EQ(rmdir(path.getString()), 0);
}
