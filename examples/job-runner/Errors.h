#ifndef JOB_RUNNER_ERRORS_H
#define JOB_RUNNER_ERRORS_H

#include <orvabase.h>

/// The program's own failures, which join the library's tree.
class OXJobRunner : public OXAutoException {
public:
    ~OXJobRunner() noexcept override = default;

protected:
    OXJobRunner(const OCAnsiString& name, const OCAnsiString& text) {
        setClass(name);
        setMessage(text);
    }
};

class OXJobRunner_BadOption : public OXJobRunner {
public:
    explicit OXJobRunner_BadOption(const OCAnsiString& text)
        : OXJobRunner("OXJobRunner_BadOption", text) {}
    ~OXJobRunner_BadOption() noexcept override = default;
};

class OXJobRunner_BadFile : public OXJobRunner {
public:
    explicit OXJobRunner_BadFile(const OCAnsiString& text)
        : OXJobRunner("OXJobRunner_BadFile", text) {}
    /// What the library says about a file.
    OXJobRunner_BadFile(const OCAnsiString& file, const OXException& cause)
        : OXJobRunner_BadFile(file + ": " + cause.getClass() + ": " + cause.getMessage()) {}
    ~OXJobRunner_BadFile() noexcept override = default;
};

class OXJobRunner_NoExecutable : public OXJobRunner {
public:
    explicit OXJobRunner_NoExecutable(const OCAnsiString& path)
        : OXJobRunner("OXJobRunner_NoExecutable", "There is no such executable") {
        getDetails().addString(path);
    }
    ~OXJobRunner_NoExecutable() noexcept override = default;
};

class OXJobRunner_NoDirectory : public OXJobRunner {
public:
    explicit OXJobRunner_NoDirectory(const OCAnsiString& path)
        : OXJobRunner("OXJobRunner_NoDirectory", "There is no such directory") {
        getDetails().addString(path);
    }
    ~OXJobRunner_NoDirectory() noexcept override = default;
};

#endif
