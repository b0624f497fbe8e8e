#include "OCStreamTransfer.h"

#include "OCMemoryBuffer.h"

namespace {

constexpr unsigned long defaultBlockSize = 16384;

} // namespace

OCStreamTransfer::OCStreamTransfer() noexcept
    : source(nullptr), target(nullptr), blockSize(defaultBlockSize) {}

OCStreamTransfer::~OCStreamTransfer() noexcept = default;

void OCStreamTransfer::validateSource() const {
    if (source == nullptr)
        throw OXStreamTransfer_UnassignedSource();
}

void OCStreamTransfer::validateTarget() const {
    if (target == nullptr)
        throw OXStreamTransfer_UnassignedTarget();
}

void OCStreamTransfer::validate() const {
    validateSource();
    validateTarget();
}

void OCStreamTransfer::execute() {
    validate();
    OCMemoryBuffer buffer(blockSize);
    char* const block = buffer.getData();
    for (;;) {
        unsigned long n = buffer.getSize();
        if (!source->read(block, n) || n == 0)
            return;
        target->writeBuffer(block, n < buffer.getSize() ? n : buffer.getSize());
    }
}

OXStreamTransfer::OXStreamTransfer() = default;
OXStreamTransfer::~OXStreamTransfer() noexcept = default;

OXStreamTransfer_UnassignedSource::OXStreamTransfer_UnassignedSource() {
    setClass("OXStreamTransfer_UnassignedSource");
    setMessage("The source stream is unassigned");
}
OXStreamTransfer_UnassignedSource::~OXStreamTransfer_UnassignedSource() noexcept = default;

OXStreamTransfer_UnassignedTarget::OXStreamTransfer_UnassignedTarget() {
    setClass("OXStreamTransfer_UnassignedTarget");
    setMessage("The target stream is unassigned");
}
OXStreamTransfer_UnassignedTarget::~OXStreamTransfer_UnassignedTarget() noexcept = default;
