#include "OCDynamicLibrary.h"

#include <dlfcn.h>

OXDynamicLibrary::OXDynamicLibrary() = default;
OXDynamicLibrary::~OXDynamicLibrary() noexcept = default;

OXDynamicLibrary_LoadError::OXDynamicLibrary_LoadError(const OCFilePath& path) {
    setClass("OXDynamicLibrary_LoadError");
    setMessage("Error loading dynamic library");
    getDetails().addString(path);
}
OXDynamicLibrary_LoadError::OXDynamicLibrary_LoadError(const OCFilePath& path,
                                                       const OCAnsiString& reason) {
    setClass("OXDynamicLibrary_LoadError");
    setMessage("Error loading dynamic library");
    if (!reason.contains(path))
        getDetails().addString(path);
    getDetails().addString(reason);
}
OXDynamicLibrary_LoadError::~OXDynamicLibrary_LoadError() noexcept = default;

OXDynamicLibrary_LocateCodeError::OXDynamicLibrary_LocateCodeError(const OCAnsiString& symbol) {
    setClass("OXDynamicLibrary_LocateCodeError");
    setMessage("Can not locate code in dynamic library");
    getDetails().addString(symbol);
}
OXDynamicLibrary_LocateCodeError::~OXDynamicLibrary_LocateCodeError() noexcept = default;

OXDynamicLibrary_LocateDataError::OXDynamicLibrary_LocateDataError(const OCAnsiString& symbol) {
    setClass("OXDynamicLibrary_LocateDataError");
    setMessage("Can not locate data in dynamic library");
    getDetails().addString(symbol);
}
OXDynamicLibrary_LocateDataError::~OXDynamicLibrary_LocateDataError() noexcept = default;

OCDynamicLibrary::OCDynamicLibrary(const OCFilePath& path) : OCDynamicLibrary() {
    load(path); // if it throws, the destructor runs and nothing stays loaded
}

OCDynamicLibrary::~OCDynamicLibrary() noexcept {
    unload();
}

void OCDynamicLibrary::load(const OCFilePath& path) {
    unload();
    handle = dlopen(path.getString(), RTLD_NOW | RTLD_GLOBAL);
    if (handle != nullptr)
        return;
    const char* const reason = dlerror();
    if (reason == nullptr)
        throw OXDynamicLibrary_LoadError(path);
    throw OXDynamicLibrary_LoadError(path, reason);
}

void OCDynamicLibrary::unload() noexcept {
    if (handle == nullptr)
        return;
    void* const closed = handle;
    handle = nullptr;
    dlclose(closed);
}

void* OCDynamicLibrary::locateCode(const OCAnsiString& symbol) {
    void* const address = locate(symbol);
    if (address == nullptr)
        throw OXDynamicLibrary_LocateCodeError(symbol);
    return address;
}

void* OCDynamicLibrary::locateData(const OCAnsiString& symbol) {
    void* const address = locate(symbol);
    if (address == nullptr)
        throw OXDynamicLibrary_LocateDataError(symbol);
    return address;
}

void* OCDynamicLibrary::locate(const OCAnsiString& symbol) const noexcept {
    return handle == nullptr ? nullptr : dlsym(handle, symbol.getString());
}
