#include "OCSystemDirectories.h"
#include "support/EnvironmentCalls.h"
#include "support/FaultInjection.h"
#include "support/Forked.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

std::string standard(const OCAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

TEST(OCSystemDirectories, CannotBeInstantiated) {
    EXPECT_FALSE(std::is_default_constructible_v<OCSystemDirectories>);
    EXPECT_FALSE(std::is_polymorphic_v<OCSystemDirectories>);
}

TEST(OCSystemDirectories, HomeIsWhatTheEnvironmentSays) {
    for (const char* home : {"/root/", "/home/ann", "relative", " ", "C:\\Users"}) {
        EXPECT_EQ(home, inChild([&] {
                      ::setenv("HOME", home, 1);
                      return standard(OCSystemDirectories::locateHome());
                  }));
    }
}

TEST(OCSystemDirectories, WithoutAHomeInTheEnvironmentThereIsNone) {
    const std::string expected =
        "OXSystemDirectories_LocateHomeError: Error locating home directory";
    EXPECT_EQ(expected, inChild([] {
                  ::unsetenv("HOME");
                  return thrown<OXSystemDirectories_LocateHomeError>(
                      [] { OCSystemDirectories::locateHome(); });
              }));
    EXPECT_EQ(expected, inChild([] {
                  ::setenv("HOME", "", 1);
                  return thrown<OXSystemDirectories_LocateHomeError>(
                      [] { OCSystemDirectories::locateHome(); });
              }));
}

TEST(OCSystemDirectories, TheEnvironmentIsAskedOnceForTheHome) {
    std::string asked;
    Replacement answering(calls::getenv, [&](const char* name) -> char* {
        asked += std::string(name) + ";";
        return nullptr;
    });
    EXPECT_THROW(OCSystemDirectories::locateHome(), OXSystemDirectories_LocateHomeError);
    EXPECT_EQ("HOME;", asked);
}

TEST(OCSystemDirectories, TemporaryIsAlwaysTheSame) {
    EXPECT_EQ("/tmp", standard(OCSystemDirectories::locateTemporary()));
    EXPECT_EQ("/tmp", inChild([] {
                  for (const char* name : {"TMPDIR", "TMP", "TEMP"})
                      ::setenv(name, "/var/tmp", 1);
                  return standard(OCSystemDirectories::locateTemporary());
              }));
}

TEST(OCSystemDirectories, ExhaustedMemoryIsReported) {
    EXPECT_EQ("1", inChild([] {
                  ::setenv("HOME", std::string(300, 'h').c_str(), 1);
                  return std::to_string(
                      fault::failEachRequest([] { OCSystemDirectories::locateHome(); }));
              }));
}

} // namespace
