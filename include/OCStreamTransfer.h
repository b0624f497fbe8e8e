#ifndef ORVABASE_OCSTREAMTRANSFER_H
#define ORVABASE_OCSTREAMTRANSFER_H

#include "OCStream.h"

/// Copies what is left of one stream to another.
///
/// Both streams stay the caller's and must outlive the transfer. For use by one thread at a time.
///
///     OCFileStream from("a", FileCreateModeRead, FileShareModeRead);
///     OCFileStream to("b", FileCreateModeCreate, FileShareModeNone);
///     OCStreamTransfer transfer;
///     transfer.useSource(from);
///     transfer.useTarget(to);
///     transfer.execute();
class ORVABASE_EXPORT OCStreamTransfer : public OCObject {
public:
    /// A transfer in blocks of 16384 bytes, without streams.
    OCStreamTransfer() noexcept;
    OCStreamTransfer(const OCStreamTransfer&) = delete;
    OCStreamTransfer& operator=(const OCStreamTransfer&) = delete;
    ~OCStreamTransfer() noexcept override;

    /// Set the stream to read and the one to write.
    void useSource(OCStream& stream) noexcept { source = &stream; }
    void useTarget(OCStream& stream) noexcept { target = &stream; }
    /// Sets how many bytes are asked for at a time; 0 counts as 1.
    void setBlockSize(unsigned long n) noexcept { blockSize = n == 0 ? 1 : n; }

    /// @throws OXStreamTransfer_UnassignedSource when no source is set.
    void validateSource() const;
    /// @throws OXStreamTransfer_UnassignedTarget when no target is set.
    void validateTarget() const;
    /// Both, the source first.
    void validate() const;

    /// Reads the source from its position to its end, block by block, and writes each block to the
    /// target. Neither stream is rewound or flushed, before or after. One allocation, of a block.
    ///
    /// Exceptions of the streams pass through; what was written until then stays written.
    /// @throws OXStreamTransfer_UnassignedSource, OXStreamTransfer_UnassignedTarget,
    /// OXMemory_AllocationError; nothing was read then. OXStream_WriteError when the target does
    /// not take a block.
    void execute();

private:
    OCStream* source;
    OCStream* target;
    unsigned long blockSize;
};

/// The family of the transfer's failures.
class ORVABASE_EXPORT OXStreamTransfer : public OXStream {
public:
    ~OXStreamTransfer() noexcept override;

protected:
    OXStreamTransfer();
};

/// "The source stream is unassigned".
class ORVABASE_EXPORT OXStreamTransfer_UnassignedSource : public OXStreamTransfer {
public:
    OXStreamTransfer_UnassignedSource();
    ~OXStreamTransfer_UnassignedSource() noexcept override;
};

/// "The target stream is unassigned".
class ORVABASE_EXPORT OXStreamTransfer_UnassignedTarget : public OXStreamTransfer {
public:
    OXStreamTransfer_UnassignedTarget();
    ~OXStreamTransfer_UnassignedTarget() noexcept override;
};

#endif
