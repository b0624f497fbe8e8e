#include "support/AllocationSweep.h"

#include "OCMemory.h"
#include "OCObject.h"
#include "OCStringConversion.h"
#include "OXException.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

const std::string characters(300, 'n');
const OCAnsiString longText(characters.c_str());

TEST(AllocationSweep, Objects) {
    const auto make = sweep::results();
    make("new", [](auto&) { delete new OCObject; });
    make("new of several", [](auto&) { delete[] new OCObject[3]; });
    make("operator new", [](auto&) { OCObject::operator delete(OCObject::operator new(10)); });
    make("operator new[]",
         [](auto&) { OCObject::operator delete[](OCObject::operator new[](10)); });
    make("new disposer", [](auto&) { delete new OCObjectDisposer(nullptr); });
    // What is refused has not been made, and what was made before is disposed of.
    make("disposer", [](auto&) {
        const OCObjectDisposer first(new OCObject);
        const OCObjectDisposer second(new OCObject);
    });
}

/// A block of three elements, which a refused request leaves alone.
template<class Element>
struct Elements {
    Elements() : block(static_cast<Element*>(std::malloc(size))) { std::memset(block, 7, size); }
    Elements(const Elements&) = delete;
    Elements& operator=(const Elements&) = delete;
    ~Elements() { std::free(block); }

    /// Runs `reallocate` on the block; refused, it makes the pointer null, not the block.
    template<class Reallocate>
    void enlarge(Reallocate reallocate) {
        Element* moved = block;
        try {
            reallocate(moved);
        } catch (const OXMemory_AllocationError&) {
            EXPECT_EQ(nullptr, moved);
            throw;
        }
        block = moved;
        enlarged = true;
    }

    std::string seen() const {
        return std::string(reinterpret_cast<const char*>(block), size) + (enlarged ? "..." : "");
    }

    // Of pointers, too. NOLINTNEXTLINE(bugprone-sizeof-expression)
    static constexpr std::size_t size = 3 * sizeof(Element);
    Element* block;
    bool enlarged = false;
};

template<class Element, class Reallocate>
void sweepReallocation(const char* name, Reallocate reallocate) {
    const sweep::Operations elements([] { return std::make_unique<Elements<Element>>(); },
                                     [](const Elements<Element>& e) { return e.seen(); });
    elements(name, [&](auto& e) { e.enlarge(reallocate); });
}

template<class Element, class Allocate, class Release>
void sweepAllocation(const char* name, Allocate allocate, Release release) {
    sweep::results()(name, [&](auto&) {
        Element something{};
        Element* p = &something;
        try {
            allocate(p);
        } catch (const OXMemory_AllocationError&) {
            EXPECT_EQ(nullptr, p);
            throw;
        }
        EXPECT_NE(&something, p);
        release(p);
        EXPECT_EQ(nullptr, p);
    });
}

TEST(AllocationSweep, Memory) {
    const auto make = sweep::results();
    make("memoryAllocate", [](auto&) {
        void* p = &p;
        try {
            memoryAllocate(p, 10);
        } catch (const OXMemory_AllocationError&) {
            EXPECT_EQ(nullptr, p);
            throw;
        }
        memoryRelease(p);
        EXPECT_EQ(nullptr, p);
    });
    const auto release = [](auto& p) { stringRelease(p); };
    sweepAllocation<char>(
        "stringAllocate", [](char*& p) { stringAllocate(p, 9); }, release);
    sweepAllocation<wchar_t>(
        "stringAllocate, wide", [](wchar_t*& p) { stringAllocate(p, 9); }, release);
    sweepAllocation<OCObject*>(
        "vectorAllocate", [](OCObject**& p) { vectorAllocate(p, 9); },
        [](OCObject**& p) { vectorRelease(p); });
    sweepReallocation<char>("memoryReallocate", [](char*& p) {
        void* block = p;
        try {
            memoryReallocate(block, 5000);
        } catch (const OXMemory_AllocationError&) {
            p = static_cast<char*>(block);
            throw;
        }
        p = static_cast<char*>(block);
    });
    sweepReallocation<char>("stringReallocate", [](char*& p) { stringReallocate(p, 5000); });
    sweepReallocation<wchar_t>("stringReallocate, wide",
                               [](wchar_t*& p) { stringReallocate(p, 5000); });
    sweepReallocation<OCObject*>("vectorReallocate",
                                 [](OCObject**& p) { vectorReallocate(p, 5000); });
    make("new failure", [](auto&) { delete new OXMemory_AllocationError; });
    // Without any memory the failure is thrown all the same, and says what it is.
    make.managing("failure", [](auto&) {
        try {
            delete new OCObject;
        } catch (const OXMemory_AllocationError& failure) {
            EXPECT_STREQ("OXMemory_AllocationError", failure.getClass().getString());
            EXPECT_STREQ("Memory allocation failure", failure.getMessage().getString());
        }
    });
}

std::string seenException(const OXAutoException& e) {
    std::string result = sweep::seen(e.getClass()) + '|' + sweep::seen(e.getMessage()) + '|';
    for (unsigned long i = 0; i < e.getDetails().getCount(); ++i)
        result += e.getDetails().hasString(i) ? sweep::seen(e.getDetails().getString(i)) : "(null)";
    return result;
}

/// An exception with room for no further detail.
std::unique_ptr<OXAutoException> filledException() {
    auto made = std::make_unique<OXAutoException>();
    made->setClass("OXName");
    made->setMessage("message");
    for (unsigned long i = 0; i < 64; ++i)
        made->getDetails().addString(OCStringConversion::fromSize(i, 10));
    return made;
}

TEST(AllocationSweep, Exceptions) {
    OXAutoException other;
    other.setClass(longText);
    other.setMessage(longText);
    other.getDetails().addString(longText);
    const sweep::Operations exception(filledException, seenException);
    exception("new", [](auto&) { delete new OXAutoException; });
    exception("copy", [&](auto&) { OXAutoException copy(other); });
    exception("setClass", [](auto& e) { e.setClass(longText); });
    exception("setMessage", [](auto& e) { e.setMessage(longText); });
    // The list may keep the slot of a detail that was refused; the message then stands alone.
    exception.leaving(
        "getDetails", [](auto& e) { e.getDetails().addString("more"); },
        [](const std::string& before, const std::string& after, const std::string&) {
            const auto message = before.find('|') + 1;
            const auto details = before.rfind('|');
            EXPECT_TRUE(after == before || after == before.substr(0, message) + "message#64" +
                                                        before.substr(details) + "(null)")
                << after;
        });
    exception("getClass", [&](auto&) { EXPECT_EQ(longText, other.getClass()); });
    exception("=", [&](auto& e) { e = other; });
}

TEST(AllocationSweep, TheMessageFallsBackToItsFixedPart) {
    const auto made = filledException();
    const OCAnsiString whole = made->getMessage();
    const auto make = sweep::results();
    bool fellBack = false;
    make.managing("getMessage", [&](auto&) {
        const OCAnsiString text = made->getMessage();
        fellBack = fellBack || text == OCAnsiString("message");
        EXPECT_TRUE(text == whole || text == OCAnsiString("message"));
    });
    EXPECT_TRUE(fellBack);

    // A long one falls back too, and fails only when there is no memory for that either.
    made->setMessage(longText);
    {
        fault::HeapFault fault(1);
        EXPECT_EQ(longText, made->getMessage());
        EXPECT_TRUE(fault.triggered());
    }
    const long blocks = fault::heapRecord().liveBlocks;
    {
        fault::HeapFault fault(1, fault::HeapFault::Following);
        sweep::refused<OXMemory_AllocationError>([&] { made->getMessage(); });
    }
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
}

} // namespace
