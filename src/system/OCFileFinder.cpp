#include "OCFileFinder.h"

OCFileFinder::OCFileFinder(const OCFilePath& directory)
    : path(directory), stream(nullptr), entry(nullptr) {
    try {
        initialize();
    } catch (...) {
        destroy();
        throw;
    }
}

OCFileFinder::~OCFileFinder() noexcept {
    destroy();
}

bool OCFileFinder::findFirst() {
    if (stream != nullptr)
        rewinddir(stream);
    return findNext();
}

bool OCFileFinder::findNext() {
    entry = stream != nullptr ? readdir(stream) : nullptr;
    return entry != nullptr;
}

OCFilePath OCFileFinder::getFilename() const {
    return entry != nullptr ? OCFilePath(entry->d_name) : OCFilePath();
}

void OCFileFinder::initialize() {
    initializeEnumeration();
}

void OCFileFinder::initializeEnumeration() {
    destroyEnumeration();
    stream = opendir(path.getString());
    if (stream == nullptr)
        throw OXFileFinder_OpenDirectory(path);
}

void OCFileFinder::destroy() noexcept {
    destroyEnumeration();
}

void OCFileFinder::destroyEnumeration() noexcept {
    entry = nullptr; // it lies in the directory stream
    if (stream == nullptr)
        return;
    closedir(stream);
    stream = nullptr;
}

OXFileFinder::OXFileFinder() = default;
OXFileFinder::~OXFileFinder() noexcept = default;

OXFileFinder_OpenDirectory::OXFileFinder_OpenDirectory(const OCFilePath& path) {
    setClass("OXFileFinder_OpenDirectory");
    setMessage("Error opening directory for reading");
    getDetails().addString(path);
}
OXFileFinder_OpenDirectory::~OXFileFinder_OpenDirectory() noexcept = default;
