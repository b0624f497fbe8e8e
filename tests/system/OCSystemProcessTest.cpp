#include "OCSystemProcess.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/FileCalls.h"
#include "support/Forked.h"
#include "support/ScratchDirectory.h"
#include "support/Slots.h"
#include "support/SystemProcessCalls.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <type_traits>
#include <vector>

namespace {

std::string standard(const OCAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

std::string currentDirectory() {
    return std::filesystem::current_path().string();
}

std::string executable() {
    return std::filesystem::read_symlink("/proc/self/exe").string();
}

/// As the program would be started with one argument.
void startAs(std::string name) {
    char* arguments[] = {name.data(), nullptr};
    OCSystemProcessProperties::initialize(1, arguments);
}

std::string startedAs() {
    OCFilePath path("untouched");
    return OCSystemProcessProperties::queryStartedAs(path) ? standard(path)
                                                           : "no, " + standard(path);
}

std::string startedFrom() {
    OCFilePath path("untouched");
    return OCSystemProcessProperties::queryStartedFrom(path) ? standard(path)
                                                             : "no, " + standard(path);
}

TEST(OCSystemProcessAffinity, HasItsLayout) {
    EXPECT_EQ(128u, sizeof(cpu_set_t));
    EXPECT_EQ(136u, sizeof(OCSystemProcessAffinity));
    EXPECT_EQ(2u, slots::slotCount<OCSystemProcessAffinity>());
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCSystemProcessAffinity>));
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCSystemProcessAffinity>);
}

TEST(OCSystemProcessAffinity, StartsWithoutProcessors) {
    const OCSystemProcessAffinity processors;
    for (unsigned int i = 0; i < 1100; ++i)
        EXPECT_FALSE(processors.getSwitch(i)) << i;
    const cpu_set_t set = processors.getAffinity();
    EXPECT_EQ(0, CPU_COUNT(&set));
}

TEST(OCSystemProcessAffinity, EachProcessorHasABit) {
    OCSystemProcessAffinity processors;
    const std::vector<unsigned int> chosen = {0, 1, 2, 62, 63, 64, 65, 511, 512, 1022, 1023};
    for (const unsigned int processor : chosen) {
        processors.clear();
        processors.setSwitch(processor, true);
        for (unsigned int i = 0; i < 1024; ++i)
            ASSERT_EQ(i == processor, processors.getSwitch(i)) << processor << ' ' << i;
        unsigned long words[16];
        const cpu_set_t set = processors.getAffinity();
        std::memcpy(words, &set, sizeof words);
        for (unsigned int i = 0; i < 16; ++i)
            EXPECT_EQ(i == processor / 64 ? 1UL << processor % 64 : 0UL, words[i]);
    }
    for (const unsigned int processor : chosen)
        processors.setSwitch(processor, true);
    processors.setSwitch(63, false);
    processors.setSwitch(63, false);
    processors.setSwitch(64, true);
    EXPECT_FALSE(processors.getSwitch(63));
    EXPECT_TRUE(processors.getSwitch(62));
    EXPECT_TRUE(processors.getSwitch(64));
    const cpu_set_t set = processors.getAffinity();
    EXPECT_EQ(10, CPU_COUNT(&set));
    processors.clear();
    const cpu_set_t cleared = processors.getAffinity();
    EXPECT_EQ(0, CPU_COUNT(&cleared));
}

TEST(OCSystemProcessAffinity, NumbersAbove1023AreNoProcessors) {
    OCSystemProcessAffinity processors;
    for (unsigned int i = 0; i < 1024; ++i)
        processors.setSwitch(i, true);
    for (const unsigned int number : {1024u, 1025u, 1087u, 2047u, 65536u, 2147483648u, ~0u}) {
        EXPECT_FALSE(processors.getSwitch(number)) << number;
        processors.setSwitch(number, false);
    }
    const cpu_set_t full = processors.getAffinity();
    EXPECT_EQ(1024, CPU_COUNT(&full));
    processors.clear();
    for (const unsigned int number : {1024u, 1025u, 1087u, 2047u, 65536u, 2147483648u, ~0u}) {
        processors.setSwitch(number, true);
        EXPECT_FALSE(processors.getSwitch(number)) << number;
    }
    const cpu_set_t empty = processors.getAffinity();
    EXPECT_EQ(0, CPU_COUNT(&empty));
}

TEST(OCSystemProcessAffinity, IsMadeFromASetAndCopied) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(5, &set);
    OCSystemProcessAffinity processors(set);
    CPU_SET(6, &set);
    EXPECT_TRUE(processors.getSwitch(5));
    EXPECT_FALSE(processors.getSwitch(6));
    OCSystemProcessAffinity copy(processors);
    processors.setSwitch(7, true);
    EXPECT_TRUE(copy.getSwitch(5));
    EXPECT_FALSE(copy.getSwitch(7));
    copy = processors;
    EXPECT_TRUE(copy.getSwitch(7));
    cpu_set_t given = copy.getAffinity();
    CPU_CLR(7, &given); // a copy
    EXPECT_TRUE(copy.getSwitch(7));
}

TEST(OCSystemProcess, CannotBeInstantiated) {
    EXPECT_FALSE(std::is_default_constructible_v<OCSystemProcess>);
    EXPECT_FALSE(std::is_default_constructible_v<OCSystemProcessProperties>);
    EXPECT_FALSE(std::is_polymorphic_v<OCSystemProcess>);
    EXPECT_FALSE(std::is_polymorphic_v<OCSystemProcessProperties>);
}

TEST(OCSystemProcess, TellsTheProcessesIdentifiers) {
    EXPECT_EQ(getpid(), OCSystemProcess::getIdentifier());
    EXPECT_EQ(getuid(), OCSystemProcess::getUserIdentifier());
    EXPECT_EQ(geteuid(), OCSystemProcess::getEffectiveUserIdentifier());
    EXPECT_EQ(getgid(), OCSystemProcess::getGroupIdentifier());
    Replacement process(calls::getpid, [] { return pid_t(123); });
    Replacement user(calls::getuid, [] { return uid_t(4000000001u); });
    Replacement effective(calls::geteuid, [] { return uid_t(4000000002u); });
    Replacement group(calls::getgid, [] { return gid_t(4000000003u); });
    EXPECT_EQ(123, OCSystemProcess::getIdentifier());
    EXPECT_EQ(4000000001u, OCSystemProcess::getUserIdentifier());
    EXPECT_EQ(4000000002u, OCSystemProcess::getEffectiveUserIdentifier());
    EXPECT_EQ(4000000003u, OCSystemProcess::getGroupIdentifier());
}

TEST(OCSystemProcess, ChangesTheUserAndTheGroup) {
    // Nobody may become root again.
    const std::string refused = "OXSystemProcess_SetGroupIdentifierError: Error setting group "
                                "identifier (Operation not permitted) "
                                "OXSystemProcess_SetUserIdentifierError: Error setting user "
                                "identifier (Operation not permitted)";
    const bool privileged = geteuid() == 0;
    const unsigned int user = privileged ? 65534 : getuid();
    const unsigned int group = privileged ? 65534 : getgid();
    EXPECT_EQ(std::to_string(group) + " " + std::to_string(user) + " " + refused, inChild([&] {
                  OCSystemProcess::setGroupIdentifier(group);
                  OCSystemProcess::setUserIdentifier(user);
                  std::string seen = std::to_string(OCSystemProcess::getGroupIdentifier()) + " " +
                                     std::to_string(OCSystemProcess::getUserIdentifier()) + " ";
                  seen += thrown<OXSystemProcess_SetGroupIdentifierError>(
                      [] { OCSystemProcess::setGroupIdentifier(0); });
                  return seen + " " + thrown<OXSystemProcess_SetUserIdentifierError>([] {
                             OCSystemProcess::setUserIdentifier(0);
                         });
              }));
}

TEST(OCSystemProcess, SetsTheUserAndTheGroupThatItHas) {
    EXPECT_EQ(std::to_string(getuid()) + " " + std::to_string(getgid()), inChild([] {
                  OCSystemProcess::setGroupIdentifier(getgid());
                  OCSystemProcess::setUserIdentifier(getuid());
                  return std::to_string(OCSystemProcess::getUserIdentifier()) + " " +
                         std::to_string(OCSystemProcess::getGroupIdentifier());
              }));
}

TEST(OCSystemProcess, FailuresToChangeTheUserAndTheGroupHaveTheSystemsText) {
    {
        Failing refusing(calls::setuid, EAGAIN);
        EXPECT_EXCEPTION(OCSystemProcess::setUserIdentifier(5),
                         OXSystemProcess_SetUserIdentifierError,
                         "Error setting user identifier (Resource temporarily unavailable)");
        EXPECT_EQ(1u, refusing.calls());
    }
    {
        Failing refusing(calls::setgid, EINVAL);
        EXPECT_EXCEPTION(OCSystemProcess::setGroupIdentifier(5),
                         OXSystemProcess_SetGroupIdentifierError,
                         "Error setting group identifier (Invalid argument)");
        EXPECT_EQ(1u, refusing.calls());
    }
    unsigned int set = 0;
    Replacement odd(calls::setuid, [&](uid_t user) {
        set = user;
        errno = EPERM;
        return 1;
    });
    EXPECT_THROW(OCSystemProcess::setUserIdentifier(4000000001u),
                 OXSystemProcess_SetUserIdentifierError);
    EXPECT_EQ(4000000001u, set);
    Replacement fine(calls::setgid, [&](gid_t group) {
        set = group;
        return 0;
    });
    OCSystemProcess::setGroupIdentifier(4000000002u);
    EXPECT_EQ(4000000002u, set);
}

TEST(OCSystemProcess, GetsAndSetsTheProcessors) {
    const OCSystemProcessAffinity processors(OCSystemProcess::getAffinity());
    cpu_set_t expected;
    CPU_ZERO(&expected);
    ASSERT_EQ(0, sched_getaffinity(0, sizeof expected, &expected));
    const cpu_set_t got = processors.getAffinity();
    EXPECT_TRUE(CPU_EQUAL(&expected, &got));
    EXPECT_EQ("1 the last", inChild([&] {
                  unsigned int last = 1023;
                  while (!processors.getSwitch(last))
                      --last;
                  OCSystemProcessAffinity one;
                  one.setSwitch(last, true);
                  OCSystemProcess::setAffinity(one.getAffinity());
                  const cpu_set_t now = OCSystemProcess::getAffinity();
                  return std::to_string(CPU_COUNT(&now)) +
                         (CPU_ISSET(last, &now) ? " the last" : " another");
              }));
}

TEST(OCSystemProcess, FailuresToGetAndSetTheProcessorsAreReported) {
    EXPECT_EXCEPTION(OCSystemProcess::setAffinity(OCSystemProcessAffinity().getAffinity()),
                     OXSystemProcess_SetAffinityError, "Error setting process affinity");
    Failing getting(calls::sched_getaffinity, EINVAL);
    EXPECT_EXCEPTION(OCSystemProcess::getAffinity(), OXSystemProcess_GetAffinityError,
                     "Error getting process affinity");
    EXPECT_EQ(1u, getting.calls());
}

TEST(OCSystemProcess, AsksForTheCallingThreadAndTheWholeSet) {
    cpu_set_t passed;
    CPU_ZERO(&passed);
    Replacement setting(calls::sched_setaffinity,
                        [&](pid_t process, size_t size, const cpu_set_t* set) {
                            EXPECT_EQ(0, process);
                            EXPECT_EQ(128u, size);
                            passed = *set;
                            return 0;
                        });
    Replacement getting(calls::sched_getaffinity, [&](pid_t process, size_t size, cpu_set_t* set) {
        EXPECT_EQ(0, process);
        EXPECT_EQ(128u, size);
        *set = passed;
        return 0;
    });
    OCSystemProcessAffinity processors;
    processors.setSwitch(1023, true);
    OCSystemProcess::setAffinity(processors.getAffinity());
    EXPECT_TRUE(OCSystemProcessAffinity(OCSystemProcess::getAffinity()).getSwitch(1023));
}

TEST(OCSystemProcess, LocatesTheCurrentDirectory) {
    EXPECT_EQ(currentDirectory(), standard(OCSystemProcess::locateCurrentDirectory()));
    const ScratchDirectory scratch;
    const std::string path = std::filesystem::canonical(scratch.path).string();
    EXPECT_EQ(path, inChild([&] {
                  std::filesystem::current_path(path);
                  return standard(OCSystemProcess::locateCurrentDirectory());
              }));
}

TEST(OCSystemProcess, ACurrentDirectoryThatIsGoneCannotBeLocated) {
    const ScratchDirectory scratch;
    const std::string path = scratch.file("gone");
    EXPECT_EQ("OXSystemProcess_LocateCurrentDirectoryError: Error locating current directory",
              inChild([&] {
                  std::filesystem::create_directory(path);
                  std::filesystem::current_path(path);
                  std::filesystem::remove(path);
                  return thrown<OXSystemProcess_LocateCurrentDirectoryError>(
                      [] { OCSystemProcess::locateCurrentDirectory(); });
              }));
}

TEST(OCSystemProcess, APathOfUpTo4095CharactersIsLocated) {
    const ScratchDirectory scratch;
    const std::string start = std::filesystem::canonical(scratch.path).string();
    EXPECT_EQ("4095 found, 4096: OXSystemProcess_LocateCurrentDirectoryError: "
              "Error locating current directory",
              inChild([&]() -> std::string {
                  std::filesystem::current_path(start);
                  std::string expected = start;
                  std::vector<std::string> made;
                  const auto enter = [&](const std::string& name) {
                      made.push_back(name);
                      expected += "/" + name;
                      return mkdir(name.c_str(), 0700) == 0 && chdir(name.c_str()) == 0;
                  };
                  while (expected.size() < 4095 - 201) {
                      if (!enter(std::string(100, 'd')))
                          return "cannot enter";
                  }
                  if (!enter(std::string(4095 - 1 - expected.size(), 'e')))
                      return "cannot enter the last";
                  std::string seen = std::to_string(expected.size());
                  seen += standard(OCSystemProcess::locateCurrentDirectory()) == expected
                              ? " found, "
                              : " differs, ";
                  const auto leave = [&] {
                      const std::string name = made.back();
                      made.pop_back();
                      expected.resize(expected.size() - name.size() - 1);
                      return chdir("..") == 0 && rmdir(name.c_str()) == 0;
                  };
                  const unsigned long last = made.back().size();
                  if (!leave() || !enter(std::string(last + 1, 'e')))
                      return "cannot enter the next";
                  seen += std::to_string(expected.size()) + ": " +
                          thrown<OXSystemProcess_LocateCurrentDirectoryError>(
                              [] { OCSystemProcess::locateCurrentDirectory(); });
                  while (!made.empty()) {
                      if (!leave())
                          return "cannot leave";
                  }
                  return seen;
              }));
}

TEST(OCSystemProcess, AsksForTheCurrentDirectoryOnce) {
    {
        Failing refusing(calls::getcwd, EACCES);
        EXPECT_EXCEPTION(OCSystemProcess::locateCurrentDirectory(),
                         OXSystemProcess_LocateCurrentDirectoryError,
                         "Error locating current directory");
        EXPECT_EQ(1u, refusing.calls());
    }
    Replacement telling(calls::getcwd, [](char* buffer, size_t size) {
        EXPECT_EQ(4096u, size);
        return std::strcpy(buffer, "/a/place");
    });
    EXPECT_EQ("/a/place", standard(OCSystemProcess::locateCurrentDirectory()));
}

TEST(OCSystemProcess, GuessesTheExecutable) {
    EXPECT_EQ(executable(), standard(OCSystemProcess::guessCurrentExecutable()));
    unsigned long length = 4096;
    Replacement telling(calls::readlink, [&](const char* path, char* buffer, size_t size) {
        EXPECT_STREQ("/proc/self/exe", path);
        EXPECT_EQ(4096u, size);
        std::memset(buffer, 'x', size); // without an end
        return static_cast<ssize_t>(length);
    });
    EXPECT_EQ(std::string(4096, 'x'), standard(OCSystemProcess::guessCurrentExecutable()));
    length = 5;
    EXPECT_EQ("xxxxx", standard(OCSystemProcess::guessCurrentExecutable()));
    length = 0;
    EXPECT_EQ("", standard(OCSystemProcess::guessCurrentExecutable()));
}

TEST(OCSystemProcess, TheGuessIsTheSystemsTextAsItStands) {
    std::string link;
    Replacement telling(calls::readlink, [&](const char*, char* buffer, size_t) {
        // NOLINTNEXTLINE(bugprone-not-null-terminated-result)
        std::memcpy(buffer, link.data(), link.size());
        return static_cast<ssize_t>(link.size());
    });
    for (const std::string& text :
         {std::string("/bin/tool (deleted)"), std::string("a//b/../c "), std::string("x\0y", 3)}) {
        link = text;
        EXPECT_EQ(text, standard(OCSystemProcess::guessCurrentExecutable()));
    }
}

TEST(OCSystemProcess, AnExecutableThatCannotBeGuessedIsReported) {
    Failing refusing(calls::readlink, EACCES);
    EXPECT_EXCEPTION(OCSystemProcess::guessCurrentExecutable(),
                     OXSystemProcess_LocateCurrentExecutableError,
                     "Error locating current executable");
    EXPECT_EQ(1u, refusing.calls());
    EXPECT_EXCEPTION(OCSystemProcess::locateCurrentExecutable(),
                     OXSystemProcess_LocateCurrentExecutableError,
                     "Error locating current executable");
}

TEST(OCSystemProcess, WithoutInitializationTheExecutableIsGuessed) {
    EXPECT_EQ("no, untouched", startedAs());
    EXPECT_EQ("no, untouched", startedFrom());
    EXPECT_EQ(executable(), standard(OCSystemProcess::locateCurrentExecutable()));
}

TEST(OCSystemProcess, AnExecutableStartedByAnAbsolutePathIsThatPath) {
    for (const char* path : {"/bin/tool", "/bin/../bin//tool", "C:tool", "\\\\host\\share\\tool"}) {
        EXPECT_EQ(path, inChild([&] {
                      startAs(path);
                      return standard(OCSystemProcess::locateCurrentExecutable());
                  }));
    }
}

TEST(OCSystemProcess, AnExecutableStartedByARelativePathIsBelowTheDirectory) {
    const ScratchDirectory scratch;
    const std::string path = std::filesystem::canonical(scratch.path).string();
    const auto locate = [&](const char* name) {
        return inChild([&] {
            std::filesystem::current_path(path);
            startAs(name);
            std::filesystem::current_path("/");
            return standard(OCSystemProcess::locateCurrentExecutable());
        });
    };
    EXPECT_EQ(path + "/./tool", locate("./tool"));
    EXPECT_EQ(path + "/../bin/tool", locate("../bin/tool"));
    // Found by PATH, which is not looked at.
    EXPECT_EQ(path + "/tool", locate("tool"));
    EXPECT_EQ("/tool", inChild([&] {
                  std::filesystem::current_path("/");
                  startAs("tool");
                  return standard(OCSystemProcess::locateCurrentExecutable());
              }));
}

TEST(OCSystemProcess, WithoutADirectoryARelativeExecutableIsGuessed) {
    const std::string expected = executable();
    EXPECT_EQ(expected + " tool no, untouched", inChild([] {
                  Failing refusing(calls::getcwd, EACCES);
                  const std::string name = "tool";
                  EXPECT_THROW(startAs(name), OXSystemProcess_LocateCurrentDirectoryError);
                  return standard(OCSystemProcess::locateCurrentExecutable()) + " " + startedAs() +
                         " " + startedFrom();
              }));
    // A directory alone does not help either.
    EXPECT_EQ(expected + " no, untouched " + currentDirectory(), inChild([] {
                  OCSystemProcessProperties::initializeStartedFrom();
                  return standard(OCSystemProcess::locateCurrentExecutable()) + " " + startedAs() +
                         " " + startedFrom();
              }));
}

TEST(OCSystemProcessProperties, KeepsTheFirstArgumentAndTheDirectory) {
    EXPECT_EQ("./tool " + currentDirectory(), inChild([] {
                  startAs("./tool");
                  return startedAs() + " " + startedFrom();
              }));
    EXPECT_EQ("/second /tmp", inChild([] {
                  startAs("/first");
                  std::filesystem::current_path("/tmp");
                  startAs("/second");
                  std::filesystem::current_path("/");
                  return startedAs() + " " + startedFrom();
              }));
}

TEST(OCSystemProcessProperties, WithoutAFirstArgumentWhatWasKeptStays) {
    EXPECT_EQ("no, untouched " + currentDirectory(), inChild([] {
                  char* arguments[] = {nullptr};
                  OCSystemProcessProperties::initialize(0, arguments);
                  return startedAs() + " " + startedFrom();
              }));
    EXPECT_EQ("first first first no, untouched", inChild([] {
                  char name[] = "first";
                  char other[] = "other";
                  char* first[] = {name, nullptr};
                  char* none[] = {nullptr};
                  char* others[] = {other, nullptr};
                  OCSystemProcessProperties::initializeStartedAs(1, first);
                  OCSystemProcessProperties::initializeStartedAs(0, others);
                  std::string seen = startedAs();
                  OCSystemProcessProperties::initializeStartedAs(1, nullptr);
                  seen += " " + startedAs();
                  OCSystemProcessProperties::initializeStartedAs(1, none);
                  seen += " " + startedAs();
                  return seen + " " + startedFrom();
              }));
}

TEST(OCSystemProcessProperties, OnlyACountOfZeroIsNoArguments) {
    EXPECT_EQ("first", inChild([] {
                  char name[] = "first";
                  char* first[] = {name, nullptr};
                  OCSystemProcessProperties::initializeStartedAs(-1, first);
                  return startedAs();
              }));
}

TEST(OCSystemProcessProperties, AFirstArgumentOfUpTo4095CharactersIsKept) {
    EXPECT_EQ("yes yes", inChild([]() -> std::string {
                  const std::string longest(4095, 'a');
                  startAs(longest);
                  std::string seen = startedAs() == longest ? "yes" : "no";
                  startAs(std::string(4096, 'b'));
                  seen += startedAs() == longest ? " yes" : " no";
                  return seen;
              }));
    EXPECT_EQ("no, untouched", inChild([] {
                  startAs(std::string(5000, 'b'));
                  return startedAs();
              }));
}

TEST(OCSystemProcessProperties, ADirectoryOfUpTo4095CharactersIsKept) {
    EXPECT_EQ("yes", inChild([] {
                  const std::string longest = "/" + std::string(4094, 'd');
                  Replacement telling(calls::getcwd, [&](char* buffer, size_t) {
                      return std::strcpy(buffer, longest.c_str());
                  });
                  OCSystemProcessProperties::initializeStartedFrom();
                  return startedFrom() == longest ? "yes" : "no";
              }));
}

TEST(OCSystemProcessProperties, AnEmptyFirstArgumentIsNone) {
    EXPECT_EQ("no, untouched", inChild([] {
                  startAs("first");
                  startAs("");
                  return startedAs();
              }));
}

TEST(OCSystemProcessProperties, ADirectoryThatCannotBeLocatedLeavesWhatWasKept) {
    EXPECT_EQ("OXSystemProcess_LocateCurrentDirectoryError: Error locating current directory "
              "/second " +
                  currentDirectory(),
              inChild([] {
                  startAs("/first");
                  Failing refusing(calls::getcwd, EACCES);
                  std::string seen = thrown<OXSystemProcess_LocateCurrentDirectoryError>(
                      [] { startAs("/second"); });
                  return seen + " " + startedAs() + " " + startedFrom();
              }));
}

/// The process as the background child finds it.
std::string describeDaemon(pid_t parent, int result) {
    std::string seen = std::to_string(result);
    seen += getpid() != parent ? " child" : " parent";
    seen += getsid(0) == getpid() ? " session" : " none";
    for (int handle = 0; handle < 3; ++handle)
        seen += fcntl(handle, F_GETFD) == -1 ? " closed" : " open";
    return seen + " " + std::to_string(umask(0)) + " " + currentDirectory();
}

TEST(OCSystemProcess, DaemonizesInAChild) {
    EXPECT_EQ("2 parent open; 1 child session closed closed closed 23 " + currentDirectory(),
              inChild([] {
                  int ends[2];
                  if (pipe(ends) != 0)
                      return std::string("no pipe");
                  const pid_t parent = getpid();
                  const int result = OCSystemProcess::daemonize();
                  if (result == 1) {
                      const std::string seen = describeDaemon(parent, result);
                      const bool written = write(ends[1], seen.data(), seen.size()) ==
                                           static_cast<ssize_t>(seen.size());
                      _exit(written ? 0 : 1);
                  }
                  close(ends[1]);
                  std::string seen = std::to_string(result);
                  seen += getpid() == parent ? " parent" : " child";
                  seen += fcntl(1, F_GETFD) == -1 ? " closed; " : " open; ";
                  char bytes[4096];
                  for (ssize_t n = 0; (n = read(ends[0], bytes, sizeof bytes)) > 0;)
                      seen.append(bytes, static_cast<std::size_t>(n));
                  int status = -1;
                  wait(&status);
                  return status == 0 ? seen : "the child failed";
              }));
}

TEST(OCSystemProcess, WithoutAChildNothingIsDaemonized) {
    Failing refusing(calls::fork, EAGAIN);
    Counting sessions(calls::setsid);
    Counting closing(calls::close);
    EXPECT_EQ(0, OCSystemProcess::daemonize());
    EXPECT_EQ(1u, refusing.calls());
    EXPECT_EQ(0u, sessions.calls());
    EXPECT_EQ(0u, closing.calls());
}

TEST(OCSystemProcess, DaemonizingDoesItsStepsInOrderWhateverTheirResults) {
    std::string steps;
    Replacement forking(calls::fork, [&] {
        steps += "fork ";
        return pid_t(0); // as in the child
    });
    Replacement sessions(calls::setsid, [&] {
        steps += "setsid ";
        errno = EPERM;
        return pid_t(-1);
    });
    Replacement closing(calls::close, [&](int handle) {
        steps += "close " + std::to_string(handle) + " ";
        errno = EBADF;
        return -1;
    });
    Replacement masking(calls::umask, [&](mode_t mask) {
        steps += "umask " + std::to_string(mask);
        return mode_t(0);
    });
    EXPECT_EQ(1, OCSystemProcess::daemonize());
    EXPECT_EQ("fork setsid close 0 close 1 close 2 umask 23", steps);
}

TEST(OCSystemProcess, ExhaustedMemoryLeavesNothingBehind) {
    Replacement telling(calls::getcwd, [](char* buffer, size_t) {
        std::memset(buffer, 'd', 300);
        buffer[300] = '\0';
        return buffer;
    });
    Replacement linked(calls::readlink, [](const char*, char* buffer, size_t) {
        std::memset(buffer, 'e', 300);
        return ssize_t(300);
    });
    const long before = fault::heapRecord().liveBlocks;
    EXPECT_EQ(1u, fault::failEachRequest([] { OCSystemProcess::locateCurrentDirectory(); }));
    EXPECT_EQ(1u, fault::failEachRequest([] { OCSystemProcess::guessCurrentExecutable(); }));
    EXPECT_EQ(before, fault::heapRecord().liveBlocks);
    EXPECT_EQ("3", inChild([] {
                  startAs(std::string(300, 'a'));
                  return std::to_string(
                      fault::failEachRequest([] { OCSystemProcess::locateCurrentExecutable(); }));
              }));
}

} // namespace
