#include "OCFileManager.h"

#include "OCFileFinder.h"
#include "OCMemory.h"
#include "OCSystemError.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// To be called before an exception is made: that allocates, which may change errno.
unsigned int lastError() noexcept {
    return static_cast<unsigned int>(errno);
}

// The entries' paths are made from what the system sees of the directory's: with what may follow a
// zero byte, they would all be the directory itself.
OCFilePath seenBySystem(const OCFilePath& path) {
    return OCFilePath(path.getString());
}

bool isDots(const char* name) {
    return strcmp(name, ".") == 0 || strcmp(name, "..") == 0;
}

void removeLink(const OCFilePath& path) {
    if (remove(path.getString()) == -1) {
        const unsigned int code = lastError();
        throw OXFileManager_DeleteDirectoryError(code);
    }
}

void removeEmptyDirectory(const OCFilePath& path) {
    if (rmdir(path.getString()) == -1) {
        const unsigned int code = lastError();
        throw OXFileManager_DeleteDirectoryError(code);
    }
}

// A directory on the way down a tree. The names of its entries are read at once, so that it need
// not stay open while its subdirectories are deleted.
class Level : public OCObject {
public:
    explicit Level(const OCFilePath& directory)
        : outer(nullptr), path(seenBySystem(directory)), names(nullptr), size(0), capacity(0),
          next(0) {
        try {
            OCFileFinder finder(directory);
            for (bool found = finder.findFirst(); found; found = finder.findNext())
                addName(finder.getFilename());
        } catch (...) {
            stringRelease(names);
            throw;
        }
    }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    ~Level() noexcept override { stringRelease(names); }

    const OCFilePath& getPath() const { return path; }
    // The next entry's name, or null.
    const char* nextName() {
        if (next == size)
            return nullptr;
        const char* const name = names + next;
        next += stringLength(name) + 1;
        return name;
    }

    Level* outer;

private:
    void addName(const OCAnsiString& name) {
        const unsigned long count = name.getLength() + 1;
        if (count > capacity - size) {
            const unsigned long grown = 2 * capacity + 512;
            char* block = names; // stays ours if the reallocation fails
            stringReallocate(block, grown);
            names = block;
            capacity = grown;
        }
        stringCopy(names + size, name.getString(), count);
        size += count;
    }

    OCFilePath path;
    char* names;
    unsigned long size;
    unsigned long capacity;
    unsigned long next;
};

// The directories from the outermost to the one that is being emptied.
class Levels {
public:
    explicit Levels(const OCFilePath& outermost) : innermost(new Level(outermost)) {}
    Levels(const Levels&) = delete;
    Levels& operator=(const Levels&) = delete;
    ~Levels() {
        while (innermost != nullptr)
            leave();
    }

    Level& getInnermost() const { return *innermost; }
    bool isOutermost() const { return innermost->outer == nullptr; }
    void enter(const OCFilePath& directory) {
        Level* const level = new Level(directory);
        level->outer = innermost;
        innermost = level;
    }
    void leave() noexcept {
        Level* const left = innermost;
        innermost = left->outer;
        delete left;
    }

private:
    Level* innermost;
};

// The length of the next longer of a path's parents, which are what ends in a slash before the last
// character; that of the path when there is none.
unsigned long longerParent(const OCFilePath& path, unsigned long parent) {
    const char* const text = path.getString();
    for (unsigned long i = parent; i + 1 < path.getLength(); ++i)
        if (OCFilePath::testSlash(text[i]))
            return i + 1;
    return path.getLength();
}

void makeDirectory(const OCFilePath& path) {
    if (mkdir(path.getString(), 0755) == -1) {
        const unsigned int code = lastError();
        throw OXFileManager_CreateDirectoryError(code);
    }
}

} // namespace

OCFileManagerEvents::~OCFileManagerEvents() = default;
void OCFileManagerEvents::onCreateDirectory(const OCFilePath&) {}
void OCFileManagerEvents::onDeleteDirectory(const OCFilePath&) {}
void OCFileManagerEvents::onDeleteFile(const OCFilePath&) {}

OCFileManager::~OCFileManager() noexcept = default;

void OCFileManager::createDirectory(const OCFilePath& path) {
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the observer may change `path`
    const OCFilePath target(path);
    OCFilePath parent(target);
    parent.removeLastDirectory();
    while (parent.getLength() != 0 && !parent.existsDirectory(true))
        parent.removeLastDirectory();

    unsigned long count = parent.getLength();
    do {
        count = longerParent(target, count);
        const OCFilePath directory(OCAnsiString(target.getString(), count));
        onCreateDirectory(directory);
        makeDirectory(directory);
    } while (count < target.getLength());
}

void OCFileManager::deleteFile(const OCFilePath& path) {
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the observer may change `path`
    const OCFilePath target(path);
    onDeleteFile(target);
    if (remove(target.getString()) == -1) {
        const unsigned int code = lastError();
        throw OXFileManager_DeleteFileError(code);
    }
}

void OCFileManager::deleteDirectory(const OCFilePath& path, bool recursive) {
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the observer may change `path`
    const OCFilePath target(path);
    onDeleteDirectory(target);
    if (target.getFileType(false) == FileTypeSymbolicLink) {
        removeLink(target);
        return;
    }
    if (recursive) {
        recursiveDeleteFiles(target);
        recursiveDeleteDirectories(target);
    }
    removeEmptyDirectory(target);
}

void OCFileManager::recursiveDeleteFiles(const OCFilePath& path) {
    const OCFilePath directory = seenBySystem(path);
    OCFileFinder finder(path);
    for (bool found = finder.findFirst(); found; found = finder.findNext()) {
        const OCFilePath entry(directory / finder.getFilename());
        if (entry.existsFile(true))
            deleteFile(entry);
    }
}

// What `deleteDirectory` does with each subdirectory, as a loop: the stack must not grow with the
// depth of a tree.
void OCFileManager::recursiveDeleteDirectories(const OCFilePath& path) {
    Levels levels(path);
    for (;;) {
        Level& level = levels.getInnermost();
        const char* const name = level.nextName();
        if (name == nullptr) {
            if (levels.isOutermost())
                return;
            removeEmptyDirectory(level.getPath());
            levels.leave();
            continue;
        }
        const OCFilePath entry(level.getPath() / name);
        if (!entry.existsDirectory(true) || isDots(name))
            continue;
        onDeleteDirectory(entry);
        if (entry.getFileType(false) == FileTypeSymbolicLink) {
            removeLink(entry);
        } else {
            recursiveDeleteFiles(entry);
            levels.enter(entry);
        }
    }
}

void OCFileManager::onCreateDirectory(const OCFilePath& path) {
    if (observer != nullptr)
        observer->onCreateDirectory(path);
}

void OCFileManager::onDeleteDirectory(const OCFilePath& path) {
    if (observer != nullptr)
        observer->onDeleteDirectory(path);
}

void OCFileManager::onDeleteFile(const OCFilePath& path) {
    if (observer != nullptr)
        observer->onDeleteFile(path);
}

OXFileManager::OXFileManager() = default;
OXFileManager::~OXFileManager() noexcept = default;

OXFileManager_CreateDirectoryError::OXFileManager_CreateDirectoryError(unsigned int code) {
    setClass("OXFileManager_CreateDirectoryError");
    setMessage("Creating the directory failed");
    getDetails().addString(systemErrorText(code));
}
OXFileManager_CreateDirectoryError::~OXFileManager_CreateDirectoryError() noexcept = default;

OXFileManager_DeleteDirectoryError::OXFileManager_DeleteDirectoryError(unsigned int code) {
    setClass("OXFileManager_DeleteDirectoryError");
    setMessage("Deleting the directory failed");
    getDetails().addString(systemErrorText(code));
}
OXFileManager_DeleteDirectoryError::~OXFileManager_DeleteDirectoryError() noexcept = default;

OXFileManager_DeleteFileError::OXFileManager_DeleteFileError(unsigned int code) {
    setClass("OXFileManager_DeleteFileError");
    setMessage("Deleting the file failed");
    getDetails().addString(systemErrorText(code));
}
OXFileManager_DeleteFileError::~OXFileManager_DeleteFileError() noexcept = default;
