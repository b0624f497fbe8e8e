#include "OCFileManager.h"

#include "OCFileFinder.h"
#include "support/DirectoryCalls.h"
#include "support/FaultInjection.h"
#include "support/FileCalls.h"
#include "support/Forked.h"
#include "support/ScratchDirectory.h"
#include "support/Slots.h"
#include "support/StatFaults.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <type_traits>
#include <vector>

namespace {

typedef std::vector<std::string> Log;

OCFilePath pathOf(const std::string& text) {
    return OCFilePath(OCAnsiString(text.data(), text.size()));
}

bool exists(const std::string& path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
}

/// Writes down what it is told, without the directory that it is given.
class Recorder : public OCFileManagerEvents {
public:
    explicit Recorder(const std::string& directory = "") : prefix(directory) {}
    ~Recorder() override = default;

    void onCreateDirectory(const OCFilePath& path) override { note("create ", path); }
    void onDeleteDirectory(const OCFilePath& path) override { note("delete directory ", path); }
    void onDeleteFile(const OCFilePath& path) override { note("delete file ", path); }

    Log log;
    /// Called with each path after it has been written down.
    std::function<void(const std::string&)> also;

private:
    void note(const char* what, const OCFilePath& path) {
        std::string text(path.getString(), path.getLength());
        const std::string full = text;
        if (!prefix.empty() && text.compare(0, prefix.size(), prefix) == 0)
            text.erase(0, prefix.size());
        log.push_back(what + text);
        if (also)
            also(full);
    }

    std::string prefix;
};

class Refusal {};

/// The entries of a directory in the order of the system.
std::vector<std::string> entriesOf(const std::string& directory) {
    std::vector<std::string> names;
    DIR* const stream = opendir(directory.c_str());
    if (stream == nullptr)
        return names;
    while (const struct dirent* entry = readdir(stream))
        if (strcmp(entry->d_name, ".") != 0 && strcmp(entry->d_name, "..") != 0)
            names.push_back(entry->d_name);
    closedir(stream);
    return names;
}

/// What a recursive deletion is to report, found out before it. Says nothing of links that hang on
/// what is deleted.
void expectedDeletions(const std::string& path, Log& log) {
    struct stat status;
    log.push_back("delete directory " + path);
    if (lstat(path.c_str(), &status) != 0 || S_ISLNK(status.st_mode))
        return;
    const std::vector<std::string> names = entriesOf(path);
    for (const std::string& name : names)
        if (stat((path + "/" + name).c_str(), &status) == 0 && S_ISREG(status.st_mode))
            log.push_back("delete file " + path + "/" + name);
    for (const std::string& name : names)
        if (stat((path + "/" + name).c_str(), &status) == 0 && S_ISDIR(status.st_mode))
            expectedDeletions(path + "/" + name, log);
}

/// Directories are read in the order of their names, or the opposite one, as long as it lives.
class NameOrder {
public:
    explicit NameOrder(bool descending)
        : opening(calls::opendir,
                  [this, descending](const char* path) {
                      DIR* const stream = calls::opendir.original(path);
                      std::vector<struct dirent>& entries = listings[stream];
                      entries.clear();
                      while (const struct dirent* entry = calls::readdir.original(stream))
                          entries.push_back(*entry);
                      std::sort(entries.begin(), entries.end(),
                                [=](const struct dirent& a, const struct dirent& b) {
                                    const int order = strcmp(a.d_name, b.d_name);
                                    return descending ? order > 0 : order < 0;
                                });
                      return stream;
                  }),
          rewinding(calls::rewinddir, [this](DIR* stream) { places[stream] = 0; }),
          reading(
              calls::readdir, [this](DIR * stream) -> struct dirent* {
                  const std::size_t place = places[stream]++;
                  std::vector<struct dirent>& entries = listings[stream];
                  return place < entries.size() ? &entries[place] : nullptr;
              }) {}

private:
    std::map<DIR*, std::vector<struct dirent>> listings;
    std::map<DIR*, std::size_t> places;
    Replacement<DIR*(const char*)> opening;
    Replacement<void(DIR*)> rewinding;
    Replacement<struct dirent*(DIR*)> reading;
};

/// Makes `depth` directories, one in the other, and a file in the innermost.
std::string makeNested(const std::string& top, int depth, const std::string& name) {
    std::string path = top;
    for (int i = 0; i < depth; ++i) {
        path += "/" + name;
        if (mkdir(path.c_str(), 0700) != 0)
            throw std::runtime_error("cannot make " + path);
    }
    std::ofstream(path + "/f") << "x";
    return path;
}

} // namespace

// Layout

TEST(OCFileManagerTest, HoldsAnObserver) {
    EXPECT_EQ(sizeof(OCFileManager), 16U);
    EXPECT_EQ(slots::slotCount<OCFileManager>(), 2U);
    OCFileManagerEvents events;
    const void* held[2];
    OCFileManager manager(events);
    std::memcpy(held, static_cast<const void*>(&manager), sizeof held);
    EXPECT_EQ(held[1], &events);
    OCFileManager silent;
    std::memcpy(held, static_cast<const void*>(&silent), sizeof held);
    EXPECT_EQ(held[1], nullptr);
    static_assert(std::is_base_of_v<OCObject, OCFileManager>);
    static_assert(std::is_nothrow_destructible_v<OCFileManager>);
    static_assert(!std::is_copy_constructible_v<OCFileManager>);
    static_assert(!std::is_copy_assignable_v<OCFileManager>);
}

TEST(OCFileManagerTest, TheEventsHaveTheirSlots) {
    EXPECT_EQ(sizeof(OCFileManagerEvents), 8U);
    EXPECT_EQ(slots::slotOf(&OCFileManagerEvents::onCreateDirectory), 2U);
    EXPECT_EQ(slots::slotOf(&OCFileManagerEvents::onDeleteDirectory), 3U);
    EXPECT_EQ(slots::slotOf(&OCFileManagerEvents::onDeleteFile), 4U);
    EXPECT_EQ(slots::slotCount<OCFileManagerEvents>(), 5U);
    static_assert(std::is_base_of_v<OCObject, OCFileManagerEvents>);
    static_assert(std::is_constructible_v<OCFileManagerEvents>);
}

TEST(OCFileManagerTest, TheBaseEventsDoNothing) {
    ScratchDirectory directory;
    const std::string file = directory.write("file", "x");
    OCFileManagerEvents events;
    events.onCreateDirectory(pathOf(directory.file("new")));
    events.onDeleteDirectory(pathOf(directory.path));
    events.onDeleteFile(pathOf(file));
    EXPECT_TRUE(exists(file));
    EXPECT_FALSE(exists(directory.file("new")));
    OCFileManager(events).deleteFile(pathOf(file));
    EXPECT_FALSE(exists(file));
}

TEST(OCFileManagerTest, TellsItsObserverIfThereIsOne) {
    Recorder recorder;
    OCFileManager manager(recorder);
    manager.onDeleteFile("a");
    manager.onCreateDirectory("b");
    manager.onDeleteDirectory("c");
    EXPECT_EQ(recorder.log, (Log{"delete file a", "create b", "delete directory c"}));
    OCFileManager silent;
    EXPECT_NO_THROW(silent.onDeleteFile("a"));
    EXPECT_NO_THROW(silent.onCreateDirectory("b"));
    EXPECT_NO_THROW(silent.onDeleteDirectory("c"));
}

// Creating

TEST(OCFileManagerTest, CreatesTheMissingParentsOutermostFirst) {
    ScratchDirectory directory;
    const std::string report = inChild([&] {
        if (chdir(directory.path.c_str()) != 0)
            return std::string("no directory");
        Recorder recorder;
        std::string text;
        recorder.also = [&](const std::string& path) {
            text += path + (exists(path) ? " too late\n" : "\n");
        };
        OCFileManager(recorder).createDirectory("a/b/c");
        return text + std::to_string(recorder.log.size());
    });
    EXPECT_EQ(report, "a/\na/b/\na/b/c\n3");
    EXPECT_TRUE(std::filesystem::is_directory(directory.file("a/b/c")));
}

TEST(OCFileManagerTest, CreatesOneDirectoryInAnExistingOne) {
    ScratchDirectory directory;
    Recorder recorder(directory.path);
    OCFileManager(recorder).createDirectory(pathOf(directory.file("a")));
    EXPECT_EQ(recorder.log, (Log{"create /a"}));
    EXPECT_TRUE(std::filesystem::is_directory(directory.file("a")));
    OCFileManager(recorder).createDirectory(pathOf(directory.file("a/b/c/")));
    EXPECT_EQ(recorder.log, (Log{"create /a", "create /a/b/", "create /a/b/c/"}));
    EXPECT_TRUE(std::filesystem::is_directory(directory.file("a/b/c")));
}

TEST(OCFileManagerTest, CreatesARelativeDirectoryWithoutAParent) {
    ScratchDirectory directory;
    EXPECT_EQ(inChild([&] {
                  if (chdir(directory.path.c_str()) != 0)
                      return std::string("no directory");
                  OCFileManager().createDirectory("single");
                  return std::string("done");
              }),
              "done");
    EXPECT_TRUE(std::filesystem::is_directory(directory.file("single")));
}

TEST(OCFileManagerTest, ALinkToADirectoryIsAParent) {
    ScratchDirectory directory, target;
    ASSERT_EQ(symlink(target.path.c_str(), directory.file("link").c_str()), 0);
    OCFileManager().createDirectory(pathOf(directory.file("link/new")));
    EXPECT_TRUE(std::filesystem::is_directory(target.file("new")));
}

TEST(OCFileManagerTest, ANewDirectoryHasItsPermissions) {
    ScratchDirectory directory;
    std::vector<mode_t> modes;
    {
        Replacement making(calls::mkdir, [&](const char* path, mode_t mode) {
            modes.push_back(mode);
            return calls::mkdir.original(path, mode);
        });
        OCFileManager().createDirectory(pathOf(directory.file("a/b")));
    }
    EXPECT_EQ(modes, (std::vector<mode_t>{0755, 0755}));
    EXPECT_EQ(inChild([&] {
                  umask(027);
                  OCFileManager().createDirectory(pathOf(directory.file("c")));
                  struct stat status;
                  return stat(directory.file("c").c_str(), &status) == 0 &&
                                 (status.st_mode & 07777) == 0750
                             ? "0750"
                             : "other";
              }),
              "0750");
}

TEST(OCFileManagerTest, AnExistingDirectoryIsRefused) {
    ScratchDirectory directory;
    Recorder recorder(directory.path);
    EXPECT_EQ(thrown<OXFileManager_CreateDirectoryError>(
                  [&] { OCFileManager(recorder).createDirectory(pathOf(directory.path)); }),
              "OXFileManager_CreateDirectoryError: Creating the directory failed (File exists)");
    EXPECT_EQ(recorder.log, (Log{"create "}));
}

TEST(OCFileManagerTest, AFileInTheWayIsRefused) {
    ScratchDirectory directory;
    directory.write("file", "");
    Recorder recorder(directory.path);
    EXPECT_EQ(thrown<OXFileManager_CreateDirectoryError>([&] {
                  OCFileManager(recorder).createDirectory(pathOf(directory.file("file/a")));
              }),
              "OXFileManager_CreateDirectoryError: Creating the directory failed (File exists)");
    EXPECT_EQ(recorder.log, (Log{"create /file/"}));
}

TEST(OCFileManagerTest, AnEmptyPathIsRefused) {
    Recorder recorder;
    EXPECT_EQ(thrown<OXFileManager_CreateDirectoryError>(
                  [&] { OCFileManager(recorder).createDirectory(""); }),
              "OXFileManager_CreateDirectoryError: Creating the directory failed (No such file or "
              "directory)");
    EXPECT_EQ(recorder.log, (Log{"create "}));
}

TEST(OCFileManagerTest, TheRootIsNoExistingParent) {
    Recorder recorder;
    Log made;
    Replacement making(calls::mkdir, [&](const char* path, mode_t mode) {
        made.push_back(path);
        return strcmp(path, "/") == 0 ? calls::mkdir.original(path, mode) : 0;
    });
    EXPECT_EQ(thrown<OXFileManager_CreateDirectoryError>(
                  [&] { OCFileManager(recorder).createDirectory("/orvabase-test-missing"); }),
              "OXFileManager_CreateDirectoryError: Creating the directory failed (File exists)");
    EXPECT_EQ(recorder.log, (Log{"create /"}));
    EXPECT_EQ(made, (Log{"/"}));
    EXPECT_THROW(OCFileManager().createDirectory("/"), OXFileManager_CreateDirectoryError);
    EXPECT_THROW(OCFileManager().createDirectory("/orvabase-test-missing/below"),
                 OXFileManager_CreateDirectoryError);
    EXPECT_EQ(made, (Log{"/", "/", "/"}));
}

TEST(OCFileManagerTest, EachSlashOfARunIsAParent) {
    ScratchDirectory directory;
    Recorder recorder(directory.path);
    EXPECT_EQ(thrown<OXFileManager_CreateDirectoryError>(
                  [&] { OCFileManager(recorder).createDirectory(pathOf(directory.file("a//b"))); }),
              "OXFileManager_CreateDirectoryError: Creating the directory failed (File exists)");
    EXPECT_EQ(recorder.log, (Log{"create /a/", "create /a//"}));
    recorder.log.clear();
    OCFileManager(recorder).createDirectory(pathOf(directory.file("a//b")));
    EXPECT_EQ(recorder.log, (Log{"create /a//b"}));
}

TEST(OCFileManagerTest, ABackslashEndsAParentToo) {
    ScratchDirectory directory;
    Recorder recorder(directory.path);
    OCFileManager(recorder).createDirectory(pathOf(directory.file("a\\b")));
    EXPECT_EQ(recorder.log, (Log{"create /a\\", "create /a\\b"}));
    EXPECT_TRUE(std::filesystem::is_directory(directory.file("a\\")));
    EXPECT_TRUE(std::filesystem::is_directory(directory.file("a\\b")));
}

TEST(OCFileManagerTest, AllParentsAreExaminedBeforeTheFirstIsCreated) {
    ScratchDirectory directory;
    StatCallsScope stats;
    Recorder recorder(directory.path);
    std::vector<unsigned long> examined;
    recorder.also = [&](const std::string&) { examined.push_back(stats->statCalls); };
    OCFileManager(recorder).createDirectory(pathOf(directory.file("a/b/c")));
    // a/b, a and the directory itself; the recorder examines nothing here.
    EXPECT_EQ(examined, (std::vector<unsigned long>{3, 3, 3}));
    EXPECT_EQ(stats->statCalls, 3U);
    EXPECT_EQ(stats->lstatCalls, 0U);
}

TEST(OCFileManagerTest, AFailingMkdirStopsThere) {
    ScratchDirectory directory;
    Recorder recorder(directory.path);
    {
        Failing failing(calls::mkdir, ENOSPC, 2, 1);
        EXPECT_EQ(thrown<OXFileManager_CreateDirectoryError>([&] {
                      OCFileManager(recorder).createDirectory(pathOf(directory.file("a/b/c")));
                  }),
                  "OXFileManager_CreateDirectoryError: Creating the directory failed (No space "
                  "left on device)");
        EXPECT_EQ(failing.calls(), 2U);
    }
    EXPECT_EQ(recorder.log, (Log{"create /a/", "create /a/b/"}));
    EXPECT_TRUE(exists(directory.file("a")));
    EXPECT_FALSE(exists(directory.file("a/b")));
}

TEST(OCFileManagerTest, AnObserverThatThrowsStopsTheCreation) {
    ScratchDirectory directory;
    Recorder recorder(directory.path);
    recorder.also = [&](const std::string&) {
        if (recorder.log.size() == 2)
            throw Refusal();
    };
    EXPECT_THROW(OCFileManager(recorder).createDirectory(pathOf(directory.file("a/b/c"))), Refusal);
    EXPECT_TRUE(exists(directory.file("a")));
    EXPECT_FALSE(exists(directory.file("a/b")));
}

TEST(OCFileManagerTest, AnObserverMayChangeTheCallersPath) {
    ScratchDirectory directory;
    OCFilePath path = pathOf(directory.file("a/b/" + std::string(200, 'c')));
    Recorder recorder;
    recorder.also = [&](const std::string&) { path.clear(); };
    OCFileManager(recorder).createDirectory(path);
    EXPECT_TRUE(exists(directory.file("a/b/" + std::string(200, 'c'))));
}

TEST(OCFileManagerTest, ParentsThatTheSystemCannotHoldEndWithItsError) {
    ScratchDirectory directory;
    const std::string name(39, 'd');
    std::string path = directory.path;
    // The sanitizers' heap copies the path for each parent.
    const int depth = fault::sanitized ? 10000 : 50000;
    for (int i = 0; i < depth; ++i)
        path += "/" + name;
    Recorder recorder(directory.path);
    EXPECT_EQ(thrown<OXFileManager_CreateDirectoryError>(
                  [&] { OCFileManager(recorder).createDirectory(pathOf(path)); }),
              "OXFileManager_CreateDirectoryError: Creating the directory failed (File name too "
              "long)");
    // All that the system takes, which is less than 4096 characters, and the one that it refuses.
    EXPECT_EQ(recorder.log.size(), (4095 - directory.path.size() - 1) / 40 + 1);
    EXPECT_EQ(recorder.log.front(), "create /" + name + "/");
    OCFileManager().deleteDirectory(pathOf(directory.file(name)), true);
    EXPECT_TRUE(entriesOf(directory.path).empty());
}

TEST(OCFileManagerTest, TensOfThousandsOfMissingParentsAreNoRecursion) {
    for (const char* front : {"", "/"}) {
        std::string path = front + std::string("orvabase-test-missing");
        for (int i = 0; i < 100000; ++i)
            path += "/d";
        Replacement making(calls::mkdir, [&](const char*, mode_t) {
            errno = EROFS;
            return -1;
        });
        EXPECT_EQ(thrown<OXFileManager_CreateDirectoryError>(
                      [&] { OCFileManager().createDirectory(pathOf(path)); }),
                  "OXFileManager_CreateDirectoryError: Creating the directory failed (Read-only "
                  "file system)");
    }
}

TEST(OCFileManagerTest, CreatesWhatAPlainRecursionWouldCreate) {
    const unsigned seed = 72;
    std::mt19937 random(seed);
    const std::function<std::string(const std::string&)> plain =
        [&](const std::string& path) -> std::string {
        std::size_t end =
            path.size() < 2 ? std::string::npos : path.find_last_of("/\\", path.size() - 2);
        const std::string parent = end == std::string::npos ? "" : path.substr(0, end + 1);
        std::string shortened = parent;
        if (!shortened.empty())
            shortened.pop_back();
        struct stat status;
        if (!parent.empty() && (shortened.empty() || stat(shortened.c_str(), &status) != 0 ||
                                !S_ISDIR(status.st_mode))) {
            std::string failure = plain(parent);
            if (!failure.empty())
                return failure;
        }
        return mkdir(path.c_str(), 0755) == 0 ? "" : strerror(errno);
    };
    for (int round = 0; round < 60; ++round) {
        ScratchDirectory one, other;
        for (int i = 0; i < 4; ++i) {
            std::string rest = "/";
            for (unsigned long count = 1 + random() % 8; count > 0; --count)
                rest += "ab/\\/"[random() % 5];
            std::string failure;
            try {
                OCFileManager().createDirectory(pathOf(one.path + rest));
            } catch (const OXFileManager_CreateDirectoryError& caught) {
                failure = caught.getDetails().getString(0).getString();
            }
            EXPECT_EQ(failure, plain(other.path + rest)) << rest << ", seed " << seed;
        }
        std::set<std::string> made, expected;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(one.path))
            made.insert(entry.path().string().substr(one.path.size()));
        for (const auto& entry : std::filesystem::recursive_directory_iterator(other.path))
            expected.insert(entry.path().string().substr(other.path.size()));
        EXPECT_EQ(made, expected) << "seed " << seed;
    }
}

// Deleting single things

TEST(OCFileManagerTest, DeletesAFile) {
    ScratchDirectory directory;
    const std::string file = directory.write("file", "x");
    Recorder recorder(directory.path);
    recorder.also = [](const std::string& path) { EXPECT_TRUE(exists(path)); };
    OCFileManager(recorder).deleteFile(pathOf(file));
    EXPECT_FALSE(exists(file));
    EXPECT_EQ(recorder.log, (Log{"delete file /file"}));
}

TEST(OCFileManagerTest, DeletingAFileIsOneRemoveOfWhateverItIs) {
    ScratchDirectory directory;
    directory.write("file", "x");
    ASSERT_EQ(symlink("file", directory.file("link").c_str()), 0);
    ASSERT_EQ(mkfifo(directory.file("fifo").c_str(), 0600), 0);
    ASSERT_EQ(mkdir(directory.file("empty").c_str(), 0700), 0);
    Counting removing(calls::remove);
    StatCallsScope stats;
    for (const char* name : {"link", "fifo", "empty"})
        OCFileManager().deleteFile(pathOf(directory.file(name)));
    EXPECT_EQ(removing.calls(), 3U);
    EXPECT_EQ(stats->statCalls + stats->lstatCalls, 0U);
    EXPECT_EQ(entriesOf(directory.path), (Log{"file"}));
}

TEST(OCFileManagerTest, AFileThatCannotBeDeletedIsAnErrorBehindTheEvent) {
    ScratchDirectory directory;
    Recorder recorder(directory.path);
    EXPECT_EQ(thrown<OXFileManager_DeleteFileError>(
                  [&] { OCFileManager(recorder).deleteFile(pathOf(directory.file("missing"))); }),
              "OXFileManager_DeleteFileError: Deleting the file failed (No such file or "
              "directory)");
    EXPECT_EQ(recorder.log, (Log{"delete file /missing"}));
    const std::string file = directory.write("file", "x");
    {
        Failing failing(calls::remove, EPERM);
        EXPECT_EQ(thrown<OXFileManager_DeleteFileError>(
                      [&] { OCFileManager().deleteFile(pathOf(file)); }),
                  "OXFileManager_DeleteFileError: Deleting the file failed (Operation not "
                  "permitted)");
        EXPECT_EQ(failing.calls(), 1U);
    }
    EXPECT_TRUE(exists(file));
}

TEST(OCFileManagerTest, AnObserverMayChangeThePathOfWhatIsDeleted) {
    ScratchDirectory directory;
    std::filesystem::create_directories(directory.file("tree/a"));
    std::ofstream(directory.file("tree/a/f")) << "x";
    std::filesystem::create_directory(directory.file("empty"));
    std::filesystem::create_directory(directory.file("other"));
    std::filesystem::create_directory_symlink(directory.file("other"), directory.file("link"));
    std::ofstream(directory.file("file")) << "x";
    const OCFilePath other = pathOf(directory.file("other"));
    OCFilePath path;
    Recorder recorder;
    recorder.also = [&](const std::string&) { path = other; };
    OCFileManager manager(recorder);
    for (const char* name : {"tree", "empty", "link"}) {
        path = pathOf(directory.file(name));
        manager.deleteDirectory(path, true);
    }
    path = pathOf(directory.file("file"));
    manager.deleteFile(path);
    EXPECT_EQ(entriesOf(directory.path), Log{"other"});
}

TEST(OCFileManagerTest, AnObserverThatThrowsKeepsTheFile) {
    ScratchDirectory directory;
    const std::string file = directory.write("file", "x");
    Recorder recorder;
    recorder.also = [](const std::string&) { throw Refusal(); };
    EXPECT_THROW(OCFileManager(recorder).deleteFile(pathOf(file)), Refusal);
    EXPECT_TRUE(exists(file));
}

TEST(OCFileManagerTest, DeletesAnEmptyDirectory) {
    ScratchDirectory directory;
    const std::string empty = directory.file("empty");
    for (const bool recursive : {false, true}) {
        ASSERT_EQ(mkdir(empty.c_str(), 0700), 0);
        Recorder recorder(directory.path);
        recorder.also = [](const std::string& path) { EXPECT_TRUE(exists(path)); };
        OCFileManager(recorder).deleteDirectory(pathOf(empty), recursive);
        EXPECT_FALSE(exists(empty));
        EXPECT_EQ(recorder.log, (Log{"delete directory /empty"}));
    }
}

TEST(OCFileManagerTest, WithoutRecursionADirectoryMustBeEmpty) {
    ScratchDirectory directory;
    directory.write("file", "x");
    Recorder recorder(directory.path);
    Counting opening(calls::opendir);
    EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                  [&] { OCFileManager(recorder).deleteDirectory(pathOf(directory.path), false); }),
              "OXFileManager_DeleteDirectoryError: Deleting the directory failed (Directory not "
              "empty)");
    EXPECT_EQ(recorder.log, (Log{"delete directory "}));
    EXPECT_EQ(opening.calls(), 0U);
    EXPECT_TRUE(exists(directory.file("file")));
}

TEST(OCFileManagerTest, WhatIsNoDirectoryIsNotDeletedAsOne) {
    ScratchDirectory directory;
    const std::string file = directory.write("file", "x");
    EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                  [&] { OCFileManager().deleteDirectory(pathOf(file), false); }),
              "OXFileManager_DeleteDirectoryError: Deleting the directory failed (Not a "
              "directory)");
    EXPECT_EQ(thrown<OXFileFinder_OpenDirectory>(
                  [&] { OCFileManager().deleteDirectory(pathOf(file), true); }),
              "OXFileFinder_OpenDirectory: Error opening directory for reading (" + file + ")");
    EXPECT_TRUE(exists(file));
    Recorder recorder;
    EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                  [&] { OCFileManager(recorder).deleteDirectory("", false); }),
              "OXFileManager_DeleteDirectoryError: Deleting the directory failed (No such file or "
              "directory)");
    EXPECT_EQ(recorder.log, (Log{"delete directory "}));
}

TEST(OCFileManagerTest, ALinkIsRemovedAndItsTargetStays) {
    ScratchDirectory directory, target;
    target.write("kept", "x");
    const std::string link = directory.file("link");
    for (const bool recursive : {false, true}) {
        for (const char* to : {target.path.c_str(), "nowhere"}) {
            ASSERT_EQ(symlink(to, link.c_str()), 0);
            Counting opening(calls::opendir);
            Counting removing(calls::remove);
            Counting removingDirectories(calls::rmdir);
            Recorder recorder(directory.path);
            OCFileManager(recorder).deleteDirectory(pathOf(link), recursive);
            EXPECT_EQ(recorder.log, (Log{"delete directory /link"}));
            EXPECT_EQ(opening.calls(), 0U);
            EXPECT_EQ(removing.calls(), 1U);
            EXPECT_EQ(removingDirectories.calls(), 0U);
            EXPECT_FALSE(exists(link));
        }
    }
    EXPECT_TRUE(exists(target.file("kept")));
}

TEST(OCFileManagerTest, ALinkThatCannotBeRemovedIsAnErrorOfTheDirectory) {
    ScratchDirectory directory;
    const std::string link = directory.file("link");
    ASSERT_EQ(symlink("nowhere", link.c_str()), 0);
    Failing failing(calls::remove, EACCES);
    EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                  [&] { OCFileManager().deleteDirectory(pathOf(link), true); }),
              "OXFileManager_DeleteDirectoryError: Deleting the directory failed (Permission "
              "denied)");
    EXPECT_TRUE(exists(link));
}

TEST(OCFileManagerTest, AFailingRmdirIsAnError) {
    ScratchDirectory directory;
    Failing failing(calls::rmdir, EBUSY, 1, 1);
    EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                  [&] { OCFileManager().deleteDirectory(pathOf(directory.path), false); }),
              "OXFileManager_DeleteDirectoryError: Deleting the directory failed (Device or "
              "resource busy)");
    EXPECT_EQ(failing.calls(), 1U);
    EXPECT_TRUE(exists(directory.path));
}

TEST(OCFileManagerTest, InterruptedCallsAreNotRepeated) {
    ScratchDirectory directory;
    const std::string text = " failed (Interrupted system call)";
    OCFileManager manager;
    {
        Failing interrupted(calls::mkdir, EINTR, 1, 1);
        EXPECT_EQ(thrown<OXFileManager_CreateDirectoryError>(
                      [&] { manager.createDirectory(pathOf(directory.file("new"))); }),
                  "OXFileManager_CreateDirectoryError: Creating the directory" + text);
    }
    EXPECT_FALSE(exists(directory.file("new")));
    const std::string file = directory.write("file", "");
    {
        Failing interrupted(calls::remove, EINTR, 1, 1);
        EXPECT_EQ(thrown<OXFileManager_DeleteFileError>([&] { manager.deleteFile(pathOf(file)); }),
                  "OXFileManager_DeleteFileError: Deleting the file" + text);
    }
    EXPECT_TRUE(exists(file));
    const std::string link = directory.file("link");
    ASSERT_EQ(symlink("file", link.c_str()), 0);
    {
        Failing interrupted(calls::remove, EINTR, 1, 1);
        EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                      [&] { manager.deleteDirectory(pathOf(link), true); }),
                  "OXFileManager_DeleteDirectoryError: Deleting the directory" + text);
    }
    EXPECT_TRUE(exists(link));
    const std::string empty = directory.file("empty");
    ASSERT_EQ(mkdir(empty.c_str(), 0700), 0);
    {
        Failing interrupted(calls::rmdir, EINTR, 1, 1);
        EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                      [&] { manager.deleteDirectory(pathOf(empty), false); }),
                  "OXFileManager_DeleteDirectoryError: Deleting the directory" + text);
    }
    EXPECT_TRUE(exists(empty));
}

// Deleting trees

TEST(OCFileManagerTest, DeletesATreeFilesFirstAndReportsInOrder) {
    ScratchDirectory directory;
    const std::string top = directory.file("top");
    std::filesystem::create_directories(top + "/middle/inner");
    directory.write("top/file", "");
    directory.write("top/.hidden", "");
    directory.write("top/middle/file", "");
    directory.write("top/middle/inner/file", "");
    Log expected;
    expectedDeletions(top, expected);
    ASSERT_EQ(expected.size(), 7U);
    Recorder recorder;
    recorder.also = [](const std::string& path) { EXPECT_TRUE(exists(path)) << path; };
    OCFileManager(recorder).deleteDirectory(pathOf(top), true);
    EXPECT_EQ(recorder.log, expected);
    // Whatever order the system has, this much is fixed.
    EXPECT_EQ(recorder.log[0], "delete directory " + top);
    EXPECT_EQ(recorder.log[3], "delete directory " + top + "/middle");
    EXPECT_EQ(recorder.log[4], "delete file " + top + "/middle/file");
    EXPECT_EQ(recorder.log[5], "delete directory " + top + "/middle/inner");
    EXPECT_EQ(recorder.log[6], "delete file " + top + "/middle/inner/file");
    EXPECT_TRUE(entriesOf(directory.path).empty());
}

TEST(OCFileManagerTest, EachDirectoryIsRemovedBeforeItsNextSibling) {
    ScratchDirectory directory;
    const std::string top = directory.file("top");
    for (const char* name : {"/a/x", "/b/x", "/c/x"})
        std::filesystem::create_directories(top + name);
    Recorder recorder;
    Log removed;
    Replacement removing(calls::rmdir, [&](const char* path) {
        removed.push_back(path);
        return calls::rmdir.original(path);
    });
    std::vector<std::size_t> removedBefore;
    recorder.also = [&](const std::string&) { removedBefore.push_back(removed.size()); };
    OCFileManager(recorder).deleteDirectory(pathOf(top), true);
    EXPECT_EQ(removedBefore, (std::vector<std::size_t>{0, 0, 0, 2, 2, 4, 4}));
    ASSERT_EQ(removed.size(), 7U);
    EXPECT_EQ(removed[0], removed[1] + "/x");
    EXPECT_EQ(removed[6], top);
}

TEST(OCFileManagerTest, ATrailingSlashIsNotDoubled) {
    ScratchDirectory directory;
    directory.write("file", "");
    ASSERT_EQ(mkdir(directory.file("below").c_str(), 0700), 0);
    Recorder recorder(directory.path);
    OCFileManager(recorder).recursiveDeleteFiles(pathOf(directory.path + "/"));
    OCFileManager(recorder).recursiveDeleteDirectories(pathOf(directory.path + "/"));
    EXPECT_EQ(recorder.log, (Log{"delete file /file", "delete directory /below"}));
}

TEST(OCFileManagerTest, LinksGoAndWhatTheyLeadToStays) {
    ScratchDirectory directory, outside;
    outside.write("kept", "x");
    const std::string top = directory.file("top");
    ASSERT_EQ(mkdir(top.c_str(), 0700), 0);
    ASSERT_EQ(symlink(outside.path.c_str(), (top + "/directory").c_str()), 0);
    ASSERT_EQ(symlink(outside.file("kept").c_str(), (top + "/file").c_str()), 0);
    ASSERT_EQ(symlink("directory", (top + "/chain").c_str()), 0);
    ASSERT_EQ(symlink(".", (top + "/itself").c_str()), 0);
    ASSERT_EQ(symlink("..", (top + "/parent").c_str()), 0);
    Recorder recorder(top);
    {
        // The chain comes before the directory, without which it would lead nowhere.
        NameOrder order(false);
        OCFileManager(recorder).deleteDirectory(pathOf(top), true);
    }
    EXPECT_EQ(recorder.log, (Log{"delete directory ", "delete file /file",
                                 "delete directory /chain", "delete directory /directory",
                                 "delete directory /itself", "delete directory /parent"}));
    EXPECT_FALSE(exists(top));
    EXPECT_TRUE(exists(outside.file("kept")));
    EXPECT_TRUE(exists(directory.path));
}

TEST(OCFileManagerTest, EachEntryIsExaminedWhenItsTurnComes) {
    ScratchDirectory directory;
    const std::string top = directory.file("top");
    std::filesystem::create_directories(top + "/b/deep");
    ASSERT_EQ(symlink("b", (top + "/a").c_str()), 0);
    {
        // The link comes first and leads to a directory still.
        NameOrder order(false);
        Recorder recorder(top);
        OCFileManager(recorder).deleteDirectory(pathOf(top), true);
        EXPECT_EQ(recorder.log, (Log{"delete directory ", "delete directory /a",
                                     "delete directory /b", "delete directory /b/deep"}));
        EXPECT_FALSE(exists(top));
    }
    std::filesystem::create_directories(top + "/b/deep");
    ASSERT_EQ(symlink("b", (top + "/a").c_str()), 0);
    {
        // The link leads nowhere when its turn comes, and so it stays.
        NameOrder order(true);
        Recorder recorder(top);
        EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                      [&] { OCFileManager(recorder).deleteDirectory(pathOf(top), true); }),
                  "OXFileManager_DeleteDirectoryError: Deleting the directory failed (Directory "
                  "not empty)");
        EXPECT_EQ(recorder.log,
                  (Log{"delete directory ", "delete directory /b", "delete directory /b/deep"}));
    }
    EXPECT_EQ(entriesOf(top), (Log{"a"}));
}

TEST(OCFileManagerTest, OtherKindsOfFilesStayAndAreAnError) {
    for (const char* kind : {"fifo", "socket", "dangling", "loop"}) {
        SCOPED_TRACE(kind);
        ScratchDirectory directory;
        const std::string top = directory.file("top"), odd = top + "/deep/" + kind;
        std::filesystem::create_directories(top + "/deep/empty");
        directory.write("top/file", "");
        directory.write("top/deep/file", "");
        const std::string what = kind;
        if (what == "fifo") {
            ASSERT_EQ(mkfifo(odd.c_str(), 0600), 0);
        } else if (what == "socket") {
            const int listening = socket(AF_UNIX, SOCK_STREAM, 0);
            struct sockaddr_un address = {};
            address.sun_family = AF_UNIX;
            std::strcpy(address.sun_path, odd.c_str());
            ASSERT_EQ(bind(listening, reinterpret_cast<struct sockaddr*>(&address), sizeof address),
                      0);
            close(listening);
        } else {
            ASSERT_EQ(symlink(what == "loop" ? "loop" : "nowhere", odd.c_str()), 0);
        }
        const long descriptors = openDescriptors();
        Recorder recorder(top);
        EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                      [&] { OCFileManager(recorder).deleteDirectory(pathOf(top), true); }),
                  "OXFileManager_DeleteDirectoryError: Deleting the directory failed (Directory "
                  "not empty)");
        EXPECT_EQ(recorder.log,
                  (Log{"delete directory ", "delete file /file", "delete directory /deep",
                       "delete file /deep/file", "delete directory /deep/empty"}));
        EXPECT_TRUE(exists(odd));
        EXPECT_EQ(entriesOf(top + "/deep"), (Log{kind}));
        EXPECT_EQ(entriesOf(top), (Log{"deep"}));
        EXPECT_EQ(openDescriptors(), descriptors);
    }
}

TEST(OCFileManagerTest, TheFirstPassDeletesFilesOnly) {
    ScratchDirectory directory;
    directory.write("file", "");
    std::filesystem::create_directories(directory.file("below"));
    directory.write("below/file", "");
    ASSERT_EQ(symlink("below", directory.file("toDirectory").c_str()), 0);
    ASSERT_EQ(symlink("below/file", directory.file("toFile").c_str()), 0);
    OCFileManager().recursiveDeleteFiles(pathOf(directory.path));
    const Log left = entriesOf(directory.path);
    EXPECT_EQ(std::set<std::string>(left.begin(), left.end()),
              (std::set<std::string>{"below", "toDirectory"}));
    EXPECT_TRUE(exists(directory.file("below/file")));
}

TEST(OCFileManagerTest, TheSecondPassDeletesDirectoriesOnlyAndKeepsItsOwn) {
    ScratchDirectory directory;
    directory.write("file", "");
    std::filesystem::create_directories(directory.file("below/deeper"));
    directory.write("below/file", "");
    OCFileManager().recursiveDeleteDirectories(pathOf(directory.path));
    EXPECT_EQ(entriesOf(directory.path), (Log{"file"}));
}

TEST(OCFileManagerTest, EachPassExaminesEachEntry) {
    ScratchDirectory directory;
    directory.write("a", "");
    directory.write("b", "");
    ASSERT_EQ(mkfifo(directory.file("fifo").c_str(), 0600), 0);
    StatCallsScope stats;
    OCFileManager().recursiveDeleteFiles(pathOf(directory.path));
    EXPECT_EQ(stats->statCalls, 5U); // with "." and ".."
    OCFileManager().recursiveDeleteDirectories(pathOf(directory.path));
    EXPECT_EQ(stats->statCalls, 8U); // without the two files
    EXPECT_EQ(stats->lstatCalls, 0U);
}

TEST(OCFileManagerTest, FailingExaminationsKeepEverything) {
    ScratchDirectory directory;
    const std::string top = directory.file("top");
    std::filesystem::create_directories(top + "/below");
    directory.write("top/file", "");
    {
        StatCallsScope stats;
        stats->fails = true;
        EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                      [&] { OCFileManager().deleteDirectory(pathOf(top), true); }),
                  "OXFileManager_DeleteDirectoryError: Deleting the directory failed (Directory "
                  "not empty)");
    }
    EXPECT_EQ(entriesOf(top).size(), 2U);
}

TEST(OCFileManagerTest, AFailingOpendirStopsInEitherPass) {
    const std::string refused = "OXFileFinder_OpenDirectory: Error opening directory for reading (";
    for (unsigned long number = 1; number <= 4; ++number) {
        SCOPED_TRACE(number);
        ScratchDirectory directory;
        const std::string top = directory.file("top");
        std::filesystem::create_directories(top + "/below");
        directory.write("top/file", "");
        directory.write("top/below/file", "");
        const long descriptors = openDescriptors();
        const long blocks = fault::heapRecord().liveBlocks;
        {
            Failing failing(calls::opendir, EMFILE, number, 1);
            EXPECT_EQ(thrown<OXFileFinder_OpenDirectory>(
                          [&] { OCFileManager().deleteDirectory(pathOf(top), true); }),
                      refused + top + (number > 2 ? "/below)" : ")"));
            EXPECT_EQ(failing.calls(), number);
        }
        EXPECT_EQ(fault::heapRecord().liveBlocks, blocks);
        EXPECT_EQ(openDescriptors(), descriptors);
        EXPECT_EQ(exists(top + "/file"), number == 1);
        EXPECT_EQ(exists(top + "/below/file"), number < 4);
        EXPECT_TRUE(exists(top + "/below"));
    }
}

TEST(OCFileManagerTest, AFailingReaddirLeavesEntriesAndSoIsAnError) {
    for (unsigned long number = 1; number <= 8; ++number) {
        SCOPED_TRACE(number);
        ScratchDirectory directory;
        const std::string top = directory.file("top");
        std::filesystem::create_directories(top + "/below");
        Failing failing(calls::readdir, EIO, number, 1);
        const std::string result = thrown<OXFileManager_DeleteDirectoryError>(
            [&] { OCFileManager().deleteDirectory(pathOf(top), true); });
        if (exists(top))
            EXPECT_EQ(result, "OXFileManager_DeleteDirectoryError: Deleting the directory failed "
                              "(Directory not empty)");
        else
            EXPECT_EQ(result, "nothing");
    }
    ScratchDirectory directory;
    std::filesystem::create_directories(directory.file("below"));
    Failing failing(calls::readdir, EIO);
    EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                  [&] { OCFileManager().deleteDirectory(pathOf(directory.path), true); }),
              "OXFileManager_DeleteDirectoryError: Deleting the directory failed (Directory not "
              "empty)");
    EXPECT_EQ(failing.calls(), 2U); // one in each pass
}

TEST(OCFileManagerTest, AFailingRemoveStopsTheDeletionOfTheTree) {
    ScratchDirectory directory;
    const std::string top = directory.file("top");
    std::filesystem::create_directories(top + "/below");
    directory.write("top/a", "");
    directory.write("top/b", "");
    const long descriptors = openDescriptors();
    Recorder recorder(top);
    {
        Failing failing(calls::remove, EPERM, 2, 1);
        EXPECT_EQ(thrown<OXFileManager_DeleteFileError>(
                      [&] { OCFileManager(recorder).deleteDirectory(pathOf(top), true); }),
                  "OXFileManager_DeleteFileError: Deleting the file failed (Operation not "
                  "permitted)");
    }
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(recorder.log.size(), 3U); // the file that stays, too
    EXPECT_EQ(entriesOf(top).size(), 2U);
    EXPECT_TRUE(exists(top + "/below"));
}

TEST(OCFileManagerTest, AFailingRmdirStopsTheDeletionOfTheTree) {
    for (unsigned long number = 1; number <= 3; ++number) {
        ScratchDirectory directory;
        const std::string top = directory.file("top");
        std::filesystem::create_directories(top + "/a/b");
        Failing failing(calls::rmdir, EBUSY, number, 1);
        EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                      [&] { OCFileManager().deleteDirectory(pathOf(top), true); }),
                  "OXFileManager_DeleteDirectoryError: Deleting the directory failed (Device or "
                  "resource busy)");
        EXPECT_EQ(exists(top + "/a/b"), number == 1);
        EXPECT_EQ(exists(top + "/a"), number <= 2);
        EXPECT_TRUE(exists(top));
    }
}

TEST(OCFileManagerTest, ALinkInATreeThatCannotBeRemovedIsAnErrorOfTheDirectory) {
    ScratchDirectory directory, outside;
    ASSERT_EQ(symlink(outside.path.c_str(), directory.file("link").c_str()), 0);
    Failing failing(calls::remove, EROFS);
    EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                  [&] { OCFileManager().deleteDirectory(pathOf(directory.path), true); }),
              "OXFileManager_DeleteDirectoryError: Deleting the directory failed (Read-only file "
              "system)");
}

TEST(OCFileManagerTest, ADirectoryThatBecomesALinkDuringItsEventIsRemovedAsOne) {
    for (const char* const name : {"tree", "tree/inner"}) {
        ScratchDirectory directory;
        std::filesystem::create_directories(directory.file("tree/inner"));
        std::filesystem::create_directory(directory.file("outside"));
        std::ofstream(directory.file("outside/file")) << "x";
        Recorder recorder;
        recorder.also = [&](const std::string& path) {
            if (path != directory.file(name))
                return;
            std::filesystem::remove_all(path);
            std::filesystem::create_directory_symlink(directory.file("outside"), path);
        };
        OCFileManager(recorder).deleteDirectory(pathOf(directory.file("tree")), true);
        EXPECT_EQ(entriesOf(directory.path), Log{"outside"});
        EXPECT_TRUE(exists(directory.file("outside/file")));
    }
}

TEST(OCFileManagerTest, AnObserverThatThrowsStopsTheDeletionAnywhere) {
    for (std::size_t number = 1; number <= 6; ++number) {
        ScratchDirectory directory;
        const std::string top = directory.file("top");
        std::filesystem::create_directories(top + "/a/b");
        directory.write("top/file", "");
        directory.write("top/a/file", "");
        directory.write("top/a/b/file", "");
        const long descriptors = openDescriptors();
        Recorder recorder(top);
        recorder.also = [&](const std::string&) {
            if (recorder.log.size() == number)
                throw Refusal();
        };
        EXPECT_THROW(OCFileManager(recorder).deleteDirectory(pathOf(top), true), Refusal);
        EXPECT_EQ(recorder.log.size(), number);
        EXPECT_EQ(openDescriptors(), descriptors);
        EXPECT_TRUE(exists(top + "/a/b/file"));
        EXPECT_EQ(exists(top + "/a/file"), number <= 4);
        EXPECT_EQ(exists(top + "/file"), number <= 2);
    }
}

TEST(OCFileManagerTest, DirectoriesThatVanishMeanwhileAreNoLongerEntered) {
    ScratchDirectory directory;
    const std::string top = directory.file("top");
    std::filesystem::create_directories(top + "/a");
    std::filesystem::create_directories(top + "/b");
    Recorder recorder(top);
    recorder.also = [&](const std::string& path) {
        if (path == top + "/a")
            std::filesystem::remove_all(top + "/b");
        if (path == top + "/b")
            std::filesystem::remove_all(top + "/a");
    };
    OCFileManager(recorder).deleteDirectory(pathOf(top), true);
    EXPECT_EQ(recorder.log.size(), 2U);
    EXPECT_FALSE(exists(top));
}

TEST(OCFileManagerTest, WhatVanishesDuringItsEventIsAnError) {
    for (const char* const entry : {"file", "a/file", "a", "a/b"}) {
        SCOPED_TRACE(entry);
        ScratchDirectory directory;
        const std::string top = directory.file("top"), name = top + "/" + entry;
        std::filesystem::create_directories(top + "/a/b");
        directory.write("top/file", "");
        directory.write("top/a/file", "");
        const bool isFile = std::filesystem::is_regular_file(name);
        Recorder recorder;
        recorder.also = [&](const std::string& path) {
            if (path == name)
                std::filesystem::remove_all(path);
        };
        const auto deleting = [&] { OCFileManager(recorder).deleteDirectory(pathOf(top), true); };
        if (isFile)
            EXPECT_EQ(thrown<OXFileManager_DeleteFileError>(deleting),
                      "OXFileManager_DeleteFileError: Deleting the file failed (No such file or "
                      "directory)");
        else
            EXPECT_EQ(thrown<OXFileFinder_OpenDirectory>(deleting),
                      "OXFileFinder_OpenDirectory: Error opening directory for reading (" + name +
                          ")");
        EXPECT_EQ(recorder.log.back(), (isFile ? "delete file " : "delete directory ") + name);
        EXPECT_TRUE(exists(top));
    }
}

TEST(OCFileManagerTest, NamesMayHoldAnyCharacter) {
    ScratchDirectory directory;
    const std::string top = directory.file("top");
    for (const char* name : {" ", "...", "..a", ".b", "a\\b", "c:", "\xFF\x01\n", "-rf", "*"}) {
        std::filesystem::create_directories(top + "/" + name);
        directory.write(std::string("top/") + name + "/" + name, "x");
    }
    directory.write("top/" + std::string(255, 'n'), "");
    OCFileManager().deleteDirectory(pathOf(top), true);
    EXPECT_FALSE(exists(top));
}

TEST(OCFileManagerTest, APathWithAZeroByteEndsThereForTheEntriesToo) {
    ScratchDirectory directory;
    const std::string top = directory.file("top");
    std::filesystem::create_directories(top + "/a/b");
    directory.write("top/file", "");
    OCFileManager().deleteDirectory(pathOf(top + '\0' + "more"), true);
    EXPECT_FALSE(exists(top));
}

TEST(OCFileManagerTest, DeletesRandomTrees) {
    const unsigned seed = 73;
    std::mt19937 random(seed);
    for (int round = 0; round < 25; ++round) {
        ScratchDirectory directory, outside;
        outside.write("kept", "x");
        const std::string top = directory.file("top");
        std::vector<std::string> directories{top};
        ASSERT_EQ(mkdir(top.c_str(), 0700), 0);
        bool odd = false;
        for (unsigned long count = random() % 60; count > 0; --count) {
            const std::string path =
                directories[random() % directories.size()] + "/" + std::to_string(random() % 1000);
            if (exists(path))
                continue;
            switch (random() % 8) {
            case 0:
            case 1:
            case 2:
                ASSERT_EQ(mkdir(path.c_str(), 0700), 0);
                directories.push_back(path);
                break;
            case 3:
                ASSERT_EQ(symlink(outside.path.c_str(), path.c_str()), 0);
                break;
            case 4:
                ASSERT_EQ(symlink(outside.file("kept").c_str(), path.c_str()), 0);
                break;
            case 5:
                if (random() % 8 == 0) {
                    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
                    odd = true;
                    break;
                }
                [[fallthrough]];
            default:
                std::ofstream(path) << "x";
            }
        }
        Log expected;
        expectedDeletions(top, expected);
        Recorder recorder;
        bool failed = false;
        try {
            OCFileManager(recorder).deleteDirectory(pathOf(top), true);
        } catch (const OXFileManager_DeleteDirectoryError&) {
            failed = true;
        }
        EXPECT_EQ(failed, odd) << "seed " << seed;
        ASSERT_LE(recorder.log.size(), expected.size());
        if (failed)
            expected.resize(recorder.log.size());
        EXPECT_EQ(recorder.log, expected) << "seed " << seed;
        EXPECT_EQ(exists(top), odd) << "seed " << seed;
        EXPECT_TRUE(exists(outside.file("kept")));
    }
}

TEST(OCFileManagerTest, ManyNamesAreHeldWhileASubdirectoryIsDeleted) {
    ScratchDirectory directory;
    const std::string top = directory.file("top");
    for (int i = 0; i < 300; ++i)
        std::filesystem::create_directories(top + "/" + std::string(20, 'd') + std::to_string(i));
    Recorder recorder;
    OCFileManager(recorder).deleteDirectory(pathOf(top), true);
    EXPECT_EQ(recorder.log.size(), 301U);
    EXPECT_EQ(std::set<std::string>(recorder.log.begin(), recorder.log.end()).size(), 301U);
    EXPECT_FALSE(exists(top));
}

// Depth

TEST(OCFileManagerTest, ADeepTreeNeedsFewDescriptors) {
    ScratchDirectory directory;
    const std::string top = directory.file("top");
    ASSERT_EQ(mkdir(top.c_str(), 0700), 0);
    const std::string deepest = makeNested(top, 1000, "d");
    ASSERT_TRUE(exists(deepest));
    EXPECT_EQ(inChild([&] {
                  struct rlimit limit = {};
                  if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
                      return std::string("no limit");
                  limit.rlim_cur = 64; // and the hard limit stays, as valgrind keeps that
                  if (setrlimit(RLIMIT_NOFILE, &limit) != 0)
                      return std::string("no limit");
                  OCFileManager().deleteDirectory(pathOf(top), true);
                  return std::string("deleted");
              }),
              "deleted");
    EXPECT_FALSE(exists(top));
}

TEST(OCFileManagerTest, ADeepTreeTakesOneDescriptorAtATimeAndNoStack) {
    ScratchDirectory directory;
    const std::string top = directory.file("top");
    ASSERT_EQ(mkdir(top.c_str(), 0700), 0);
    makeNested(top, 300, "d");
    long open = 0, mostOpen = 0;
    Replacement opening(calls::opendir, [&](const char* path) {
        mostOpen = std::max(mostOpen, ++open);
        return calls::opendir.original(path);
    });
    Replacement closing(calls::closedir, [&](DIR* stream) {
        --open;
        return calls::closedir.original(stream);
    });
    std::uintptr_t lowest = UINTPTR_MAX, highest = 0;
    Replacement removing(calls::rmdir, [&](const char* path) {
        const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
        lowest = std::min(lowest, here);
        highest = std::max(highest, here);
        return calls::rmdir.original(path);
    });
    OCFileManager().deleteDirectory(pathOf(top), true);
    EXPECT_EQ(mostOpen, 1);
    EXPECT_EQ(open, 0);
    EXPECT_LT(highest - lowest, 4096U);
    EXPECT_FALSE(exists(top));
}

TEST(OCFileManagerTest, ATreeTooDeepForAPathIsAnErrorOfTheSystem) {
    ScratchDirectory directory;
    const std::string top = directory.file("top"), name(200, 'n');
    // Deeper than a path can say, so it is made from inside.
    EXPECT_EQ(inChild([&] {
                  if (mkdir(top.c_str(), 0700) != 0 || chdir(top.c_str()) != 0)
                      return "not made";
                  for (int i = 0; i < 60; ++i)
                      if (mkdir(name.c_str(), 0700) != 0 || chdir(name.c_str()) != 0)
                          return "not made";
                  return "made";
              }),
              "made");
    Recorder recorder;
    const long descriptors = openDescriptors();
    EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                  [&] { OCFileManager(recorder).deleteDirectory(pathOf(top), true); }),
              "OXFileManager_DeleteDirectoryError: Deleting the directory failed (Directory not "
              "empty)");
    // Down to the last directory whose path is shorter than 4096.
    EXPECT_EQ(recorder.log.size(), 1 + (4095 - top.size()) / 201);
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_TRUE(exists(top));
}

TEST(OCFileManagerTest, APathTooLongIsAnErrorOfTheSystem) {
    const OCFilePath path = pathOf("/" + std::string(100000, 'x'));
    EXPECT_EQ(thrown<OXFileManager_DeleteFileError>([&] { OCFileManager().deleteFile(path); }),
              "OXFileManager_DeleteFileError: Deleting the file failed (File name too long)");
    EXPECT_EQ(thrown<OXFileManager_DeleteDirectoryError>(
                  [&] { OCFileManager().deleteDirectory(path, false); }),
              "OXFileManager_DeleteDirectoryError: Deleting the directory failed (File name too "
              "long)");
    EXPECT_THROW(OCFileManager().deleteDirectory(path, true), OXFileFinder_OpenDirectory);
}

// Exhausted memory

TEST(OCFileManagerTest, ExhaustedMemoryLeavesNothingBehindWhileDeleting) {
    ScratchDirectory directory;
    const std::string top = directory.file(std::string(150, 't'));
    const auto make = [&] {
        std::filesystem::create_directories(top + "/a/b");
        std::filesystem::create_directories(top + "/" + std::string(250, 'c'));
        std::filesystem::create_directories(top + "/" + std::string(250, 'd'));
        std::filesystem::create_directories(top + "/" + std::string(250, 'e'));
        for (const char* name : {"/f", "/a/f", "/a/b/f"})
            std::ofstream(top + name) << "x";
    };
    const OCFilePath path = pathOf(top);
    const long descriptors = openDescriptors();
    unsigned long memoryFailures = 0;
    for (unsigned long number = 1;; ++number) {
        make();
        const long blocks = fault::heapRecord().liveBlocks;
        bool triggered = false;
        {
            fault::HeapFault heap(number);
            try {
                OCFileManager().deleteDirectory(path, true);
            } catch (const OXMemory_AllocationError&) {
                ++memoryFailures;
            } catch (const OXFileFinder_OpenDirectory&) { // the system's stream takes memory, too
            }
            triggered = heap.triggered();
        }
        EXPECT_EQ(fault::heapRecord().liveBlocks, blocks) << number;
        EXPECT_EQ(openDescriptors(), descriptors) << number;
        if (!triggered)
            break;
        EXPECT_TRUE(exists(top)) << number;
    }
    EXPECT_GE(memoryFailures, 20U);
    EXPECT_FALSE(exists(top));
}

TEST(OCFileManagerTest, ExhaustedMemoryCreatesNothing) {
    ScratchDirectory directory;
    const OCFilePath path = pathOf(directory.file("a/" + std::string(200, 'b') + "/c"));
    const long blocks = fault::heapRecord().liveBlocks;
    const unsigned long failures =
        fault::failEachRequest([&] { OCFileManager().createDirectory(path); },
                               [&] {
                                   // What is there is a beginning of the path.
                                   const Log names = entriesOf(directory.path);
                                   EXPECT_LE(names.size(), 1U);
                                   std::filesystem::remove_all(directory.file("a"));
                               });
    EXPECT_GE(failures, 3U);
    EXPECT_EQ(fault::heapRecord().liveBlocks, blocks);
    EXPECT_TRUE(exists(path.getString()));
}
