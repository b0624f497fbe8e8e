#include "OCSystemProperties.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/SystemProcessCalls.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>

namespace {

TEST(OCSystemProperties, CannotBeInstantiated) {
    EXPECT_FALSE(std::is_default_constructible_v<OCSystemProperties>);
    EXPECT_FALSE(std::is_polymorphic_v<OCSystemProperties>);
}

TEST(OCSystemProperties, TellsTheNodeName) {
    char expected[1024] = {};
    ASSERT_EQ(0, gethostname(expected, sizeof expected - 1));
    EXPECT_EQ(OCAnsiString(expected), OCSystemProperties::getNodeName());
}

TEST(OCSystemProperties, ANodeNameAlwaysEnds) {
    Replacement telling(calls::gethostname, [](char* buffer, size_t size) {
        EXPECT_EQ(255u, size);
        // The buffer is all zeros before.
        for (size_t i = 0; i <= size; ++i)
            EXPECT_EQ(0, buffer[i]) << i;
        std::memset(buffer, 'n', size);
        return 0;
    });
    EXPECT_EQ(OCAnsiString(std::string(255, 'n').c_str()), OCSystemProperties::getNodeName());
    EXPECT_EQ(1u, fault::failEachRequest([] { OCSystemProperties::getNodeName(); }));
}

TEST(OCSystemProperties, AMachineWithoutANameHasAnEmptyOne) {
    Replacement telling(calls::gethostname, [](char*, size_t) { return 0; });
    EXPECT_EQ(OCAnsiString(), OCSystemProperties::getNodeName());
}

TEST(OCSystemProperties, ANodeNameThatTheSystemDoesNotTellIsReported) {
    Failing refusing(calls::gethostname, ENAMETOOLONG);
    EXPECT_EXCEPTION(OCSystemProperties::getNodeName(), OXSystemProperties_GetNodeNameError,
                     "Error getting the node name of the system");
    EXPECT_EQ(1u, refusing.calls());
}

TEST(OCSystemProperties, IdentifiesTheSystem) {
    EXPECT_EQ(2, OCSystemProperties::identifyArchitecture());
    EXPECT_EQ(1, OCSystemProperties::identifyPlatform());
    EXPECT_EQ(0, OCSystemProperties::identifyMode());
    EXPECT_EQ(SystemArchitectureX86_64, OCSystemProperties::identifyArchitecture());
    EXPECT_EQ(SystemPlatformLinux, OCSystemProperties::identifyPlatform());
    EXPECT_EQ(SystemModeNormal, OCSystemProperties::identifyMode());
    EXPECT_EQ(4u, sizeof(OESystemArchitecture));
    EXPECT_EQ(4u, sizeof(OESystemPlatform));
    EXPECT_EQ(4u, sizeof(OESystemMode));
}

TEST(OCSystemProperties, NeverSwitchesTheMode) {
    for (const int mode : {0, 1, 2, -1, 2147483647}) {
        EXPECT_EXCEPTION(OCSystemProperties::switchMode(static_cast<OESystemMode>(mode)),
                         OXSystemProperties_SwitchModeError, "Error switching the system mode");
    }
    EXPECT_EQ(SystemModeNormal, OCSystemProperties::identifyMode());
}

} // namespace
