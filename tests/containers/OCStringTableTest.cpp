#include "OCStringTable.h"
#include "OCMemory.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Growth.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <utility>

namespace {

constexpr const char* noMemory = "Memory allocation failure";

static_assert(sizeof(OCStringTable) == 16, "a pointer");
static_assert(sizeof(OCStringTableRowList) == 48, "a vector");
static_assert(sizeof(OCStringTableRow) == 64, "a list");

const std::string longText(300, 'L');

OCAnsiString longString() {
    return OCAnsiString(longText.data(), longText.size());
}

/// The cells as text: one letter a row and its texts, `-` for what is unassigned.
std::string shape(const OCStringTableRowList& rows) {
    std::string result;
    for (unsigned long row = 0; row < rows.getCount(); ++row) {
        result += row == 0 ? "" : "/";
        if (!rows.hasRow(row)) {
            result += '-';
            continue;
        }
        result += '[';
        for (unsigned long column = 0; column < rows.getRow(row).getCount(); ++column) {
            result += column == 0 ? "" : " ";
            result += rows.hasString(row, column) ? rows.getString(row, column).getString() : "-";
        }
        result += ']';
    }
    return result;
}

std::string shape(const OCStringTable& table) {
    return shape(table.getRows());
}

TEST(OCStringTable, ClassesHaveTheirShape) {
    EXPECT_EQ(2u, slots::slotCount<OCStringTable>());
    EXPECT_EQ(2u, slots::slotCount<OCStringTableRowList>());
    EXPECT_EQ(2u, slots::slotCount<OCStringTableRow>());
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCStringTable>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCStringTableRowList>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCStringTableRow>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCStringTable>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCStringTableRowList>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCStringTableRow>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCStringTable>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCStringTableRowList>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCStringTableRow>);
}

TEST(OCStringTable, ANewOneIsEmpty) {
    const OCStringTable table;
    EXPECT_EQ(0u, table.getRowCount());
    EXPECT_EQ(0u, table.getRows().getCount());
    EXPECT_FALSE(table.hasString(0, 0));
    EXPECT_EXCEPTION(table.getString(0, 0), OXStringTableRowList_UnassignedObject,
                     "The string table row is unassigned (0)");
}

TEST(OCStringTable, CellsAreMadeOnDemand) {
    OCStringTable table;
    table.setString(3, 2, "x");
    EXPECT_EQ("-/-/-/[- - x]", shape(table));
    EXPECT_EQ(4u, table.getRowCount());
    EXPECT_FALSE(table.hasString(1, 0));
    EXPECT_FALSE(table.hasString(3, 0));
    EXPECT_TRUE(table.hasString(3, 2));
    EXPECT_FALSE(table.hasString(3, 3));
    EXPECT_FALSE(table.hasString(4, 0));
    EXPECT_EXCEPTION(table.getString(1, 0), OXStringTableRowList_UnassignedObject,
                     "The string table row is unassigned (1)");
    EXPECT_EXCEPTION(table.getString(4, 7), OXStringTableRowList_UnassignedObject,
                     "The string table row is unassigned (4)");
    EXPECT_EXCEPTION(table.getString(3, 0), OXStringTableRow_UnassignedObject,
                     "The string table column is unassigned (0)");
    EXPECT_EXCEPTION(table.getString(3, 3), OXStringTableRow_UnassignedObject,
                     "The string table column is unassigned (3)");
    const OCStringTable& constant = table;
    EXPECT_EXCEPTION(constant.getString(1, 0), OXStringTableRowList_UnassignedObject,
                     "The string table row is unassigned (1)");
    EXPECT_EXCEPTION(constant.getString(3, 0), OXStringTableRow_UnassignedObject,
                     "The string table column is unassigned (0)");
    EXPECT_EQ(OCAnsiString("x"), constant.getString(3, 2));
}

TEST(OCStringTable, CellsAreReplaced) {
    OCStringTable table;
    table.setString(1, 1, "a");
    table.setString(1, 1, "b");
    table.setString(1, 0, "c");
    table.setString(0, 0, "d");
    EXPECT_EQ("[d]/[c b]", shape(table));
    table.getString(0, 0) = "e";
    EXPECT_EQ("[e]/[c b]", shape(table));
}

TEST(OCStringTable, TextsAreCopies) {
    OCStringTable table;
    OCAnsiString text("one");
    table.setString(0, 0, text);
    table.addString(text, false);
    text = "two";
    EXPECT_EQ("[one one]", shape(table));
}

TEST(OCStringTable, ACellMayBeGivenToTheTable) {
    OCStringTable table;
    table.setString(0, 0, longString());
    table.setString(0, 0, table.getString(0, 0));
    table.setString(0, 70, table.getString(0, 0));
    table.setString(70, 0, table.getString(0, 0));
    table.addString(table.getString(0, 0), true);
    table.addString(table.getString(0, 0), false);
    EXPECT_EQ(longString(), table.getString(0, 0));
    EXPECT_EQ(longString(), table.getString(0, 70));
    EXPECT_EQ(longString(), table.getString(70, 0));
    EXPECT_EQ(longString(), table.getString(71, 0));
    EXPECT_EQ(longString(), table.getString(71, 1));
}

TEST(OCStringTable, StringsAreAddedToTheLastRow) {
    OCStringTable table;
    table.addString("a", true);
    table.addString("b", false);
    table.addString("c", true);
    table.addString("", false);
    table.addString("d", false);
    EXPECT_EQ("[a b]/[c  d]", shape(table));
    table.setString(3, 1, "e");
    table.addString("f", false);
    table.addString("g", true);
    EXPECT_EQ("[a b]/[c  d]/-/[- e f]/[g]", shape(table));
    // A cell that is unassigned is not made up for.
    OCStringTable sparse;
    sparse.setString(0, 1, "x");
    sparse.addString("y", true);
    sparse.addString("z", false);
    EXPECT_EQ("[- x]/[y z]", shape(sparse));
}

TEST(OCStringTable, WithoutRowsNoCellCanBeAdded) {
    OCStringTable table;
    EXPECT_EXCEPTION(table.addString("x", false), OXStringTableRowList_UnassignedObject,
                     "The string table row is unassigned (0)");
    EXPECT_EQ(0u, table.getRowCount());
    table.addString("x", true);
    table.clear();
    EXPECT_EXCEPTION(table.addString("x", false), OXStringTableRowList_UnassignedObject,
                     "The string table row is unassigned (0)");
}

TEST(OCStringTable, ClearDeletesEverything) {
    OCStringTable table;
    const OCStringTableRowList& rows = table.getRows();
    // What is left is the array for the first rows to come.
    EXPECT_EQ(1, fault::blocksLeftBy([&] {
                  for (unsigned long i = 0; i < 200; ++i)
                      table.setString(i, i % 7, longString());
                  table.clear();
              }));
    EXPECT_EQ(0u, table.getRowCount());
    EXPECT_FALSE(table.hasString(0, 0));
    table.addString("x", true);
    EXPECT_EQ("[x]", shape(table));
    // The list of rows is the same one all the time.
    EXPECT_EQ(&rows, &table.getRows());
    EXPECT_EQ("[x]", shape(rows));
}

TEST(OCStringTable, ClearingCannotFail) {
    OCStringTable table;
    for (unsigned long i = 0; i < 200; ++i) {
        table.setString(i, 0, "x");
        table.setString(0, i, "x");
    }
    {
        fault::HeapFault fault(1, fault::HeapFault::Following);
        table.getRows().getRow(0).clear();
        EXPECT_EQ(0u, table.getRows().getRow(0).getCount());
        table.clear();
        EXPECT_EQ(0u, table.getRowCount());
    }
    table.setString(1, 1, "y");
    EXPECT_EQ("-/[- y]", shape(table));
}

TEST(OCStringTable, RowsAndColumnsBeyondMemoryAreRefused) {
    OCStringTable table;
    table.setString(0, 0, "x");
    for (const unsigned long index : {ULONG_MAX, ULONG_MAX - 1, ULONG_MAX / 8, ULONG_MAX / 2}) {
        EXPECT_EXCEPTION(table.setString(index, 0, "y"), OXMemory_AllocationError, noMemory);
        EXPECT_EXCEPTION(table.setString(0, index, "y"), OXMemory_AllocationError, noMemory);
        EXPECT_EXCEPTION(table.setString(1, index, "y"), OXMemory_AllocationError, noMemory);
        EXPECT_EQ("[x]", shape(table));
        EXPECT_FALSE(table.hasString(index, index));
        EXPECT_FALSE(table.hasString(0, index));
    }
    EXPECT_EXCEPTION(table.getString(ULONG_MAX, 0), OXStringTableRowList_UnassignedObject,
                     "The string table row is unassigned (18446744073709551615)");
}

TEST(OCStringTable, FailuresChangeNothing) {
    struct Step {
        unsigned long row;
        unsigned long column;
    };
    const OCAnsiString text(longString());
    // In place, a new cell, a null cell, more cells than a block has, a null row, new rows.
    for (const Step step : {Step{1, 0}, Step{1, 2}, Step{1, 1}, Step{1, 100}, Step{0, 0},
                            Step{0, 200}, Step{5, 5}, Step{100, 0}, Step{100, 100}}) {
        SCOPED_TRACE(step.row * 1000 + step.column);
        OCStringTable table;
        const auto restore = [&table] {
            table.clear();
            table.setString(1, 0, "a");
            table.setString(1, 3, "b");
        };
        restore();
        const std::string before = shape(table);
        const unsigned long failures =
            fault::failEachRequest([&] { table.setString(step.row, step.column, text); },
                                   [&] {
                                       EXPECT_EQ(before, shape(table));
                                       restore();
                                   });
        EXPECT_LT(0u, failures);
        EXPECT_EQ(text, table.getString(step.row, step.column));
    }
}

TEST(OCStringTable, FailedAdditionsChangeNothing) {
    const OCAnsiString text(longString());
    for (const bool newRow : {false, true}) {
        OCStringTable table;
        const auto restore = [&table] {
            table.clear();
            for (int i = 0; i < 64; ++i)
                table.addString("r", true);
            for (int i = 1; i < 64; ++i)
                table.addString("c", false);
        };
        restore();
        const std::string before = shape(table);
        const unsigned long failures =
            fault::failEachRequest([&] { table.addString(text, newRow); },
                                   [&] {
                                       EXPECT_EQ(before, shape(table));
                                       restore();
                                   });
        // A text, a string and an array; the new row and its array, too.
        EXPECT_EQ(newRow ? 5u : 3u, failures);
    }
}

TEST(OCStringTable, FailuresLeaveNothingBehind) {
    const OCAnsiString text(longString());
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  fault::failEachRequest([&] {
                      OCStringTable table;
                      table.setString(70, 70, text);
                      table.addString(text, false);
                      table.addString(text, true);
                  });
              }));
}

TEST(OCStringTable, AgreesWithAModel) {
    constexpr unsigned int seed = 20240607;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 50; ++round) {
        OCStringTable table;
        std::map<std::pair<unsigned long, unsigned long>, std::string> cells;
        std::map<unsigned long, unsigned long> widths; // of the rows that exist
        for (int step = 0; step < 200; ++step) {
            const std::string text = std::to_string(random());
            const OCAnsiString string(text.data(), text.size());
            const unsigned long count = widths.empty() ? 0 : widths.rbegin()->first + 1;
            switch (random() % 8) {
            case 0:
                table.addString(string, true);
                cells[{count, 0}] = text;
                widths[count] = 1;
                break;
            case 1:
                if (count == 0) {
                    EXPECT_THROW(table.addString(string, false),
                                 OXStringTableRowList_UnassignedObject);
                    break;
                }
                table.addString(string, false);
                cells[{count - 1, widths[count - 1]++}] = text;
                break;
            case 2:
                if (random() % 40 == 0) {
                    table.clear();
                    cells.clear();
                    widths.clear();
                }
                break;
            default: {
                const unsigned long row = random() % 20, column = random() % 90;
                table.setString(row, column, string);
                cells[{row, column}] = text;
                widths[row] = std::max(widths[row], column + 1);
            }
            }
            const unsigned long row = random() % 25, column = random() % 95;
            const auto found = cells.find({row, column});
            ASSERT_EQ(found != cells.end(), table.hasString(row, column));
            ASSERT_EQ(widths.count(row) == 1, table.getRows().hasRow(row));
            if (found != cells.end()) {
                ASSERT_STREQ(found->second.c_str(), table.getString(row, column).getString());
            }
            if (widths.count(row) == 1) {
                ASSERT_EQ(widths[row], table.getRows().getRow(row).getCount());
            }
        }
        ASSERT_EQ(widths.empty() ? 0 : widths.rbegin()->first + 1, table.getRowCount());
    }
}

TEST(OCStringTable, AddingIsLinear) {
    const unsigned long n = fault::sanitized ? 4000 : 20000;
    EXPECT_LT(growth::ofEightTimes(
                  [](unsigned long count) {
                      OCStringTable table;
                      for (unsigned long i = 0; i < count; ++i)
                          table.addString("x", true);
                  },
                  n),
              40);
    EXPECT_LT(growth::ofEightTimes(
                  [](unsigned long count) {
                      OCStringTable table;
                      table.addString("x", true);
                      for (unsigned long i = 1; i < count; ++i)
                          table.addString("x", false);
                  },
                  n),
              40);
}

TEST(OCStringTableRowList, TellsItsRows) {
    OCStringTableRowList rows;
    EXPECT_EQ(0u, rows.getCount());
    EXPECT_FALSE(rows.hasRow(0));
    rows.setString(1, 0, "x");
    EXPECT_EQ(2u, rows.getCount());
    EXPECT_FALSE(rows.hasRow(0));
    EXPECT_TRUE(rows.hasRow(1));
    EXPECT_FALSE(rows.hasRow(2));
    const OCStringTableRowList& constant = rows;
    EXPECT_EQ(&rows.getRow(1), &constant.getRow(1));
    EXPECT_EXCEPTION(rows.getRow(0), OXStringTableRowList_UnassignedObject,
                     "The string table row is unassigned (0)");
    EXPECT_EXCEPTION(constant.getRow(2), OXStringTableRowList_UnassignedObject,
                     "The string table row is unassigned (2)");
    rows.getRow(1).addString("y");
    EXPECT_EQ("-/[x y]", shape(rows));
    rows.clear();
    EXPECT_EQ(0u, rows.getCount());
}

TEST(OCStringTableRowList, AnEmptiedRowIsStillThere) {
    OCStringTableRowList rows;
    rows.setString(0, 0, "x");
    rows.getRow(0).clear();
    EXPECT_TRUE(rows.hasRow(0));
    EXPECT_FALSE(rows.hasString(0, 0));
    rows.addString("y", false);
    EXPECT_EQ("[y]", shape(rows));
}

TEST(OCStringTableRow, HoldsCells) {
    OCStringTableRow row;
    EXPECT_EQ(0u, row.getCount());
    EXPECT_FALSE(row.hasString(0));
    row.addString("b");
    row.addString("a");
    row.addString("B");
    EXPECT_EQ(3u, row.getCount());
    EXPECT_EQ(OCAnsiString("b"), row.getString(0));
    EXPECT_EQ(OCAnsiString("a"), row.getString(1));
    EXPECT_EQ(OCAnsiString("B"), row.getString(2));
    row.setString(5, "f");
    EXPECT_EQ(6u, row.getCount());
    EXPECT_FALSE(row.hasString(4));
    EXPECT_TRUE(row.hasString(5));
    const OCStringTableRow& constant = row;
    EXPECT_EXCEPTION(row.getString(4), OXStringTableRow_UnassignedObject,
                     "The string table column is unassigned (4)");
    EXPECT_EXCEPTION(constant.getString(6), OXStringTableRow_UnassignedObject,
                     "The string table column is unassigned (6)");
    EXPECT_EQ(OCAnsiString("f"), constant.getString(5));
    row.clear();
    EXPECT_EQ(0u, row.getCount());
}

} // namespace
