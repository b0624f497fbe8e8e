/// \file
/// Every public header of the library.

#ifndef ORVABASE_ORVABASE_H
#define ORVABASE_ORVABASE_H

#include "OCAnsiString.h"
#include "OCBoolean.h"
#include "OCCoreRing.h"
#include "OCExport.h"
#include "OCInteger.h"
#include "OCMemory.h"
#include "OCObject.h"
#include "OCStringConversion.h"
#include "OCStringList.h"
#include "OCStringUtilities.h"
#include "OCSystemError.h"
#include "OCVector.h"
#include "OCWideString.h"
#include "OXException.h"

#endif
