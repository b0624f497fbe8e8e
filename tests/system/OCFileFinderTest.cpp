#include "OCFileFinder.h"

#include "support/DirectoryCalls.h"
#include "support/FaultInjection.h"
#include "support/ScratchDirectory.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <type_traits>
#include <vector>

namespace {

typedef std::multiset<std::string> Names;

Names namesBy(OCFileFinder& finder) {
    Names names;
    for (bool found = finder.findFirst(); found; found = finder.findNext())
        names.insert(finder.getFilename().getString());
    return names;
}

const void* pointerAt(const void* object, std::size_t offset) {
    const void* pointer = nullptr;
    std::memcpy(&pointer, static_cast<const char*>(object) + offset, sizeof pointer);
    return pointer;
}

} // namespace

TEST(OCFileFinderTest, HoldsAPathAStreamAndAnEntry) {
    ScratchDirectory directory;
    DIR* opened = nullptr;
    struct dirent* read = nullptr;
    Replacement opening(calls::opendir,
                        [&](const char* path) { return opened = calls::opendir.original(path); });
    Replacement reading(calls::readdir,
                        [&](DIR* stream) { return read = calls::readdir.original(stream); });
    const OCFilePath path(directory.path.c_str());
    OCFileFinder finder(path);
    EXPECT_EQ(sizeof finder, 8 + sizeof(OCFilePath) + 8 + 8);
    OCFilePath held;
    held = *reinterpret_cast<const OCFilePath*>(reinterpret_cast<const char*>(&finder) + 8);
    EXPECT_TRUE(held == path);
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(pointerAt(&finder, 8 + sizeof(OCFilePath)), opened);
    EXPECT_EQ(pointerAt(&finder, 16 + sizeof(OCFilePath)), nullptr);
    ASSERT_TRUE(finder.findFirst());
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(pointerAt(&finder, 16 + sizeof(OCFilePath)), read);
    finder.destroy();
    EXPECT_EQ(pointerAt(&finder, 8 + sizeof(OCFilePath)), nullptr);
    EXPECT_EQ(pointerAt(&finder, 16 + sizeof(OCFilePath)), nullptr);
}

TEST(OCFileFinderTest, HasNoVirtualOperationButTheDestructorAndIsNotCopied) {
    EXPECT_EQ(slots::slotCount<OCFileFinder>(), 2U);
    static_assert(std::is_base_of_v<OCObject, OCFileFinder>);
    static_assert(std::is_nothrow_destructible_v<OCFileFinder>);
    static_assert(!std::is_copy_constructible_v<OCFileFinder>);
    static_assert(!std::is_copy_assignable_v<OCFileFinder>);
    static_assert(!std::is_default_constructible_v<OCFileFinder>);
}

TEST(OCFileFinderTest, AnEmptyDirectoryHoldsItselfAndItsParent) {
    ScratchDirectory directory;
    OCFileFinder finder(directory.path.c_str());
    ASSERT_TRUE(finder.findFirst());
    const std::string first = finder.getFilename().getString();
    ASSERT_TRUE(finder.findNext());
    const std::string second = finder.getFilename().getString();
    EXPECT_FALSE(finder.findNext());
    EXPECT_EQ((Names{first, second}), (Names{".", ".."}));
}

TEST(OCFileFinderTest, FindsEntriesOfEveryKind) {
    ScratchDirectory directory;
    directory.write("file", "");
    directory.write(".hidden", "");
    directory.write("a b:c\\d\xFF", "");
    ASSERT_EQ(mkdir(directory.file("directory").c_str(), 0700), 0);
    directory.write("directory/below", "");
    ASSERT_EQ(symlink("file", directory.file("link").c_str()), 0);
    ASSERT_EQ(symlink("nowhere", directory.file("dangling").c_str()), 0);
    ASSERT_EQ(mkfifo(directory.file("fifo").c_str(), 0600), 0);
    const int listening = socket(AF_UNIX, SOCK_STREAM, 0);
    struct sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, directory.file("socket").c_str());
    ASSERT_EQ(bind(listening, reinterpret_cast<struct sockaddr*>(&address), sizeof address), 0);
    close(listening);

    OCFileFinder finder(directory.path.c_str());
    EXPECT_EQ(namesBy(finder), (Names{".", "..", "file", ".hidden", "a b:c\\d\xFF", "directory",
                                      "link", "dangling", "fifo", "socket"}));
}

TEST(OCFileFinderTest, GivesTheOrderOfTheSystem) {
    ScratchDirectory directory;
    for (int i = 0; i < 100; ++i)
        directory.write("entry" + std::to_string(i * 37 % 100), "");
    std::vector<std::string> expected, found;
    DIR* const stream = opendir(directory.path.c_str());
    while (const struct dirent* entry = readdir(stream))
        expected.push_back(entry->d_name);
    closedir(stream);
    OCFileFinder finder(directory.path.c_str());
    for (bool more = finder.findFirst(); more; more = finder.findNext())
        found.push_back(finder.getFilename().getString());
    EXPECT_EQ(found, expected);
    EXPECT_EQ(found.size(), 102U);
}

TEST(OCFileFinderTest, FindFirstStartsAnewAlsoInTheMiddleAndAtTheEnd) {
    ScratchDirectory directory;
    directory.write("one", "");
    OCFileFinder finder(directory.path.c_str());
    ASSERT_TRUE(finder.findFirst());
    const std::string first = finder.getFilename().getString();
    ASSERT_TRUE(finder.findNext());
    EXPECT_STRNE(finder.getFilename().getString(), first.c_str());
    ASSERT_TRUE(finder.findFirst());
    EXPECT_STREQ(finder.getFilename().getString(), first.c_str());
    while (finder.findNext()) {
    }
    directory.write("two", "");
    EXPECT_EQ(namesBy(finder), (Names{".", "..", "one", "two"}));
}

TEST(OCFileFinderTest, FindFirstRewindsAndReadsOnceAndFindNextReadsOnce) {
    ScratchDirectory directory;
    std::string log;
    Replacement rewinding(calls::rewinddir, [&](DIR* stream) {
        log += "rewind ";
        calls::rewinddir.original(stream);
    });
    Replacement reading(calls::readdir, [&](DIR* stream) {
        log += "read ";
        return calls::readdir.original(stream);
    });
    OCFileFinder finder(directory.path.c_str());
    EXPECT_EQ(log, "");
    finder.findFirst();
    EXPECT_EQ(log, "rewind read ");
    finder.findNext();
    EXPECT_EQ(log, "rewind read read ");
}

TEST(OCFileFinderTest, FindNextWithoutFindFirstBeginsAtTheFirstEntry) {
    ScratchDirectory directory;
    OCFileFinder finder(directory.path.c_str());
    ASSERT_TRUE(finder.findFirst());
    OCFileFinder other(directory.path.c_str());
    ASSERT_TRUE(other.findNext());
    EXPECT_TRUE(other.getFilename() == finder.getFilename());
}

TEST(OCFileFinderTest, TheNameIsEmptyBeforeTheFirstFindAndBehindTheEnd) {
    ScratchDirectory directory;
    OCFileFinder finder(directory.path.c_str());
    EXPECT_STREQ(finder.getFilename().getString(), "");
    while (finder.findNext()) {
    }
    EXPECT_STREQ(finder.getFilename().getString(), "");
}

TEST(OCFileFinderTest, NamesMayBeAsLongAsTheSystemAllows) {
    ScratchDirectory directory;
    const std::string name(255, 'n');
    directory.write(name, "");
    OCFileFinder finder(directory.path.c_str());
    EXPECT_EQ(namesBy(finder), (Names{".", "..", name}));
}

TEST(OCFileFinderTest, KeepsACopyOfThePath) {
    ScratchDirectory directory;
    directory.write("one", "");
    OCFilePath path(directory.path.c_str());
    OCFileFinder finder(path);
    path.assign("/nowhere");
    EXPECT_EQ(namesBy(finder), (Names{".", "..", "one"}));
    finder.initialize(); // opens it once more
    EXPECT_EQ(namesBy(finder), (Names{".", "..", "one"}));
}

TEST(OCFileFinderTest, WhatIsNoDirectoryIsRefusedWithItsPath) {
    ScratchDirectory directory;
    const std::string file = directory.write("file", "");
    const long descriptors = openDescriptors();
    EXPECT_EQ(thrown<OXFileFinder_OpenDirectory>([&] { OCFileFinder finder(file.c_str()); }),
              "OXFileFinder_OpenDirectory: Error opening directory for reading (" + file + ")");
    const std::string missing = directory.file("missing");
    EXPECT_EQ(thrown<OXFileFinder_OpenDirectory>([&] { OCFileFinder finder(missing.c_str()); }),
              "OXFileFinder_OpenDirectory: Error opening directory for reading (" + missing + ")");
    EXPECT_EQ(thrown<OXFileFinder_OpenDirectory>([&] { OCFileFinder finder(""); }),
              "OXFileFinder_OpenDirectory: Error opening directory for reading ()");
    const std::string dangling = directory.file("dangling");
    ASSERT_EQ(symlink("nowhere", dangling.c_str()), 0);
    EXPECT_EQ(thrown<OXFileFinder_OpenDirectory>([&] { OCFileFinder finder(dangling.c_str()); }),
              "OXFileFinder_OpenDirectory: Error opening directory for reading (" + dangling + ")");
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(OCFileFinderTest, AFailingOpendirThrowsAndClosesNothing) {
    Counting closing(calls::closedir);
    Failing failing(calls::opendir, EMFILE);
    EXPECT_EQ(thrown<OXFileFinder_OpenDirectory>([] { OCFileFinder finder("/tmp"); }),
              "OXFileFinder_OpenDirectory: Error opening directory for reading (/tmp)");
    EXPECT_EQ(failing.calls(), 1U);
    EXPECT_EQ(closing.calls(), 0U);
}

TEST(OCFileFinderTest, InterruptedCallsAreNotRepeated) {
    ScratchDirectory directory;
    {
        Failing interrupted(calls::opendir, EINTR, 1, 1);
        EXPECT_THROW(OCFileFinder finder(directory.path.c_str()), OXFileFinder_OpenDirectory);
    }
    OCFileFinder finder(directory.path.c_str());
    Failing interrupted(calls::readdir, EINTR, 1, 1);
    EXPECT_FALSE(finder.findFirst());
    EXPECT_EQ(interrupted.calls(), 1U);
}

TEST(OCFileFinderTest, AFailingReaddirCountsAsTheEnd) {
    ScratchDirectory directory;
    OCFileFinder finder(directory.path.c_str());
    {
        Failing failing(calls::readdir, EIO);
        EXPECT_FALSE(finder.findFirst());
        EXPECT_FALSE(finder.findNext());
        EXPECT_STREQ(finder.getFilename().getString(), "");
    }
    Failing failing(calls::readdir, EIO, 2, 1);
    EXPECT_TRUE(finder.findFirst());
    EXPECT_FALSE(finder.findNext());
    EXPECT_TRUE(finder.findFirst());
}

TEST(OCFileFinderTest, ClosesTheDirectoryOnce) {
    ScratchDirectory directory;
    const long descriptors = openDescriptors();
    Counting closing(calls::closedir);
    {
        OCFileFinder finder(directory.path.c_str());
        EXPECT_EQ(openDescriptors(), descriptors + 1);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
    const unsigned long before = closing.calls(); // the counting of descriptors closes, too
    {
        OCFileFinder finder(directory.path.c_str());
        finder.destroy();
        EXPECT_EQ(closing.calls(), before + 1);
        finder.destroyEnumeration();
    }
    EXPECT_EQ(closing.calls(), before + 1);
}

TEST(OCFileFinderTest, AClosedFinderFindsNothing) {
    ScratchDirectory directory;
    OCFileFinder finder(directory.path.c_str());
    ASSERT_TRUE(finder.findFirst());
    finder.destroy();
    EXPECT_STREQ(finder.getFilename().getString(), "");
    EXPECT_FALSE(finder.findFirst());
    EXPECT_FALSE(finder.findNext());
}

TEST(OCFileFinderTest, OpeningAgainClosesWhatWasOpen) {
    ScratchDirectory directory;
    OCFileFinder finder(directory.path.c_str());
    const long descriptors = openDescriptors();
    finder.initialize();
    finder.initializeEnumeration();
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_TRUE(finder.findFirst());
    Failing failing(calls::opendir, EMFILE);
    EXPECT_THROW(finder.initialize(), OXFileFinder_OpenDirectory);
    EXPECT_FALSE(finder.findFirst());
}

TEST(OCFileFinderTest, AFailingClosedirIsSilent) {
    ScratchDirectory directory;
    const long descriptors = openDescriptors();
    {
        Replacement failing(calls::closedir, [](DIR* stream) {
            calls::closedir.original(stream);
            errno = EIO;
            return -1;
        });
        EXPECT_NO_THROW(OCFileFinder finder(directory.path.c_str()));
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(OCFileFinderTest, ExhaustedMemoryLeavesNothingOpen) {
    ScratchDirectory directory;
    const OCFilePath path((directory.path + "/./" + std::string(200, '/')).c_str());
    ASSERT_GT(path.getLength(), 128U);
    directory.write(std::string(200, 'n'), "");
    const long descriptors = openDescriptors();
    const long blocks = fault::heapRecord().liveBlocks;
    unsigned long memoryFailures = 0, openFailures = 0;
    for (unsigned long number = 1;; ++number) {
        fault::HeapFault heap(number);
        try {
            OCFileFinder finder(path);
            while (finder.findNext())
                finder.getFilename();
        } catch (const OXMemory_AllocationError&) {
            ++memoryFailures;
        } catch (const OXFileFinder_OpenDirectory&) {
            ++openFailures; // the system's stream takes memory, too
        }
        if (!heap.triggered())
            break;
        heap.disarm();
        EXPECT_EQ(fault::heapRecord().liveBlocks, blocks);
        EXPECT_EQ(openDescriptors(), descriptors);
    }
    EXPECT_EQ(memoryFailures, 2U); // the path and the name
    EXPECT_LE(openFailures, 1U);
    EXPECT_EQ(fault::heapRecord().liveBlocks, blocks);
}
