// Documents and document types against a plain parser: the same events between the same calls on
// the stream, with errors that throw and errors that return, with the parser's own reader and with
// one that is given to it, in both encodings, delivered at once and in pieces.

// The model's headers are the tests' own.
#include "../tests/support/XmlModel.h"

#include "RequireSameEvents.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

using xmlmodel::Conditions;
using xmlmodel::Log;
using xmlmodel::Run;

/// The model recurses with the document.
constexpr unsigned long longestForModel = 4096;

void checkBytes(const std::string& document, bool errorsReturn) {
    Conditions conditions;
    conditions.errorsReturn = errorsReturn;
    const Log whole = Run(document, conditions).privateReader();
    requireFrame(whole);
    if (document.size() <= longestForModel) {
        requireSame(Run(document, conditions).plain(false), whole, "a private reader");
        requireSame(Run(document, conditions).plain(true), Run(document, conditions).sharedReader(),
                    "a given reader");
        conditions.eventsLook = true;
        requireSame(Run(document, conditions).plain(true), Run(document, conditions).sharedReader(),
                    "a given reader that the events look at");
        conditions.eventsLook = false;
    }
    for (const unsigned long portion : {1UL, 100UL}) {
        conditions.portion = portion;
        requireSame(xmlmodel::withoutCalls(whole),
                    xmlmodel::withoutCalls(Run(document, conditions).privateReader()),
                    "a document in pieces");
    }
}

void checkWide(const std::string& document, bool errorsReturn) {
    Conditions conditions;
    conditions.encoding = XmlEncodingWide;
    conditions.errorsReturn = errorsReturn;
    const Log whole = Run(document, conditions).sharedReader();
    requireFrame(whole);
    if (document.size() <= 4 * longestForModel)
        requireSame(Run(document, conditions).plain(true), whole, "wide characters");
    if (document.size() % 4 != 0)
        return;
    conditions.portion = 12;
    requireSame(xmlmodel::withoutCalls(whole),
                xmlmodel::withoutCalls(Run(document, conditions).sharedReader()),
                "wide characters in pieces");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string document(reinterpret_cast<const char*>(data), size);
    std::string widened;
    for (const char c : document) {
        const wchar_t wide = c;
        widened.append(reinterpret_cast<const char*>(&wide), sizeof wide);
    }
    for (const bool errorsReturn : {false, true}) {
        checkBytes(document, errorsReturn);
        checkWide(widened, errorsReturn);
        checkWide(document, errorsReturn);
        if (size <= 256) {
            checkBytes("<!DOCTYPE a [" + document, errorsReturn);
            checkBytes("<!DOCTYPE a [<!ATTLIST a " + document, errorsReturn);
        }
    }
    return 0;
}
