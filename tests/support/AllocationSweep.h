#ifndef ORVABASE_TESTS_ALLOCATIONSWEEP_H
#define ORVABASE_TESTS_ALLOCATIONSWEEP_H

// Runs every operation of a class once for each heap request that it makes, with that request
// refused, and says what must come of it: either the exception and the object as it was, or, where
// the operation can do without the memory, the result that it has otherwise. Nothing may be lost.

#include "OCAnsiString.h"
#include "OCWideString.h"
#include "OXException.h"
#include "support/FaultInjection.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

namespace sweep {

/// What can be seen of a string.
inline std::string seen(const OCAnsiString& s) {
    return std::string(s.getString(), s.getLength()) + '#' + std::to_string(s.getCapacity());
}

inline std::string seen(const OCWideString& s) {
    std::string result;
    for (unsigned long i = 0; i < s.getLength(); ++i)
        result += std::to_string(static_cast<long>(s[i])) + ' ';
    return result + '#' + std::to_string(s.getCapacity());
}

/// Runs `operation`, which ends with an exception of the class `Expected` when there is memory for
/// it.
template<class Expected, class Operation>
void refused(Operation operation) {
    try {
        operation();
        ADD_FAILURE() << "not refused";
    } catch (const Expected&) {
    }
}

/// The operations of one class. `make` makes a subject (a `std::unique_ptr`), `describe` gives all
/// that can be seen of it (a `std::string`).
///
///     sweep::Operations list([] { return std::make_unique<List>(); }, texts);
///     list("addString", [](List& l) { l.addString(longText); });
template<class Make, class Describe>
class Operations {
public:
    Operations(Make maker, Describe describer) : make(maker), describe(describer) {}

    /// A refused request leaves the subject as it was.
    template<class Operation>
    void operator()(const char* name, Operation operation) const {
        leaving(name, operation,
                [](const std::string& before, const std::string& after, const std::string&) {
                    EXPECT_EQ(before, after);
                });
    }

    /// As above, but `check(before, after, result)` says what a refused request leaves, where
    /// `result` is what the operation does otherwise.
    template<class Operation, class Check>
    void leaving(const char* name, Operation operation, Check check) const {
        run(name, operation, check, true);
    }

    /// A refused request leaves the subject as it was, or with all that was to be done.
    template<class Operation>
    void leavingAllOrNothing(const char* name, Operation operation) const {
        const auto check = [](const std::string& before, const std::string& after,
                              const std::string& result) {
            EXPECT_TRUE(after == before || after == result) << after;
        };
        run(name, operation, check, true);
    }

    /// The operation has a way to do its work without the memory and never fails.
    template<class Operation>
    void managing(const char* name, Operation operation) const {
        const auto never = [](const std::string&, const std::string&, const std::string&) {
            FAIL() << "failed";
        };
        run(name, operation, never, false);
    }

private:
    static constexpr unsigned long mostRequests = 5000;

    template<class Operation, class Check>
    void run(const char* name, Operation operation, Check check, bool fails) const {
        SCOPED_TRACE(name);
        std::string result;
        {
            const auto subject = make();
            try {
                operation(*subject);
            } catch (const OXException& exception) {
                FAIL() << exception.getMessage().getString();
            }
            result = describe(*subject);
        }
        for (const fault::HeapFault::Extent extent :
             {fault::HeapFault::Once, fault::HeapFault::Following}) {
            SCOPED_TRACE(extent == fault::HeapFault::Once ? "one request" : "all that follow");
            unsigned long failures = 0;
            unsigned long number = 1;
            for (;; ++number) {
                SCOPED_TRACE(number);
                const long blocks = fault::heapRecord().liveBlocks;
                const bool triggered = attempt(operation, check, result, number, extent, failures);
                EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
                if (!triggered || testing::Test::HasFailure() || number == mostRequests)
                    break;
            }
            if (testing::Test::HasFailure())
                return;
            EXPECT_LT(number, mostRequests);
            EXPECT_LT(1UL, number) << "asks for no memory";
            EXPECT_EQ(fails, failures != 0);
        }
    }

    template<class Operation, class Check>
    bool attempt(Operation& operation, Check& check, const std::string& result,
                 unsigned long number, fault::HeapFault::Extent extent,
                 unsigned long& failures) const {
        const auto subject = make();
        const std::string before = describe(*subject);
        bool thrown = false;
        bool triggered = false;
        {
            fault::HeapFault fault(number, extent);
            try {
                operation(*subject);
            } catch (const OXMemory_AllocationError&) {
                thrown = true;
            }
            triggered = fault.triggered();
        }
        if (thrown) {
            ++failures;
            check(before, describe(*subject), result);
        } else
            EXPECT_EQ(result, describe(*subject));
        return triggered;
    }

    Make make;
    Describe describe;
};

/// What constructs and throws away an object, or asks one that stands outside.
struct Nothing {};

inline auto results() {
    return Operations([] { return std::make_unique<Nothing>(); },
                      [](const Nothing&) { return std::string(); });
}

} // namespace sweep

#endif
