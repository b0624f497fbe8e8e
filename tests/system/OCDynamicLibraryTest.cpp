#include "OCDynamicLibrary.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/LoaderCalls.h"
#include "support/ScratchDirectory.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>

namespace {

/// What the sample libraries have told: `+` and the name when opened, `-` when closed.
char sampleEvents[256];

} // namespace

extern "C" __attribute__((visibility("default"))) void sampleEvent(const char* event) {
    strncat(sampleEvents, event, sizeof sampleEvents - strlen(sampleEvents) - 1);
}

// What the dynamic loader keeps for itself is no leak. LeakSanitizer knows that, but not behind the
// test program's own malloc.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): its name for this
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
    return "leak:ld-linux-x86-64.so\n";
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace {

// GoogleTest deletes fixtures by their base class.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor)
class OCDynamicLibraryTest : public testing::Test {
protected:
    OCDynamicLibraryTest() {
        dlerror(); // finds the C library's function now, which would itself clear an error
        sampleEvents[0] = '\0';
    }
    ~OCDynamicLibraryTest() override { dlerror(); }
};

int runCode(void* address) {
    return reinterpret_cast<int (*)()>(address)();
}

TEST_F(OCDynamicLibraryTest, HasItsLayout) {
    EXPECT_EQ(16u, sizeof(OCDynamicLibrary));
    EXPECT_EQ(2u, slots::slotCount<OCDynamicLibrary>());
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCDynamicLibrary>));
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCDynamicLibrary>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCDynamicLibrary>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCDynamicLibrary>);
}

TEST_F(OCDynamicLibraryTest, StartsWithNothingLoaded) {
    const OCDynamicLibrary library;
    EXPECT_FALSE(library.isLoaded());
    EXPECT_EQ(nullptr, reinterpret_cast<void* const*>(&library)[1]);
}

TEST_F(OCDynamicLibraryTest, LoadsALibraryAndFindsItsCodeAndData) {
    OCDynamicLibrary library;
    library.load(SAMPLE_FIRST);
    EXPECT_TRUE(library.isLoaded());
    EXPECT_STREQ("+first ", sampleEvents);
    EXPECT_EQ(1, runCode(library.locateCode("sampleCode")));
    EXPECT_EQ(17, *static_cast<int*>(library.locateData("sampleData")));
    // The two differ in nothing but their exceptions.
    EXPECT_EQ(library.locateCode("sampleData"), library.locateData("sampleData"));
    EXPECT_EQ(library.locateCode("sampleCode"), library.locateData("sampleCode"));
}

TEST_F(OCDynamicLibraryTest, LoadsInItsConstructorAndClosesInItsDestructor) {
    {
        OCDynamicLibrary library(SAMPLE_SECOND);
        EXPECT_TRUE(library.isLoaded());
        EXPECT_EQ(2, runCode(library.locateCode("sampleCode")));
        EXPECT_STREQ("+second ", sampleEvents);
    }
    EXPECT_STREQ("+second -second ", sampleEvents);
}

TEST_F(OCDynamicLibraryTest, UnloadingClosesOnce) {
    OCDynamicLibrary library;
    library.unload();
    library.load(SAMPLE_FIRST);
    Counting closing(calls::dlclose);
    library.unload();
    EXPECT_FALSE(library.isLoaded());
    EXPECT_STREQ("+first -first ", sampleEvents);
    library.unload();
    EXPECT_EQ(1u, closing.calls());
    EXPECT_STREQ("+first -first ", sampleEvents);
    library.load(SAMPLE_FIRST);
    EXPECT_TRUE(library.isLoaded());
}

TEST_F(OCDynamicLibraryTest, PassesThePathAsItStandsWithItsFlags) {
    std::string calledWith;
    Replacement loading(calls::dlopen, [&](const char* path, int flags) {
        calledWith += "[" + std::string(path) + "] " + std::to_string(flags) + ";";
        return calls::dlopen.original(SAMPLE_FIRST, RTLD_NOW);
    });
    OCDynamicLibrary library;
    library.load("name.so");
    library.load(".\\a//b:c/../d");
    EXPECT_EQ("[name.so] 258;[.\\a//b:c/../d] 258;", calledWith);
    EXPECT_EQ(0x102, RTLD_NOW | RTLD_GLOBAL);
}

TEST_F(OCDynamicLibraryTest, AnEmptyPathIsTheProgramItself) {
    OCDynamicLibrary program("");
    EXPECT_EQ(reinterpret_cast<void*>(&sampleEvent), program.locateCode("sampleEvent"));
}

TEST_F(OCDynamicLibraryTest, ANameWithoutASlashIsSearchedFor) {
    OCDynamicLibrary library("libm.so.6");
    EXPECT_TRUE(library.isLoaded());
    EXPECT_NE(nullptr, library.locateCode("cos"));
}

TEST_F(OCDynamicLibraryTest, AnotherLibraryReplacesTheFirstWhichIsClosedBefore) {
    OCDynamicLibrary library(SAMPLE_FIRST);
    library.load(SAMPLE_SECOND);
    EXPECT_STREQ("+first -first +second ", sampleEvents);
    EXPECT_EQ(2, runCode(library.locateCode("sampleCode")));
    EXPECT_EXCEPTION(library.locateData("sampleData"), OXDynamicLibrary_LocateDataError,
                     "Can not locate data in dynamic library (sampleData)");
}

TEST_F(OCDynamicLibraryTest, AfterAFailedSecondLoadNothingIsLoaded) {
    OCDynamicLibrary library(SAMPLE_FIRST);
    EXPECT_EXCEPTION(library.load("/nowhere/missing.so"), OXDynamicLibrary_LoadError,
                     "Error loading dynamic library (/nowhere/missing.so: cannot open shared "
                     "object file: No such file or directory)");
    EXPECT_FALSE(library.isLoaded());
    EXPECT_STREQ("+first -first ", sampleEvents);
    EXPECT_EXCEPTION(library.locateCode("sampleCode"), OXDynamicLibrary_LocateCodeError,
                     "Can not locate code in dynamic library (sampleCode)");
    library.load(SAMPLE_FIRST);
    EXPECT_EQ(1, runCode(library.locateCode("sampleCode")));
}

TEST_F(OCDynamicLibraryTest, TwoObjectsMayHoldTheSameLibrary) {
    OCDynamicLibrary one(SAMPLE_FIRST);
    OCDynamicLibrary other(SAMPLE_FIRST);
    EXPECT_EQ(one.locateData("sampleData"), other.locateData("sampleData"));
    one.unload();
    EXPECT_STREQ("+first ", sampleEvents);
    EXPECT_EQ(1, runCode(other.locateCode("sampleCode")));
    other.unload();
    EXPECT_STREQ("+first -first ", sampleEvents);
}

TEST_F(OCDynamicLibraryTest, AllSymbolsAreResolvedAtOnce) {
    OCDynamicLibrary library;
    try {
        library.load(SAMPLE_DEPENDENT);
        FAIL() << "loaded without what it needs";
    } catch (const OXDynamicLibrary_LoadError& failure) {
        const std::string message = failure.getMessage().getString();
        EXPECT_EQ("Error loading dynamic library (" SAMPLE_DEPENDENT
                  ": undefined symbol: sampleShared)",
                  message);
    }
    EXPECT_FALSE(library.isLoaded());
    EXPECT_STREQ("", sampleEvents);
}

TEST_F(OCDynamicLibraryTest, ItsSymbolsAreThereForLibrariesLoadedLater) {
    OCDynamicLibrary first(SAMPLE_FIRST);
    OCDynamicLibrary dependent(SAMPLE_DEPENDENT);
    EXPECT_EQ(42, runCode(dependent.locateCode("sampleCode")));
    EXPECT_STREQ("+first +dependent ", sampleEvents);
    // The loader keeps what another library needs.
    first.unload();
    EXPECT_STREQ("+first +dependent ", sampleEvents);
    EXPECT_EQ(42, runCode(dependent.locateCode("sampleCode")));
    dependent.unload();
    EXPECT_TRUE(std::strstr(sampleEvents, "-dependent ") != nullptr);
    EXPECT_TRUE(std::strstr(sampleEvents, "-first ") != nullptr);
}

TEST_F(OCDynamicLibraryTest, AMissingFileIsReportedWithTheLoadersText) {
    OCDynamicLibrary library;
    try {
        library.load("/nowhere/missing.so");
        FAIL() << "loaded a missing file";
    } catch (const OXDynamicLibrary_LoadError& failure) {
        // The text names the path, so it is not repeated.
        EXPECT_EQ(1u, failure.getDetails().getCount());
        EXPECT_TRUE(failure.getDetails().getString(0).contains("/nowhere/missing.so"));
        EXPECT_TRUE(failure.getDetails().getString(0).contains("No such file or directory"));
    }
    EXPECT_FALSE(library.isLoaded());
    EXPECT_THROW(OCDynamicLibrary("/nowhere/missing.so"), OXDynamicLibrary_LoadError);
}

TEST_F(OCDynamicLibraryTest, AFileThatIsNoLibraryIsReported) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("text.so", "this is no shared object, but it is long "
                                                      "enough to have a header of its own......");
    const std::string expected = "Error loading dynamic library (" + path + ": file too short)";
    const std::string other = "Error loading dynamic library (" + path + ": invalid ELF header)";
    OCDynamicLibrary library;
    try {
        library.load(path.c_str());
        FAIL() << "loaded a text";
    } catch (const OXDynamicLibrary_LoadError& failure) {
        const std::string message = failure.getMessage().getString();
        EXPECT_TRUE(message == expected || message == other) << message;
    }
}

TEST_F(OCDynamicLibraryTest, TheLoadersTextIsReadOnceAndOnlyAfterAFailure) {
    {
        Counting reading(calls::dlerror);
        OCDynamicLibrary library(SAMPLE_FIRST);
        EXPECT_EQ(0u, reading.calls());
        EXPECT_THROW(library.load("/nowhere/missing.so"), OXDynamicLibrary_LoadError);
        EXPECT_EQ(1u, reading.calls());
    }
    Failing loading(calls::dlopen, ENOENT);
    char reason[] = "a reason without its name";
    Replacement reading(calls::dlerror, [&] { return reason; });
    OCDynamicLibrary library;
    EXPECT_EXCEPTION(library.load("some.so"), OXDynamicLibrary_LoadError,
                     "Error loading dynamic library (some.so, a reason without its name)");
    EXPECT_FALSE(library.isLoaded());
    reason[0] = '\0'; // a text all the same
    EXPECT_EXCEPTION(library.load("some.so"), OXDynamicLibrary_LoadError,
                     "Error loading dynamic library (some.so, )");
}

TEST_F(OCDynamicLibraryTest, WithoutALoadersTextThereIsOnlyThePath) {
    Failing loading(calls::dlopen, ENOENT);
    unsigned long readings = 0;
    Replacement reading(calls::dlerror, [&]() -> char* {
        ++readings;
        return nullptr;
    });
    OCDynamicLibrary library;
    EXPECT_EXCEPTION(library.load("some.so"), OXDynamicLibrary_LoadError,
                     "Error loading dynamic library (some.so)");
    EXPECT_EQ(1u, readings);
    EXPECT_FALSE(library.isLoaded());
    EXPECT_EXCEPTION(OCDynamicLibrary(""), OXDynamicLibrary_LoadError,
                     "Error loading dynamic library ()");
}

TEST_F(OCDynamicLibraryTest, TheErrorLeavesThePathOutWhenTheReasonHasIt) {
    EXPECT_EQ(OCAnsiString("Error loading dynamic library (a.so)"),
              OXDynamicLibrary_LoadError("a.so").getMessage());
    EXPECT_EQ(OCAnsiString("Error loading dynamic library (a.so, not found)"),
              OXDynamicLibrary_LoadError("a.so", "not found").getMessage());
    EXPECT_EQ(OCAnsiString("Error loading dynamic library (no a.so here)"),
              OXDynamicLibrary_LoadError("a.so", "no a.so here").getMessage());
    EXPECT_EQ(OCAnsiString("Error loading dynamic library (a.so, no A.SO here)"),
              OXDynamicLibrary_LoadError("a.so", "no A.SO here").getMessage());
    EXPECT_EQ(OCAnsiString("Error loading dynamic library (a.so, )"),
              OXDynamicLibrary_LoadError("a.so", "").getMessage());
}

TEST_F(OCDynamicLibraryTest, AMissingSymbolIsReported) {
    OCDynamicLibrary library(SAMPLE_FIRST);
    EXPECT_EXCEPTION(library.locateCode("missing"), OXDynamicLibrary_LocateCodeError,
                     "Can not locate code in dynamic library (missing)");
    EXPECT_EXCEPTION(library.locateData("missing"), OXDynamicLibrary_LocateDataError,
                     "Can not locate data in dynamic library (missing)");
    EXPECT_EXCEPTION(library.locateCode("samplecode"), OXDynamicLibrary_LocateCodeError,
                     "Can not locate code in dynamic library (samplecode)");
    EXPECT_EXCEPTION(library.locateData(""), OXDynamicLibrary_LocateDataError,
                     "Can not locate data in dynamic library ()");
    EXPECT_TRUE(library.isLoaded());
    // The loader's text stays for whoever wants it.
    Counting reading(calls::dlerror);
    EXPECT_THROW(library.locateCode("missing"), OXDynamicLibrary_LocateCodeError);
    EXPECT_THROW(library.locateData("missing"), OXDynamicLibrary_LocateDataError);
    EXPECT_EQ(0u, reading.calls());
}

TEST_F(OCDynamicLibraryTest, ASymbolWhoseValueIsNullCountsAsMissing) {
    OCDynamicLibrary library(SAMPLE_FIRST);
    void* const handle = dlopen(SAMPLE_FIRST, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(nullptr, handle);
    dlerror();
    EXPECT_EQ(nullptr, dlsym(handle, "sampleNull"));
    EXPECT_EQ(nullptr, dlerror()); // it is there
    dlclose(handle);
    EXPECT_EXCEPTION(library.locateCode("sampleNull"), OXDynamicLibrary_LocateCodeError,
                     "Can not locate code in dynamic library (sampleNull)");
    EXPECT_EXCEPTION(library.locateData("sampleNull"), OXDynamicLibrary_LocateDataError,
                     "Can not locate data in dynamic library (sampleNull)");
}

TEST_F(OCDynamicLibraryTest, WithNothingLoadedTheLoaderIsNotAsked) {
    OCDynamicLibrary library;
    // A null handle means the whole program to the loader, which has this symbol.
    ASSERT_NE(nullptr, dlsym(nullptr, "sampleEvent"));
    EXPECT_EXCEPTION(library.locateCode("sampleEvent"), OXDynamicLibrary_LocateCodeError,
                     "Can not locate code in dynamic library (sampleEvent)");
    EXPECT_EXCEPTION(library.locateData("sampleEvent"), OXDynamicLibrary_LocateDataError,
                     "Can not locate data in dynamic library (sampleEvent)");
    // It would have left an error.
    dlerror();
    EXPECT_THROW(library.locateCode("missing"), OXDynamicLibrary_LocateCodeError);
    EXPECT_THROW(library.locateData("missing"), OXDynamicLibrary_LocateDataError);
    EXPECT_EQ(nullptr, dlerror());
}

TEST_F(OCDynamicLibraryTest, TheResultOfClosingIsNotLookedAt) {
    OCDynamicLibrary library(SAMPLE_FIRST);
    {
        Replacement closing(calls::dlclose, [](void* handle) {
            calls::dlclose.original(handle);
            return -1;
        });
        library.unload();
    }
    EXPECT_FALSE(library.isLoaded());
    EXPECT_STREQ("+first -first ", sampleEvents);
}

TEST_F(OCDynamicLibraryTest, ExhaustedMemoryWhileAFailureIsReportedLeavesNothing) {
    OCDynamicLibrary library;
    Failing loading(calls::dlopen, ENOENT);
    Replacement reading(calls::dlerror, []() -> char* { return nullptr; });
    const OCFilePath path(std::string(300, 'p').c_str());
    const long before = fault::heapRecord().liveBlocks;
    const auto attempt = [&](auto operation) {
        try {
            operation();
        } catch (const OXDynamicLibrary&) {
        }
    };
    EXPECT_LT(0u, fault::failEachRequest([&] { attempt([&] { library.load(path); }); },
                                         [&] { EXPECT_FALSE(library.isLoaded()); }));
    EXPECT_LT(0u, fault::failEachRequest([&] { attempt([&] { library.locateCode(path); }); }));
    EXPECT_LT(0u, fault::failEachRequest([&] { attempt([&] { library.locateData(path); }); }));
    EXPECT_EQ(before, fault::heapRecord().liveBlocks);
}

} // namespace
