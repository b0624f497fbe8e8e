#include "OCApplicationArguments.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Growth.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace {

/// An argument as the tests write it: `s`, `l` or `m` for the type, the name and the value.
std::string described(const OCApplicationArgument& argument) {
    std::string text(1, "slm"[argument.getType()]);
    text += " [" + std::string(argument.getName().getString(), argument.getName().getLength());
    text += "] [" + std::string(argument.getValue().getString(), argument.getValue().getLength());
    return text + "]";
}

typedef std::vector<std::string> Texts;

Texts described(const OCApplicationArgumentList& list) {
    Texts texts;
    for (unsigned long i = 0; i < list.getCount(); ++i)
        texts.push_back(described(list.getArgument(i)));
    return texts;
}

/// What one argument gives.
Texts added(const OCAnsiString& argument) {
    OCApplicationArgumentList list;
    list.addArgument(argument);
    return described(list);
}

/// What one text gives.
Texts split(const char* commandLine) {
    OCApplicationArgumentList list;
    list.assign(commandLine);
    return described(list);
}

/// What the arguments of `main` give.
Texts assigned(std::vector<std::string> arguments) {
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    OCApplicationArgumentList list;
    list.assign(static_cast<int>(arguments.size()), pointers.data());
    return described(list);
}

TEST(OCApplicationArgument, HasItsLayout) {
    EXPECT_EQ(8u + 2 * sizeof(OCAnsiString) + 8, sizeof(OCApplicationArgument));
    EXPECT_EQ(352u, sizeof(OCApplicationArgument));
    EXPECT_EQ(2u, slots::slotCount<OCApplicationArgument>());
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCApplicationArgument>));
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCApplicationArgument>);
    EXPECT_EQ(4u, sizeof(OEApplicationArgumentType));
    EXPECT_EQ(0, ApplicationArgumentTypeShort);
    EXPECT_EQ(1, ApplicationArgumentTypeLong);
    EXPECT_EQ(2, ApplicationArgumentTypeMiscellaneous);

    // The fields in their order: the strings' texts are where the fields are.
    OCApplicationArgument argument;
    argument.setName("n");
    argument.setValue("v");
    const char* const start = reinterpret_cast<const char*>(&argument);
    EXPECT_EQ(16, argument.getName().getString() - start);
    EXPECT_EQ(16 + 168, argument.getValue().getString() - start);
    argument.setType(static_cast<OEApplicationArgumentType>(77));
    EXPECT_EQ(77, *reinterpret_cast<const int*>(start + 344));
}

TEST(OCApplicationArgument, StartsAsAMiscellaneousArgumentWithoutTexts) {
    const OCApplicationArgument argument;
    EXPECT_EQ("m [] []", described(argument));
    EXPECT_FALSE(argument.hasName());
    EXPECT_FALSE(argument.hasValue());
}

TEST(OCApplicationArgument, HasAFieldForEachOfItsThreeParts) {
    OCApplicationArgument argument;
    argument.setName("level");
    EXPECT_TRUE(argument.hasName());
    EXPECT_FALSE(argument.hasValue());
    argument.setValue("3");
    EXPECT_TRUE(argument.hasValue());
    argument.setType(ApplicationArgumentTypeLong);
    EXPECT_EQ("l [level] [3]", described(argument));
    argument.setType(ApplicationArgumentTypeShort);
    argument.setName("");
    EXPECT_FALSE(argument.hasName());
    EXPECT_EQ("s [] [3]", described(argument));
    argument.setType(static_cast<OEApplicationArgumentType>(-5));
    EXPECT_EQ(-5, argument.getType());
}

TEST(OCApplicationArgument, IsCopiedAsAValue) {
    OCApplicationArgument argument;
    argument.setName("level");
    argument.setValue("3");
    argument.setType(ApplicationArgumentTypeLong);
    OCApplicationArgument copy(argument);
    argument.setValue("4");
    EXPECT_EQ("l [level] [3]", described(copy));
    copy = argument;
    EXPECT_EQ("l [level] [4]", described(copy));
}

TEST(OCApplicationArgumentList, HasItsLayout) {
    EXPECT_EQ(8u + sizeof(OCVector), sizeof(OCApplicationArgumentList));
    EXPECT_EQ(48u, sizeof(OCApplicationArgumentList));
    EXPECT_EQ(2u, slots::slotCount<OCApplicationArgumentList>());
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCApplicationArgumentList>));
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCApplicationArgumentList>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCApplicationArgumentList>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCApplicationArgumentList>);
}

TEST(OCApplicationArgumentList, StartsEmpty) {
    const OCApplicationArgumentList list;
    EXPECT_EQ(0u, list.getCount());
    EXPECT_TRUE(list.isEmpty());
}

TEST(OCApplicationArgumentList, TakesTheArgumentsOfMainBehindTheFirst) {
    EXPECT_EQ((Texts{"s [v] []", "l [level] [3]", "m [] [input.txt]"}),
              assigned({"prog", "-v", "--level=3", "input.txt"}));
    EXPECT_EQ((Texts{"m [] [a]"}), assigned({"-n", "a"}));
    EXPECT_EQ(Texts(), assigned({"prog"}));
    EXPECT_EQ(Texts(), assigned({}));
    EXPECT_EQ((Texts{"m [] []", "m [] [two words]", "m [] [ ]"}),
              assigned({"prog", "", "two words", " "}));
}

TEST(OCApplicationArgumentList, IsEmptyWithoutArgumentsAndLooksAtNone) {
    OCApplicationArgumentList list;
    for (const int count : {1, 0, -1, -2147483647 - 1}) {
        list.addArgument("old");
        list.assign(count, nullptr);
        EXPECT_TRUE(list.isEmpty()) << count;
    }
    // The first one is not looked at, the last one is the one before the count.
    char one[] = "one";
    char two[] = "two";
    char* arguments[] = {nullptr, one, two};
    list.assign(2, arguments);
    EXPECT_EQ((Texts{"m [] [one]"}), described(list));
}

TEST(OCApplicationArgumentList, ANullPointerEndsTheArguments) {
    OCApplicationArgumentList list;
    char one[] = "one";
    char two[] = "two";
    char* arguments[] = {one, two, nullptr, one, nullptr};
    list.assign(5, arguments);
    EXPECT_EQ((Texts{"m [] [two]"}), described(list));
    list.assign(2, nullptr);
    EXPECT_TRUE(list.isEmpty());
}

TEST(OCApplicationArgumentList, AssigningReplacesWhatWasThere) {
    OCApplicationArgumentList list;
    list.assign("-a -b -c");
    EXPECT_EQ(3u, list.getCount());
    list.assign("x");
    EXPECT_EQ((Texts{"m [] [x]"}), described(list));
    char program[] = "prog";
    char option[] = "--yes";
    char* arguments[] = {program, option, nullptr};
    list.assign(2, arguments);
    EXPECT_EQ((Texts{"l [yes] []"}), described(list));
    list.assign("");
    EXPECT_TRUE(list.isEmpty());
}

TEST(OCApplicationArgumentList, ClassifiesByTheFirstTwoCharacters) {
    const OCApplicationArgumentList list;
    const struct {
        const char* text;
        bool isShort;
        bool isLong;
    } cases[] = {{"", false, false},   {"-", false, false},  {"a", false, false},
                 {"--", false, true},  {"-a", true, false},  {"-=", true, false},
                 {"- ", true, false},  {"a-", false, false}, {"a--", false, false},
                 {"---", false, true}, {"-a-", true, false}, {"--a", false, true}};
    for (const auto& each : cases) {
        EXPECT_EQ(each.isShort, list.isOptionShort(each.text)) << each.text;
        EXPECT_EQ(each.isLong, list.isOptionLong(each.text)) << each.text;
    }
    EXPECT_TRUE(list.isOptionShort(OCAnsiString("-\0", 2)));
    EXPECT_FALSE(list.isOptionShort(OCAnsiString("\0-", 2)));
}

TEST(OCApplicationArgumentList, TakesAClusterOfShortOptionsApart) {
    EXPECT_EQ((Texts{"s [a] []"}), added("-a"));
    EXPECT_EQ((Texts{"s [a] []", "s [b] []", "s [c] []"}), added("-abc"));
    EXPECT_EQ((Texts{"s [o] [file]"}), added("-o=file"));
    EXPECT_EQ((Texts{"s [a] []", "s [b] [1]"}), added("-ab=1"));
    EXPECT_EQ((Texts{"s [a] []"}), added("-a="));
    EXPECT_EQ((Texts{"s [a] []", "s [b] []"}), added("-ab="));
    EXPECT_EQ((Texts{"s [a] [b=c]"}), added("-a=b=c"));
    EXPECT_EQ((Texts{"s [a] [=]"}), added("-a=="));
    EXPECT_EQ((Texts{"s [a] []", "s [-] []", "s [b] []"}), added("-a-b"));
    EXPECT_EQ((Texts{"s [a] []", "s [ ] []"}), added("-a "));
}

TEST(OCApplicationArgumentList, AnEqualsSignInAShortOptionsPlaceIsItsName) {
    EXPECT_EQ((Texts{"s [=] []"}), added("-="));
    EXPECT_EQ((Texts{"s [=] []"}), added("-=="));
    EXPECT_EQ((Texts{"s [=] []", "s [x] []"}), added("-=x"));
    EXPECT_EQ((Texts{"s [=] [x]"}), added("-==x"));
    EXPECT_EQ((Texts{"s [=] []", "s [x] [y]"}), added("-=x=y"));
}

TEST(OCApplicationArgumentList, TakesALongOptionApartAtTheFirstEqualsSign) {
    EXPECT_EQ((Texts{"l [all] []"}), added("--all"));
    EXPECT_EQ((Texts{"l [name] [value]"}), added("--name=value"));
    EXPECT_EQ((Texts{"l [name] []"}), added("--name="));
    EXPECT_EQ((Texts{"l [name] [a=b]"}), added("--name=a=b"));
    EXPECT_EQ((Texts{"l [name] [=]"}), added("--name=="));
    EXPECT_EQ((Texts{"l [-x] []"}), added("---x"));
    EXPECT_EQ((Texts{"l [----] []"}), added("------"));
    EXPECT_EQ((Texts{"l [a b] [c d]"}), added("--a b=c d"));
}

TEST(OCApplicationArgumentList, ALongOptionOfOneCharacterIsAShortOne) {
    EXPECT_EQ((Texts{"s [x] []"}), added("--x"));
    EXPECT_EQ((Texts{"s [x] [1]"}), added("--x=1"));
    EXPECT_EQ((Texts{"s [x] []"}), added("--x="));
    EXPECT_EQ((Texts{"s [-] []"}), added("---"));
    EXPECT_EQ((Texts{"s [-] [v]"}), added("---=v"));
    EXPECT_EQ((Texts{"l [xy] [1]"}), added("--xy=1"));
}

TEST(OCApplicationArgumentList, DropsLongOptionsWithoutAName) {
    EXPECT_EQ(Texts(), added("--"));
    EXPECT_EQ(Texts(), added("--="));
    EXPECT_EQ(Texts(), added("--=x"));
    EXPECT_EQ(Texts(), added("--=x=y"));
}

TEST(OCApplicationArgumentList, TwoDashesDoNotEndTheOptions) {
    EXPECT_EQ((Texts{"m [] [a]", "s [x] []", "l [yes] []"}),
              assigned({"prog", "a", "--", "-x", "--yes"}));
}

TEST(OCApplicationArgumentList, AnythingElseIsMiscellaneous) {
    EXPECT_EQ((Texts{"m [] []"}), added(""));
    EXPECT_EQ((Texts{"m [] [-]"}), added("-"));
    EXPECT_EQ((Texts{"m [] [file=x]"}), added("file=x"));
    EXPECT_EQ((Texts{"m [] [ -a]"}), added(" -a"));
    EXPECT_EQ((Texts{"m [] [/o]"}), added("/o"));
}

TEST(OCApplicationArgumentList, TheNextArgumentIsNeverAValue) {
    EXPECT_EQ((Texts{"s [o] []", "m [] [file]", "l [out] []", "m [] [=x]"}),
              assigned({"prog", "-o", "file", "--out", "=x"}));
}

TEST(OCApplicationArgumentList, ZeroBytesAreCharacters) {
    const std::string zero(1, '\0');
    EXPECT_EQ((Texts{"s [" + zero + "] []", "s [a] [" + zero + "]"}),
              added(OCAnsiString("-\0a=\0", 5)));
    EXPECT_EQ((Texts{"l [a" + zero + "] [b" + zero + "]"}), added(OCAnsiString("--a\0=b\0", 7)));
    EXPECT_EQ((Texts{"m [] [" + zero + "]"}), added(OCAnsiString('\0')));
}

TEST(OCApplicationArgumentList, SplitsATextAtSpaces) {
    EXPECT_EQ(Texts(), split(""));
    EXPECT_EQ((Texts{"m [] [a]"}), split("a"));
    EXPECT_EQ((Texts{"m [] [a]", "m [] [b]"}), split("a b"));
    EXPECT_EQ((Texts{"m [] [a]", "m [] [b]"}), split("a  b"));
    EXPECT_EQ((Texts{"m [] [a]", "m [] [b]"}), split("a    b   "));
    EXPECT_EQ((Texts{"m [] [a]"}), split("a "));
    EXPECT_EQ((Texts{"s [v] []", "l [level] [3]", "m [] [input.txt]"}),
              split("-v --level=3 input.txt"));
    EXPECT_EQ((Texts{"s [o] []", "m [] [b]"}), split("-o= b"));
}

TEST(OCApplicationArgumentList, TheFirstCharacterOfATextIsNoSeparator) {
    EXPECT_EQ((Texts{"m [] [ a]"}), split(" a"));
    EXPECT_EQ((Texts{"m [] [ -a]", "s [b] []"}), split(" -a -b"));
    EXPECT_EQ((Texts{"m [] [ ]"}), split(" "));
    EXPECT_EQ((Texts{"m [] [ ]"}), split("  "));
    EXPECT_EQ((Texts{"m [] [ ]", "m [] [a]"}), split("  a"));
    EXPECT_EQ((Texts{"m [] [ ]", "s [a] []"}), split("    -a"));
}

TEST(OCApplicationArgumentList, OtherWhiteSpaceAndQuotesBelongToThePieces) {
    EXPECT_EQ((Texts{"m [] [a\tb]"}), split("a\tb"));
    EXPECT_EQ((Texts{"m [] [a\r\nb]", "m [] [\v\f]"}), split("a\r\nb \v\f"));
    EXPECT_EQ((Texts{"m [] [\"a]", "m [] [b\"]", "m [] [c\\]", "m [] [d']"}),
              split("\"a b\" c\\ d'"));
}

TEST(OCApplicationArgumentList, ATextMayBeOneOfTheListsOwn) {
    OCApplicationArgumentList list;
    list.addArgument("x -y=z w");
    list.assign(list.getArgument(0).getValue().getString());
    EXPECT_EQ((Texts{"m [] [x]", "s [y] [z]", "m [] [w]"}), described(list));

    OCApplicationArgument& first = list.getArgument(0);
    first.setValue("-q");
    std::string program = "prog";
    char* arguments[] = {program.data(), const_cast<char*>(first.getValue().getString()), nullptr};
    list.assign(2, arguments);
    EXPECT_EQ((Texts{"s [q] []"}), described(list));
    for (int i = 0; i < 200; ++i)
        list.addArgument(list.getArgument(0).getName());
    EXPECT_EQ(201u, list.getCount());
    EXPECT_EQ("m [] [q]", described(list.getArgument(200)));
}

TEST(OCApplicationArgumentList, SplittingALongOptionGivesItsNameAndItsValue) {
    const OCApplicationArgumentList list;
    const struct {
        const char* option;
        bool result;
        const char* name;
        const char* value;
    } cases[] = {{"name", true, "name", ""},
                 {"name=", true, "name", ""},
                 {"name=value", true, "name", "value"},
                 {"a=b=c", true, "a", "b=c"},
                 {"x", true, "x", ""},
                 {"", true, "", ""},
                 {"=", false, "before", "before"},
                 {"=x", false, "before", "before"}};
    for (const auto& each : cases) {
        OCAnsiString name("before");
        OCAnsiString value("before");
        EXPECT_EQ(each.result, list.splitOptionLong(each.option, name, value)) << each.option;
        EXPECT_EQ(OCAnsiString(each.name), name) << each.option;
        EXPECT_EQ(OCAnsiString(each.value), value) << each.option;
    }
    OCAnsiString same("a=b");
    OCAnsiString value;
    EXPECT_TRUE(list.splitOptionLong(same, same, value));
    EXPECT_EQ(OCAnsiString("a"), same);
    EXPECT_EQ(OCAnsiString("b"), value);
    OCAnsiString other("c=d");
    OCAnsiString name;
    EXPECT_TRUE(list.splitOptionLong(other, name, other));
    EXPECT_EQ(OCAnsiString("c"), name);
    EXPECT_EQ(OCAnsiString("d"), other);
}

TEST(OCApplicationArgumentList, TheStepsCanBeTakenOneByOne) {
    OCApplicationArgumentList list;
    list.appendOptionShort("many", "v");
    list.appendOptionShort("s", "");
    list.appendOptionLong("x", "");
    list.appendOptionLong("", "v");
    list.appendMiscellaneous("-m");
    list.parseMiscellaneous("--misc");
    list.parseOptionShort("xab");
    list.parseOptionLong("xxab=c");
    EXPECT_EQ((Texts{"s [many] [v]", "s [s] []", "l [x] []", "l [] [v]", "m [] [-m]",
                     "m [] [--misc]", "s [a] []", "s [b] []", "l [ab] [c]"}),
              described(list));
    // Texts that are too short for their step add nothing.
    list.clear();
    for (const char* text : {"", "-", "a"}) {
        list.parseOptionShort(text);
        list.parseOptionLong(text);
    }
    list.parseOptionLong("--");
    list.parseOptionLong("ab");
    EXPECT_TRUE(list.isEmpty());
}

TEST(OCApplicationArgumentList, GivesItsArgumentsByIndex) {
    OCApplicationArgumentList list;
    list.assign("-a b");
    const OCApplicationArgumentList& constant = list;
    EXPECT_EQ(&list.getArgument(1), &constant.getArgument(1));
    list.getArgument(1).setValue("changed");
    EXPECT_EQ((Texts{"s [a] []", "m [] [changed]"}), described(list));
    EXPECT_EXCEPTION(list.getArgument(2), OXVector_NoSuchIndex, "Vector index out of bounds (2)");
    EXPECT_EXCEPTION(constant.getArgument(~0UL), OXVector_NoSuchIndex,
                     "Vector index out of bounds (18446744073709551615)");
    OCApplicationArgumentList empty;
    EXPECT_EXCEPTION(empty.getArgument(0), OXVector_NoSuchIndex, "Vector index out of bounds (0)");
}

TEST(OCApplicationArgumentList, ClearDeletesAllArguments) {
    OCApplicationArgumentList list;
    list.addArgument("first"); // the vector keeps its first slots
    list.clear();
    const long before = fault::heapRecord().liveBlocks;
    list.assign("-abc --long=value file");
    list.getArgument(1).setValue(OCAnsiString("a text that is longer than the string itself holds"
                                              " ........................................"
                                              " ........................................"));
    EXPECT_LT(before, fault::heapRecord().liveBlocks);
    list.clear();
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(before, fault::heapRecord().liveBlocks);
    list.clear();
    list.addArgument("again");
    EXPECT_EQ((Texts{"m [] [again]"}), described(list));
}

TEST(OCApplicationArgumentList, DestructionDeletesAllArguments) {
    EXPECT_EQ(0, fault::blocksLeftBy([] {
                  OCApplicationArgumentList list;
                  list.assign("-abc --long=value file");
              }));
}

TEST(OCApplicationArgumentList, ExhaustedMemoryLeavesTheListOnAssignment) {
    const std::string text = std::string(300, 'x') + " -abc --" + std::string(200, 'n') + "=" +
                             std::string(400, 'v') + " --q";
    std::string program("prog");
    std::string option("--" + std::string(200, 'n') + "=" + std::string(400, 'v'));
    char* arguments[] = {program.data(), option.data(), nullptr};
    const Texts old{"s [o] [old]", "m [] [file]"};
    OCApplicationArgumentList list;
    list.addArgument("first"); // the vector keeps its first slots
    list.clear();
    const long before = fault::heapRecord().liveBlocks;
    list.assign("-o=old file");
    const long held = fault::heapRecord().liveBlocks;
    const auto unchanged = [&] {
        EXPECT_EQ(held, fault::heapRecord().liveBlocks);
        EXPECT_EQ(old, described(list));
    };
    EXPECT_LT(5u, fault::failEachRequest([&] { list.assign(text.c_str()); }, unchanged));
    EXPECT_EQ(6u, list.getCount());
    list.assign("-o=old file");
    EXPECT_LT(3u, fault::failEachRequest([&] { list.assign(2, arguments); }, unchanged));
    EXPECT_EQ(1u, list.getCount());
    list.clear();
    EXPECT_EQ(before, fault::heapRecord().liveBlocks);
}

TEST(OCApplicationArgumentList, ExhaustedMemoryLosesNoArgumentOnAddition) {
    // The vector needs more room for the 65th.
    OCApplicationArgumentList list;
    while (list.getCount() < 64)
        list.addArgument("x");
    const OCAnsiString name(std::string(200, 'n').c_str());
    const OCAnsiString value(std::string(400, 'v').c_str());
    const OCAnsiString option = name + "=" + value;
    const long held = fault::heapRecord().liveBlocks;
    const auto unchanged = [&] {
        EXPECT_EQ(held, fault::heapRecord().liveBlocks);
        EXPECT_EQ(64u, list.getCount());
        EXPECT_EQ("m [] [x]", described(list.getArgument(63)));
        EXPECT_EXCEPTION(list.getArgument(64), OXVector_NoSuchIndex,
                         "Vector index out of bounds (64)");
    };
    // The argument, its two texts, and the vector's slots.
    EXPECT_EQ(4u, fault::failEachRequest([&] { list.appendOptionLong(name, value); }, unchanged));
    EXPECT_EQ(65u, list.getCount());
    EXPECT_EQ(OCAnsiString(value), list.getArgument(64).getValue());

    OCApplicationArgumentList cluster;
    fault::failEachRequest([&] { cluster.addArgument("-ab=c"); }, [&] { cluster.clear(); });
    EXPECT_EQ((Texts{"s [a] []", "s [b] [c]"}), described(cluster));
    OCAnsiString gotName("before");
    OCAnsiString gotValue("before");
    EXPECT_EQ(2u, fault::failEachRequest([&] { list.splitOptionLong(option, gotName, gotValue); },
                                         [&] {
                                             EXPECT_EQ(OCAnsiString("before"), gotName);
                                             EXPECT_EQ(OCAnsiString("before"), gotValue);
                                         }));
    EXPECT_EQ(value, gotValue);
}

/// A model that follows the description of the forms with positions in a standard string.
void modelArgument(const std::string& text, Texts& texts) {
    const auto add = [&](char type, const std::string& name, const std::string& value) {
        texts.push_back(std::string(1, type) + " [" + name + "] [" + value + "]");
    };
    if (text.size() < 2 || text[0] != '-') {
        add('m', "", text);
    } else if (text[1] != '-') {
        std::string rest = text.substr(1);
        while (!rest.empty()) {
            const std::string name = rest.substr(0, 1);
            rest.erase(0, 1);
            std::string value;
            if (!rest.empty() && rest[0] == '=') {
                value = rest.substr(1);
                rest.clear();
            }
            add('s', name, value);
        }
    } else {
        const std::string rest = text.substr(2);
        const std::size_t equals = rest.find('=');
        const std::string name = rest.substr(0, equals);
        if (!name.empty())
            add(name.size() == 1 ? 's' : 'l', name,
                equals == std::string::npos ? "" : rest.substr(equals + 1));
    }
}

TEST(OCApplicationArgumentList, DoesWhatAModelDoesOnRandomCommandLines) {
    constexpr unsigned int seed = 20261121;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (unsigned long n = random() % 40; n != 0; --n)
            text += "--==  ab\tc"[random() % 10];
        Texts expected;
        std::string piece;
        for (std::size_t i = 0; i <= text.size(); ++i) {
            if (i < text.size() && (text[i] != ' ' || i == 0)) {
                piece += text[i];
            } else if (!piece.empty()) {
                modelArgument(piece, expected);
                piece.clear();
            }
        }
        ASSERT_EQ(expected, split(text.c_str())) << "[" << text << "]";

        std::vector<std::string> arguments;
        Texts expectedOfMain;
        for (unsigned long n = random() % 5; n != 0; --n) {
            std::string argument;
            for (unsigned long length = random() % 8; length != 0; --length)
                argument += "--=a b"[random() % 6];
            if (!arguments.empty())
                modelArgument(argument, expectedOfMain);
            arguments.push_back(argument);
        }
        ASSERT_EQ(expectedOfMain, assigned(arguments));
    }
}

TEST(OCApplicationArgumentList, TakesLinearTime) {
    EXPECT_LT(growth::ofEightTimes(
                  [](unsigned long n) {
                      std::string text;
                      while (text.size() < n)
                          text += "a  ";
                      OCApplicationArgumentList list;
                      list.assign(text.c_str());
                      list.addArgument(OCAnsiString(("-" + std::string(n, 'a')).c_str()));
                  },
                  40000),
              30);
}

} // namespace
