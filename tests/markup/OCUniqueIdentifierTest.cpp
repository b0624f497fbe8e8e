#include "OCUniqueIdentifier.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <random>
#include <string>
#include <type_traits>

namespace {

const char zeroText[] = "00000000-0000-0000-0000-000000000000";
const char mixedText[] = "0123ABCD-4567-89ab-CDEF-0123456789ab";
const char lowerText[] = "0123abcd-4567-89ab-cdef-0123456789ab";

std::string standard(const OCAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

OSUniqueIdentifier structureOf(const char* text) {
    OCUniqueIdentifier identifier;
    identifier.setText(text);
    return identifier.getStructure();
}

bool sameBytes(const OSUniqueIdentifier& a, const OSUniqueIdentifier& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

/// The text of a structure, by the C library.
std::string modelText(const OSUniqueIdentifier& s) {
    char text[40];
    std::snprintf(text, sizeof text, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", s.data1,
                  s.data2, s.data3, s.data4[0], s.data4[1], s.data4[2], s.data4[3], s.data4[4],
                  s.data4[5], s.data4[6], s.data4[7]);
    return text;
}

TEST(OCUniqueIdentifier, HasItsLayout) {
    EXPECT_EQ(16u, sizeof(OSUniqueIdentifier));
    EXPECT_EQ(0u, offsetof(OSUniqueIdentifier, data1));
    EXPECT_EQ(4u, offsetof(OSUniqueIdentifier, data2));
    EXPECT_EQ(6u, offsetof(OSUniqueIdentifier, data3));
    EXPECT_EQ(8u, offsetof(OSUniqueIdentifier, data4));
    EXPECT_TRUE((std::is_same_v<unsigned int, decltype(OSUniqueIdentifier::data1)>));
    EXPECT_TRUE((std::is_same_v<unsigned short, decltype(OSUniqueIdentifier::data2)>));
    EXPECT_TRUE((std::is_same_v<unsigned short, decltype(OSUniqueIdentifier::data3)>));
    EXPECT_TRUE((std::is_same_v<unsigned char[8], decltype(OSUniqueIdentifier::data4)>));
    EXPECT_TRUE(std::is_trivial_v<OSUniqueIdentifier>);
    EXPECT_EQ(24u, sizeof(OCUniqueIdentifier));
    EXPECT_EQ(2u, slots::slotCount<OCUniqueIdentifier>());
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCUniqueIdentifier>));
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCUniqueIdentifier>);
}

TEST(OCUniqueIdentifier, HoldsItsStructureBehindTheVirtualTable) {
    OCUniqueIdentifier identifier;
    EXPECT_EQ(reinterpret_cast<char*>(&identifier) + 8,
              reinterpret_cast<char*>(&identifier.getStructure()));
    const OCUniqueIdentifier& constant = identifier;
    EXPECT_EQ(&identifier.getStructure(), &constant.getStructure());
}

TEST(OCUniqueIdentifier, StartsUnassigned) {
    alignas(OCUniqueIdentifier) unsigned char place[sizeof(OCUniqueIdentifier)];
    std::memset(place, 0xEE, sizeof place);
    OCUniqueIdentifier* const identifier = new (place) OCUniqueIdentifier;
    EXPECT_FALSE(identifier->isAssigned());
    EXPECT_EQ(OCAnsiString(zeroText), identifier->getText());
    EXPECT_TRUE(sameBytes(OSUniqueIdentifier(), identifier->getStructure()));
    identifier->~OCUniqueIdentifier();
}

TEST(OCUniqueIdentifier, IsAssignedOnceAnyByteIsSet) {
    for (unsigned int byte = 0; byte < 16; ++byte) {
        OCUniqueIdentifier identifier;
        reinterpret_cast<unsigned char*>(&identifier.getStructure())[byte] = 0x80;
        EXPECT_TRUE(identifier.isAssigned()) << byte;
        EXPECT_FALSE(identifier == OCUniqueIdentifier()) << byte;
        identifier.clear();
        EXPECT_FALSE(identifier.isAssigned()) << byte;
        EXPECT_TRUE(identifier == OCUniqueIdentifier()) << byte;
    }
}

TEST(OCUniqueIdentifier, IsCopiedByValue) {
    OSUniqueIdentifier structure = structureOf(mixedText);
    const OCUniqueIdentifier fromStructure(structure);
    OCUniqueIdentifier copy(fromStructure);
    structure.data1 = 0;
    EXPECT_EQ(OCAnsiString(lowerText), fromStructure.getText());
    EXPECT_EQ(OCAnsiString(lowerText), copy.getText());

    copy.getStructure().data2 = 0x1234;
    EXPECT_EQ(OCAnsiString("0123abcd-1234-89ab-cdef-0123456789ab"), copy.getText());
    EXPECT_EQ(OCAnsiString(lowerText), fromStructure.getText());

    EXPECT_EQ(&copy, &copy.assign(fromStructure));
    EXPECT_EQ(OCAnsiString(lowerText), copy.getText());
    EXPECT_EQ(&copy, &copy.assign(structure));
    EXPECT_EQ(OCAnsiString("00000000-4567-89ab-cdef-0123456789ab"), copy.getText());
    EXPECT_EQ(&copy, &(copy = fromStructure));
    EXPECT_EQ(OCAnsiString(lowerText), copy.getText());
    EXPECT_EQ(&copy, &(copy = structure));
    EXPECT_EQ(OCAnsiString("00000000-4567-89ab-cdef-0123456789ab"), copy.getText());
    const OCUniqueIdentifier& same = copy;
    EXPECT_EQ(&copy, &(copy = same));
    EXPECT_EQ(OCAnsiString("00000000-4567-89ab-cdef-0123456789ab"), copy.getText());
}

TEST(OCUniqueIdentifier, ReadsEitherCaseAndWritesLowerCase) {
    OCUniqueIdentifier identifier;
    identifier.setText(mixedText);
    EXPECT_EQ(OCAnsiString(lowerText), identifier.getText());
    const OSUniqueIdentifier& structure = identifier.getStructure();
    EXPECT_EQ(0x0123ABCDu, structure.data1);
    EXPECT_EQ(0x4567u, structure.data2);
    EXPECT_EQ(0x89ABu, structure.data3);
    const unsigned char data4[8] = {0xCD, 0xEF, 0x01, 0x23, 0x45, 0x67, 0x89, 0xAB};
    EXPECT_EQ(0, std::memcmp(data4, structure.data4, 8));

    identifier.setText("FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF");
    EXPECT_EQ(OCAnsiString("ffffffff-ffff-ffff-ffff-ffffffffffff"), identifier.getText());
}

TEST(OCUniqueIdentifier, PadsEachGroupWithZeros) {
    const OCUniqueIdentifier identifier(
        OSUniqueIdentifier{0xA, 0xB, 0xC, {0, 1, 2, 3, 4, 5, 6, 0x7F}});
    EXPECT_EQ(OCAnsiString("0000000a-000b-000c-0001-02030405067f"), identifier.getText());
    EXPECT_EQ(OCAnsiString("0000000a"), identifier.getTextData1());
    EXPECT_EQ(OCAnsiString("000b"), identifier.getTextData2());
    EXPECT_EQ(OCAnsiString("000c"), identifier.getTextData3());
    EXPECT_EQ(OCAnsiString("0001-02030405067f"), identifier.getTextData4());
}

TEST(OCUniqueIdentifier, GivesTheGroupsOfItsText) {
    const OCUniqueIdentifier identifier(structureOf(mixedText));
    EXPECT_EQ(OCAnsiString("0123abcd"), identifier.getTextData1());
    EXPECT_EQ(OCAnsiString("4567"), identifier.getTextData2());
    EXPECT_EQ(OCAnsiString("89ab"), identifier.getTextData3());
    EXPECT_EQ(OCAnsiString("cdef-0123456789ab"), identifier.getTextData4());
}

TEST(OCUniqueIdentifier, SetsTheGroupsOfAStructureOneByOne) {
    const OSUniqueIdentifier ones = structureOf("11111111-1111-1111-1111-111111111111");
    OSUniqueIdentifier structure = ones;
    OCUniqueIdentifier::setTextData1(structure, mixedText);
    EXPECT_EQ("0123abcd-1111-1111-1111-111111111111", modelText(structure));
    structure = ones;
    OCUniqueIdentifier::setTextData2(structure, mixedText);
    EXPECT_EQ("11111111-4567-1111-1111-111111111111", modelText(structure));
    structure = ones;
    OCUniqueIdentifier::setTextData3(structure, mixedText);
    EXPECT_EQ("11111111-1111-89ab-1111-111111111111", modelText(structure));
    structure = ones;
    OCUniqueIdentifier::setTextData4(structure, mixedText);
    EXPECT_EQ("11111111-1111-1111-cdef-0123456789ab", modelText(structure));

    OCUniqueIdentifier object; // an object will do, too
    // NOLINTNEXTLINE(readability-static-accessed-through-instance): what is tested
    object.setTextData1(object.getStructure(), mixedText);
    EXPECT_EQ(OCAnsiString("0123abcd-0000-0000-0000-000000000000"), object.getText());
    // NOLINTNEXTLINE(readability-static-accessed-through-instance): what is tested
    EXPECT_TRUE(object.validateText(mixedText));
}

TEST(OCUniqueIdentifier, RefusesMalformedTextsAndKeepsItsValue) {
    const std::string good = lowerText;
    const std::string malformed[] = {
        "",
        good.substr(1),
        good + "0",
        " " + good,
        good + " ",
        " " + good.substr(1),
        "{" + good + "}",
        "{" + good.substr(1, 34) + "}",
        "0123abcd4-567-89ab-cdef-0123456789ab", // "-" at 9 instead of 8
        "0123abc-d4567-89ab-cdef-0123456789ab",
        "0123abcd-4567-89ab-cdef0-123456789ab",
        "0123abcd4567089ab0cdef00123456789ab0",
        "0123abcd--567-89ab-cdef-0123456789ab",
        "+123abcd-4567-89ab-cdef-0123456789ab",
        "0x23abcd-4567-89ab-cdef-0123456789ab",
        std::string(36, '-'),
        std::string(36, '0'),
        good + std::string(1, '\0'),
    };
    OCUniqueIdentifier identifier(structureOf("11111111-1111-1111-1111-111111111111"));
    for (const std::string& text : malformed) {
        SCOPED_TRACE(text);
        const OCAnsiString string(text.data(), text.size());
        EXPECT_FALSE(OCUniqueIdentifier::validateText(string));
        EXPECT_EXCEPTION(identifier.setText(string), OXUniqueIdentifier_MalformedString,
                         "The unique identifier is malformed");
        EXPECT_EXCEPTION(OCUniqueIdentifier::setTextData1(identifier.getStructure(), string),
                         OXUniqueIdentifier_MalformedString, "The unique identifier is malformed");
        EXPECT_EXCEPTION(OCUniqueIdentifier::setTextData2(identifier.getStructure(), string),
                         OXUniqueIdentifier_MalformedString, "The unique identifier is malformed");
        EXPECT_EXCEPTION(OCUniqueIdentifier::setTextData3(identifier.getStructure(), string),
                         OXUniqueIdentifier_MalformedString, "The unique identifier is malformed");
        EXPECT_EXCEPTION(OCUniqueIdentifier::setTextData4(identifier.getStructure(), string),
                         OXUniqueIdentifier_MalformedString, "The unique identifier is malformed");
        EXPECT_EQ(OCAnsiString("11111111-1111-1111-1111-111111111111"), identifier.getText());
    }
}

TEST(OCUniqueIdentifier, TheRefusalCarriesNoDetails) {
    const OXUniqueIdentifier_MalformedString failure;
    EXPECT_EQ(0u, failure.getDetails().getCount());
    EXPECT_EQ(OCAnsiString("OXUniqueIdentifier_MalformedString"), failure.getClass());
    EXPECT_EQ(OCAnsiString("The unique identifier is malformed"), failure.getMessage());
}

TEST(OCUniqueIdentifier, TestsEveryCharacterAtEveryPlace) {
    for (unsigned long place = 0; place < 36; ++place)
        for (int c = 0; c < 256; ++c) {
            OCAnsiString text(lowerText);
            text[place] = static_cast<char>(c);
            const bool dash = place == 8 || place == 13 || place == 18 || place == 23;
            const bool digit =
                (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
            const bool valid = dash ? c == '-' : digit;
            ASSERT_EQ(valid, OCUniqueIdentifier::validateText(text)) << place << ' ' << c;
            if (valid) {
                OCUniqueIdentifier identifier;
                identifier.setText(text);
                ASSERT_EQ(OCAnsiString(text).lowerCase(), identifier.getText());
            }
        }
}

TEST(OCUniqueIdentifier, OrdersByTheBytesInMemory) {
    OCUniqueIdentifier a;
    OCUniqueIdentifier b;
    EXPECT_EQ(CompareResultEqual, a.compare(b));
    EXPECT_TRUE(a == b);

    // The low byte of the first number comes first.
    a.setText("00000102-0000-0000-0000-000000000000");
    b.setText("00000201-0000-0000-0000-000000000000");
    EXPECT_EQ(CompareResultGreater, a.compare(b));
    EXPECT_EQ(CompareResultLess, b.compare(a));
    EXPECT_FALSE(a == b);
    a.setText("00000000-0102-0000-0000-000000000000");
    b.setText("00000000-0201-0000-0000-000000000000");
    EXPECT_EQ(CompareResultGreater, a.compare(b));
    // The bytes of the last groups lie in the order of the text, and count as unsigned.
    a.setText("00000000-0000-0000-0102-000000000000");
    b.setText("00000000-0000-0000-0201-000000000000");
    EXPECT_EQ(CompareResultLess, a.compare(b));
    a.setText("00000000-0000-0000-0000-000000000080");
    b.setText("00000000-0000-0000-0000-00000000007f");
    EXPECT_EQ(CompareResultGreater, a.compare(b));
    // Earlier bytes count before later ones.
    a.setText("00000001-0000-0000-0000-000000000000");
    b.setText("00000000-ffff-ffff-ffff-ffffffffffff");
    EXPECT_EQ(CompareResultGreater, a.compare(b));
}

TEST(OCUniqueIdentifier, AgreesWithTheModelOnRandomValues) {
    const unsigned int seed = 20261121;
    std::mt19937 random(seed);
    for (int run = 0; run < 20000; ++run) {
        SCOPED_TRACE(testing::Message() << "seed " << seed << ", run " << run);
        OSUniqueIdentifier structure;
        for (unsigned long i = 0; i < sizeof structure; ++i)
            reinterpret_cast<unsigned char*>(&structure)[i] =
                static_cast<unsigned char>(random() % 4 == 0 ? 0 : random());
        const OCUniqueIdentifier identifier(structure);
        const std::string expected = modelText(structure);
        ASSERT_EQ(expected, standard(identifier.getText()));
        ASSERT_EQ(expected, standard(identifier.getTextData1()) + "-" +
                                standard(identifier.getTextData2()) + "-" +
                                standard(identifier.getTextData3()) + "-" +
                                standard(identifier.getTextData4()));
        std::string mixed = expected;
        for (char& c : mixed)
            if (random() % 2 == 0)
                c = static_cast<char>(std::toupper(c));
        OCUniqueIdentifier back;
        back.setText(OCAnsiString(mixed.data(), mixed.size()));
        ASSERT_TRUE(sameBytes(structure, back.getStructure()));
        ASSERT_TRUE(identifier == back);

        OSUniqueIdentifier other = structure;
        reinterpret_cast<unsigned char*>(&other)[random() % 16] =
            static_cast<unsigned char>(random());
        const int order = std::memcmp(&structure, &other, sizeof other);
        ASSERT_EQ(order < 0 ? -1 : order > 0, identifier.compare(OCUniqueIdentifier(other)));
    }
}

TEST(OCUniqueIdentifier, AllocatesNothing) {
    OCUniqueIdentifier identifier;
    const OCAnsiString text(mixedText);
    const fault::HeapFault fault(1, fault::HeapFault::Following);
    identifier.setText(text);
    const OCUniqueIdentifier copy(identifier);
    const bool right = copy.getText() == lowerText && copy.getTextData1() == "0123abcd" &&
                       copy.getTextData4() == "cdef-0123456789ab" &&
                       OCUniqueIdentifier::validateText(text);
    EXPECT_TRUE(right);
    EXPECT_FALSE(fault.triggered());
}

TEST(OCUniqueIdentifier, RefusalsLeakNothingWhenMemoryIsExhausted) {
    const OCAnsiString text("nothing");
    OCUniqueIdentifier identifier(structureOf(mixedText));
    const auto refuse = [&] {
        try {
            identifier.setText(text);
            ADD_FAILURE() << "accepted";
        } catch (const OXUniqueIdentifier_MalformedString&) {
        }
    };
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  fault::failEachRequest(
                      refuse, [&] { EXPECT_EQ(OCAnsiString(lowerText), identifier.getText()); });
              }));
}

TEST(OCUniqueIdentifier, RefusesHugeTextsWithoutLookingAtThem) {
    OCAnsiString text;
    text.setLength((fault::sanitized ? 4UL : 64UL) * 1024 * 1024);
    text.fill('0');
    OCUniqueIdentifier identifier(structureOf(mixedText));
    const std::clock_t start = std::clock();
    unsigned int refusals = 0;
    for (int i = 0; i < 1000; ++i)
        try {
            identifier.setText(text);
        } catch (const OXUniqueIdentifier_MalformedString&) {
            ++refusals;
        }
    EXPECT_EQ(1000u, refusals);
    EXPECT_EQ(OCAnsiString(lowerText), identifier.getText());
    // Reading so many texts of this size would take many times as long.
    EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 1.0);
}

} // namespace
