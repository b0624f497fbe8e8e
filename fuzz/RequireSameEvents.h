#ifndef ORVABASE_FUZZ_REQUIRESAMEEVENTS_H
#define ORVABASE_FUZZ_REQUIRESAMEEVENTS_H

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

/// Ends a fuzz target, as a finding, with both lists of events when they differ.
inline void requireSame(const std::vector<std::string>& expected,
                        const std::vector<std::string>& actual, const char* what) {
    if (expected == actual)
        return;
    std::fprintf(stderr, "violated: %s\n", what);
    for (unsigned long i = 0; i < expected.size() || i < actual.size(); ++i)
        std::fprintf(stderr, "%s | %s\n", i < expected.size() ? expected[i].c_str() : "",
                     i < actual.size() ? actual[i].c_str() : "");
    std::abort();
}

/// Requires one start of the document, and one end unless an exception came first. (The event of
/// the end may throw one itself.)
inline void requireFrame(const std::vector<std::string>& log) {
    unsigned long starts = 0;
    unsigned long ends = 0;
    bool thrown = false;
    for (const std::string& entry : log) {
        starts += entry == "documentStart";
        ends += entry == "documentEnd" && !thrown;
        thrown = thrown || entry.compare(0, 6, "thrown") == 0;
    }
    const bool endThrew = thrown && log.size() >= 2 && log[log.size() - 2] == "documentEnd";
    if (starts != 1 || ends != (thrown && !endThrew ? 0U : 1U))
        std::abort();
}

#endif
