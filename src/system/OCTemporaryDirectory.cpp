#include "OCTemporaryDirectory.h"

#include "OCFileManager.h"
#include "OCSystemError.h"
#include "system/TemporaryName.h"

#include <cerrno>
#include <cstdlib>

OCTemporaryDirectory::OCTemporaryDirectory() {
    try {
        initialize();
    } catch (...) {
        destroy();
        throw;
    }
}

OCTemporaryDirectory::~OCTemporaryDirectory() noexcept {
    try {
        destroy();
    } catch (...) { // nobody is left to be told
    }
}

void OCTemporaryDirectory::initialize() {
    initializeDirectory();
}

void OCTemporaryDirectory::initializeDirectory() {
    destroyDirectory();
    OCFilePath created(temporaryNameTemplate);
    if (mkdtemp(created.getString()) == nullptr) {
        const unsigned int code = static_cast<unsigned int>(errno);
        throw OXTemporaryDirectory_CreateError(code);
    }
    path = created;
}

void OCTemporaryDirectory::destroy() {
    destroyDirectory();
    destroySibling();
}

void OCTemporaryDirectory::destroyDirectory() {
    if (path.getLength() == 0)
        return;
    OCFileManager().deleteDirectory(path, true);
    path.clear();
}

void OCTemporaryDirectory::destroySibling() {}

OXTemporaryDirectory::OXTemporaryDirectory() = default;
OXTemporaryDirectory::~OXTemporaryDirectory() noexcept = default;

OXTemporaryDirectory_CreateError::OXTemporaryDirectory_CreateError(unsigned int code) {
    setClass("OXTemporaryDirectory_CreateError");
    setMessage("Can not create the temporary directory");
    getDetails().addString(systemErrorText(code));
}
OXTemporaryDirectory_CreateError::~OXTemporaryDirectory_CreateError() noexcept = default;
