#include "OXException.h"
#include "OCMemory.h"
#include "OCVector.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

namespace {

/// What an application's own exception looks like.
class OXProbe_Failure : public OXAutoException {
public:
    OXProbe_Failure() {
        setClass("OXProbe_Failure");
        setMessage("The probe failed");
    }
    ~OXProbe_Failure() noexcept override = default;
};

TEST(OXException, HasItsOperationsInTheirSlots) {
    EXPECT_EQ(8u, sizeof(OXException));
    EXPECT_EQ(2u, slots::slotOf(&OXException::getClass));
    EXPECT_EQ(3u, slots::slotOf(&OXException::getMessage));
    EXPECT_EQ(4u, slots::slotCount<OXException>());
    EXPECT_EQ(4u, slots::slotCount<OXAutoException>());
    EXPECT_TRUE(std::is_abstract_v<OXException>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, OXException>));
    EXPECT_TRUE((std::is_base_of_v<OXException, OXAutoException>));
}

TEST(OXAutoException, HoldsItsThreeTexts) {
    EXPECT_EQ(8 + sizeof(OCAnsiString) * 2 + sizeof(OCStringList), sizeof(OXAutoException));
    EXPECT_EQ(400u, sizeof(OXAutoException));
    EXPECT_EQ(400u, sizeof(OXProbe_Failure));
}

TEST(OXAutoException, KeepsTheOrderOfItsFields) {
    const OXProbe_Failure failure;
    const char* const object = reinterpret_cast<const char*>(&failure);
    unsigned long lengths[2];
    std::memcpy(&lengths[0], object + 8 + 160, sizeof lengths[0]);
    std::memcpy(&lengths[1], object + 8 + sizeof(OCAnsiString) + 160, sizeof lengths[1]);
    EXPECT_EQ(failure.getClass().getLength(), lengths[0]);
    EXPECT_EQ(failure.getMessage().getLength(), lengths[1]);
    EXPECT_EQ(object + 8 + 2 * sizeof(OCAnsiString),
              reinterpret_cast<const char*>(&failure.getDetails()));
}

TEST(OXAutoException, CanBeMadeAloneAndItsFamiliesCannot) {
    EXPECT_TRUE(std::is_default_constructible_v<OXAutoException>);
    EXPECT_FALSE(std::is_default_constructible_v<OXVector>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OXAutoException>);
}

TEST(OXAutoException, StartsWithoutTexts) {
    const OXAutoException bare;
    EXPECT_EQ(OCAnsiString(""), bare.getClass());
    EXPECT_EQ(OCAnsiString(""), bare.getMessage());
    EXPECT_EQ(0u, bare.getDetails().getCount());
    EXPECT_EQ(StringListCaseInsensitive, bare.getDetails().getCase());
    EXPECT_EQ(StringListModeUnsorted, bare.getDetails().getMode());
}

TEST(OXAutoException, WithoutDetailsTheMessageStandsAlone) {
    EXPECT_EQ(OCAnsiString("The probe failed"), OXProbe_Failure().getMessage());
    EXPECT_EQ(OCAnsiString("OXProbe_Failure"), OXProbe_Failure().getClass());
}

TEST(OXAutoException, DetailsFollowInParentheses) {
    OXProbe_Failure failure;
    failure.getDetails().addString("a.so");
    EXPECT_EQ(OCAnsiString("The probe failed (a.so)"), failure.getMessage());
    failure.getDetails().addString("not found");
    EXPECT_EQ(OCAnsiString("The probe failed (a.so, not found)"), failure.getMessage());
    failure.getDetails().addString("3");
    EXPECT_EQ(OCAnsiString("The probe failed (a.so, not found, 3)"), failure.getMessage());
    EXPECT_EQ(OCAnsiString("OXProbe_Failure"), failure.getClass());
}

TEST(OXAutoException, DetailsKeepTheOrderInWhichTheyWereAdded) {
    OXProbe_Failure failure;
    failure.getDetails().addString("b");
    failure.getDetails().addString("A");
    failure.getDetails().addString("b");
    EXPECT_EQ(OCAnsiString("The probe failed (b, A, b)"), failure.getMessage());
}

TEST(OXAutoException, AnEmptyDetailCounts) {
    OXProbe_Failure failure;
    failure.getDetails().addString("");
    EXPECT_EQ(OCAnsiString("The probe failed ()"), failure.getMessage());
    failure.getDetails().addString("");
    EXPECT_EQ(OCAnsiString("The probe failed (, )"), failure.getMessage());
}

TEST(OXAutoException, AnEmptyMessageStillGetsItsDetails) {
    OXProbe_Failure failure;
    failure.setMessage("");
    failure.getDetails().addString("x");
    EXPECT_EQ(OCAnsiString(" (x)"), failure.getMessage());
}

TEST(OXAutoException, DetailsMayHoldZeroBytes) {
    OXProbe_Failure failure;
    failure.getDetails().addString(OCAnsiString("a\0b", 3));
    EXPECT_EQ(OCAnsiString("The probe failed (a\0b)", 22), failure.getMessage());
}

TEST(OXAutoException, TextsCanBeReplaced) {
    OXProbe_Failure failure;
    failure.setClass("OXOther");
    EXPECT_EQ(OCAnsiString("The probe failed"), failure.getMessage());
    failure.setMessage("Something else");
    failure.getDetails().clear();
    EXPECT_EQ(OCAnsiString("OXOther"), failure.getClass());
    EXPECT_EQ(OCAnsiString("Something else"), failure.getMessage());
}

TEST(OXAutoException, ANullDetailLeavesTheMessageAlone) {
    OXProbe_Failure failure;
    failure.getDetails().addString("x");
    failure.getDetails().setCount(2);
    EXPECT_EQ(OCAnsiString("The probe failed"), failure.getMessage());
    failure.getDetails().setCount(1);
    EXPECT_EQ(OCAnsiString("The probe failed (x)"), failure.getMessage());
}

TEST(OXAutoException, WithoutMemoryForTheDetailsTheMessageStandsAlone) {
    OXProbe_Failure failure;
    failure.getDetails().addString(std::string(200, 'x').c_str());
    OCAnsiString message;
    {
        fault::HeapFault fault(1, fault::HeapFault::Following);
        message = failure.getMessage();
        EXPECT_TRUE(fault.triggered());
    }
    EXPECT_EQ(OCAnsiString("The probe failed"), message);
    EXPECT_EQ(219u, failure.getMessage().getLength());
}

TEST(OXAutoException, ComposingLeavesNothingBehind) {
    OXProbe_Failure failure;
    failure.getDetails().addString(std::string(200, 'x').c_str());
    EXPECT_EQ(0, fault::blocksLeftBy([&] { EXPECT_EQ(219u, failure.getMessage().getLength()); }));
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  fault::HeapFault fault(1);
                  (void)failure.getMessage();
              }));
}

TEST(OXAutoException, ACopyIsIndependent) {
    OXProbe_Failure failure;
    failure.getDetails().addString("x");
    OXProbe_Failure copy(failure);
    copy.setMessage("Copied");
    copy.getDetails().addString("y");
    EXPECT_EQ(OCAnsiString("The probe failed (x)"), failure.getMessage());
    EXPECT_EQ(OCAnsiString("Copied (x, y)"), copy.getMessage());
    failure = copy;
    copy.setClass("OXOther");
    EXPECT_EQ(OCAnsiString("Copied (x, y)"), failure.getMessage());
    EXPECT_EQ(OCAnsiString("OXProbe_Failure"), failure.getClass());
}

TEST(OXAutoException, IsCaughtAsEveryBase) {
    EXPECT_THROW(throw OXProbe_Failure(), OXProbe_Failure);
    EXPECT_THROW(throw OXProbe_Failure(), OXAutoException);
    EXPECT_THROW(throw OXProbe_Failure(), OXException);
    EXPECT_THROW(throw OXProbe_Failure(), OCObject);
}

TEST(OXAutoException, AHandlerMayAddContextAndRethrow) {
    try {
        try {
            throw OXVector_NoSuchIndex(7);
        } catch (OXAutoException& failure) {
            failure.getDetails().addString("while sorting");
            throw;
        }
    } catch (const OXException& failure) {
        EXPECT_EQ(OCAnsiString("Vector index out of bounds (7, while sorting)"),
                  failure.getMessage());
    }
}

TEST(OXAutoException, CanBeMadeWithNew) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  const std::unique_ptr<OXException> failure(new OXVector_NoSuchIndex(7));
                  EXPECT_EQ(OCAnsiString("Vector index out of bounds (7)"), failure->getMessage());
              }));
}

TEST(OXAutoException, AThrowLeavesNothingBehind) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  try {
                      throw OXVector_NoSuchIndex(7);
                  } catch (const OXException&) {
                  }
              }));
}

TEST(OXAutoException, WithoutMemoryForADetailTheAllocationFails) {
    const OCVector vector;
    {
        fault::HeapFault fault(1, fault::HeapFault::Following);
        EXPECT_EXCEPTION(vector.getElement(7), OXMemory_AllocationError,
                         "Memory allocation failure");
    }
    EXPECT_EXCEPTION(vector.getElement(7), OXVector_NoSuchIndex, "Vector index out of bounds (7)");
}

} // namespace
