#ifndef JOB_RUNNER_STANDARD_STREAM_H
#define JOB_RUNNER_STANDARD_STREAM_H

#include <orvabase.h>

/// The stream over one of the process's own standard descriptors, which stays open.
class StandardStream : public OCHandleStream {
public:
    explicit StandardStream(int descriptor) { setHandle(descriptor); }
    ~StandardStream() noexcept override { dropHandle(); }

    void print(const OCAnsiString& text) { OCStringUtilities::exportStream(text, *this); }
};

#endif
