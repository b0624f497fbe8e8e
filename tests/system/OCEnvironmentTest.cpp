#include "OCEnvironment.h"
#include "support/EnvironmentCalls.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Forked.h"
#include "support/Growth.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <unistd.h>

namespace {

typedef std::vector<std::string> Texts;

std::string standard(const OCAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

Texts described(const OCNamedList& list) {
    Texts texts;
    for (unsigned long i = 0; i < list.getCount(); ++i)
        texts.push_back(standard(list.getName(i)) + "=" + standard(list.getValue(i)));
    return texts;
}

Texts strings(char* const* array) {
    Texts texts;
    for (; *array != nullptr; ++array)
        texts.push_back(*array);
    return texts;
}

/// The process's environment is `entries` while the object lives. It allocates nothing and sets
/// nothing: only the pointer of this process is another one.
class Environment {
public:
    explicit Environment(Texts entries) : held(environ), texts(std::move(entries)) {
        for (std::string& text : texts)
            pointers.push_back(text.data());
        pointers.push_back(nullptr);
        environ = pointers.data();
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment() { environ = held; }

private:
    char** held;
    Texts texts;
    std::vector<char*> pointers;
};

/// What a block reads when the process has these entries, in a child process.
std::string blockOf(const Texts& entries) {
    return inChild([&] {
        const Environment environment(entries);
        OCEnvironmentBlock block;
        block.readProcessEnvironment();
        std::string result;
        for (const std::string& text : described(block.getVariables()))
            result += text + "\n";
        return result;
    });
}

TEST(OCEnvironment, ClassesHaveTheirLayout) {
    EXPECT_EQ(8u + sizeof(OCAnsiString), sizeof(OCEnvironmentVariable));
    EXPECT_EQ(8u + sizeof(OCNamedList), sizeof(OCEnvironmentBlock));
    EXPECT_EQ(8u + sizeof(OCStringArray), sizeof(OCEnvironmentBufferArray));
    EXPECT_EQ(8u + sizeof(OCAnsiString), sizeof(OCEnvironmentBufferSerial));
    EXPECT_EQ(2u, slots::slotCount<OCEnvironmentVariable>());
    EXPECT_EQ(2u, slots::slotCount<OCEnvironmentBlock>());
    EXPECT_EQ(2u, slots::slotCount<OCEnvironmentBufferArray>());
    EXPECT_EQ(2u, slots::slotCount<OCEnvironmentBufferSerial>());
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCEnvironmentVariable>));
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCEnvironmentBlock>));
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCEnvironmentBufferArray>));
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCEnvironmentBufferSerial>));
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCEnvironmentVariable>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCEnvironmentBlock>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCEnvironmentBufferArray>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCEnvironmentBufferSerial>);
    EXPECT_TRUE(std::is_copy_constructible_v<OCEnvironmentVariable>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCEnvironmentBlock>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCEnvironmentBufferArray>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCEnvironmentBufferSerial>);
}

TEST(OCEnvironmentVariable, GivesItsValue) {
    EXPECT_EQ("a=b|", inChild([] {
                  ::setenv("ORVABASE_TEST", "a=b", 1);
                  ::setenv("ORVABASE_EMPTY", "", 1);
                  const OCEnvironmentVariable set("ORVABASE_TEST");
                  const OCEnvironmentVariable empty("ORVABASE_EMPTY");
                  return standard(set.getValue()) + "|" + standard(empty.getValue());
              }));
}

TEST(OCEnvironmentVariable, AVariableThatIsNotSetHasNoValue) {
    const OCEnvironmentVariable missing("ORVABASE_NOT_SET");
    EXPECT_EXCEPTION(missing.getValue(), OXEnvironmentVariable_GetValue,
                     "Error getting value of environment variable (ORVABASE_NOT_SET)");
    const OCEnvironmentVariable unnamed("");
    EXPECT_EXCEPTION(unnamed.getValue(), OXEnvironmentVariable_GetValue,
                     "Error getting value of environment variable ()");
}

TEST(OCEnvironmentVariable, GivesADefaultOnlyWhenItIsNotSet) {
    EXPECT_EQ("default||value||", inChild([] {
                  ::setenv("ORVABASE_TEST", "value", 1);
                  ::setenv("ORVABASE_EMPTY", "", 1);
                  const OCEnvironmentVariable missing("ORVABASE_NOT_SET");
                  const OCEnvironmentVariable set("ORVABASE_TEST");
                  const OCEnvironmentVariable empty("ORVABASE_EMPTY");
                  return standard(missing.getValue("default")) + "|" +
                         standard(missing.getValue("")) + "|" + standard(set.getValue("default")) +
                         "|" + standard(empty.getValue("default")) + "|";
              }));
}

TEST(OCEnvironmentVariable, AsksForItsNameOnce) {
    std::string asked;
    Replacement answering(calls::getenv, [&](const char* name) -> char* {
        asked += std::string(name) + ";";
        return nullptr;
    });
    const OCEnvironmentVariable variable("ORVABASE_TEST");
    EXPECT_EQ(OCAnsiString("x"), variable.getValue("x"));
    EXPECT_EQ("ORVABASE_TEST;", asked);
    EXPECT_THROW(variable.getValue(), OXEnvironmentVariable_GetValue);
    EXPECT_EQ("ORVABASE_TEST;ORVABASE_TEST;", asked);
}

TEST(OCEnvironmentVariable, SetsItsValueAlways) {
    EXPECT_EQ("first second  ", inChild([] {
                  OCEnvironmentVariable variable("ORVABASE_TEST");
                  std::string seen;
                  for (const char* value : {"first", "second", ""}) {
                      variable.setValue(value);
                      seen += std::string(::getenv("ORVABASE_TEST")) + " ";
                  }
                  return seen;
              }));
    int overwrites = -1;
    std::string set;
    Replacement setting(calls::setenv, [&](const char* name, const char* value, int overwrite) {
        set = std::string(name) + "=" + value;
        overwrites = overwrite;
        return 0;
    });
    OCEnvironmentVariable("NAME").setValue("value");
    EXPECT_EQ("NAME=value", set);
    EXPECT_EQ(1, overwrites);
}

TEST(OCEnvironmentVariable, SettingFailsWithTheName) {
    OCEnvironmentVariable unnamed("");
    EXPECT_EXCEPTION(unnamed.setValue("x"), OXEnvironmentVariable_SetValue,
                     "Error setting value of environment variable ()");
    OCEnvironmentVariable malformed("A=B");
    EXPECT_EXCEPTION(malformed.setValue("x"), OXEnvironmentVariable_SetValue,
                     "Error setting value of environment variable (A=B)");
    Failing exhausted(calls::setenv, ENOMEM);
    OCEnvironmentVariable variable("ORVABASE_TEST");
    EXPECT_EXCEPTION(variable.setValue("x"), OXEnvironmentVariable_SetValue,
                     "Error setting value of environment variable (ORVABASE_TEST)");
    EXPECT_EQ(1u, exhausted.calls());
}

TEST(OCEnvironmentVariable, AnyResultOfSettingButZeroIsAFailure) {
    Replacement odd(calls::setenv, [](const char*, const char*, int) { return 7; });
    OCEnvironmentVariable variable("ORVABASE_TEST");
    EXPECT_EXCEPTION(variable.setValue("x"), OXEnvironmentVariable_SetValue,
                     "Error setting value of environment variable (ORVABASE_TEST)");
}

TEST(OCEnvironmentVariable, DeletingTellsItsResultAndNeverThrows) {
    EXPECT_EQ("0 gone 0 -1 -1", inChild([] {
                  ::setenv("ORVABASE_TEST", "value", 1);
                  OCEnvironmentVariable variable("ORVABASE_TEST");
                  std::string seen = std::to_string(variable.deleteVariable());
                  seen += ::getenv("ORVABASE_TEST") == nullptr ? " gone " : " there ";
                  seen += std::to_string(variable.deleteVariable()) + " ";
                  seen += std::to_string(OCEnvironmentVariable("").deleteVariable()) + " ";
                  return seen + std::to_string(OCEnvironmentVariable("A=B").deleteVariable());
              }));
    std::string deleted;
    Replacement odd(calls::unsetenv, [&](const char* name) {
        deleted = name;
        return 7;
    });
    EXPECT_EQ(7, OCEnvironmentVariable("ORVABASE_TEST").deleteVariable());
    EXPECT_EQ("ORVABASE_TEST", deleted);
}

TEST(OCEnvironmentVariable, IsCopiedWithItsName) {
    OCEnvironmentVariable first("ORVABASE_NOT_SET_1");
    const OCEnvironmentVariable second("ORVABASE_NOT_SET_2");
    const OCEnvironmentVariable copy(first);
    EXPECT_EXCEPTION(copy.getValue(), OXEnvironmentVariable_GetValue,
                     "Error getting value of environment variable (ORVABASE_NOT_SET_1)");
    first = second;
    EXPECT_EXCEPTION(first.getValue(), OXEnvironmentVariable_GetValue,
                     "Error getting value of environment variable (ORVABASE_NOT_SET_2)");
}

TEST(OCEnvironmentBlock, StartsEmptyAndIsSortedByCaseSensitiveNames) {
    OCEnvironmentBlock block;
    EXPECT_TRUE(block.getVariables().isEmpty());
    block.getVariables().setValue("path", "3");
    block.getVariables().setValue("PATH", "2");
    block.getVariables().setValue("HOME", "1");
    EXPECT_EQ((Texts{"HOME=1", "PATH=2", "path=3"}), described(block.getVariables()));
    const OCEnvironmentBlock& constant = block;
    EXPECT_EQ(&block.getVariables(), &constant.getVariables());
    EXPECT_EQ(reinterpret_cast<char*>(&block) + 8, reinterpret_cast<char*>(&block.getVariables()));
    // The list's first two fields.
    const int* const fields = reinterpret_cast<const int*>(&block) + 4;
    EXPECT_EQ(1, fields[0]);
    EXPECT_EQ(1, fields[1]);
}

TEST(OCEnvironmentBlock, ReadsTheProcessesVariables) {
    EXPECT_EQ("A=1\nB=2\nC=3\n", blockOf({"B=2", "A=1", "C=3"}));
    EXPECT_EQ("A=b=c\nB==\n", blockOf({"A=b=c", "B=="}));
    EXPECT_EQ("", blockOf({}));
}

TEST(OCEnvironmentBlock, LeavesOutWhatHasNoNameOrNoValue) {
    EXPECT_EQ("A=1\n", blockOf({"EMPTY=", "A=1", "NOTHING", "", "=value", "=", "="}));
}

TEST(OCEnvironmentBlock, TheLastOfEqualNamesCounts) {
    EXPECT_EQ("A=2\na=3\n", blockOf({"A=1", "a=3", "A=2"}));
    EXPECT_EQ("A=2\n", blockOf({"A=1", "A=2", "A="}));
}

TEST(OCEnvironmentBlock, ReadingAddsToWhatIsThere) {
    EXPECT_EQ("A=new\nB=kept\nC=3\n", inChild([] {
                  const Environment environment({"A=new", "C=3", "B="});
                  OCEnvironmentBlock block;
                  block.getVariables().setValue("A", "old");
                  block.getVariables().setValue("B", "kept");
                  block.readProcessEnvironment();
                  block.readProcessEnvironment();
                  std::string result;
                  for (const std::string& text : described(block.getVariables()))
                      result += text + "\n";
                  return result;
              }));
}

TEST(OCEnvironmentBlock, ReadsTheRealEnvironment) {
    std::map<std::string, std::string> expected;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const std::size_t separator = text.find('=');
        if (separator != std::string::npos && separator != 0 && separator + 1 != text.size())
            expected[text.substr(0, separator)] = text.substr(separator + 1);
    }
    Texts texts;
    for (const auto& each : expected)
        texts.push_back(each.first + "=" + each.second);
    ASSERT_FALSE(texts.empty());
    OCEnvironmentBlock block;
    block.readProcessEnvironment();
    EXPECT_EQ(texts, described(block.getVariables()));
}

TEST(OCEnvironmentBlock, AProcessWithoutAnEnvironmentCannotBeRead) {
    EXPECT_EQ("OXEnvironmentBlock_ReadProcessEnvironment: Error reading process environment "
              "variables 1",
              inChild([] {
                  OCEnvironmentBlock block;
                  block.getVariables().setValue("A", "1");
                  ::clearenv();
                  environ = nullptr;
                  return thrown<OXEnvironmentBlock_ReadProcessEnvironment>(
                             [&] { block.readProcessEnvironment(); }) +
                         " " + std::to_string(block.getVariables().getCount());
              }));
}

TEST(OCEnvironmentBufferArray, HasAStringForEachVariableInTheListsOrder) {
    OCEnvironmentBlock block;
    block.getVariables().setValue("B", "2");
    block.getVariables().setValue("A", "1=x");
    OCEnvironmentBufferArray buffer(block);
    EXPECT_EQ((Texts{"A=1=x", "B=2"}), strings(buffer.getBuffer()));
    const OCEnvironmentBufferArray& constant = buffer;
    EXPECT_EQ(buffer.getBuffer(), constant.getBuffer());
    EXPECT_TRUE((std::is_same_v<char**, decltype(buffer.getBuffer())>));
    EXPECT_TRUE((std::is_same_v<char* const*, decltype(constant.getBuffer())>));

    OCNamedList list(NamedListCaseInsensitive, NamedListModeUnsorted);
    list.addElement("Z", "1");
    list.addElement("A", "2");
    list.addElement("Z", "3");
    list.addElement("", "4");
    EXPECT_EQ((Texts{"Z=1", "A=2", "Z=3", "=4"}),
              strings(OCEnvironmentBufferArray(list).getBuffer()));
}

TEST(OCEnvironmentBufferArray, LeavesOutEmptyValues) {
    OCEnvironmentBlock block;
    EXPECT_EQ(nullptr, OCEnvironmentBufferArray(block).getBuffer()[0]);
    block.getVariables().setValue("EMPTY", "");
    EXPECT_EQ(nullptr, OCEnvironmentBufferArray(block).getBuffer()[0]);
    block.getVariables().setValue("A", "1");
    block.getVariables().setValue("Z", "2");
    EXPECT_EQ((Texts{"A=1", "Z=2"}), strings(OCEnvironmentBufferArray(block).getBuffer()));
}

TEST(OCEnvironmentBufferArray, IsBuiltAtOnce) {
    OCEnvironmentBlock block;
    block.getVariables().setValue("A", "1");
    const OCEnvironmentBufferArray buffer(block);
    block.getVariables().setValue("A", "changed");
    block.getVariables().setValue("B", "2");
    EXPECT_EQ((Texts{"A=1"}), strings(buffer.getBuffer()));
}

TEST(OCEnvironmentBufferArray, StartsAProgramWithExactlyItsVariables) {
    OCEnvironmentBlock block;
    block.getVariables().setValue("ORVABASE_A", "1");
    block.getVariables().setValue("ORVABASE_B", "two words");
    block.getVariables().setValue("ORVABASE_EMPTY", "");
    OCEnvironmentBufferArray buffer(block);
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    const pid_t child = fork();
    if (child == 0) {
        char program[] = "/usr/bin/env";
        char* arguments[] = {program, nullptr};
        dup2(ends[1], 1);
        execve(program, arguments, buffer.getBuffer());
        _exit(1);
    }
    close(ends[1]);
    std::string output;
    char bytes[512];
    for (ssize_t n = 0; (n = read(ends[0], bytes, sizeof bytes)) > 0;)
        output.append(bytes, static_cast<std::size_t>(n));
    close(ends[0]);
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_EQ("ORVABASE_A=1\nORVABASE_B=two words\n", output);
}

/// The bytes up to and with the two zero bytes at the end, of `length` bytes before the last one.
std::string bytesOf(const OCEnvironmentBufferSerial& buffer, std::size_t length) {
    return std::string(buffer.getBuffer(), length + 1);
}

TEST(OCEnvironmentBufferSerial, EndsEachEntryAndTheWholeWithAZero) {
    OCEnvironmentBlock block;
    block.getVariables().setValue("A", "1");
    block.getVariables().setValue("B", "2");
    OCEnvironmentBufferSerial buffer(block);
    EXPECT_EQ(std::string("A=1\0B=2\0\0", 9), bytesOf(buffer, 8));
    const OCEnvironmentBufferSerial& constant = buffer;
    EXPECT_EQ(buffer.getBuffer(), constant.getBuffer());
    EXPECT_TRUE((std::is_same_v<char*, decltype(buffer.getBuffer())>));
    EXPECT_TRUE((std::is_same_v<const char*, decltype(constant.getBuffer())>));
    // The string is the object's only field, and it counts all but its own terminator.
    const unsigned long* const end = reinterpret_cast<const unsigned long*>(&buffer + 1);
    EXPECT_EQ(8u, end[-1]);

    OCNamedList list(NamedListCaseSensitive, NamedListModeUnsorted);
    list.addElement("Z", "1");
    list.addElement("A", "x=y");
    list.addElement("", "4");
    EXPECT_EQ(std::string("Z=1\0A=x=y\0=4\0\0", 14), bytesOf(OCEnvironmentBufferSerial(list), 13));
}

TEST(OCEnvironmentBufferSerial, LeavesOutEmptyValues) {
    OCEnvironmentBlock block;
    EXPECT_EQ(std::string("\0", 1), bytesOf(OCEnvironmentBufferSerial(block), 0));
    block.getVariables().setValue("EMPTY", "");
    EXPECT_EQ(std::string("\0", 1), bytesOf(OCEnvironmentBufferSerial(block), 0));
    block.getVariables().setValue("A", "1");
    block.getVariables().setValue("Z", "2");
    EXPECT_EQ(std::string("A=1\0Z=2\0\0", 9), bytesOf(OCEnvironmentBufferSerial(block), 8));
}

TEST(OCEnvironmentBuffers, TheStepsOfTheirConstructionAddToWhatIsThere) {
    OCNamedList list(NamedListCaseSensitive, NamedListModeUnsorted);
    list.addElement("B", "2");
    list.addElement("EMPTY", "");
    OCNamedList other(NamedListCaseSensitive, NamedListModeUnsorted);
    other.addElement("A", std::string(200, 'x').c_str());
    OCEnvironmentBufferArray array(list);
    array.initializeStrings(other);
    array.initialize(list);
    const std::string longEntry = "A=" + std::string(200, 'x');
    EXPECT_EQ((Texts{"B=2", longEntry, "B=2"}), strings(array.getBuffer()));
    OCEnvironmentBufferSerial serial(list);
    serial.initializeStrings(other);
    serial.initialize(list);
    EXPECT_EQ(std::string("B=2\0", 4) + longEntry + std::string("\0B=2\0\0", 6),
              bytesOf(serial, 211));
    // Without variables nothing is added.
    serial.initialize(OCNamedList(NamedListCaseSensitive, NamedListModeUnsorted));
    EXPECT_EQ(std::string("B=2\0\0", 5), bytesOf(serial, 211).substr(207));
    other.setValue("A", std::string(1000, 'y').c_str());
    EXPECT_EQ(1u,
              fault::failEachRequest(
                  [&] { serial.initialize(other); },
                  [&] { EXPECT_EQ(std::string("B=2\0\0", 5), bytesOf(serial, 211).substr(207)); }));
}

TEST(OCEnvironmentBuffers, DoWhatAModelDoesWithRandomVariables) {
    constexpr unsigned int seed = 20261122;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto text = [&](unsigned long limit) {
        std::string result;
        for (unsigned long n = random() % (limit + 1); n != 0; --n)
            result += "Aab=Z \xc3"[random() % 7];
        return result;
    };
    for (int round = 0; round < 300; ++round) {
        OCEnvironmentBlock block;
        std::vector<std::pair<std::string, std::string>> model; // in the order of the list
        OCNamedList list(NamedListCaseSensitive, NamedListModeUnsorted);
        for (unsigned long n = random() % 30; n != 0; --n) {
            const std::string name = text(3);
            const std::string value = text(random() % 10 == 0 ? 300 : 3);
            list.addElement(name.c_str(), value.c_str());
            model.emplace_back(name, value);
            block.getVariables().setValue(name.c_str(), value.c_str());
        }
        Texts expected;
        std::string serial;
        for (const auto& each : model) {
            if (!each.second.empty()) {
                expected.push_back(each.first + "=" + each.second);
                serial += expected.back() + '\0';
            }
        }
        ASSERT_EQ(expected, strings(OCEnvironmentBufferArray(list).getBuffer()));
        ASSERT_EQ(serial + '\0', bytesOf(OCEnvironmentBufferSerial(list), serial.size()));
        ASSERT_EQ(strings(OCEnvironmentBufferArray(block.getVariables()).getBuffer()),
                  strings(OCEnvironmentBufferArray(block).getBuffer()));
    }
}

TEST(OCEnvironment, ExhaustedMemoryIsReportedAndLeavesNothingBehind) {
    const std::string longText(300, 'x');
    ASSERT_EQ("done", inChild([&]() -> std::string {
                  ::setenv("ORVABASE_TEST", longText.c_str(), 1);
                  const OCEnvironmentVariable variable("ORVABASE_TEST");
                  const OCEnvironmentVariable missing(longText.c_str());
                  const OCAnsiString fallback(longText.c_str());
                  const long before = fault::heapRecord().liveBlocks;
                  if (fault::failEachRequest([&] { variable.getValue(); }) != 1 ||
                      fault::failEachRequest([&] { missing.getValue(fallback); }) != 1 ||
                      fault::failEachRequest([&] { OCEnvironmentVariable copy(variable); }) != 0)
                      return "values";
                  if (fault::heapRecord().liveBlocks != before)
                      return "left";
                  return "done";
              }));

    OCEnvironmentBlock block;
    block.getVariables().setValue("A", longText.c_str());
    block.getVariables().setValue("B", longText.c_str());
    const long before = fault::heapRecord().liveBlocks;
    const auto unchanged = [&] { EXPECT_EQ(before, fault::heapRecord().liveBlocks); };
    EXPECT_LT(3u,
              fault::failEachRequest([&] { OCEnvironmentBufferArray buffer(block); }, unchanged));
    EXPECT_EQ(1u,
              fault::failEachRequest([&] { OCEnvironmentBufferSerial buffer(block); }, unchanged));
    EXPECT_LT(3u, fault::failEachRequest(
                      [] {
                          OCEnvironmentBlock read;
                          read.readProcessEnvironment();
                      },
                      unchanged));
    unchanged();
}

TEST(OCEnvironment, LargeBlocksTakeLinearTime) {
    EXPECT_LT(growth::ofEightTimes(
                  [](unsigned long n) {
                      OCNamedList list(NamedListCaseSensitive, NamedListModeUnsorted);
                      for (unsigned long i = 0; i < n; ++i)
                          list.addElement("NAME", "value");
                      OCEnvironmentBufferArray array(list);
                      OCEnvironmentBufferSerial serial(list);
                  },
                  5000),
              30);
}

} // namespace
