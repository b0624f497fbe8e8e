/// \file
/// Every public header of the library.

#ifndef ORVABASE_ORVABASE_H
#define ORVABASE_ORVABASE_H

#include "OCAnsiString.h"
#include "OCBoolean.h"
#include "OCCoreRing.h"
#include "OCCountdown.h"
#include "OCDateTime.h"
#include "OCDateTimeFormat.h"
#include "OCDateTimeParser.h"
#include "OCDtdParser.h"
#include "OCEvent.h"
#include "OCExport.h"
#include "OCFilePath.h"
#include "OCFileStream.h"
#include "OCHandleStream.h"
#include "OCInteger.h"
#include "OCMemory.h"
#include "OCMemoryBuffer.h"
#include "OCMemoryStream.h"
#include "OCMutex.h"
#include "OCObject.h"
#include "OCSection.h"
#include "OCStack.h"
#include "OCStopwatch.h"
#include "OCStream.h"
#include "OCStringArray.h"
#include "OCStringConversion.h"
#include "OCStringList.h"
#include "OCStringUtilities.h"
#include "OCSystemError.h"
#include "OCThread.h"
#include "OCVector.h"
#include "OCWideString.h"
#include "OCXmlParser.h"
#include "OCXmlParserReader.h"
#include "OXException.h"

#endif
