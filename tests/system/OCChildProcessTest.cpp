#include "OCChildProcess.h"

#include "OCCountdown.h"
#include "OCStringUtilities.h"
#include "support/ChildProcessCalls.h"
#include "support/ClockCalls.h"
#include "support/DirectoryCalls.h"
#include "support/FaultInjection.h"
#include "support/FileCalls.h"
#include "support/Forked.h"
#include "support/ScratchDirectory.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace {

const char abortedByTheStart[] =
    "OXChildProcess_UnexpectedSignal: Unexpected signal in child process (6)";
const char waitFailed[] = "OXChildProcess_WaitFailed: Waiting for the child process failed";
const char waitTimedOut[] = "OXChildProcess_WaitTimeout: Waiting for the child process timed out";

std::string contentOf(OCChildProcessStream& file) {
    file.getStream().setPosition(0);
    const OCAnsiString text = OCStringUtilities::importStream(file.getStream());
    return std::string(text.getString(), text.getLength());
}

void setInput(OCChildProcess& process, const std::string& text) {
    OCTemporaryFileStream& stream = process.getStandardInput().getStream();
    stream.writeBuffer(text.data(), text.size());
    stream.setPosition(0);
}

void setScript(OCChildProcess& process, const std::string& script) {
    process.setExecutionFilename("/bin/sh");
    process.getExecutionArguments().clear();
    process.getExecutionArguments().addString("-c");
    process.getExecutionArguments().addString(script.c_str());
}

/// A process that runs a script of the shell.
class Script : public OCChildProcess {
public:
    explicit Script(const std::string& text) { setScript(*this, text); }
};

/// Polls without a pause until the child has ended.
int statusOf(OCChildProcess& process) {
    int status = -1;
    while (!process.processRequest(status))
        sched_yield();
    return status;
}

/// Waits for a child that the library left behind.
int reap(pid_t process) {
    int status = 0;
    return calls::waitpid.original(process, &status, 0) == process ? status : -1;
}

bool hasChildren() {
    siginfo_t information;
    return waitid(P_ALL, 0, &information, WEXITED | WNOHANG | WNOWAIT) == 0;
}

} // namespace

// The objects

TEST(OCChildProcess, LayOutTheirFieldsInOrder) {
    EXPECT_EQ(16u, sizeof(OCChildProcessObject));
    EXPECT_EQ(24u, sizeof(OCChildProcessHandles));
    EXPECT_EQ(16u, sizeof(OCChildProcessOptions));
    EXPECT_EQ(16u + sizeof(OCEnvironmentBufferArray) + sizeof(OCStringArray),
              sizeof(OCChildProcessContext));
    EXPECT_EQ(16u + sizeof(OCTemporaryFileStream), sizeof(OCChildProcessStream));
    EXPECT_EQ(sizeof(OCChildProcessStream), sizeof(OCChildProcessStream_StandardInput));
    EXPECT_EQ(sizeof(OCChildProcessStream), sizeof(OCChildProcessStream_StandardOutput));
    EXPECT_EQ(sizeof(OCChildProcessStream), sizeof(OCChildProcessStream_StandardError));

    const OCChildProcess process;
    const char* place = reinterpret_cast<const char*>(&process) + sizeof(OCObject);
    const auto next = [&place](const OCObject& field, std::size_t size) {
        const bool there = place == reinterpret_cast<const char*>(&field);
        place += size;
        return there;
    };
    EXPECT_TRUE(next(process.getHandles(), sizeof(OCChildProcessHandles)));
    EXPECT_TRUE(next(process.getOptions(), sizeof(OCChildProcessOptions)));
    EXPECT_TRUE(next(process.getStandardError(), sizeof(OCChildProcessStream)));
    EXPECT_TRUE(next(process.getStandardInput(), sizeof(OCChildProcessStream)));
    EXPECT_TRUE(next(process.getStandardOutput(), sizeof(OCChildProcessStream)));
    EXPECT_TRUE(next(process.getEnvironment(), sizeof(OCEnvironmentBlock)));
    EXPECT_TRUE(next(process.getExecutionDirectory(), sizeof(OCFilePath)));
    EXPECT_TRUE(next(process.getExecutionFilename(), sizeof(OCFilePath)));
    EXPECT_TRUE(next(process.getExecutionArguments(), sizeof(OCStringList)));
    EXPECT_EQ(reinterpret_cast<const char*>(&process + 1), place);
}

TEST(OCChildProcess, HasItsVirtualOperationsInOrder) {
    EXPECT_EQ(2u, slots::slotOf(&OCChildProcess::divertStandardError));
    EXPECT_EQ(3u, slots::slotOf(&OCChildProcess::divertStandardInput));
    EXPECT_EQ(4u, slots::slotOf(&OCChildProcess::divertStandardOutput));
    EXPECT_EQ(5u, slots::slotOf(&OCChildProcess::stopWaiting));
    EXPECT_EQ(6u, slots::slotCount<OCChildProcess>());
    EXPECT_EQ(2u, slots::slotCount<OCChildProcessHandles>());
    EXPECT_EQ(2u, slots::slotCount<OCChildProcessOptions>());
    EXPECT_EQ(2u, slots::slotCount<OCChildProcessContext>());
    EXPECT_EQ(2u, slots::slotCount<OCChildProcessStream>());
    EXPECT_EQ(2u, slots::slotCount<OCChildProcessStream_StandardInput>());
    EXPECT_EQ(2u, slots::slotCount<OCChildProcessStream_StandardOutput>());
    EXPECT_EQ(2u, slots::slotCount<OCChildProcessStream_StandardError>());
}

TEST(OCChildProcess, IsMadeForDerivingAndNotCopied) {
    EXPECT_FALSE(std::is_nothrow_destructible_v<OCChildProcess>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCChildProcessHandles>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCChildProcessContext>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCChildProcessStream>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCChildProcess>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCChildProcess>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCChildProcessHandles>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCChildProcessStream>);
}

TEST(OCChildProcess, KnowsItsParts) {
    OCChildProcess process;
    const OCChildProcess& same = process;
    EXPECT_EQ(&process, &process.getHandles().getProcess());
    EXPECT_EQ(&process, &same.getOptions().getProcess());
    EXPECT_EQ(&process, &process.getStandardError().getProcess());
    EXPECT_EQ(&process, &same.getStandardInput().getProcess());
    EXPECT_EQ(&process, &process.getStandardOutput().getProcess());
    EXPECT_EQ(&process.getOptions(), &same.getOptions());
    EXPECT_EQ(&process.getStandardInput().getStream(), &same.getStandardInput().getStream());
}

TEST(OCChildProcess, BeginsWithNothingToRunAndThreeFiles) {
    const long before = openDescriptors();
    {
        OCChildProcess process;
        EXPECT_EQ(before + 3, openDescriptors());
        EXPECT_EQ(0, process.getHandles().getProcessIdentifier());
        EXPECT_EQ(OCAnsiString(), process.getExecutionFilename());
        EXPECT_EQ(OCAnsiString(), process.getExecutionDirectory());
        EXPECT_FALSE(process.hasExecutionDirectory());
        EXPECT_EQ(0u, process.getExecutionArguments().getCount());
        EXPECT_EQ(StringListCaseInsensitive, process.getExecutionArguments().getCase());
        EXPECT_EQ(StringListModeUnsorted, process.getExecutionArguments().getMode());
        EXPECT_EQ(0u, process.getStandardError().getStream().getSize());
    }
    EXPECT_EQ(before, openDescriptors());
}

TEST(OCChildProcess, TakesTheEnvironmentOfTheProcess) {
    EXPECT_EQ("there absent", inChild([] {
                  setenv("ORVABASE_TEST_VALUE", "there", 1);
                  setenv("ORVABASE_TEST_EMPTY", "", 1);
                  const OCChildProcess process;
                  const OCNamedList& variables = process.getEnvironment().getVariables();
                  return std::string(variables.getValue("ORVABASE_TEST_VALUE").getString()) +
                         (variables.contains("ORVABASE_TEST_EMPTY") ? " present" : " absent");
              }));
}

TEST(OCChildProcess, IsNotMadeWithoutItsFilesOrAnEnvironment) {
    const long before = openDescriptors();
    for (unsigned long number = 1; number <= 3; ++number) {
        Failing failing(calls::mkstemp, EACCES, number);
        EXPECT_EQ(
            "OXTemporaryFile_CreateError: Can not create the temporary file (Permission denied)",
            thrown<OXTemporaryFile_CreateError>([] { OCChildProcess process; }));
        EXPECT_EQ(number, failing.calls());
    }
    EXPECT_EQ(
        "OXEnvironmentBlock_ReadProcessEnvironment: Error reading process environment variables",
        inChild([] {
            environ = nullptr;
            return thrown<OXEnvironmentBlock_ReadProcessEnvironment>(
                [] { OCChildProcess process; });
        }));
    EXPECT_EQ(before, openDescriptors());
}

TEST(OCChildProcess, LeavesNothingWhenMemoryIsRefused) {
    const long before = openDescriptors();
    const fault::HeapRecord heap = fault::heapRecord();
    EXPECT_LT(0u, fault::failEachRequest([] { OCChildProcess process; },
                                         [&] {
                                             EXPECT_EQ(before, openDescriptors());
                                             EXPECT_EQ(heap.liveBlocks,
                                                       fault::heapRecord().liveBlocks);
                                         }));

    OCChildProcess process;
    setScript(process, "exit 0");
    EXPECT_LT(0u, fault::failEachRequest([&] { OCChildProcessContext context(process); }, [] {}));
    const std::string longName(300, 'n');
    const OCFilePath name(longName.c_str());
    EXPECT_EQ(1u, fault::failEachRequest([&] { process.setExecutionDirectory(name); },
                                         [&] { EXPECT_FALSE(process.hasExecutionDirectory()); }));
    EXPECT_EQ(1u, fault::failEachRequest(
                      [&] { process.setExecutionFilename(name); },
                      [&] { EXPECT_EQ(OCAnsiString("/bin/sh"), process.getExecutionFilename()); }));
}

TEST(OCChildProcess, StartsNothingWhenMemoryIsRefused) {
    OCChildProcess process;
    setScript(process, "exit 0");
    {
        Counting forks(calls::fork);
        fault::HeapFault fault(1);
        EXPECT_THROW(process.processCreate(), OXMemory_AllocationError);
        EXPECT_EQ(0u, forks.calls());
    }
    EXPECT_EQ(0, process.getHandles().getProcessIdentifier());
    EXPECT_FALSE(hasChildren());
}

TEST(OCChildProcess, PreparesTheVectorsOfAStart) {
    OCChildProcess process;
    process.setExecutionFilename("/bin/echo");
    process.getExecutionArguments().addString("b");
    process.getExecutionArguments().addString("a");
    process.getEnvironment().getVariables().clear();
    process.getEnvironment().getVariables().setValue("Y", "2");
    process.getEnvironment().getVariables().setValue("X", "1");
    process.getEnvironment().getVariables().setValue("Z", "");
    OCChildProcessContext context(process);
    EXPECT_EQ(&process, &context.getProcess());
    char** arguments = context.acquireArguments();
    EXPECT_STREQ("/bin/echo", arguments[0]);
    EXPECT_STREQ("b", arguments[1]);
    EXPECT_STREQ("a", arguments[2]);
    EXPECT_EQ(nullptr, arguments[3]);
    char** variables = context.acquireEnvironment();
    EXPECT_STREQ("X=1", variables[0]);
    EXPECT_STREQ("Y=2", variables[1]);
    EXPECT_EQ(nullptr, variables[2]);
}

// Real programs

TEST(OCChildProcess, FeedsInputAndCollectsOutputAndErrors) {
    Script process("cat; echo problem >&2; exit 3");
    setInput(process, "one\ntwo\n");
    EXPECT_EQ(3, process.execute());
    EXPECT_EQ("one\ntwo\n", contentOf(process.getStandardOutput()));
    EXPECT_EQ("problem\n", contentOf(process.getStandardError()));
    EXPECT_FALSE(hasChildren());
}

TEST(OCChildProcess, SharesThePositionsOfItsFilesWithTheChild) {
    Script process("head -c 2; printf 34; printf e >&2");
    setInput(process, "abcdef");
    process.getStandardInput().getStream().setPosition(2);
    process.getStandardOutput().getStream().writeBuffer("12", 2);
    EXPECT_EQ(0, process.execute());
    EXPECT_EQ(6u, process.getStandardOutput().getStream().getPosition());
    EXPECT_EQ(1u, process.getStandardError().getStream().getPosition());
    EXPECT_EQ("12cd34", contentOf(process.getStandardOutput()));

    Script reader("cat");
    setInput(reader, "abcdef");
    reader.getStandardInput().getStream().setPosition(2);
    EXPECT_EQ(0, reader.execute());
    EXPECT_EQ("cdef", contentOf(reader.getStandardOutput()));
    EXPECT_EQ(6u, reader.getStandardInput().getStream().getPosition());
}

TEST(OCChildProcess, ReturnsEveryStatus) {
    EXPECT_EQ(0, Script("exit 0").execute());
    EXPECT_EQ(1, Script("exit 1").execute());
    EXPECT_EQ(255, Script("exit 255").execute());
}

TEST(OCChildProcess, GivesTheFilenameAsItIsAsFirstArgument) {
    EXPECT_EQ("/proc/self/../../bin/sh -c \n", inChild([] {
                  OCChildProcess process;
                  process.setExecutionFilename("/proc/self/../../bin/sh");
                  process.getExecutionArguments().addString("-c");
                  process.getExecutionArguments().addString(
                      "tr '\\0' ' ' </proc/$$/cmdline | cut -c 1-27");
                  process.execute();
                  return contentOf(process.getStandardOutput());
              }));
}

TEST(OCChildProcess, DoesNotSearchForTheExecutable) {
    OCChildProcess process;
    process.setExecutionFilename("true");
    EXPECT_EQ(abortedByTheStart,
              thrown<OXChildProcess_UnexpectedSignal>([&] { process.execute(); }));
}

TEST(OCChildProcess, GivesTheChildItsEnvironmentOnly) {
    OCChildProcess process;
    process.setExecutionFilename("/usr/bin/env");
    process.getEnvironment().getVariables().clear();
    process.getEnvironment().getVariables().setValue("B", "two=2");
    process.getEnvironment().getVariables().setValue("A", "one");
    process.getEnvironment().getVariables().setValue("EMPTY", "");
    EXPECT_EQ(0, process.execute());
    EXPECT_EQ("A=one\nB=two=2\n", contentOf(process.getStandardOutput()));
}

TEST(OCChildProcess, RunsInItsDirectory) {
    const ScratchDirectory scratch;
    Script process("pwd -P");
    process.setExecutionDirectory(scratch.path.c_str());
    EXPECT_TRUE(process.hasExecutionDirectory());
    EXPECT_EQ(0, process.execute());
    EXPECT_EQ(std::filesystem::canonical(scratch.path).string() + "\n",
              contentOf(process.getStandardOutput()));

    Script stays("pwd -P");
    stays.setExecutionDirectory("/");
    stays.setExecutionDirectory("");
    EXPECT_FALSE(stays.hasExecutionDirectory());
    EXPECT_EQ(0, stays.execute());
    EXPECT_EQ(std::filesystem::current_path().string() + "\n",
              contentOf(stays.getStandardOutput()));
}

TEST(OCChildProcess, LooksForARelativeFilenameFromItsDirectory) {
    const ScratchDirectory scratch;
    scratch.write("here", "#!/bin/sh\nexit 7\n");
    std::filesystem::permissions(scratch.file("here"), std::filesystem::perms::owner_all);
    OCChildProcess process;
    process.setExecutionFilename("./here");
    process.setExecutionDirectory(scratch.path.c_str());
    EXPECT_EQ(7, process.execute());
}

TEST(OCChildProcess, ChangesNothingElseInTheChild) {
    Script process("umask; cut -d ' ' -f 5,6 /proc/$$/stat; id -u; id -g");
    const mode_t mask = umask(0);
    umask(mask);
    char expected[64];
    std::snprintf(expected, sizeof expected, "%04o\n%d %d\n%u\n%u\n", mask, getpgrp(), getsid(0),
                  getuid(), getgid());
    EXPECT_EQ(0, process.execute());
    EXPECT_EQ(expected, contentOf(process.getStandardOutput()));
}

TEST(OCChildProcess, PassesItsOtherDescriptorsOn) {
    const ScratchDirectory scratch;
    const int other = open(scratch.file("other").c_str(), O_WRONLY | O_CREAT, 0600);
    ASSERT_GT(other, 2);
    EXPECT_EQ(0, Script("echo through >/proc/self/fd/" + std::to_string(other)).execute());
    Script process("test -e /proc/self/fd/$0");
    for (const OCChildProcessStream* stream :
         {static_cast<OCChildProcessStream*>(&process.getStandardError()),
          static_cast<OCChildProcessStream*>(&process.getStandardInput()),
          static_cast<OCChildProcessStream*>(&process.getStandardOutput())}) {
        const int handle = stream->getStream().getHandle();
        process.getExecutionArguments().setCount(2);
        process.getExecutionArguments().addString(std::to_string(handle).c_str());
        EXPECT_EQ(0, process.execute()) << handle;
    }
    close(other);
    EXPECT_EQ("through\n", scratch.read("other"));
}

TEST(OCChildProcess, PassesItsSignalsOn) {
    EXPECT_EQ("0 alike", inChild([] {
                  sigset_t blocked;
                  sigemptyset(&blocked);
                  sigaddset(&blocked, SIGUSR1);
                  sigprocmask(SIG_BLOCK, &blocked, nullptr);
                  signal(SIGUSR2, SIG_IGN);
                  OCChildProcess process;
                  process.setExecutionFilename("/bin/grep");
                  process.getExecutionArguments().addString("-E");
                  process.getExecutionArguments().addString("^Sig(Blk|Ign)");
                  process.getExecutionArguments().addString("/proc/self/status");
                  const int status = process.execute();
                  std::string expected;
                  std::ifstream own("/proc/self/status");
                  for (std::string line; std::getline(own, line);)
                      if (line.compare(0, 6, "SigBlk") == 0 || line.compare(0, 6, "SigIgn") == 0)
                          expected += line + "\n";
                  return std::to_string(status) +
                         (contentOf(process.getStandardOutput()) == expected ? " alike" : " other");
              }));
}

TEST(OCChildProcess, RunsAgainWithTheIdentifierOfTheLastChild) {
    Script process("exit 1");
    EXPECT_EQ(1, process.execute());
    const int first = process.getHandles().getProcessIdentifier();
    EXPECT_LT(0, first);
    setScript(process, "exit 2");
    EXPECT_EQ(2, process.execute());
    EXPECT_NE(first, process.getHandles().getProcessIdentifier());
}

TEST(OCChildProcess, IsNeitherWaitedForNorEndedWithItsObject) {
    pid_t child = 0;
    {
        Counting kills(calls::kill);
        Counting waits(calls::waitpid);
        Script process("exec sleep 100");
        process.processCreate();
        child = process.getHandles().getProcessIdentifier();
        process.~Script();
        new (&process) Script("exit 0");
        EXPECT_EQ(0u, kills.calls());
        EXPECT_EQ(0u, waits.calls());
    }
    EXPECT_EQ(0, kill(child, 0));
    EXPECT_EQ(0, kill(child, SIGKILL));
    EXPECT_EQ(SIGKILL, reap(child));
}

// What ends a child

TEST(OCChildProcess, ReportsAFailedStartAsTheSignalOfAnAbort) {
    OCChildProcess process;
    process.setExecutionFilename("/no/such/executable");
    std::vector<std::pair<pid_t, int>> kills;
    {
        Replacement killing(calls::kill, [&](pid_t target, int signal) {
            kills.emplace_back(target, signal);
            return 0;
        });
        EXPECT_EQ(abortedByTheStart,
                  thrown<OXChildProcess_UnexpectedSignal>([&] { process.execute(); }));
    }
    // The child had been waited for already.
    ASSERT_EQ(1u, kills.size());
    EXPECT_EQ(process.getHandles().getProcessIdentifier(), kills[0].first);
    EXPECT_EQ(SIGKILL, kills[0].second);
    EXPECT_FALSE(hasChildren());

    Script elsewhere("exit 0");
    elsewhere.setExecutionDirectory("/no/such/directory");
    EXPECT_EQ(abortedByTheStart,
              thrown<OXChildProcess_UnexpectedSignal>([&] { elsewhere.execute(); }));
    OCChildProcess nothing;
    EXPECT_EQ(abortedByTheStart,
              thrown<OXChildProcess_UnexpectedSignal>([&] { nothing.execute(); }));
}

TEST(OCChildProcess, AbortsTheChildWhenAFileHasNoDescriptor) {
    Script process("exit 0");
    OCHandleStream* const streams[] = {&process.getStandardError().getStream(),
                                       &process.getStandardInput().getStream(),
                                       &process.getStandardOutput().getStream()};
    for (OCHandleStream* const stream : streams) {
        const int handle = stream->getHandle();
        stream->dropHandle();
        EXPECT_EQ(abortedByTheStart,
                  thrown<OXChildProcess_UnexpectedSignal>([&] { process.execute(); }));
        EXPECT_EQ(-1, stream->getHandle());
        stream->setHandle(handle);
    }
    EXPECT_EQ(0, process.execute());
    EXPECT_FALSE(hasChildren());
}

TEST(OCChildProcess, ReportsTheSignalThatEndedAChild) {
    EXPECT_EQ("OXChildProcess_UnexpectedSignal: Unexpected signal in child process (15)",
              thrown<OXChildProcess_UnexpectedSignal>([] { Script("kill -TERM $$").execute(); }));
    EXPECT_EQ("OXChildProcess_UnexpectedSignal: Unexpected signal in child process (9)",
              thrown<OXChildProcess_UnexpectedSignal>([] { Script("kill -KILL $$").execute(); }));
    EXPECT_FALSE(hasChildren());
}

TEST(OCChildProcess, AbortsTheChildWhereItsStartFails) {
    const auto outcome = [] {
        OCChildProcess process;
        setScript(process, "exit 0");
        process.setExecutionDirectory("/");
        return thrown<OXChildProcess_UnexpectedSignal>([&] { process.execute(); });
    };
    {
        Failing failing(calls::chdir, EACCES);
        EXPECT_EQ(abortedByTheStart, outcome());
    }
    for (unsigned long number = 1; number <= 3; ++number) {
        Failing failing(calls::dup2, EBADF, number, 1);
        EXPECT_EQ(abortedByTheStart, outcome());
    }
    {
        Failing failing(calls::execve, ENOEXEC);
        EXPECT_EQ(abortedByTheStart, outcome());
    }
    EXPECT_FALSE(hasChildren());
}

TEST(OCChildProcess, AbortsTheChildAlsoWhereTheSignalIsIgnoredAndBlocked) {
    EXPECT_EQ(abortedByTheStart, inChild([] {
                  sigset_t blocked;
                  sigemptyset(&blocked);
                  sigaddset(&blocked, SIGABRT);
                  sigprocmask(SIG_BLOCK, &blocked, nullptr);
                  signal(SIGABRT, SIG_IGN);
                  OCChildProcess process;
                  process.setExecutionFilename("/no/such/executable");
                  return thrown<OXChildProcess_UnexpectedSignal>([&] { process.execute(); });
              }));
}

TEST(OCChildProcess, ReportsARefusedProcess) {
    Script process("exit 0");
    Counting kills(calls::kill);
    {
        Failing failing(calls::fork, EAGAIN);
        EXPECT_EQ("OXChildProcess_ExecuteError: Executing the child process failed (Resource "
                  "temporarily unavailable)",
                  thrown<OXChildProcess_ExecuteError>([&] { process.execute(); }));
        EXPECT_EQ("OXChildProcess_ExecuteError: Executing the child process failed (Resource "
                  "temporarily unavailable)",
                  thrown<OXChildProcess_ExecuteError>([&] { process.processFork(); }));
    }
    EXPECT_EQ(0, process.getHandles().getProcessIdentifier());
    EXPECT_EQ(0u, kills.calls());
    EXPECT_EQ(0, process.execute());
}

TEST(OCChildProcess, MakingAProcessTellsBothAndRecordsNothing) {
    OCChildProcess process;
    const int identifier = process.processFork();
    if (identifier == 0)
        _exit(process.getHandles().getProcessIdentifier() == 0 ? 7 : 8);
    EXPECT_EQ(7 << 8, reap(identifier));
    EXPECT_EQ(0, process.getHandles().getProcessIdentifier());
}

// The steps in the child

TEST(OCChildProcess, PreparesTheDirectory) {
    EXPECT_EQ("/", inChild([] {
                  OCChildProcess process;
                  process.processPrepare(); // stays
                  const std::filesystem::path before = std::filesystem::current_path();
                  if (before == "/")
                      return std::string("cannot tell");
                  process.setExecutionDirectory("/");
                  process.processPrepare();
                  return std::filesystem::current_path().string();
              }));
    OCChildProcess process;
    process.setExecutionDirectory("/no/such/directory");
    EXPECT_EQ("OXChildProcess_ExecuteError: Executing the child process failed (No such file or "
              "directory)",
              thrown<OXChildProcess_ExecuteError>([&] { process.processPrepare(); }));
}

TEST(OCChildProcess, PutsErrorInputAndOutputInPlaceInThisOrder) {
    EXPECT_EQ("2 0 1 run", inChild([] {
                  Script process("exit 0");
                  OCChildProcessContext context(process);
                  std::string order;
                  Replacement duplicating(calls::dup2, [&](int from, int to) {
                      const OCChildProcessStream& expected =
                          to == 0 ? static_cast<OCChildProcessStream&>(process.getStandardInput())
                          : to == 1
                              ? static_cast<OCChildProcessStream&>(process.getStandardOutput())
                              : static_cast<OCChildProcessStream&>(process.getStandardError());
                      order += std::to_string(to) +
                               (from == expected.getStream().getHandle() ? " " : " wrong ");
                      return to;
                  });
                  Replacement running(calls::execve,
                                      [&](const char* path, char* const* arguments, char* const*) {
                                          order += std::strcmp(path, "/bin/sh") == 0 &&
                                                           arguments == context.acquireArguments()
                                                       ? "run"
                                                       : "wrong";
                                          errno = ENOENT;
                                          return -1;
                                      });
                  return process.processOverlay(context) ? "true" : order;
              }));
}

TEST(OCChildProcess, StopsAtTheFirstStreamThatIsRefused) {
    EXPECT_EQ("1 2 3", inChild([] {
                  std::string counts;
                  for (unsigned long number = 1; number <= 3; ++number) {
                      Script process("exit 0");
                      OCChildProcessContext context(process);
                      Counting running(calls::execve);
                      Failing failing(calls::dup2, EMFILE, number);
                      if (process.processOverlay(context) || running.calls() != 0)
                          return std::string("overlaid");
                      counts += (number == 1 ? "" : " ") + std::to_string(failing.calls());
                  }
                  return counts;
              }));
}

TEST(OCChildProcess, TriesToDuplicateEachStreamOnce) {
    OCChildProcess process;
    for (const int code : {EBADF, EBUSY, EINTR}) {
        unsigned long tries = 0;
        Replacement duplicating(calls::dup2, [&](int, int to) {
            errno = code;
            return ++tries % 2 == 1 ? -1 : to;
        });
        EXPECT_FALSE(process.getStandardError().duplicateHandle());
        EXPECT_EQ(1u, tries);
        EXPECT_TRUE(process.getStandardError().duplicateHandle());
        EXPECT_FALSE(process.getStandardInput().duplicateHandle());
        EXPECT_EQ(3u, tries);
        EXPECT_TRUE(process.getStandardInput().duplicateHandle());
        EXPECT_FALSE(process.getStandardOutput().duplicateHandle());
        EXPECT_EQ(5u, tries);
    }
}

TEST(OCChildProcess, MovesItsFilesAwayFromTheStandardDescriptors) {
    EXPECT_EQ("0 [in] [err]", inChild([] {
                  close(0);
                  close(1);
                  close(2);
                  OCChildProcess process; // whose files get these numbers
                  if (process.getStandardError().getStream().getHandle() != 0 ||
                      process.getStandardInput().getStream().getHandle() != 1 ||
                      process.getStandardOutput().getStream().getHandle() != 2)
                      return std::string("other numbers");
                  setScript(process, "cat; printf err >&2; ls /proc/self/fd >/dev/null");
                  setInput(process, "in");
                  const int status = process.execute();
                  return std::to_string(status) + " [" + contentOf(process.getStandardOutput()) +
                         "] [" + contentOf(process.getStandardError()) + "]";
              }));
}

TEST(OCChildProcess, TheMovedDescriptorsAreForTheStartAlone) {
    EXPECT_EQ("0 inherited, 0 left", inChild([] {
                  const auto inheritable = [] {
                      long count = 0;
                      for (int handle = 3; handle != 1024; ++handle)
                          count += fcntl(handle, F_GETFD) == 0 ? 1 : 0;
                      return count;
                  };
                  close(0);
                  close(1);
                  close(2);
                  Script process("exit 0");
                  OCChildProcessContext context(process);
                  const long open = openDescriptors();
                  const long before = inheritable();
                  long started = -1;
                  Replacement running(calls::execve, [&](const char*, char* const*, char* const*) {
                      started = inheritable();
                      return -1;
                  });
                  const bool overlaid = process.processOverlay(context);
                  return (overlaid ? "overlaid" : std::to_string(started - before)) +
                         " inherited, " + std::to_string(openDescriptors() - open) + " left";
              }));
}

TEST(OCChildProcess, AFileThatCannotBeMovedAwayEndsTheStart) {
    for (unsigned long number = 1; number <= 3; ++number)
        EXPECT_EQ(
            "refused 012", inChild([number] {
                close(0);
                close(1);
                close(2);
                Script process("exit 0");
                OCChildProcessContext context(process);
                unsigned long asked = 0;
                Replacement refusing(calls::fcntl, [&](int handle, int command, void* argument) {
                    if (++asked != number)
                        return calls::fcntl.original(handle, command, argument);
                    errno = EMFILE;
                    return -1;
                });
                std::string text = process.processOverlay(context) ? "overlaid " : "refused ";
                text += std::to_string(process.getStandardError().getStream().getHandle());
                text += std::to_string(process.getStandardInput().getStream().getHandle());
                return text + std::to_string(process.getStandardOutput().getStream().getHandle());
            }));
}

TEST(OCChildProcess, AllocatesNothingBetweenTheForkAndTheStart) {
    Script process("exit 0");
    bool isChild = false;
    unsigned long requests = 0;
    Replacement forking(calls::fork, [&] {
        const pid_t child = calls::fork.original();
        isChild = child == 0;
        requests = fault::heapRecord().requests;
        return child;
    });
    Replacement running(calls::execve,
                        [&](const char* path, char* const* arguments, char* const* environment) {
                            if (!isChild || fault::heapRecord().requests != requests)
                                _exit(77);
                            return calls::execve.original(path, arguments, environment);
                        });
    process.setExecutionDirectory("/");
    EXPECT_EQ(0, process.execute());
}

// Diversion

namespace {

/// Lets the child have some of the test's own streams.
class Diverting : public Script {
public:
    enum Choice { Own, Inherited, Nowhere, Other };

    using Script::Script;

    bool divertStandardError(OCHandleStream** stream) override {
        return divert(error, *stream, getStandardError());
    }
    bool divertStandardInput(OCHandleStream** stream) override {
        return divert(input, *stream, getStandardInput());
    }
    bool divertStandardOutput(OCHandleStream** stream) override {
        return divert(output, *stream, getStandardOutput());
    }

    Choice error = Own;
    Choice input = Own;
    Choice output = Own;
    OCTemporaryFileStream other;

private:
    bool divert(Choice choice, OCHandleStream*& stream, OCChildProcessStream& own) {
        if (stream != nullptr)
            _exit(78);
        if (choice == Own)
            stream = &own.getStream();
        if (choice == Other)
            stream = &other;
        return choice != Inherited;
    }
};

} // namespace

TEST(OCChildProcess, HandsOutItsOwnFilesByItself) {
    OCChildProcess process;
    OCHandleStream* stream = nullptr;
    EXPECT_TRUE(process.divertStandardError(&stream));
    EXPECT_EQ(&process.getStandardError().getStream(), stream);
    EXPECT_TRUE(process.divertStandardInput(&stream));
    EXPECT_EQ(&process.getStandardInput().getStream(), stream);
    EXPECT_TRUE(process.divertStandardOutput(&stream));
    EXPECT_EQ(&process.getStandardOutput().getStream(), stream);
    EXPECT_FALSE(process.stopWaiting());
}

TEST(OCChildProcess, WritesToOtherStreamsOnDemand) {
    Diverting process("echo out; echo err >&2");
    process.output = Diverting::Other;
    process.error = Diverting::Other;
    EXPECT_EQ(0, process.execute());
    process.other.setPosition(0);
    EXPECT_EQ(OCAnsiString("out\nerr\n"), OCStringUtilities::importStream(process.other));
    EXPECT_EQ("", contentOf(process.getStandardOutput()));
    EXPECT_EQ("", contentOf(process.getStandardError()));
}

TEST(OCChildProcess, AStreamOverAStandardDescriptorMeansWhatThatIsAtItsTurn) {
    struct Merged : Script {
        using Script::Script;
        ~Merged() override { errors.dropHandle(); }
        bool divertStandardOutput(OCHandleStream** stream) override {
            errors.setHandle(2);
            *stream = &errors;
            return true;
        }
        OCHandleStream errors;
    } process("echo out; echo err >&2");
    EXPECT_EQ(0, process.execute());
    EXPECT_EQ("out\nerr\n", contentOf(process.getStandardError()));
    EXPECT_EQ("", contentOf(process.getStandardOutput()));
}

TEST(OCChildProcess, ItsFilesMayBeExchanged) {
    struct Exchanged : Script {
        using Script::Script;
        bool divertStandardError(OCHandleStream** stream) override {
            *stream = &getStandardOutput().getStream();
            return true;
        }
        bool divertStandardOutput(OCHandleStream** stream) override {
            *stream = &getStandardError().getStream();
            return true;
        }
    };
    // With each set of standard descriptors that the parent has closed.
    for (int closed = 0; closed != 8; ++closed)
        EXPECT_EQ("0 [out in] [err]", inChild([closed] {
                      for (int standard = 0; standard != 3; ++standard)
                          if ((closed >> standard & 1) != 0)
                              close(standard);
                      Exchanged process("printf 'out '; cat; printf err >&2");
                      setInput(process, "in");
                      const int status = process.execute();
                      return std::to_string(status) + " [" + contentOf(process.getStandardError()) +
                             "] [" + contentOf(process.getStandardOutput()) + "]";
                  }));
}

TEST(OCChildProcess, ReadsFromAnotherStreamOnDemand) {
    Diverting process("cat");
    process.input = Diverting::Other;
    process.other.writeBuffer("other", 5);
    process.other.setPosition(0);
    EXPECT_EQ(0, process.execute());
    EXPECT_EQ("other", contentOf(process.getStandardOutput()));
}

TEST(OCChildProcess, LeavesTheStandardStreamsAloneOnDemand) {
    const ScratchDirectory scratch;
    scratch.write("in", "inherited input\n");
    EXPECT_EQ("", inChild([&] {
                  if (dup2(open(scratch.file("in").c_str(), O_RDONLY), 0) != 0 ||
                      dup2(open(scratch.file("out").c_str(), O_WRONLY | O_CREAT, 0600), 1) != 1 ||
                      dup2(open(scratch.file("err").c_str(), O_WRONLY | O_CREAT, 0600), 2) != 2)
                      return std::string("not set up");
                  Diverting process("cat; echo error >&2");
                  process.input = process.output = process.error = Diverting::Inherited;
                  const int status = process.execute();
                  return status == 0 ? contentOf(process.getStandardOutput()) : "status";
              }));
    EXPECT_EQ("inherited input\n", scratch.read("out"));
    EXPECT_EQ("error\n", scratch.read("err"));
}

TEST(OCChildProcess, AFileThatIsNotUsedNeedNotBeMovedAway) {
    EXPECT_EQ("0 [out] [in]", inChild([] {
                  Diverting process("printf out; cat >&2");
                  process.error = Diverting::Other;
                  process.input = Diverting::Inherited;
                  OCTemporaryFileStream& input = process.getStandardInput().getStream();
                  setInput(process, "in");
                  if (dup2(input.getHandle(), 0) != 0)
                      return std::string("not set up");
                  input.destroyHandle();
                  input.setHandle(0);
                  Failing failing(calls::fcntl, EMFILE);
                  const int status = process.execute();
                  process.other.setPosition(0);
                  return std::to_string(status) + " [" + contentOf(process.getStandardOutput()) +
                         "] [" + OCStringUtilities::importStream(process.other).getString() + "]";
              }));
}

TEST(OCChildProcess, ADiversionToNoStreamIsAFailedDuplication) {
    for (int place = 0; place != 3; ++place) {
        Diverting process("exit 0");
        (place == 0   ? process.error
         : place == 1 ? process.input
                      : process.output) = Diverting::Nowhere;
        EXPECT_EQ(abortedByTheStart,
                  thrown<OXChildProcess_UnexpectedSignal>([&] { process.execute(); }));
    }
    Diverting closed("exit 0");
    closed.output = Diverting::Other;
    closed.other.destroyHandle();
    EXPECT_EQ(abortedByTheStart,
              thrown<OXChildProcess_UnexpectedSignal>([&] { closed.execute(); }));
}

TEST(OCChildProcess, AnExceptionOfADiversionAbortsTheChild) {
    struct Throwing : Script {
        using Script::Script;
        bool divertStandardInput(OCHandleStream**) override { throw 7; }
    } process("exit 0");
    EXPECT_EQ(abortedByTheStart,
              thrown<OXChildProcess_UnexpectedSignal>([&] { process.execute(); }));
}

// Waiting

namespace {

/// Says when to stop, and counts how often it is asked.
class Stopping : public Script {
public:
    using Script::Script;
    bool stopWaiting() override { return ++asked >= stopAt; }
    unsigned long asked = 0;
    unsigned long stopAt = ~0UL;
};

/// Lets `waitpid` answer with `result` and `status`, and the delays take no time.
struct Answer {
    explicit Answer(pid_t result, int status = 0)
        : waiting(calls::waitpid,
                  [this, result, status](pid_t process, int* where, int options) {
                      asked = process;
                      clearedBefore = *where == 0;
                      withoutWaiting = options == WNOHANG;
                      ++count;
                      *where = status;
                      return result;
                  }),
          sleeping(calls::usleep, [this](useconds_t time) {
              slept += time;
              return 0;
          }) {}

    unsigned long count = 0;
    unsigned long slept = 0; // microseconds
    pid_t asked = -1;
    bool clearedBefore = false;
    bool withoutWaiting = false;
    Replacement<pid_t(pid_t, int*, int)> waiting;
    Replacement<int(useconds_t)> sleeping;
};

// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor)
class OCChildProcessWait : public testing::Test {
protected:
    OCChildProcessWait() { process.getHandles().setProcessIdentifier(4711); }
    ~OCChildProcessWait() noexcept override {}

    Stopping process{"exit 0"};
    int status = -1;
};

} // namespace

TEST_F(OCChildProcessWait, TakesTheStatusFromBits8To15) {
    const Answer answer(4711, 0x2a00);
    EXPECT_TRUE(process.processRequest(status));
    EXPECT_EQ(0x2a, status);
    EXPECT_EQ(4711, answer.asked);
    EXPECT_TRUE(answer.clearedBefore);
    EXPECT_TRUE(answer.withoutWaiting);
    EXPECT_TRUE(process.processWait(status, 1000));
    EXPECT_TRUE(process.processWait(status));
    EXPECT_EQ(3u, answer.count);
    EXPECT_EQ(0u, answer.slept);
}

TEST_F(OCChildProcessWait, LooksOnceOnRequest) {
    const Answer answer(0);
    EXPECT_FALSE(process.processRequest(status));
    EXPECT_FALSE(process.processWait(status));
    EXPECT_EQ(-1, status);
    EXPECT_EQ(2u, answer.count);
    EXPECT_EQ(0u, answer.slept);
    EXPECT_EQ(0u, process.asked);
}

TEST_F(OCChildProcessWait, LooksEvery20Milliseconds) {
    const Answer answer(0);
    process.stopAt = 4;
    EXPECT_FALSE(process.processWait(status, 600000));
    EXPECT_EQ(-1, status);
    EXPECT_EQ(4u, process.asked);
    EXPECT_EQ(3u, answer.count);
    EXPECT_EQ(60000u, answer.slept);
}

TEST_F(OCChildProcessWait, AsksForTheLimitBeforeEachLook) {
    const Answer answer(4711, 0);
    EXPECT_FALSE(process.processWait(status, 0));
    EXPECT_EQ(-1, status);
    EXPECT_EQ(0u, answer.count);
    EXPECT_EQ(0u, process.asked);
}

TEST_F(OCChildProcessWait, AsksWhetherToStopBeforeTheFirstLook) {
    const Answer answer(4711, 0);
    process.stopAt = 1;
    EXPECT_FALSE(process.processWait(status, 600000));
    EXPECT_EQ(-1, status);
    EXPECT_EQ(0u, answer.count);
}

TEST(OCChildProcess, WaitsForTheChildOfTheBeginning) {
    struct Changing : OCChildProcess {
        bool stopWaiting() override {
            getHandles().setProcessIdentifier(4712);
            return ++asked == 3;
        }
        int asked = 0;
    } process;
    process.getHandles().setProcessIdentifier(4711);
    const Answer answer(0);
    int status = -1;
    EXPECT_FALSE(process.processWait(status, 600000));
    EXPECT_EQ(2u, answer.count);
    EXPECT_EQ(4711, answer.asked);
}

TEST_F(OCChildProcessWait, ReportsSignalsByTheLowSevenBits) {
    for (const int bits : {1, 6, 126, 0x80 | 11, 0x1200 | 9}) {
        const Answer answer(4711, bits);
        const std::string expected =
            "OXChildProcess_UnexpectedSignal: Unexpected signal in child process (" +
            std::to_string(bits & 0x7f) + ")";
        EXPECT_EQ(expected,
                  thrown<OXChildProcess_UnexpectedSignal>([&] { process.processRequest(status); }));
        EXPECT_EQ(expected,
                  thrown<OXChildProcess_UnexpectedSignal>([&] { process.processWait(status); }));
        EXPECT_EQ(expected, thrown<OXChildProcess_UnexpectedSignal>(
                                [&] { process.processWait(status, 1000); }));
        EXPECT_EQ(-1, status);
    }
}

TEST_F(OCChildProcessWait, FailsOnAnyOtherAnswer) {
    const std::array<std::pair<pid_t, int>, 4> answers{
        {{-1, 0}, {4712, 0}, {4711, 0x137f}, {4711, 0xffff}}};
    for (const auto& [result, bits] : answers) {
        const Answer answer(result, bits);
        EXPECT_EQ(waitFailed,
                  thrown<OXChildProcess_WaitFailed>([&] { process.processRequest(status); }));
        EXPECT_EQ(waitFailed,
                  thrown<OXChildProcess_WaitFailed>([&] { process.processWait(status); }));
        EXPECT_EQ(waitFailed,
                  thrown<OXChildProcess_WaitFailed>([&] { process.processWait(status, 1000); }));
        EXPECT_EQ(-1, status);
        EXPECT_EQ(3u, answer.count);
    }
}

TEST_F(OCChildProcessWait, FailsOnAnInterruptedLook) {
    unsigned long looks = 0;
    Replacement waiting(calls::waitpid, [&](pid_t identifier, int*, int) {
        errno = EINTR;
        return ++looks == 1 ? -1 : identifier;
    });
    EXPECT_EQ(waitFailed,
              thrown<OXChildProcess_WaitFailed>([&] { process.processRequest(status); }));
    EXPECT_EQ(1u, looks);
    EXPECT_EQ(-1, status);
}

TEST_F(OCChildProcessWait, MeetsNoOtherProcessWhenNoneWasStarted) {
    Counting waits(calls::waitpid);
    Counting kills(calls::kill);
    for (const int identifier : {0, -1, -4711}) {
        process.getHandles().setProcessIdentifier(identifier);
        EXPECT_EQ(waitFailed,
                  thrown<OXChildProcess_WaitFailed>([&] { process.processRequest(status); }));
        EXPECT_EQ(waitFailed,
                  thrown<OXChildProcess_WaitFailed>([&] { process.processWait(status); }));
        EXPECT_EQ(waitFailed,
                  thrown<OXChildProcess_WaitFailed>([&] { process.processWait(status, 1000); }));
        EXPECT_FALSE(process.processWait(status, 0));
        process.processKill();
    }
    EXPECT_EQ(0u, waits.calls());
    EXPECT_EQ(0u, kills.calls());
    EXPECT_EQ(-1, status);
}

TEST_F(OCChildProcessWait, PassesAFailingClockOn) {
    Failing failing(calls::gettimeofday, EINVAL);
    EXPECT_THROW(process.processWait(status, 1000), OXCountdown_AcquireTimeError);
    EXPECT_EQ(-1, status);
}

TEST(OCChildProcess, ASecondWaitFails) {
    Script process("exit 5");
    process.processCreate();
    EXPECT_EQ(5, statusOf(process));
    int status = -1;
    EXPECT_EQ(waitFailed,
              thrown<OXChildProcess_WaitFailed>([&] { process.processRequest(status); }));
    EXPECT_EQ(-1, status);
}

TEST(OCChildProcess, IsKilledWhenTheWaitIsCutShort) {
    Stopping process("exec sleep 100");
    process.stopAt = 2;
    EXPECT_EQ(waitTimedOut, thrown<OXChildProcess_WaitTimeout>([&] { process.execute(); }));
    // It was killed, and is still to be waited for.
    EXPECT_EQ(SIGKILL, reap(process.getHandles().getProcessIdentifier()));
}

TEST(OCChildProcess, ExecutesForAtMost30Seconds) {
    Script process("exec sleep 100");
    TestClock clock(1000000);
    EXPECT_EQ(waitTimedOut, thrown<OXChildProcess_WaitTimeout>([&] { process.execute(); }));
    EXPECT_EQ(1500u, clock.sleeps);
    EXPECT_EQ(SIGKILL, reap(process.getHandles().getProcessIdentifier()));
}

TEST(OCChildProcess, IsKilledWhenTheWaitFailed) {
    Script process("exec sleep 100");
    {
        Failing failing(calls::waitpid, ECHILD);
        EXPECT_EQ(waitFailed, thrown<OXChildProcess_WaitFailed>([&] { process.execute(); }));
    }
    EXPECT_EQ(SIGKILL, reap(process.getHandles().getProcessIdentifier()));
}

TEST(OCChildProcess, IsKilledForAnyExceptionOfItsFamily) {
    struct Interrupted : Script {
        using Script::Script;
        bool stopWaiting() override { throw OXChildProcess_ExecuteError(EINTR); }
    } process("exec sleep 100");
    EXPECT_EQ("OXChildProcess_ExecuteError: Executing the child process failed (Interrupted system "
              "call)",
              thrown<OXChildProcess_ExecuteError>([&] { process.execute(); }));
    EXPECT_EQ(SIGKILL, reap(process.getHandles().getProcessIdentifier()));
}

TEST(OCChildProcess, IsNotKilledForExceptionsOfOtherFamilies) {
    struct Interrupted : Script {
        using Script::Script;
        bool stopWaiting() override { throw 3; }
    } process("exec sleep 100");
    Counting kills(calls::kill);
    EXPECT_THROW(process.execute(), int);
    EXPECT_EQ(0u, kills.calls());
    EXPECT_EQ(0, calls::kill.original(process.getHandles().getProcessIdentifier(), SIGKILL));
    EXPECT_EQ(SIGKILL, reap(process.getHandles().getProcessIdentifier()));
}

TEST(OCChildProcess, KillsWithoutAWordAndWithoutWaiting) {
    Script process("exec sleep 100");
    process.processCreate();
    {
        Counting waits(calls::waitpid);
        process.processKill();
        Failing failing(calls::kill, ESRCH);
        process.processKill(); // refused
        EXPECT_EQ(1u, failing.calls());
        EXPECT_EQ(0u, waits.calls());
    }
    EXPECT_EQ("OXChildProcess_UnexpectedSignal: Unexpected signal in child process (9)",
              thrown<OXChildProcess_UnexpectedSignal>([&] { statusOf(process); }));
}

// Many

TEST(OCChildProcess, LeavesNothingOf64ChildrenAtATime) {
    const long before = openDescriptors();
    {
        std::vector<std::unique_ptr<Script>> processes;
        for (int i = 0; i != 64; ++i) {
            processes.push_back(std::make_unique<Script>("cat; exit " + std::to_string(i)));
            setInput(*processes.back(), std::to_string(i));
        }
        for (const auto& process : processes)
            process->processCreate();
        for (int i = 0; i != 64; ++i) {
            EXPECT_EQ(i, statusOf(*processes[static_cast<std::size_t>(i)]));
            EXPECT_EQ(std::to_string(i),
                      contentOf(processes[static_cast<std::size_t>(i)]->getStandardOutput()));
        }
    }
    EXPECT_EQ(before, openDescriptors());
    EXPECT_FALSE(hasChildren());
}

TEST(OCChildProcess, LeavesNothingOf5000Children) {
    const unsigned long rounds = fault::sanitized ? 500 : 5000;
    const long before = openDescriptors();
    const long blocks = fault::heapRecord().liveBlocks;
    for (unsigned long i = 0; i != rounds; ++i) {
        OCChildProcess process;
        process.setExecutionFilename("/bin/true");
        process.processCreate();
        ASSERT_EQ(0, statusOf(process));
    }
    EXPECT_EQ(before, openDescriptors());
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
    EXPECT_FALSE(hasChildren());
}

TEST(OCChildProcess, LeavesNothingOf200Executions) {
    const long before = openDescriptors();
    for (int i = 0; i != 200; ++i) {
        OCChildProcess process;
        process.setExecutionFilename(i % 2 == 0 ? "/bin/true" : "/bin/false");
        ASSERT_EQ(i % 2, process.execute());
    }
    EXPECT_EQ(before, openDescriptors());
    EXPECT_FALSE(hasChildren());
}
