#ifndef ORVABASE_TESTS_RECORDINGSTREAM_H
#define ORVABASE_TESTS_RECORDINGSTREAM_H

#include "OCStream.h"

#include <climits>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

/// A stream over a `std::string` that writes down every call made on it, and that can be told to
/// deliver little at a time, to stall, to refuse and to throw.
///
/// `calls` holds a line a call: the operation, its arguments and what became of it, as in
/// `read 10 -> 4`, `read 10 -> end`, `write 5 -> 5`, `seek 0 current -> 7`, `setSize 3`.
///
/// Each read and write is numbered from 1. A rule in `reads` or `writes` says what happens to the
/// calls of its numbers; calls without a rule get everything that there is, or `chunk` bytes at
/// most.
class RecordingStream : public OCStream {
public:
    /// Thrown by calls that are told to throw.
    struct Error : std::runtime_error {
        Error() : std::runtime_error("recording stream told to throw") {}
    };

    enum class Outcome {
        Normal, ///< as much as there is, at most `count` bytes
        Zero,   ///< true with a count of 0, which breaks the contract of a stream
        Refuse, ///< false
        Throw   ///< `Error`
    };

    struct Rule {
        unsigned long first; ///< the number of the first call that it applies to
        unsigned long last;  ///< the number of the last one
        Outcome outcome;
        unsigned long count = ULONG_MAX; ///< for `Normal`
    };

    RecordingStream() = default;
    explicit RecordingStream(std::string content) : data(std::move(content)) {}
    ~RecordingStream() override = default;

    bool read(void* buffer, unsigned long& count) override {
        const unsigned long wanted = count;
        ++readCount;
        if (wanted == 0)
            return record("read 0 -> 0"), true;
        unsigned long n = position < data.size() ? data.size() - position : 0;
        bool delivered = n > 0;
        limit(n, wanted, readCount, reads, delivered, "read ");
        if (!delivered)
            return record("read " + std::to_string(wanted) + " -> end"), false;
        std::memcpy(buffer, data.data() + position, n);
        position += n;
        count = n;
        return record("read " + std::to_string(wanted) + " -> " + std::to_string(n)), true;
    }

    unsigned long seek(long offset, OEStreamSeek origin) override {
        const char* from = origin == StreamSeekBeginning ? "beginning"
                           : origin == StreamSeekCurrent ? "current"
                                                         : "end";
        const unsigned long base = origin == StreamSeekBeginning ? 0
                                   : origin == StreamSeekCurrent ? position
                                                                 : data.size();
        position = base + static_cast<unsigned long>(offset);
        record("seek " + std::to_string(offset) + " " + from + " -> " + std::to_string(position));
        if (seekThrows)
            throw Error();
        return position;
    }

    void setSize(unsigned long size) override {
        record("setSize " + std::to_string(size));
        data.resize(size);
    }

    bool write(const void* buffer, unsigned long& count) override {
        const unsigned long offered = count;
        ++writeCount;
        if (offered == 0)
            return record("write 0 -> 0"), true;
        unsigned long n = offered;
        bool taken = true;
        limit(n, offered, writeCount, writes, taken, "write ");
        if (!taken)
            return record("write " + std::to_string(offered) + " -> refused"), false;
        if (data.size() < position + n)
            data.resize(position + n);
        data.replace(position, n, static_cast<const char*>(buffer), n);
        position += n;
        count = n;
        return record("write " + std::to_string(offered) + " -> " + std::to_string(n)), true;
    }

    /// The calls since the last time, which are forgotten.
    std::vector<std::string> takeCalls() {
        std::vector<std::string> taken;
        taken.swap(calls);
        return taken;
    }

    std::string data;
    unsigned long position = 0;
    unsigned long chunk = ULONG_MAX;
    std::vector<Rule> reads;
    std::vector<Rule> writes;
    bool seekThrows = false;
    /// Off for streams that are called millions of times.
    bool recording = true;
    std::vector<std::string> calls;
    unsigned long readCount = 0;
    unsigned long writeCount = 0;

private:
    void limit(unsigned long& n, unsigned long wanted, unsigned long number,
               const std::vector<Rule>& rules, bool& granted, const char* operation) {
        unsigned long most = chunk < wanted ? chunk : wanted;
        for (const Rule& rule : rules) {
            if (number < rule.first || number > rule.last)
                continue;
            switch (rule.outcome) {
            case Outcome::Normal:
                most = rule.count < wanted ? rule.count : wanted;
                break;
            case Outcome::Zero:
                most = 0;
                break;
            case Outcome::Refuse:
                granted = false;
                break;
            case Outcome::Throw:
                record(operation + std::to_string(wanted) + " -> thrown");
                throw Error();
            }
        }
        if (n > most)
            n = most;
    }

    void record(const std::string& call) {
        if (recording)
            calls.push_back(call);
    }
};

#endif
