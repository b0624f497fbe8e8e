#ifndef ORVABASE_TESTS_FAULTINJECTION_H
#define ORVABASE_TESTS_FAULTINJECTION_H

// Makes the heap of a test program fail on demand, and counts what it holds.
//
// A program that refers to anything here gets its own malloc, calloc, realloc and free. They hand
// over to the C library, or to the sanitizer that the program was built with, or to valgrind, so
// that the same tests run in every build. All counting is per thread.

#include "OCMemory.h"

#include <cstddef>
#include <utility>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define FAULT_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define FAULT_SANITIZED 1
#endif
#endif
#ifndef FAULT_SANITIZED
#define FAULT_SANITIZED 0
#endif
#if defined(ORVABASE_MEMCHECK)
#define FAULT_MEMCHECK 1
#else
#define FAULT_MEMCHECK 0
#endif

namespace fault {

/// Whether the program was built with a sanitizer or for valgrind, whose heaps have other sizes and
/// speeds.
constexpr bool sanitized = FAULT_SANITIZED || FAULT_MEMCHECK;

/// What the calling thread has asked of the heap.
struct HeapRecord {
    unsigned long requests;  ///< calls of malloc, calloc and realloc (not to 0 bytes)
    unsigned long releases;  ///< blocks given back
    long liveBlocks;         ///< blocks got less blocks given back
    std::size_t lastSize;    ///< the size of the last request, in bytes
    std::size_t largestSize; ///< the size of the largest request since `resetLargestSize`
};
HeapRecord heapRecord() noexcept;
void resetLargestSize() noexcept;

/// Makes heap requests of the calling thread fail while it lives. One at a time.
///
///     {
///         fault::HeapFault fault(2);          // the second request from here on fails
///         EXPECT_THROW(list += text, OXMemory_AllocationError);
///     }
class HeapFault {
public:
    enum Extent {
        Once,     ///< only request number `number` fails
        Following ///< it and all that follow fail
    };
    /// Requests are counted from 1.
    explicit HeapFault(unsigned long number, Extent extent = Once) noexcept;
    HeapFault(const HeapFault&) = delete;
    HeapFault& operator=(const HeapFault&) = delete;
    ~HeapFault();

    /// Whether a request has failed.
    bool triggered() const noexcept;
    /// No further request fails.
    void disarm() noexcept;
};

/// Runs `operation` with its first heap request failing, then its second, and so on, until it comes
/// through without meeting the failure. After each run that threw `OXMemory_AllocationError` calls
/// `check`. Returns the number of runs that threw.
///
/// `operation` starts from the same state each time: it makes its own subject, or `check` restores
/// it.
template<class Operation, class Check>
unsigned long failEachRequest(Operation operation, Check check) {
    unsigned long failures = 0;
    for (unsigned long number = 1;; ++number) {
        bool thrown = false;
        bool triggered = false;
        {
            HeapFault fault(number);
            try {
                operation();
            } catch (const OXMemory_AllocationError&) {
                thrown = true;
            }
            triggered = fault.triggered();
        }
        if (thrown) {
            ++failures;
            check();
        }
        if (!triggered)
            return failures;
    }
}

template<class Operation>
unsigned long failEachRequest(Operation operation) {
    return failEachRequest(std::move(operation), [] {});
}

/// Does so with a subject that `make` returns anew for each run, and calls `check(subject, failed)`
/// after each.
template<class Make, class Operation, class Check>
unsigned long failEachRequestOn(Make make, Operation operation, Check check) {
    unsigned long failures = 0;
    bool triggered = true;
    for (unsigned long number = 1; triggered; ++number) {
        auto subject = make();
        bool failed = false;
        {
            HeapFault fault(number);
            try {
                operation(subject);
            } catch (const OXMemory_AllocationError&) {
                failed = true;
            }
            triggered = fault.triggered();
        }
        failures += failed;
        check(subject, failed);
    }
    return failures;
}

/// The blocks that `operation` leaves behind: 0 when it gives back all that it takes.
template<class Operation>
long blocksLeftBy(Operation operation) {
    const long before = heapRecord().liveBlocks;
    operation();
    return heapRecord().liveBlocks - before;
}

} // namespace fault

#endif
