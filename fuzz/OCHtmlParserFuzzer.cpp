// Pages against a plain parser: the same events between the same calls on the stream, with errors
// that throw and errors that return, with events that throw, with the parser's own reader and with
// one that is given to it, delivered at once and in pieces. And the reader's search for a text of
// the input's own.

// The model's headers are the tests' own.
#include "../tests/support/HtmlModel.h"

#include "RequireSameEvents.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

using htmlmodel::Conditions;
using htmlmodel::Log;
using htmlmodel::Run;

/// The model takes quadratic time.
constexpr unsigned long longestForModel = 8192;

void check(const std::string& document, Conditions conditions) {
    const Log whole = Run(document, conditions).privateReader();
    requireFrame(whole);
    if (document.size() <= longestForModel) {
        requireSame(Run(document, conditions).plain(false), whole, "a private reader");
        requireSame(Run(document, conditions).plain(true), Run(document, conditions).sharedReader(),
                    "a given reader");
        conditions.eventsLook = true;
        conditions.eventsConsume = true;
        requireSame(Run(document, conditions).plain(true), Run(document, conditions).sharedReader(),
                    "a given reader that the events look at and consume from");
        conditions.eventsLook = false;
        conditions.eventsConsume = false;
    }
    for (const unsigned long portion : {1UL, 100UL}) {
        conditions.portion = portion;
        requireSame(htmlmodel::withoutCalls(whole),
                    htmlmodel::withoutCalls(Run(document, conditions).privateReader()),
                    "a document in pieces");
    }
}

/// Searches the input for its last bytes, as many as its first byte says.
void search(const std::string& input) {
    if (input.empty() || input.size() > longestForModel)
        return;
    const unsigned long count =
        std::min<unsigned long>(static_cast<unsigned char>(input[0]), input.size());
    const std::string wanted = input.substr(input.size() - count);
    Log log;
    Log modelLog;
    htmlmodel::LoggingStream stream(input, &log);
    htmlmodel::LoggingStream modelStream(input, &modelLog);
    OCHtmlParserReader reader(stream);
    htmlmodel::Reader model(modelStream);
    for (unsigned round = 0; round < 4; ++round) {
        OCAnsiString skipped;
        std::string modelSkipped;
        const OCAnsiString text(wanted.data(), wanted.size());
        if (reader.findString(text, skipped) != model.findString(wanted, &modelSkipped) ||
            modelSkipped != std::string(skipped.getString(), skipped.getLength()))
            std::abort();
        reader.skipCharacter('x');
        model.skip(1);
    }
    requireSame(modelLog, log, "the calls of a search");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string document(reinterpret_cast<const char*>(data), size);
    for (const bool errorsReturn : {false, true}) {
        Conditions conditions;
        conditions.errorsReturn = errorsReturn;
        check(document, conditions);
        if (size > 0) {
            conditions.failingEvent = data[size - 1] % 16;
            check(document, conditions);
        }
    }
    search(document);
    return 0;
}
