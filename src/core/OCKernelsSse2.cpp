#include "core/OCKernelForms.h"
#include "core/OCKernelShort.h"
#include "core/OCKernelTwoWay.h"

#define KERNEL_TARGET
#define KERNEL_INLINE inline __attribute__((always_inline))

namespace orvabase::kernels {
namespace sse2 {
namespace {

#include "core/OCKernelVector.h"

} // namespace
} // namespace sse2

constexpr Form sse2Form = sse2::makeForm("SSE2");

} // namespace orvabase::kernels
