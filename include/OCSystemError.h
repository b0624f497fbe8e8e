#ifndef ORVABASE_OCSYSTEMERROR_H
#define ORVABASE_OCSYSTEMERROR_H

#include "OCAnsiString.h"

/// The operating system's text for an error number: an `errno` value or the result of a `pthread`
/// call. A number that the system does not know has a text too. Thread-safe.
///
///     systemErrorText(ENOENT);   // No such file or directory
/// @throws OXMemory_AllocationError
ORVABASE_EXPORT OCAnsiString systemErrorText(unsigned int code);
/// The text for `errno`.
ORVABASE_EXPORT OCAnsiString systemErrorText();

#endif
