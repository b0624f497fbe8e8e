#include "OCSystemMemory.h"
#include "OCFileStream.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/FileCalls.h"
#include "support/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

typedef std::vector<std::pair<std::string, std::string>> Entries;

std::string standard(const OCAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

Entries entriesOf(const OCNamedList& list) {
    Entries entries;
    for (unsigned long i = 0; i < list.getCount(); ++i)
        entries.emplace_back(standard(list.getName(i)), standard(list.getValue(i)));
    return entries;
}

/// Makes the machine's memory what a text says, for the length of a scope.
class MemoryInformation {
public:
    explicit MemoryInformation(const std::string& text)
        : path(scratch.write("meminfo", text)),
          opening(calls::open, [this](const char* name, int flags, mode_t mode) {
              if (std::strcmp(name, "/proc/meminfo") == 0) {
                  ++opened;
                  name = path.c_str();
              }
              return calls::open.original(name, flags, mode);
          }) {}

    int opened = 0;

private:
    ScratchDirectory scratch;
    std::string path;
    Replacement<int(const char*, int, mode_t)> opening;
};

Entries read(const std::string& text) {
    const MemoryInformation memory(text);
    OCNamedList list(NamedListCaseSensitive, NamedListModeUnsorted);
    OCSystemMemory::readInformation(list);
    return entriesOf(list);
}

TEST(OCSystemMemory, CannotBeInstantiated) {
    EXPECT_FALSE(std::is_default_constructible_v<OCSystemMemory>);
    EXPECT_FALSE(std::is_polymorphic_v<OCSystemMemory>);
}

TEST(OCSystemMemory, ReadsTheFiguresOfTheMachineInTheirOrder) {
    OCNamedList list(NamedListCaseSensitive, NamedListModeUnsorted);
    OCSystemMemory::readInformation(list);
    std::vector<std::string> names;
    std::string totalLine;
    std::ifstream file("/proc/meminfo");
    for (std::string line; std::getline(file, line);) {
        names.push_back(line.substr(0, line.find(':')));
        if (names.back() == "MemTotal")
            totalLine = line;
    }
    ASSERT_LT(10u, names.size());
    ASSERT_EQ(names.size(), list.getCount());
    for (unsigned long i = 0; i < list.getCount(); ++i)
        EXPECT_EQ(names[i], standard(list.getName(i)));
    const std::string total = standard(list.getValue("MemTotal"));
    EXPECT_EQ(totalLine,
              "MemTotal:" + std::string(totalLine.size() - 9 - total.size(), ' ') + total);
}

TEST(OCSystemMemory, MeasuresTheMachine) {
    unsigned long memoryTotal = 0;
    unsigned long swapTotal = 0;
    std::ifstream file("/proc/meminfo");
    for (std::string name, line; file >> name; std::getline(file, line)) {
        if (name == "MemTotal:")
            file >> memoryTotal;
        if (name == "SwapTotal:")
            file >> swapTotal;
    }
    EXPECT_EQ(memoryTotal, OCSystemMemory::measureMemory(true));
    EXPECT_EQ(swapTotal, OCSystemMemory::measureSwap(true));
    EXPECT_LT(0u, OCSystemMemory::measureMemory(false));
    EXPECT_GE(memoryTotal, OCSystemMemory::measureMemory(false));
    EXPECT_GE(swapTotal, OCSystemMemory::measureSwap(false));
}

TEST(OCSystemMemory, TakesEachLineApartAtItsFirstColonAndTrimsBothParts) {
    EXPECT_EQ((Entries{{"MemTotal", "16308156 kB"}, {"MemFree", "5 kB"}}),
              read("MemTotal:       16308156 kB\nMemFree:\t5 kB \n"));
    EXPECT_EQ((Entries{{"a", "b:c"}, {"", "d"}, {"e", ""}, {"", ""}}),
              read(" a : b:c\n:d\n e:\n:\n"));
    EXPECT_EQ((Entries{{"HugePages_Total", "0"}}), read("HugePages_Total:       0"));
    EXPECT_EQ((Entries{{"two words", "1  2"}}), read("\ttwo words\t:\t1  2\t\r\n"));
}

TEST(OCSystemMemory, SkipsLinesWithoutAColon) {
    EXPECT_EQ((Entries{{"A", "1"}, {"B", "2"}}), read("none\nA: 1\n\n   \nB: 2\nMemTotal 5 kB"));
    EXPECT_EQ(Entries(), read("none"));
    EXPECT_EQ(Entries(), read(""));
}

TEST(OCSystemMemory, AddsToTheListWithoutReplacing) {
    const MemoryInformation memory("B: 2\nA: 1\nB: 3\n");
    OCNamedList list(NamedListCaseSensitive, NamedListModeUnsorted);
    list.addElement("B", "old");
    OCSystemMemory::readInformation(list);
    EXPECT_EQ((Entries{{"B", "old"}, {"B", "2"}, {"A", "1"}, {"B", "3"}}), entriesOf(list));
    OCNamedList sorted(NamedListCaseSensitive, NamedListModeSorted);
    OCSystemMemory::readInformation(sorted);
    EXPECT_EQ((Entries{{"A", "1"}, {"B", "3"}, {"B", "2"}}), entriesOf(sorted));
}

TEST(OCSystemMemory, MeasuresByTheNamesOfTheEntries) {
    MemoryInformation memory("MemTotal:        1000 kB\nMemFree:   200 kB\nSwapFree: 30 kB\n"
                             "SwapTotal:       4 kB\n");
    EXPECT_EQ(1000u, OCSystemMemory::measureMemory(true));
    EXPECT_EQ(200u, OCSystemMemory::measureMemory(false));
    EXPECT_EQ(4u, OCSystemMemory::measureSwap(true));
    EXPECT_EQ(30u, OCSystemMemory::measureSwap(false));
    EXPECT_EQ(4, memory.opened);
}

TEST(OCSystemMemory, AMachineWithoutSwapHasNone) {
    const MemoryInformation memory("SwapTotal:       0 kB\nSwapFree: 0\n");
    EXPECT_EQ(0u, OCSystemMemory::measureSwap(true));
    EXPECT_EQ(0u, OCSystemMemory::measureSwap(false));
}

TEST(OCSystemMemory, NamesAreFoundWithoutRegardToCaseTheFirstOneCounts) {
    const MemoryInformation memory("memtotal: 5 kB\nMemTotal: 6 kB\nMEMFREE:7kB\n");
    EXPECT_EQ(5u, OCSystemMemory::measureMemory(true));
    EXPECT_EQ(7u, OCSystemMemory::measureMemory(false));
}

TEST(OCSystemMemory, AMissingOrEmptyEntryIsReported) {
    for (const char* text : {"", "Other: 5 kB\n", "MemTotal:\nMemFree: \nSwapTotal:\t\nSwapFree:",
                             "MemTotal 5 kB\nMemFre: 5\nXSwapTotal: 5\nSwapFree5\n"}) {
        SCOPED_TRACE(text);
        const MemoryInformation memory(text);
        EXPECT_EXCEPTION(OCSystemMemory::measureMemory(true), OXSystemMemory_MeasureMemoryError,
                         "Error measuring physical memory");
        EXPECT_EXCEPTION(OCSystemMemory::measureMemory(false), OXSystemMemory_MeasureMemoryError,
                         "Error measuring physical memory");
        EXPECT_EXCEPTION(OCSystemMemory::measureSwap(true), OXSystemMemory_MeasureSwapError,
                         "Error measuring swap memory");
        EXPECT_EXCEPTION(OCSystemMemory::measureSwap(false), OXSystemMemory_MeasureSwapError,
                         "Error measuring swap memory");
    }
}

TEST(OCSystemMemory, ANumberEndsWhereItsDigitsEndAndWraps) {
    const struct {
        const char* value;
        unsigned int expected;
    } cases[] = {{"12kB", 12},
                 {"12\tkB", 12},
                 {"12 34", 12},
                 {"kB", 0},
                 {"many kB", 0},
                 {"-5 kB", 0},
                 {"+5", 0},
                 {"0x10", 0},
                 {"007 kB", 7},
                 {"4294967295 kB", 4294967295u},
                 {"4294967296 kB", 0},
                 {"4294967301 kB", 5},
                 {"1.5 GB", 1},
                 {": 5", 0}};
    for (const auto& each : cases) {
        const MemoryInformation memory(std::string("MemTotal: ") + each.value +
                                       "\nSwapFree: " + each.value + "\n");
        EXPECT_EQ(each.expected, OCSystemMemory::measureMemory(true)) << each.value;
        EXPECT_EQ(each.expected, OCSystemMemory::measureSwap(false)) << each.value;
    }
}

TEST(OCSystemMemory, FailuresToReadTheFilePassUnchanged) {
    OCNamedList list(NamedListCaseSensitive, NamedListModeUnsorted);
    list.addElement("kept", "1");
    const long descriptors = openDescriptors();
    {
        Failing opening(calls::open, EACCES);
        EXPECT_EXCEPTION(OCSystemMemory::readInformation(list), OXFileStream_CreateError,
                         "Can not create the file stream (Permission denied)");
        EXPECT_EXCEPTION(OCSystemMemory::measureMemory(true), OXFileStream_CreateError,
                         "Can not create the file stream (Permission denied)");
        EXPECT_EXCEPTION(OCSystemMemory::measureSwap(false), OXFileStream_CreateError,
                         "Can not create the file stream (Permission denied)");
    }
    {
        Failing reading(calls::read, EIO);
        EXPECT_EXCEPTION(OCSystemMemory::readInformation(list), OXHandleStream_ReadError,
                         "Can not read from file stream (Input/output error)");
        EXPECT_EXCEPTION(OCSystemMemory::measureMemory(false), OXHandleStream_ReadError,
                         "Can not read from file stream (Input/output error)");
        EXPECT_EXCEPTION(OCSystemMemory::measureSwap(true), OXHandleStream_ReadError,
                         "Can not read from file stream (Input/output error)");
    }
    EXPECT_EQ((Entries{{"kept", "1"}}), entriesOf(list));
    EXPECT_EQ(descriptors, openDescriptors());
}

TEST(OCSystemMemory, ExhaustedMemoryLeavesNothingBehind) {
    const long descriptors = openDescriptors();
    const long before = fault::heapRecord().liveBlocks;
    EXPECT_LT(5u, fault::failEachRequest([] {
                  OCNamedList list(NamedListCaseSensitive, NamedListModeUnsorted);
                  OCSystemMemory::readInformation(list);
              }));
    EXPECT_LT(5u, fault::failEachRequest([] { OCSystemMemory::measureMemory(true); }));
    EXPECT_EQ(before, fault::heapRecord().liveBlocks);
    EXPECT_EQ(descriptors, openDescriptors());
}

} // namespace
