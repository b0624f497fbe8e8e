/// \file
/// Every public header of the library.

#ifndef ORVABASE_ORVABASE_H
#define ORVABASE_ORVABASE_H

#include "OCExport.h"
#include "OCObject.h"

#endif
