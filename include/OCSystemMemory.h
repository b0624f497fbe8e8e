#ifndef ORVABASE_OCSYSTEMMEMORY_H
#define ORVABASE_OCSYSTEMMEMORY_H

#include "OCNamedList.h"
#include "OXSystem.h"

/// The machine's memory, as `/proc/meminfo` tells it. It cannot be instantiated. Thread-safe. Each
/// operation reads the file anew.
///
///     OCSystemMemory::measureMemory(true);   // 16308156 (kilobytes)
class ORVABASE_EXPORT OCSystemMemory {
public:
    OCSystemMemory() = delete;

    /// Adds all figures to the list, in the file's order and by `OCNamedList::addElement`: names
    /// such as `MemTotal`, values such as `16308156 kB`. Lines without a colon are skipped.
    /// @throws OXFileStream_CreateError, OXHandleStream_ReadError; OXMemory_AllocationError, in
    /// which case a part may have been added.
    static void readInformation(OCNamedList& information);

    /// The physical memory in kilobytes: all of it, or what is not used for anything.
    ///
    /// Note: free memory does not include what the system would give back on demand (caches). A
    /// number that does not fit into 32 bits wraps around, and an entry that does not begin with a
    /// digit gives 0.
    /// @throws OXSystemMemory_MeasureMemoryError when there is no such entry or it is empty, and
    /// what `readInformation` throws.
    static unsigned int measureMemory(bool total);
    /// The swap memory in kilobytes: all of it, or what is not used. The notes for `measureMemory`
    /// apply.
    /// @throws OXSystemMemory_MeasureSwapError when there is no such entry or it is empty, and what
    /// `readInformation` throws.
    static unsigned int measureSwap(bool total);
};

/// The family of the failures of `OCSystemMemory`.
class ORVABASE_EXPORT OXSystemMemory : public OXSystem {
public:
    ~OXSystemMemory() noexcept override;

protected:
    OXSystemMemory();
};

/// "Error measuring physical memory".
class ORVABASE_EXPORT OXSystemMemory_MeasureMemoryError : public OXSystemMemory {
public:
    OXSystemMemory_MeasureMemoryError();
    ~OXSystemMemory_MeasureMemoryError() noexcept override;
};

/// "Error measuring swap memory".
class ORVABASE_EXPORT OXSystemMemory_MeasureSwapError : public OXSystemMemory {
public:
    OXSystemMemory_MeasureSwapError();
    ~OXSystemMemory_MeasureSwapError() noexcept override;
};

#endif
