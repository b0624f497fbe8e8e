#ifndef ORVABASE_OCCORERING_H
#define ORVABASE_OCCORERING_H

// Ties the ring of classes that need one another: exceptions keep their texts in strings and a
// string list, while strings, vectors and lists throw exceptions. It is not for applications, which
// include the header of the class that they use.
//
// Each header of the ring has two halves: the value classes, and what derives from an exception.
// Whichever header of the ring is included first comes here, and here the halves are put into
// order.

// NOLINTBEGIN(cppcoreguidelines-macro-usage): the preprocessor reads it
#define ORVABASE_CORE_RING_HALF 1
#include "OCAnsiString.h"
#include "OCVector.h"

#include "OCStringList.h"

#undef ORVABASE_CORE_RING_HALF
#define ORVABASE_CORE_RING_HALF 2
#include "OXException.h"

#include "OCAnsiString.h"
#include "OCStringList.h"
#include "OCVector.h"

#undef ORVABASE_CORE_RING_HALF
#define ORVABASE_CORE_RING_HALF 0
// NOLINTEND(cppcoreguidelines-macro-usage)

#endif
