#ifndef JOB_RUNNER_OPTIONS_H
#define JOB_RUNNER_OPTIONS_H

#include <orvabase.h>

/// What the command line asks for.
class Options : public OCObject {
public:
    /// @throws OXJobRunner_BadOption with one line that says what is wrong.
    void read(int argc, char** argv);

    static const char* getUsage();

    bool help = false;
    bool version = false;
    bool quiet = false;
    unsigned int workers = 4;
    unsigned int limit = 30000; ///< milliseconds
    OCFilePath report;          ///< empty: none is written
    OCFilePath file;

private:
    void readOption(const OCApplicationArgument& argument);
};

#endif
