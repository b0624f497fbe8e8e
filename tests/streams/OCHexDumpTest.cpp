#include "OCHexDump.h"

#include "OCMemory.h"
#include "support/FaultInjection.h"
#include "support/Growth.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <type_traits>

namespace {

std::string standard(const OCAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

std::string single(const OCHexDump& dump, const std::string& bytes) {
    return standard(dump.dumpSingleLine(bytes.data(), bytes.size()));
}

std::string multiple(const OCHexDump& dump, const std::string& bytes) {
    return standard(dump.dumpMultipleLines(bytes.data(), bytes.size()));
}

std::string digitsOf(char c) {
    const unsigned int value = static_cast<unsigned char>(c);
    return {"0123456789abcdef"[value / 16], "0123456789abcdef"[value % 16]};
}

/// Piece by piece.
std::string modelLines(const std::string& bytes, const std::string& byteSeparator,
                       const std::string& lineSeparator, unsigned long lineLength) {
    std::string text;
    unsigned long current = 0;
    for (unsigned long i = 0; i < bytes.size(); ++i) {
        std::string piece = digitsOf(bytes[i]);
        if (i + 1 < bytes.size())
            piece += byteSeparator;
        if (current + piece.size() > lineLength) {
            text += lineSeparator + piece;
            current = piece.size();
        } else {
            text += piece;
            current += piece.size();
        }
    }
    return text;
}

std::string modelLine(const std::string& bytes, const std::string& byteSeparator) {
    return modelLines(bytes, byteSeparator, "", ~0UL);
}

std::string pattern(unsigned long size) {
    std::string text(size, '\0');
    for (unsigned long i = 0; i < size; ++i)
        text[i] = static_cast<char>(i * 31 + i / 251);
    return text;
}

OCAnsiString text(const std::string& from) {
    return OCAnsiString(from.data(), from.size());
}

} // namespace

TEST(OCHexDump, HoldsTwoStringsAndANumber) {
    EXPECT_EQ(sizeof(OCHexDump), 8 + 2 * sizeof(OCAnsiString) + 8);
    EXPECT_EQ(sizeof(OCHexDump), 352U);
    EXPECT_EQ(slots::slotCount<OCHexDump>(), 2U);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCHexDump>);
}

TEST(OCHexDump, WritesBytesOnOneLine) {
    const OCHexDump dump;
    EXPECT_EQ(single(dump, std::string("\x00\xab\xff", 3)), "00:ab:ff");
    EXPECT_EQ(single(dump, "z"), "7a");
}

TEST(OCHexDump, WritesEveryByteAsTwoLowerCaseDigits) {
    OCHexDump dump;
    dump.setByteSeparator("");
    for (int i = 0; i < 256; ++i) {
        const char c = static_cast<char>(i);
        EXPECT_EQ(single(dump, std::string(1, c)), digitsOf(c));
        EXPECT_EQ(multiple(dump, std::string(1, c)), digitsOf(c));
    }
}

TEST(OCHexDump, NothingGivesAnEmptyText) {
    OCHexDump dump;
    dump.setLineLength(0);
    EXPECT_EQ(dump.dumpSingleLine(nullptr, 10), "");
    EXPECT_EQ(dump.dumpMultipleLines(nullptr, 10), "");
    EXPECT_EQ(dump.dumpSingleLine("abc", 0), "");
    EXPECT_EQ(dump.dumpMultipleLines("abc", 0), "");
    EXPECT_EQ(dump.dumpSingleLine(nullptr, 0), "");
    EXPECT_EQ(dump.dumpMultipleLines(nullptr, 0), "");
}

TEST(OCHexDump, TwentyFourBytesMakeALine) {
    const OCHexDump dump;
    const std::string line =
        "41:41:41:41:41:41:41:41:41:41:41:41:41:41:41:41:41:41:41:41:41:41:41:41";
    ASSERT_EQ(line.size(), 71U);
    EXPECT_EQ(multiple(dump, std::string(24, 'A')), line);
    EXPECT_EQ(multiple(dump, std::string(24, 'A') + "B"), line + ":\r\n42");
    EXPECT_EQ(multiple(dump, std::string(48, 'A') + "B"), line + ":\r\n" + line + ":\r\n42");
    EXPECT_EQ(multiple(dump, std::string(48, 'A')), line + ":\r\n" + line);
}

TEST(OCHexDump, WithoutByteSeparatorsLinesAreFull) {
    OCHexDump dump;
    dump.setByteSeparator("");
    dump.setLineLength(8);
    EXPECT_EQ(multiple(dump, "0123456789"), "30313233\r\n34353637\r\n3839");
    EXPECT_EQ(single(dump, "0123456789"), "30313233343536373839");
}

TEST(OCHexDump, TheLastByteNeedsNoRoomForASeparator) {
    OCHexDump dump;
    dump.setLineLength(8);
    EXPECT_EQ(multiple(dump, "012"), "30:31:32");
    EXPECT_EQ(multiple(dump, "0123"), "30:31:\r\n32:33");
    dump.setLineLength(7);
    EXPECT_EQ(multiple(dump, "012"), "30:31:\r\n32");
}

TEST(OCHexDump, ABytePieceThatIsTooLongStandsAlone) {
    OCHexDump dump;
    dump.setLineLength(0);
    EXPECT_EQ(multiple(dump, "012"), "\r\n30:\r\n31:\r\n32");
    EXPECT_EQ(multiple(dump, "0"), "\r\n30");
    dump.setLineLength(1);
    EXPECT_EQ(multiple(dump, "0"), "\r\n30");
    dump.setLineLength(2);
    EXPECT_EQ(multiple(dump, "0"), "30");
    EXPECT_EQ(multiple(dump, "012"), "\r\n30:\r\n31:\r\n32");
    dump.setLineLength(3);
    EXPECT_EQ(multiple(dump, "012"), "30:\r\n31:\r\n32");
}

TEST(OCHexDump, SeparatorsMayBeAnyText) {
    OCHexDump dump;
    dump.setByteSeparator(", 0x");
    dump.setLineSeparator("\n  ");
    dump.setLineLength(14);
    EXPECT_EQ(single(dump, "abc"), "61, 0x62, 0x63");
    EXPECT_EQ(multiple(dump, "abcd"), "61, 0x62, 0x\n  63, 0x64");
    dump.setByteSeparator(OCAnsiString("\0", 1));
    EXPECT_EQ(single(dump, "ab"), std::string("61\00062", 5));
    dump.setLineSeparator("");
    EXPECT_EQ(multiple(dump, "abcdefgh").size(), 8U * 2 + 7);
    // Long ones.
    const std::string rule = "\n" + std::string(150, '=') + "\n";
    dump.setLineSeparator(text(rule));
    for (const std::string byteSeparator : {"", ":", ", "}) {
        dump.setByteSeparator(text(byteSeparator));
        for (const unsigned long lineLength : {0UL, 6UL, 30UL, 72UL}) {
            dump.setLineLength(lineLength);
            EXPECT_EQ(multiple(dump, pattern(100)),
                      modelLines(pattern(100), byteSeparator, rule, lineLength));
        }
    }
}

TEST(OCHexDump, TheLongestLineIsOneLine) {
    OCHexDump dump;
    dump.setLineLength(~0UL);
    const std::string bytes = pattern(1000);
    EXPECT_EQ(multiple(dump, bytes), single(dump, bytes));
}

TEST(OCHexDump, AgreesWithPieceByPiece) {
    OCHexDump dump;
    for (const std::string byteSeparator : {"", ":", ", ", " | "}) {
        for (const std::string lineSeparator : {"", "\n", "\r\n"}) {
            dump.setByteSeparator(text(byteSeparator));
            dump.setLineSeparator(text(lineSeparator));
            for (unsigned long size = 1; size < 40; ++size) {
                const std::string bytes = pattern(size);
                ASSERT_EQ(single(dump, bytes), modelLine(bytes, byteSeparator));
                for (unsigned long lineLength = 0; lineLength < 90; ++lineLength) {
                    dump.setLineLength(lineLength);
                    ASSERT_EQ(multiple(dump, bytes),
                              modelLines(bytes, byteSeparator, lineSeparator, lineLength))
                        << size << " bytes in lines of " << lineLength;
                }
            }
        }
    }
}

TEST(OCHexDump, AgreesWithPieceByPieceOnLargeData) {
    const unsigned int seed = 20265;
    std::mt19937 random(seed);
    SCOPED_TRACE(seed);
    for (int round = 0; round < 40; ++round) {
        const std::string byteSeparator(random() % 4, '-');
        const std::string lineSeparator(random() % 4, '/');
        const unsigned long lineLength = random() % 300;
        OCHexDump dump;
        dump.setByteSeparator(text(byteSeparator));
        dump.setLineSeparator(text(lineSeparator));
        dump.setLineLength(lineLength);
        const std::string bytes = pattern(random() % 20000 + 1);
        ASSERT_EQ(multiple(dump, bytes),
                  modelLines(bytes, byteSeparator, lineSeparator, lineLength));
        ASSERT_EQ(single(dump, bytes), modelLine(bytes, byteSeparator));
    }
}

TEST(OCHexDump, TakesOneAllocationOrFails) {
    const OCHexDump dump;
    const std::string bytes = pattern(5000);
    EXPECT_EQ(fault::blocksLeftBy([&] {
                  const unsigned long before = fault::heapRecord().requests;
                  { const OCAnsiString line = dump.dumpSingleLine(bytes.data(), bytes.size()); }
                  EXPECT_EQ(fault::heapRecord().requests - before, 1U);
                  { const OCAnsiString lines = dump.dumpMultipleLines(bytes.data(), bytes.size()); }
                  EXPECT_EQ(fault::heapRecord().requests - before, 2U);
                  EXPECT_EQ(fault::failEachRequest(
                                [&] { dump.dumpSingleLine(bytes.data(), bytes.size()); }),
                            1U);
                  EXPECT_EQ(fault::failEachRequest(
                                [&] { dump.dumpMultipleLines(bytes.data(), bytes.size()); }),
                            1U);
              }),
              0);
}

TEST(OCHexDump, ASizeThatWrapsIsAnAllocationFailure) {
    OCHexDump dump;
    const char* const failure = "OXMemory_AllocationError: Memory allocation failure";
    // The bytes are never looked at.
    for (const unsigned long size : {~0UL, ~0UL / 2 + 1, ~0UL / 3 + 2, ~0UL / 3}) {
        EXPECT_EQ(thrown<OXMemory_AllocationError>([&] { dump.dumpSingleLine("a", size); }),
                  failure);
        EXPECT_EQ(thrown<OXMemory_AllocationError>([&] { dump.dumpMultipleLines("a", size); }),
                  failure);
    }
    dump.setLineLength(0);
    dump.setByteSeparator("");
    EXPECT_EQ(thrown<OXMemory_AllocationError>([&] { dump.dumpMultipleLines("a", ~0UL / 4 + 1); }),
              failure);
    // Twice this size is 0 again, to which nothing is added here.
    dump.setLineSeparator("");
    const unsigned long half = ~0UL / 2 + 1;
    EXPECT_EQ(thrown<OXMemory_AllocationError>([&] { dump.dumpSingleLine("a", half); }), failure);
    EXPECT_EQ(thrown<OXMemory_AllocationError>([&] { dump.dumpMultipleLines("a", half); }),
              failure);
}

TEST(OCHexDump, ASeparatorThatCannotBeKeptChangesNothing) {
    OCHexDump dump;
    const OCAnsiString large = OCAnsiString("-").padRight('-', 500);
    {
        fault::HeapFault failing(1, fault::HeapFault::Following);
        EXPECT_THROW(dump.setByteSeparator(large), OXMemory_AllocationError);
        EXPECT_THROW(dump.setLineSeparator(large), OXMemory_AllocationError);
    }
    dump.setLineLength(5);
    EXPECT_EQ(multiple(dump, "abc"), "61:\r\n62:63");
    dump.setByteSeparator(large);
    EXPECT_EQ(single(dump, "ab"), "61" + std::string(500, '-') + "62");
}

TEST(OCHexDump, TakesLinearTime) {
    // Megabytes where the time is measured, less under the sanitizers.
    const unsigned long size = fault::sanitized ? 20000 : 200000;
    const std::string bytes = pattern(8 * size);
    for (const unsigned long lineLength : {0UL, 72UL, ~0UL}) {
        for (const char* separator : {"", ":", ", "}) {
            OCHexDump dump;
            dump.setLineLength(lineLength);
            dump.setByteSeparator(separator);
            const auto lines = [&](unsigned long n) { dump.dumpMultipleLines(bytes.data(), n); };
            EXPECT_LT(growth::ofEightTimes(lines, size), 30) << lineLength << separator;
        }
    }
}

TEST(OCHexDump, Dumps64MiB) {
    const unsigned long size = fault::sanitized ? 1UL << 20 : 64UL << 20;
    const std::string bytes(size, '\xa5');
    OCHexDump dump;
    const OCAnsiString line = dump.dumpSingleLine(bytes.data(), size);
    ASSERT_EQ(line.getLength(), 3 * size - 1);
    EXPECT_EQ(standard(line).substr(3 * size - 9), "a5:a5:a5");
    dump.setLineLength(0);
    dump.setLineSeparator("\n");
    dump.setByteSeparator("");
    const OCAnsiString lines = dump.dumpMultipleLines(bytes.data(), size);
    ASSERT_EQ(lines.getLength(), 3 * size);
    EXPECT_EQ(standard(lines).substr(3 * size - 9), "\na5\na5\na5");
}
