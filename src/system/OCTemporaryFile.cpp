#include "OCTemporaryFile.h"

#include "OCSystemError.h"
#include "system/TemporaryName.h"

#include <cerrno>
#include <cstdlib>
#include <unistd.h>

OCTemporaryFile::OCTemporaryFile() : handle(-1) {
    try {
        initialize();
    } catch (...) {
        destroy();
        throw;
    }
}

OCTemporaryFile::~OCTemporaryFile() noexcept {
    destroy();
}

void OCTemporaryFile::initialize() {
    initializeFile();
}

void OCTemporaryFile::initializeFile() {
    destroyFile();
    path.assign(temporaryNameTemplate);
    handle = mkstemp(path.getString());
    if (handle == -1 || unlink(path.getString()) == -1) {
        const unsigned int code = static_cast<unsigned int>(errno);
        throw OXTemporaryFile_CreateError(code);
    }
}

void OCTemporaryFile::destroy() noexcept {
    destroyFile();
}

void OCTemporaryFile::destroyFile() noexcept {
    if (handle == -1)
        return;
    close(handle);
    handle = -1;
}

OCTemporaryFileStream::OCTemporaryFileStream() {
    initialize();
}

OCTemporaryFileStream::~OCTemporaryFileStream() noexcept {
    dropHandle();
}

void OCTemporaryFileStream::initialize() noexcept {
    initializeHandle();
}

void OCTemporaryFileStream::initializeHandle() noexcept {
    setHandle(file.getHandle());
}

void OCTemporaryFileStream::destroyHandle() noexcept {
    dropHandle();
    file.destroyFile();
}

void OCTemporaryFileStream::destroy() noexcept {
    destroyHandle();
}

OXTemporaryFile::OXTemporaryFile() = default;
OXTemporaryFile::~OXTemporaryFile() noexcept = default;

OXTemporaryFile_CreateError::OXTemporaryFile_CreateError(unsigned int code) {
    setClass("OXTemporaryFile_CreateError");
    setMessage("Can not create the temporary file");
    getDetails().addString(systemErrorText(code));
}
OXTemporaryFile_CreateError::~OXTemporaryFile_CreateError() noexcept = default;
