#include "support/AllocationSweep.h"

#include "OCFileStream.h"
#include "OCMemoryBuffer.h"
#include "OCMemoryStream.h"
#include "OCNamedList.h"
#include "OCStack.h"
#include "OCStringArray.h"
#include "OCStringList.h"
#include "OCStringTable.h"
#include "OCVariant.h"
#include "OCVersion.h"
#include "support/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

namespace {

using State = const std::string&;

const std::string characters(300, 'n');
const OCAnsiString longText(characters.c_str());
const OCWideString longWide(longText);
const OCAnsiString missing((characters + '~').c_str());

OCAnsiString numbered(int number) {
    return OCAnsiString(std::to_string(number).c_str());
}

// Vectors and stacks refer to these.
OCBoolean element(true);
OCBoolean other(false);

std::string seenVector(const OCVector& vector) {
    std::string result =
        std::to_string(vector.getCapacity()) + '/' + std::to_string(vector.getBlockSize()) + ':';
    for (unsigned long i = 0; i < vector.getCount(); ++i)
        result += !vector.hasElement(i) ? '-' : &vector.getElement(i) == &element ? 'e' : 'o';
    return result;
}

std::unique_ptr<OCVector> vectorOf(unsigned long count) {
    auto vector = std::make_unique<OCVector>();
    for (unsigned long i = 0; i < count; ++i)
        vector->addElement(element);
    return vector;
}

TEST(AllocationSweep, Vector) {
    const auto filled = vectorOf(64);
    const sweep::Operations full([] { return vectorOf(64); }, seenVector);
    full("new", [](auto&) { delete new OCVector; });
    full("copy", [&](auto&) { OCVector copy(*filled); });
    full.leaving(
        "addElement", [](OCVector& v) { v.addElement(other); },
        [](State before, State after, State) { EXPECT_EQ(before + '-', after); });
    full("insertElement", [](OCVector& v) { v.insertElement(7, other); });
    full("setCount", [](OCVector& v) { v.setCount(65); });
    full("setCapacity", [](OCVector& v) { v.setCapacity(100); });
    full("assign to an empty one", [](OCVector& v) { OCVector().assign(v); });
    full("getElement behind",
         [](OCVector& v) { sweep::refused<OXVector_NoSuchIndex>([&] { v.getElement(64); }); });
    full("getElement behind, of what does not change", [](const OCVector& v) {
        sweep::refused<OXVector_NoSuchIndex>([&] { v.getElement(64); });
    });
    full("setElement behind", [](OCVector& v) {
        sweep::refused<OXVector_NoSuchIndex>([&] { v.setElement(64, other); });
    });
    full("nullElement behind",
         [](OCVector& v) { sweep::refused<OXVector_NoSuchIndex>([&] { v.nullElement(64); }); });
    full("removeElement behind",
         [](OCVector& v) { sweep::refused<OXVector_NoSuchIndex>([&] { v.removeElement(64); }); });
    full("insertElement behind", [](OCVector& v) {
        sweep::refused<OXVector_NoSuchIndex>([&] { v.insertElement(64, other); });
    });
    full("exchangeElements behind", [](OCVector& v) {
        sweep::refused<OXVector_NoSuchIndex>([&] { v.exchangeElements(0, 64); });
    });

    const sweep::Operations larger([] { return vectorOf(65); }, seenVector);
    larger("assign", [&](OCVector& v) { v.assign(*filled); });
    larger("=", [&](OCVector& v) { v = *filled; });
    larger("clear", [](OCVector& v) { v.clear(); });
    larger("removeElement", [](OCVector& v) { v.removeElement(7); });
    larger("removeElements", [](OCVector& v) { v.removeElements(1, 60); });
    larger("setCount, less", [](OCVector& v) { v.setCount(64); });
    larger("setCapacity, less", [](OCVector& v) { v.setCapacity(0); });

    const sweep::Operations withNull(
        [] {
            auto vector = vectorOf(65);
            vector->nullElement(3);
            return vector;
        },
        seenVector);
    withNull("getElement of a null slot",
             [](OCVector& v) { sweep::refused<OXVector_NullElement>([&] { v.getElement(3); }); });
    withNull("exchangeElements with a null slot", [](OCVector& v) {
        sweep::refused<OXVector_NullElement>([&] { v.exchangeElements(3, 0); });
    });
    withNull("sort with a null slot", [](OCVector& v) {
        sweep::refused<OXVector_NullElement>(
            [&] { v.sort([](const OCObject*, const OCObject*) { return CompareResultEqual; }); });
    });
}

std::string seenStack(const OCStack& stack) {
    OCStack copy(stack);
    std::string result;
    while (!copy.isEmpty())
        result += &copy.pop() == &element ? 'e' : 'o';
    return result;
}

std::unique_ptr<OCStack> stackOf(unsigned long count) {
    auto stack = std::make_unique<OCStack>();
    for (unsigned long i = 0; i < count; ++i)
        stack->push(element);
    return stack;
}

TEST(AllocationSweep, Stack) {
    const auto filled = stackOf(3);
    const sweep::Operations stack([] { return stackOf(65); }, seenStack);
    stack("new", [](auto&) { delete new OCStack; });
    stack("copy", [&](auto&) { OCStack copy(*filled); });
    stack("assign", [&](OCStack& s) { s.assign(*filled); });
    stack("=", [&](OCStack& s) { s = *filled; });
    stack("clear", [](OCStack& s) { s.clear(); });
    stack("pop", [](OCStack& s) { s.pop(); });
    const sweep::Operations full([] { return stackOf(64); },
                                 [](const OCStack& s) { return std::to_string(s.getCount()); });
    full.leaving(
        "push", [](OCStack& s) { s.push(other); },
        [](State before, State after, State) {
            EXPECT_EQ("64", before);
            EXPECT_EQ("65", after);
        });
    const sweep::Operations empty([] { return stackOf(0); }, seenStack);
    empty.managing("top of nothing",
                   [](OCStack& s) { sweep::refused<OXStack_UnderflowError>([&] { s.top(); }); });
    empty.managing("top of nothing, of what does not change", [](const OCStack& s) {
        sweep::refused<OXStack_UnderflowError>([&] { s.top(); });
    });
    empty.managing("pop of nothing",
                   [](OCStack& s) { sweep::refused<OXStack_UnderflowError>([&] { s.pop(); }); });
}

TEST(AllocationSweep, DeletingElements) {
    const auto objects = [](unsigned long count) {
        auto vector = std::make_unique<OCVector>();
        for (unsigned long i = 0; i < count; ++i)
            vector->addElement(*new OCBoolean(true));
        return vector;
    };
    // What is not deleted is counted here, and deleted by the subject's end.
    struct Owner {
        explicit Owner(std::unique_ptr<OCVector> owned) : vector(std::move(owned)) {}
        ~Owner() { OCVectorUtilities(*vector).deleteElements(); }
        std::unique_ptr<OCVector> vector;
    };
    const sweep::Operations owner([&] { return std::make_unique<Owner>(objects(65)); },
                                  [](const Owner& o) {
                                      unsigned long held = 0;
                                      for (unsigned long i = 0; i < o.vector->getCount(); ++i)
                                          held += o.vector->hasElement(i);
                                      return std::to_string(held) + " of " +
                                             std::to_string(o.vector->getCount());
                                  });
    owner("deleteElements at", [](Owner& o) { OCVectorUtilities(*o.vector).deleteElements(7, 1); });
    // All are deleted before the slots go.
    owner.leaving(
        "deleteElements", [](Owner& o) { OCVectorUtilities(*o.vector).deleteElements(); },
        [](State, State after, State) { EXPECT_EQ("0 of 65", after); });
    const sweep::Operations stack(
        [] {
            auto made = std::make_unique<OCStack>();
            for (int i = 0; i < 65; ++i)
                made->push(*new OCBoolean(true));
            return std::unique_ptr<OCStack, void (*)(OCStack*)>(made.release(), [](OCStack* s) {
                OCStackUtilities(*s).deleteElements();
                delete s;
            });
        },
        [](const OCStack& s) { return std::to_string(s.getCount()); });
    stack("deleteElements", [](OCStack& s) { OCStackUtilities(s).deleteElements(1); });
    stack("deleteElements, all", [](OCStack& s) { OCStackUtilities(s).deleteElements(); });
}

std::string seenList(const OCStringList& list) {
    std::string result = std::to_string(list.getCase()) + std::to_string(list.getMode()) + ':';
    for (unsigned long i = 0; i < list.getCount(); ++i)
        result += (list.hasString(i) ? list.getString(i).getString() : "(null)") + std::string(",");
    return result;
}

std::unique_ptr<OCStringList> listOf(int count, OEStringListMode mode) {
    auto list = std::make_unique<OCStringList>(StringListCaseInsensitive, mode);
    for (int i = 0; i < count; ++i)
        list->addString(numbered(100 + i));
    return list;
}

void sweepList(OEStringListMode mode) {
    SCOPED_TRACE(mode);
    const ScratchDirectory directory;
    const OCFilePath path(directory.file("list").c_str());
    const OCFilePath nowhere((directory.file("no/") + std::string(150, 'n')).c_str());
    const auto more = listOf(3, StringListModeSorted);
    more->addString(longText);
    more->addString("050");
    const auto lines = OCStringListUtilities::exportString(*more);
    const sweep::Operations full([=] { return listOf(64, mode); }, seenList);
    full("new",
         [](auto&) { delete new OCStringList(StringListCaseSensitive, StringListModeSorted); });
    full("copy", [&](auto&) { OCStringList copy(*more); });
    full("assign", [&](OCStringList& l) { l.assign(*more); });
    full("=", [&](OCStringList& l) { l = *more; });
    const auto atMostAPart = [=](State before, State after, State) {
        if (mode == StringListModeUnsorted) {
            EXPECT_EQ(before, after);
        } else {
            EXPECT_EQ(0u, after.find("01:"));
            EXPECT_LE(before.size(), after.size());
        }
    };
    full.leaving(
        "append", [&](OCStringList& l) { l.append(*more); }, atMostAPart);
    full.leaving(
        "append itself", [](OCStringList& l) { l.append(l); }, atMostAPart);
    const auto nullAtTheEnd = [](State before, State after, State) {
        EXPECT_TRUE(after == before || after == before + "(null),") << after;
    };
    full.leaving(
        "addString", [](OCStringList& l) { l.addString(longText); }, nullAtTheEnd);
    full.leaving(
        "+=", [](OCStringList& l) { l += longText; }, nullAtTheEnd);
    if (mode == StringListModeSorted) {
        full("addString in between", [](OCStringList& l) { l.addString("1001"); });
        full("setString by its own", [](OCStringList& l) { l.setString(7, l.getString(9)); });
    }
    full("setString", [](OCStringList& l) { l.setString(7, longText); });
    full("setString behind", [](OCStringList& l) {
        sweep::refused<OXVector_NoSuchIndex>([&] { l.setString(64, longText); });
    });
    full("removeString behind", [](OCStringList& l) {
        sweep::refused<OXVector_NoSuchIndex>([&] { l.removeString(64); });
    });
    full("getString behind", [](OCStringList& l) {
        sweep::refused<OXStringList_NoSuchIndex>([&] { l.getString(64); });
    });
    full("getString behind, of what does not change", [](const OCStringList& l) {
        sweep::refused<OXStringList_NoSuchIndex>([&] { l.getString(64); });
    });
    full("setCount", [](OCStringList& l) { l.setCount(65); });
    full("exportString", [](OCStringList& l) { OCStringListUtilities::exportString(l); });
    full("importString", [&](OCStringList& l) { OCStringListUtilities::importString(l, lines); });
    const auto import = [&](auto read) {
        return [&lines, read](OCStringList& l) {
            OCMemoryStream stream(lines.getString(), lines.getLength());
            read(l, stream);
        };
    };
    full("importStream",
         import([](OCStringList& l, OCStream& s) { OCStringListUtilities::importStream(l, s); }));
    full("loadFromStream", import([](OCStringList& l, OCStream& s) { l.loadFromStream(s); }));
    more->saveToFile(path);
    full("loadFromFile", [&](OCStringList& l) { l.loadFromFile(path); });
    full("loadFromFile that is not there", [&](OCStringList& l) {
        sweep::refused<OXFileStream_CreateError>([&] { l.loadFromFile(nowhere); });
    });
    full("saveToFile that cannot be made", [&](OCStringList& l) {
        sweep::refused<OXFileStream_CreateError>([&] { l.saveToFile(nowhere); });
    });
    const auto write = [&](auto to) {
        return [&more, to](OCStringList&) {
            OCMemoryStream stream;
            to(*more, stream);
        };
    };
    full("exportStream", write([](const OCStringList& l, OCStream& s) {
             OCStringListUtilities::exportStream(l, s);
         }));
    full("saveToStream", write([](const OCStringList& l, OCStream& s) { l.saveToStream(s); }));
    full("saveToFile", [&](OCStringList&) { more->saveToFile(path); });
    full.managing("sort", [](OCStringList& l) { l.sort(); });

    const sweep::Operations larger([=] { return listOf(65, mode); }, seenList);
    larger("removeString", [](OCStringList& l) { l.removeString(7); });
    larger.leaving(
        "setCount, less", [](OCStringList& l) { l.setCount(64); },
        [](State before, State after, State) {
            EXPECT_EQ(before.substr(0, before.size() - 4) + "(null),", after);
        });
    larger.leaving(
        "clear", [](OCStringList& l) { l.clear(); },
        [](State, State after, State) {
            std::string nulls;
            for (int i = 0; i < 65; ++i)
                nulls += "(null),";
            ASSERT_LE(nulls.size(), after.size());
            EXPECT_EQ(nulls, after.substr(after.size() - nulls.size()));
        });
    const sweep::Operations withNull(
        [=] {
            auto list = listOf(65, mode);
            list->nullString(3);
            return list;
        },
        seenList);
    withNull("getString of a null slot", [](OCStringList& l) {
        sweep::refused<OXStringList_NullString>([&] { l.getString(3); });
    });
    withNull("copy without the null slot", [](OCStringList& l) { OCStringList copy(l); });
    if (mode == StringListModeUnsorted)
        withNull("sort with a null slot",
                 [](OCStringList& l) { sweep::refused<OXVector_NullElement>([&] { l.sort(); }); });
}

TEST(AllocationSweep, UnsortedStringList) {
    sweepList(StringListModeUnsorted);
}

TEST(AllocationSweep, SortedStringList) {
    sweepList(StringListModeSorted);
}

TEST(AllocationSweep, StringArray) {
    const auto arrayOf = [](int count) {
        auto array = std::make_unique<OCStringArray>();
        for (int i = 0; i < count; ++i)
            array->addString(numbered(i));
        return array;
    };
    const auto few = arrayOf(3);
    few->addString(longText);
    // At 1023 strings the pointers, with the null behind them, fill a block of the stream.
    for (const int count : {3, 64, 1023}) {
        SCOPED_TRACE(count);
        const sweep::Operations array([=] { return arrayOf(count); },
                                      [](const OCStringArray& a) {
                                          std::string result = std::to_string(a.getCount()) + ':';
                                          for (char* const* string = a.getBuffer();
                                               *string != nullptr; ++string)
                                              result += std::string(*string) + ',';
                                          return result;
                                      });
        array("addString", [](OCStringArray& a) { a.addString(longText); });
        array("assign", [&](OCStringArray& a) { a.assign(*few); });
        array("=", [&](OCStringArray& a) { a = *few; });
        if (count < 1000) {
            array("copy", [](OCStringArray& a) { OCStringArray copy(a); });
            array("new", [](auto&) { delete new OCStringArray; });
        }
    }
}

std::string seenNamed(const OCNamedList& list) {
    std::string result =
        std::to_string(list.compareNamesFunction() ==
                       static_cast<OCNamedList::NameComparator>(namedListCompareNamesSensitive)) +
        ':';
    for (unsigned long i = 0; i < list.getCount(); ++i)
        result +=
            std::string(list.getName(i).getString()) + '=' + list.getValue(i).getString() + ',';
    return result;
}

std::unique_ptr<OCNamedList> namedOf(int count, OENamedListMode mode) {
    auto list = std::make_unique<OCNamedList>(NamedListCaseInsensitive, mode);
    for (int i = 0; i < count; ++i)
        list->addElement(numbered(100 + i), "v");
    return list;
}

TEST(AllocationSweep, NamedElement) {
    const OCNamedElement longElement(longText, longText);
    const sweep::Operations named([] { return std::make_unique<OCNamedElement>("name", "value"); },
                                  [](const OCNamedElement& e) {
                                      return sweep::seen(e.getName()) + sweep::seen(e.getValue());
                                  });
    named("construction", [](auto&) { OCNamedElement(longText, longText); });
    named("copy", [&](auto&) { OCNamedElement copy(longElement); });
    named("new", [](auto&) { delete new OCNamedElement("a", "b"); });
    named("assign", [&](OCNamedElement& e) { e.assign(longElement); });
    named("=", [&](OCNamedElement& e) { e = longElement; });
    named("setName", [](OCNamedElement& e) { e.setName(longText); });
    named("setValue", [](OCNamedElement& e) { e.setValue(longText); });
}

void sweepNamed(OENamedListMode mode) {
    SCOPED_TRACE(mode);
    OCNamedList more(NamedListCaseSensitive, NamedListModeUnsorted);
    more.addElement(longText, longText);
    more.addElement("150", longText);
    more.addElement("x", "y");
    more.addElement("050", "z");
    for (int i = 0; i < 20; ++i)
        more.addElement(numbered(i), "more");
    for (const int count : {3, 64}) {
        SCOPED_TRACE(count);
        const sweep::Operations list([=] { return namedOf(count, mode); }, seenNamed);
        list("new",
             [](auto&) { delete new OCNamedList(NamedListCaseSensitive, NamedListModeSorted); });
        list("copy", [&](auto&) { OCNamedList copy(more); });
        list("assign", [&](OCNamedList& l) { l.assign(more); });
        list("=", [&](OCNamedList& l) { l = more; });
        list("append", [&](OCNamedList& l) { l.append(more); });
        list("addElement", [](OCNamedList& l) { l.addElement(longText, longText); });
        list("addElement in between", [](OCNamedList& l) { l.addElement("1001", "v"); });
        list("addElement of that name", [](OCNamedList& l) { l.addElement("101", longText); });
        list("setValue at", [](OCNamedList& l) { l.setValue(1UL, longText); });
        list("setValue at behind", [](OCNamedList& l) {
            sweep::refused<OXNamedList_NoSuchIndex>([&] { l.setValue(64UL, longText); });
        });
        list("setValue", [](OCNamedList& l) { l.setValue("101", longText); });
        list("setValue of another", [](OCNamedList& l) { l.setValue(longText, longText); });
        list("getElement behind", [](OCNamedList& l) {
            sweep::refused<OXNamedList_NoSuchIndex>([&] { l.getElement(64); });
        });
        list("getElement behind, of what does not change", [](const OCNamedList& l) {
            sweep::refused<OXNamedList_NoSuchIndex>([&] { l.getElement(64); });
        });
        list("getName behind", [](OCNamedList& l) {
            sweep::refused<OXNamedList_NoSuchIndex>([&] { l.getName(64); });
        });
        list("getValue behind", [](OCNamedList& l) {
            sweep::refused<OXNamedList_NoSuchIndex>([&] { l.getValue(64UL); });
        });
        list("getValue of none", [](OCNamedList& l) {
            sweep::refused<OXNamedList_NoSuchName>([&] { l.getValue(missing); });
        });
        list("getValue of none with another",
             [](OCNamedList& l) { l.getValue(missing, longText); });
    }
    const sweep::Operations many([=] { return namedOf(65, mode); },
                                 [](const OCNamedList& l) { return seenNamed(l); });
    many.managing("clear", [](OCNamedList& l) { l.clear(); });
    struct Removed {
        explicit Removed(OENamedListMode mode)
            : list(namedOf(65, mode)), taken(&list->getElement(7)) {}
        ~Removed() {
            if (list->getCount() == 64)
                delete taken;
        }
        std::unique_ptr<OCNamedList> list;
        OCNamedElement* taken;
    };
    const sweep::Operations larger([=] { return std::make_unique<Removed>(mode); },
                                   [](const Removed& r) { return seenNamed(*r.list); });
    larger("removeElement", [](Removed& r) { r.list->removeElement("107"); });
}

TEST(AllocationSweep, UnsortedNamedList) {
    sweepNamed(NamedListModeUnsorted);
}

TEST(AllocationSweep, SortedNamedList) {
    sweepNamed(NamedListModeSorted);
}

TEST(AllocationSweep, StringTable) {
    const sweep::Operations table(
        [] {
            auto made = std::make_unique<OCStringTable>();
            for (int row = 0; row < 64; ++row)
                made->setString(static_cast<unsigned long>(row), 0, numbered(row));
            for (int column = 0; column < 64; ++column)
                made->setString(63, static_cast<unsigned long>(column), numbered(column));
            return made;
        },
        [](const OCStringTable& t) {
            std::string result = std::to_string(t.getRowCount()) + ':';
            for (unsigned long row = 0; row < t.getRowCount(); ++row) {
                result += t.getRows().hasRow(row) ? '\n' : '-';
                for (unsigned long column = 0;
                     t.getRows().hasRow(row) && column < t.getRows().getRow(row).getCount();
                     ++column)
                    result += (t.hasString(row, column) ? t.getString(row, column).getString()
                                                        : "(null)") +
                              std::string(",");
            }
            return result;
        });
    table("construction", [](auto&) { OCStringTable made; });
    table("new", [](auto&) { delete new OCStringTable; });
    table("new list of rows", [](auto&) { delete new OCStringTableRowList; });
    table("new row", [](auto&) { delete new OCStringTableRow; });
    table("addString", [](OCStringTable& t) { t.addString(longText, false); });
    table("addString in a new row", [](OCStringTable& t) { t.addString(longText, true); });
    table("setString", [](OCStringTable& t) { t.setString(3, 0, longText); });
    table("setString beyond its row", [](OCStringTable& t) { t.setString(3, 100, longText); });
    table("setString beyond the rows", [](OCStringTable& t) { t.setString(100, 3, longText); });
    table("getString of no row", [](OCStringTable& t) {
        sweep::refused<OXStringTableRowList_UnassignedObject>([&] { t.getString(64, 0); });
    });
    table("getString of no column", [](OCStringTable& t) {
        sweep::refused<OXStringTableRow_UnassignedObject>([&] { t.getString(3, 1); });
    });
    table("getRow of no row", [](OCStringTable& t) {
        sweep::refused<OXStringTableRowList_UnassignedObject>([&] { t.getRows().getRow(64); });
    });
    table("getRow of no row, of what does not change", [](const OCStringTable& t) {
        sweep::refused<OXStringTableRowList_UnassignedObject>([&] { t.getRows().getRow(64); });
    });
    table("getString of no row, of what does not change", [](const OCStringTable& t) {
        sweep::refused<OXStringTableRowList_UnassignedObject>([&] { t.getString(64, 0); });
    });
    table("row getString", [](OCStringTable& t) {
        sweep::refused<OXStringTableRow_UnassignedObject>(
            [&] { t.getRows().getRow(3).getString(1); });
    });
    table("row getString, of what does not change", [](const OCStringTable& t) {
        sweep::refused<OXStringTableRow_UnassignedObject>(
            [&] { t.getRows().getRow(3).getString(1); });
    });
    table("rows addString", [](OCStringTable& t) { t.getRows().addString(longText, true); });
    table("rows setString", [](OCStringTable& t) { t.getRows().setString(100, 3, longText); });
    table("row addString", [](OCStringTable& t) { t.getRows().getRow(63).addString(longText); });
    table("row setString",
          [](OCStringTable& t) { t.getRows().getRow(63).setString(64, longText); });
}

TEST(AllocationSweep, ClearingTables) {
    const sweep::Operations table(
        [] {
            auto made = std::make_unique<OCStringTable>();
            made->setString(64, 64, "last");
            return made;
        },
        [](const OCStringTable& t) { return std::to_string(t.getRowCount()); });
    table.managing("clear", [](OCStringTable& t) { t.clear(); });
    table.managing("rows clear", [](OCStringTable& t) { t.getRows().clear(); });
}

std::string seenBuffer(const OCMemoryBuffer& buffer) {
    return buffer.getSize() == 0 ? "" : std::string(buffer.getData(), buffer.getSize());
}

TEST(AllocationSweep, MemoryBuffer) {
    const std::string bytes(1000, 'b');
    const OCMemoryBuffer large(bytes.data(), 1000);
    for (const unsigned long size : {100UL, 600UL, 2000UL}) {
        SCOPED_TRACE(size);
        const std::string before(size, 'a');
        const sweep::Operations buffer(
            [&] { return std::make_unique<OCMemoryBuffer>(before.data(), size); }, seenBuffer);
        buffer("assign", [&](OCMemoryBuffer& b) { b.assign(large); });
        buffer("=", [&](OCMemoryBuffer& b) { b = large; });
        buffer("assign bytes", [&](OCMemoryBuffer& b) { b.assign(bytes.data(), 1000); });
        buffer("setSize", [](OCMemoryBuffer& b) {
            b.setSize(3000);
            memoryFill(b.getData(), 3000, 'x');
        });
        buffer("[] behind", [](OCMemoryBuffer& b) {
            sweep::refused<OXMemoryBuffer_NoSuchIndex>([&] { b[2000]; });
        });
        buffer("[] behind, of what does not change", [](const OCMemoryBuffer& b) {
            sweep::refused<OXMemoryBuffer_NoSuchIndex>([&] { b[2000]; });
        });
        if (size == 2000) {
            buffer("setSize, less", [](OCMemoryBuffer& b) { b.setSize(600); });
            buffer("assign of itself", [](OCMemoryBuffer& b) { b.assign(b.getData() + 9, 600); });
        }
    }
    const auto make = sweep::results();
    make("of a size", [](auto&) { OCMemoryBuffer made(1000); });
    make("of bytes", [&](auto&) { OCMemoryBuffer(bytes.data(), 1000); });
    make("copy", [&](auto&) { OCMemoryBuffer copy(large); });
    make("new", [](auto&) { delete new OCMemoryBuffer; });
    make.managing("getData of none", [](auto&) {
        sweep::refused<OXMemoryBuffer_NoData>([] { OCMemoryBuffer().getData(); });
    });
    make.managing("of no bytes", [](auto&) {
        sweep::refused<OXMemoryBuffer_NullPointer>([] { OCMemoryBuffer(nullptr, 1); });
    });
}

/// Takes characters and keeps none.
class NowhereBuffer : public std::streambuf {
    int overflow(int c) override { return c; }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

std::string seenVariant(const OCVariant& variant) {
    switch (variant.getType()) {
    case VariantTypeBoolean:
        return variant.getBoolean().getValue() ? "true" : "false";
    case VariantTypeSignedInteger:
        return "signed " + std::to_string(variant.getIntegerSigned().getValue());
    case VariantTypeUnsignedInteger:
        return "unsigned " + std::to_string(variant.getIntegerUnsigned().getValue());
    case VariantTypeMemoryBuffer:
        return "bytes " + seenBuffer(variant.getMemoryBuffer());
    case VariantTypeAnsiString:
        return "text " + sweep::seen(variant.getStringAnsi());
    case VariantTypeWideString:
        return "wide " + sweep::seen(variant.getStringWide());
    case VariantTypeUnassigned:
        break;
    }
    return "nothing";
}

TEST(AllocationSweep, Variant) {
    const OCMemoryBuffer large(characters.data(), 300);
    OCVariant text;
    text.setStringAnsi(longText);
    const sweep::Operations variant(
        [] {
            auto made = std::make_unique<OCVariant>();
            made->setStringWide(longWide);
            return made;
        },
        seenVariant);
    variant("construction", [](auto&) { OCVariant made; });
    variant("new", [](auto&) { delete new OCVariant; });
    variant("copy", [](OCVariant& v) { OCVariant copy(v); });
    variant("assign", [&](OCVariant& v) { v.assign(text); });
    variant("=", [&](OCVariant& v) { v = text; });
    variant("setBoolean", [](OCVariant& v) { v.setBoolean(true); });
    variant("setIntegerSigned", [](OCVariant& v) { v.setIntegerSigned(7); });
    variant("setIntegerUnsigned", [](OCVariant& v) { v.setIntegerUnsigned(7U); });
    variant("setMemoryBuffer", [&](OCVariant& v) { v.setMemoryBuffer(large); });
    variant("setStringAnsi", [](OCVariant& v) { v.setStringAnsi(longText); });
    variant("setStringWide", [](OCVariant& v) { v.setStringWide(longWide); });
    NowhereBuffer nowhere;
    std::ostream stream(&nowhere);
    variant("<<", [&](OCVariant& v) { stream << v; });
    variant.managing("getBoolean of a text", [](OCVariant& v) {
        sweep::refused<OXVariant_TypeMismatch>([&] { v.getBoolean(); });
    });

    const auto make = sweep::results();
    OCVariantData data;
    data.setType(VariantTypeAnsiString);
    data.setObject(new OCAnsiString(longText));
    make("new data", [](auto&) { delete new OCVariantData; });
    make("copy of data", [&](auto&) { OCVariantData copy(data); });
    const sweep::Operations assigned(
        [] {
            auto made = std::make_unique<OCVariantData>();
            made->setType(VariantTypeBoolean);
            made->setObject(new OCBoolean(true));
            return made;
        },
        [](const OCVariantData& d) { return std::to_string(d.getType()); });
    assigned("assign data", [&](OCVariantData& d) { d.assign(data); });
    assigned("data =", [&](OCVariantData& d) { d = data; });
}

TEST(AllocationSweep, Version) {
    sweep::results()("new", [](auto&) { delete new OCVersion(1, 2); });
}

} // namespace
