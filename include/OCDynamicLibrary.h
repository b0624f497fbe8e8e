#ifndef ORVABASE_OCDYNAMICLIBRARY_H
#define ORVABASE_OCDYNAMICLIBRARY_H

#include "OCFilePath.h"

/// A shared object that is loaded while the program runs, and the addresses of its symbols.
///
/// The object owns what it has loaded: loading another file, unloading and destruction close it,
/// and the addresses found in it must not be used any more then. Not for use by several threads at
/// once; different objects may be.
///
///     OCDynamicLibrary library("/usr/lib/plugins/clock.so");
///     auto start = reinterpret_cast<int (*)()>(library.locateCode("clockStart"));
class ORVABASE_EXPORT OCDynamicLibrary : public OCObject {
public:
    /// Nothing is loaded.
    OCDynamicLibrary() noexcept : handle(nullptr) {}
    /// Loads a file, as `load` does.
    /// @throws OXDynamicLibrary_LoadError
    explicit OCDynamicLibrary(const OCFilePath& path);
    OCDynamicLibrary(const OCDynamicLibrary&) = delete;
    OCDynamicLibrary& operator=(const OCDynamicLibrary&) = delete;
    /// Closes what is loaded.
    ~OCDynamicLibrary() noexcept override;

    /// Whether anything is loaded.
    bool isLoaded() const { return handle != nullptr; }
    /// Closes what is loaded and loads a file. All its symbols are resolved at once, and they are
    /// there for the libraries that the process loads later. A path without a slash is searched for
    /// as the dynamic loader does it (`LD_LIBRARY_PATH`, the system's directories).
    ///
    /// Note: what was loaded before is closed even if the file cannot be loaded. An empty path
    /// gives the program itself.
    /// @throws OXDynamicLibrary_LoadError with the path and the loader's text; nothing is loaded
    /// then. OXMemory_AllocationError
    void load(const OCFilePath& path);
    /// Closes what is loaded, if anything is.
    void unload() noexcept;

    /// The address of a symbol of the loaded file or of what that depends on.
    ///
    /// Note: a symbol that exists and whose value is null counts as missing.
    /// @throws OXDynamicLibrary_LocateCodeError or OXDynamicLibrary_LocateDataError when there is
    /// no such symbol, or nothing is loaded.
    void* locateCode(const OCAnsiString& symbol);
    void* locateData(const OCAnsiString& symbol);

private:
    void* locate(const OCAnsiString& symbol) const noexcept;

    void* handle;
};

/// The family of the dynamic library's failures.
class ORVABASE_EXPORT OXDynamicLibrary : public OXAutoException {
public:
    ~OXDynamicLibrary() noexcept override;

protected:
    OXDynamicLibrary();
};

/// "Error loading dynamic library", with the path and the loader's reason. The path is left out
/// when the reason names it.
class ORVABASE_EXPORT OXDynamicLibrary_LoadError : public OXDynamicLibrary {
public:
    explicit OXDynamicLibrary_LoadError(const OCFilePath& path);
    OXDynamicLibrary_LoadError(const OCFilePath& path, const OCAnsiString& reason);
    ~OXDynamicLibrary_LoadError() noexcept override;
};

/// "Can not locate code in dynamic library", with the symbol.
class ORVABASE_EXPORT OXDynamicLibrary_LocateCodeError : public OXDynamicLibrary {
public:
    explicit OXDynamicLibrary_LocateCodeError(const OCAnsiString& symbol);
    ~OXDynamicLibrary_LocateCodeError() noexcept override;
};

/// "Can not locate data in dynamic library", with the symbol.
class ORVABASE_EXPORT OXDynamicLibrary_LocateDataError : public OXDynamicLibrary {
public:
    explicit OXDynamicLibrary_LocateDataError(const OCAnsiString& symbol);
    ~OXDynamicLibrary_LocateDataError() noexcept override;
};

#endif
