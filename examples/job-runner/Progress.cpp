#include "Progress.h"
#include "Text.h"
#include <unistd.h>

namespace {

/// The longest line that every terminal shows without a break.
const unsigned long lineLength = 79;

/// Whether the descriptor leads to a terminal that can rewrite a line.
bool isCapableTerminal(int descriptor) {
    return isatty(descriptor) == 1 && OCEnvironmentVariable("TERM").getValue("dumb") != "dumb";
}

} // namespace

Progress::Progress(unsigned long jobCount, bool quiet)
    : total(jobCount), silent(quiet), terminal(isCapableTerminal(STDERR_FILENO)),
      running(StringListCaseSensitive, StringListModeUnsorted), stream(STDERR_FILENO) {}

Progress::~Progress() {
    if (terminal)
        print("\r\x1b[K");
}

void Progress::jobStarted(const Job& job) {
    running.addString(job.name);
    if (terminal)
        update();
}

void Progress::jobSettled(const Job& job) {
    ++settled;
    if (job.state != JobSucceeded)
        ++unsuccessful;
    unsigned long index = 0;
    if (running.indexOf(job.name, index))
        running.removeString(index);
    if (terminal) {
        update();
        return;
    }
    OCAnsiString line =
        "[" + number(settled) + "/" + number(total) + "] " + job.name + ": " + job.getStateName();
    if (job.state != JobSkipped)
        line += ", " + formatSeconds(job.duration) + " s";
    print(line + "\n");
}

void Progress::update() {
    OCAnsiString line = "[" + number(settled) + "/" + number(total) + "]";
    if (unsuccessful > 0)
        line += " " + number(unsuccessful) + " not successful;";
    if (running.getCount() > 0)
        line += " running:";
    for (unsigned long i = 0; i < running.getCount() && line.getLength() < lineLength; ++i)
        line += (i > 0 ? ", " : " ") + running.getString(i);
    print("\r" + line.left(lineLength) + "\x1b[K");
}

void Progress::print(const OCAnsiString& text) {
    if (silent)
        return;
    try {
        stream.print(text);
    } catch (const OXException&) {
        silent = true;
    }
}
