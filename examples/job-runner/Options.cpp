#include "Options.h"
#include "Errors.h"
#include "Text.h"

namespace {

[[noreturn]] void fail(const OCAnsiString& what) {
    throw OXJobRunner_BadOption(what + " (job-runner --help tells more)");
}

const OCAnsiString& valueOf(const OCApplicationArgument& argument) {
    if (!argument.hasValue())
        fail("option --" + argument.getName() + " needs a value");
    return argument.getValue();
}

bool flagOf(const OCApplicationArgument& argument) {
    if (argument.hasValue())
        fail("option --" + argument.getName() + " takes no value");
    return true;
}

} // namespace

const char* Options::getUsage() {
    return "usage: job-runner [OPTION...] FILE\n"
           "\n"
           "Runs the jobs of a job file and prints a table of how they went.\n"
           "\n"
           "  --workers=N        run up to N jobs at once, 1 to 256 (4 by default)\n"
           "  --timeout=SECONDS  end a job without a time limit of its own after so many seconds,\n"
           "                     0.001 to 999999 (30 by default)\n"
           "  --report=FILE      write an XML report, with what the jobs printed, to FILE\n"
           "  --quiet            print neither progress nor table\n"
           "  --help, --version  print this, or the version, and exit\n"
           "\n"
           "Exit status: 0 when all jobs succeeded, 1 when one failed, 2 when the command line or "
           "a\n"
           "file is bad.\n";
}

void Options::read(int argc, char** argv) {
    OCApplicationArgumentList arguments;
    arguments.assign(argc, argv);
    for (unsigned long i = 0; i < arguments.getCount(); ++i) {
        const OCApplicationArgument& argument = arguments.getArgument(i);
        if (argument.getType() != ApplicationArgumentTypeMiscellaneous)
            readOption(argument);
        else if (argument.getValue().getLength() == 0)
            fail("the name of the job file is empty");
        else if (file.getLength() > 0)
            fail("there is more than one job file: " + file + " and " + argument.getValue());
        else
            file = argument.getValue();
    }
    if (file.getLength() == 0 && !help && !version)
        fail("no job file is given");
    if (report.getLength() > 0 && report == file)
        fail("the report would replace the job file " + file);
}

void Options::readOption(const OCApplicationArgument& argument) {
    const OCAnsiString& name = argument.getName();
    if (argument.getType() == ApplicationArgumentTypeShort)
        fail("unknown option -" + name);
    if (name == "help") {
        help = flagOf(argument);
    } else if (name == "version") {
        version = flagOf(argument);
    } else if (name == "quiet") {
        quiet = flagOf(argument);
    } else if (name == "report") {
        report = valueOf(argument);
    } else if (name == "workers") {
        if (!parseNumber(valueOf(argument), 1, 256, workers))
            fail("--workers=" + argument.getValue() + " is not a number from 1 to 256");
    } else if (name == "timeout") {
        if (!parseSeconds(valueOf(argument), limit))
            fail("--timeout=" + argument.getValue() +
                 " is not a number of seconds from 0.001 to 999999");
    } else {
        fail("unknown option --" + name);
    }
}
