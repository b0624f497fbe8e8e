#ifndef ORVABASE_OCKERNELFORMS_H
#define ORVABASE_OCKERNELFORMS_H

#include "core/OCKernels.h"

namespace orvabase::kernels {

/// One way to do everything that OCKernels.h names. All forms give the same results; they differ in
/// the instructions that they need.
struct Form {
    const char* name;
    decltype(&kernels::findByte) findByte;
    decltype(&kernels::findByteFolded) findByteFolded;
    decltype(&kernels::findEither) findEither;
    decltype(&kernels::findText) findText;
    decltype(&kernels::findTextFolded) findTextFolded;
    decltype(&kernels::mismatch) mismatch;
    decltype(&kernels::mismatchFolded) mismatchFolded;
    decltype(&kernels::skipWhiteSpace) skipWhiteSpace;
    decltype(&kernels::skipHtmlName) skipHtmlName;
    decltype(&kernels::foldLower) foldLower;
    decltype(&kernels::foldUpper) foldUpper;
    decltype(&kernels::widen) widen;
    decltype(&kernels::narrow) narrow;
    decltype(&kernels::findWide) findWide;
    decltype(&kernels::findWideFolded) findWideFolded;
    decltype(&kernels::findWideEither) findWideEither;
    decltype(&kernels::findWideText) findWideText;
    decltype(&kernels::findWideTextFolded) findWideTextFolded;
    decltype(&kernels::mismatchWide) mismatchWide;
    decltype(&kernels::mismatchWideFolded) mismatchWideFolded;
    decltype(&kernels::foldLowerWide) foldLowerWide;
    decltype(&kernels::foldUpperWide) foldUpperWide;
    decltype(&kernels::skipWideWhiteSpace) skipWideWhiteSpace;
    decltype(&kernels::skipWideName) skipWideName;
};

/// Character by character: what the other forms must agree with.
extern const Form plainForm;
/// For every x86-64 machine.
extern const Form sse2Form;
/// Only for a machine that has AVX2.
extern const Form avx2Form;

/// The form that the kernels use for all but short runs: the fastest that this machine can.
const Form& formInUse() noexcept;

} // namespace orvabase::kernels

#endif
