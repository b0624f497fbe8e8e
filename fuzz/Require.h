#ifndef ORVABASE_FUZZ_REQUIRE_H
#define ORVABASE_FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>

/// Ends a fuzz target, as a finding, when `condition` does not hold.
inline void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "violated: %s\n", what);
        std::abort();
    }
}
// The condition is the message. NOLINTNEXTLINE(cppcoreguidelines-macro-usage)
#define REQUIRE(condition) require(condition, #condition)

#endif
