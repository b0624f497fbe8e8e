#include "OCFileStream.h"

#include "OCCountdown.h"

#include "support/ClockCalls.h"
#include "support/FileCalls.h"
#include "support/ScratchDirectory.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <sys/wait.h>
#include <type_traits>
#include <vector>

namespace {

using Log = std::vector<std::string>;

std::string describe(int command, const void* argument) {
    const struct flock& record = *static_cast<const struct flock*>(argument);
    std::string text = command == F_SETLK ? "" : "not F_SETLK ";
    text += record.l_type == F_WRLCK ? "lock " : record.l_type == F_UNLCK ? "unlock " : "? ";
    text += record.l_whence == SEEK_SET ? "" : "not SEEK_SET ";
    text += record.l_pid == 0 ? "" : "pid ";
    return text + std::to_string(record.l_start) + " " + std::to_string(record.l_len);
}

/// Writes down the locks that are asked for, and lets them through.
class LockLog {
public:
    LockLog()
        : locking(calls::fcntl, [this](int handle, int command, void* argument) {
              calls.push_back(describe(command, argument));
              return ::calls::fcntl.original(handle, command, argument);
          }) {}
    Log calls;

private:
    Replacement<int(int, int, void*)> locking;
};

/// Another process with its own descriptor of a file, which locks and unlocks on request.
class OtherProcess {
public:
    explicit OtherProcess(const std::string& file) {
        if (pipe(requests) != 0 || pipe(answers) != 0)
            throw std::runtime_error("no pipe");
        child = fork();
        if (child == 0)
            serve(file.c_str());
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;
    ~OtherProcess() {
        ::close(requests[1]);
        ::close(requests[0]);
        ::close(answers[0]);
        ::close(answers[1]);
        waitpid(child, nullptr, 0);
    }

    /// Whether the other process got the lock, or gave it back.
    bool lock(long start, long length) { return request(F_WRLCK, start, length); }
    bool unlock(long start, long length) { return request(F_UNLCK, start, length); }

private:
    struct Request {
        long type; // of the size of the others, so that all bytes are written
        long start;
        long length;
    };

    bool request(long type, long start, long length) {
        const Request wanted{type, start, length};
        char answer = 0;
        if (::write(requests[1], &wanted, sizeof wanted) != sizeof wanted ||
            ::read(answers[0], &answer, 1) != 1)
            throw std::runtime_error("the other process is gone");
        return answer == 'y';
    }

    [[noreturn]] void serve(const char* file) {
        ::close(requests[1]);
        const int handle = ::open(file, O_RDWR, 0);
        Request wanted;
        while (::read(requests[0], &wanted, sizeof wanted) == sizeof wanted) {
            struct flock record = {};
            record.l_type = static_cast<short>(wanted.type);
            record.l_whence = SEEK_SET;
            record.l_start = wanted.start;
            record.l_len = wanted.length;
            const char answer = ::fcntl(handle, F_SETLK, &record) == 0 ? 'y' : 'n';
            if (::write(answers[1], &answer, 1) != 1)
                break;
        }
        _exit(0);
    }

    int requests[2];
    int answers[2];
    pid_t child;
};

class OCFileStreamLockTest : public testing::Test {
protected:
    ScratchDirectory directory;
    std::string name = directory.write("file", std::string(200, 'x'));
    OCFileStream stream{name.c_str(), FileCreateModeReadWrite, FileShareModeNone};
};

} // namespace

TEST_F(OCFileStreamLockTest, HoldsAReferenceAndTwoNumbers) {
    EXPECT_EQ(sizeof(OCFileStreamLock), 32U);
    EXPECT_EQ(slots::slotCount<OCFileStreamLock>(), 2U);
    EXPECT_FALSE(std::is_copy_constructible_v<OCFileStreamLock>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCFileStreamLock>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCFileStreamLock>);
}

TEST_F(OCFileStreamLockTest, RemembersTheLengthAndTheStartOfTheRangeHeld) {
    OCFileStreamLock lock(stream);
    const auto range = [&] {
        unsigned long fields[2];
        std::memcpy(fields, reinterpret_cast<const char*>(&lock) + 16, sizeof fields);
        return std::to_string(fields[0]) + " from " + std::to_string(fields[1]);
    };
    EXPECT_EQ(range(), "0 from 0");
    EXPECT_TRUE(lock.lock(10, 20));
    EXPECT_EQ(range(), "20 from 10");
    lock.unlock();
    EXPECT_EQ(range(), "0 from 0");
    EXPECT_TRUE(lock.lock(5, 0));
    EXPECT_EQ(range(), "0 from 0");
}

TEST_F(OCFileStreamLockTest, LocksNothingAtFirst) {
    LockLog log;
    {
        OCFileStreamLock lock(stream);
        lock.unlock();
    }
    EXPECT_EQ(log.calls, Log());
}

TEST_F(OCFileStreamLockTest, LocksExclusivelyByOneCallThatDoesNotWait) {
    LockLog log;
    {
        OCFileStreamLock lock(stream);
        EXPECT_TRUE(lock.lock(10, 20));
        EXPECT_EQ(log.calls, Log({"lock 10 20"}));
        lock.unlock();
        EXPECT_EQ(log.calls, Log({"lock 10 20", "unlock 10 20"}));
        lock.unlock();
        EXPECT_EQ(log.calls.size(), 2U);
    }
    EXPECT_EQ(log.calls.size(), 2U);
}

TEST_F(OCFileStreamLockTest, TheDestructorUnlocks) {
    LockLog log;
    {
        OCFileStreamLock lock(stream);
        EXPECT_TRUE(lock.lock(0, 1));
    }
    EXPECT_EQ(log.calls, Log({"lock 0 1", "unlock 0 1"}));
}

TEST_F(OCFileStreamLockTest, ANewLockGivesUpTheOldRangeFirst) {
    LockLog log;
    OCFileStreamLock lock(stream);
    EXPECT_TRUE(lock.lock(0, 10));
    EXPECT_TRUE(lock.lock(5, 10));
    EXPECT_EQ(log.calls, Log({"lock 0 10", "unlock 0 10", "lock 5 10"}));
}

TEST_F(OCFileStreamLockTest, ALengthOfZeroLocksNothing) {
    LockLog log;
    OCFileStreamLock lock(stream);
    EXPECT_TRUE(lock.lock(0, 0));
    lock.unlock();
    EXPECT_EQ(log.calls, Log());
    EXPECT_TRUE(lock.lock(3, 4));
    EXPECT_TRUE(lock.lock(7, 0)); // which gives the range up all the same
    EXPECT_EQ(log.calls, Log({"lock 3 4", "unlock 3 4"}));
    lock.unlock();
    EXPECT_EQ(log.calls.size(), 2U);
}

TEST_F(OCFileStreamLockTest, AConflictingLockOfAnotherProcessIsFalse) {
    OtherProcess other(name);
    ASSERT_TRUE(other.lock(0, 100));
    OCFileStreamLock lock(stream);
    EXPECT_FALSE(lock.lock(50, 10));
    EXPECT_TRUE(lock.lock(100, 10));
    EXPECT_FALSE(other.lock(109, 1));
    EXPECT_TRUE(other.lock(110, 1));
    // The failing attempt gives the range up all the same.
    EXPECT_FALSE(lock.lock(50, 10));
    EXPECT_TRUE(other.lock(100, 10));
    ASSERT_TRUE(other.unlock(0, 200));
    EXPECT_TRUE(lock.lock(50, 10));
    EXPECT_FALSE(other.lock(59, 1));
    lock.unlock();
    EXPECT_TRUE(other.lock(59, 1));
}

TEST_F(OCFileStreamLockTest, AFailedAttemptHoldsNothing) {
    OCFileStreamLock lock(stream);
    for (const int code : {EAGAIN, EACCES}) {
        {
            Failing failing(calls::fcntl, code);
            EXPECT_FALSE(lock.lock(0, 10));
            EXPECT_EQ(failing.calls(), 1U);
        }
        LockLog log;
        lock.unlock();
        EXPECT_EQ(log.calls, Log());
    }
}

TEST_F(OCFileStreamLockTest, AnyOtherFailureThrowsWithTheSystemsText) {
    LockLog log;
    OCFileStreamLock lock(stream);
    EXPECT_TRUE(lock.lock(0, 10));
    stream.dropHandle();
    EXPECT_EQ(thrown<OXFileStreamLock_AcquireError>([&] { lock.lock(5, 5); }),
              "OXFileStreamLock_AcquireError: Can not acquire the file stream lock (Bad file "
              "descriptor)");
    EXPECT_EQ(log.calls, Log({"lock 0 10", "unlock 0 10", "lock 5 5"}));
    lock.unlock();
    EXPECT_EQ(log.calls.size(), 3U);
}

TEST_F(OCFileStreamLockTest, ExhaustedLockRecordsThrow) {
    OCFileStreamLock lock(stream);
    Failing failing(calls::fcntl, ENOLCK);
    EXPECT_EQ(thrown<OXFileStreamLock_AcquireError>([&] { lock.lock(0, 10); }),
              "OXFileStreamLock_AcquireError: Can not acquire the file stream lock (No locks "
              "available)");
    EXPECT_EQ(thrown<OXFileStreamLock_AcquireError>([&] { lock.lock(0, 10, 1000); }),
              "OXFileStreamLock_AcquireError: Can not acquire the file stream lock (No locks "
              "available)");
    EXPECT_EQ(failing.calls(), 2U);
}

TEST_F(OCFileStreamLockTest, NumbersThatAnOffsetCannotHoldAreInvalid) {
    const char* invalid = "OXFileStreamLock_AcquireError: Can not acquire the file stream lock "
                          "(Invalid argument)";
    const unsigned long tooLarge = 0x8000000000000000;
    LockLog log;
    OCFileStreamLock lock(stream);
    EXPECT_EQ(thrown<OXFileStreamLock_AcquireError>([&] { lock.lock(tooLarge, 1); }), invalid);
    EXPECT_EQ(thrown<OXFileStreamLock_AcquireError>([&] { lock.lock(~0UL, 1); }), invalid);
    EXPECT_EQ(thrown<OXFileStreamLock_AcquireError>([&] { lock.lock(0, tooLarge); }), invalid);
    EXPECT_EQ(thrown<OXFileStreamLock_AcquireError>([&] { lock.lock(0, ~0UL); }), invalid);
    EXPECT_EQ(thrown<OXFileStreamLock_AcquireError>([&] { lock.lock(0, ~0UL, 100); }), invalid);
    EXPECT_EQ(log.calls, Log());
    EXPECT_TRUE(lock.lock(tooLarge, 0));
    EXPECT_TRUE(lock.lock(0, LONG_MAX));
    EXPECT_TRUE(lock.lock(LONG_MAX, 1));
    EXPECT_EQ(log.calls, Log({"lock 0 9223372036854775807", "unlock 0 9223372036854775807",
                              "lock 9223372036854775807 1"}));
    EXPECT_EQ(thrown<OXFileStreamLock_AcquireError>([&] { lock.lock(LONG_MAX, 2); }),
              "OXFileStreamLock_AcquireError: Can not acquire the file stream lock (Value too "
              "large for defined data type)");
    EXPECT_EQ(log.calls.back(), "lock 9223372036854775807 2");
    // The refusal of a number comes after the old range has been given up.
    EXPECT_TRUE(lock.lock(1, 2));
    EXPECT_EQ(thrown<OXFileStreamLock_AcquireError>([&] { lock.lock(tooLarge, 1); }), invalid);
    EXPECT_EQ(log.calls.back(), "unlock 1 2");
}

TEST_F(OCFileStreamLockTest, LocksOfOneProcessDoNotExcludeEachOther) {
    OCFileStream second(name.c_str(), FileCreateModeReadWrite, FileShareModeNone);
    OCFileStreamLock one(stream);
    OCFileStreamLock two(second);
    EXPECT_TRUE(one.lock(0, 10));
    EXPECT_TRUE(two.lock(0, 10));
}

TEST_F(OCFileStreamLockTest, TheUnlockingCallsResultIsIgnored) {
    OCFileStreamLock lock(stream);
    EXPECT_TRUE(lock.lock(0, 10));
    {
        Failing failing(calls::fcntl, EIO);
        lock.unlock();
        EXPECT_EQ(failing.calls(), 1U);
        lock.unlock();
        EXPECT_EQ(failing.calls(), 1U);
    }
    EXPECT_TRUE(lock.lock(5, 10));
}

TEST_F(OCFileStreamLockTest, ATimedLockTriesAtOnce) {
    LockLog log;
    TestClock clock(1000);
    OCFileStreamLock lock(stream);
    EXPECT_TRUE(lock.lock(10, 20, 1));
    EXPECT_EQ(log.calls, Log({"lock 10 20"}));
    EXPECT_EQ(clock.sleeps, 0U);
}

TEST_F(OCFileStreamLockTest, ATimedLockPollsEveryTenthOfASecondUntilTheTimeIsOver) {
    OtherProcess other(name);
    ASSERT_TRUE(other.lock(0, 100));
    LockLog log;
    TestClock clock(1000, 999999);
    OCFileStreamLock lock(stream);
    EXPECT_FALSE(lock.lock(50, 10, 1000));
    EXPECT_EQ(log.calls, Log(10, "lock 50 10"));
    EXPECT_EQ(clock.sleeps, 10U);
    EXPECT_EQ(clock.slept, 100000U);
    log.calls.clear();
    EXPECT_FALSE(lock.lock(50, 10, 101));
    EXPECT_EQ(log.calls, Log(2, "lock 50 10"));
    log.calls.clear();
    EXPECT_FALSE(lock.lock(50, 10, 100));
    EXPECT_EQ(log.calls, Log(1, "lock 50 10"));
}

TEST_F(OCFileStreamLockTest, ATimedLockSucceedsWhenTheOtherProcessLetsGo) {
    OtherProcess other(name);
    ASSERT_TRUE(other.lock(0, 100));
    OCFileStreamLock lock(stream);
    unsigned long attempts = 0;
    TestClock clock(1000);
    Replacement locking(calls::fcntl, [&](int handle, int command, void* argument) {
        if (++attempts == 4)
            other.unlock(0, 100);
        return calls::fcntl.original(handle, command, argument);
    });
    EXPECT_TRUE(lock.lock(50, 10, 1000));
    EXPECT_EQ(attempts, 4U);
    EXPECT_EQ(clock.sleeps, 3U);
    EXPECT_FALSE(other.lock(50, 1));
}

TEST_F(OCFileStreamLockTest, ATimeOutOfZeroDoesNotTryAndKeepsTheRangeHeld) {
    OtherProcess other(name);
    LockLog log;
    OCFileStreamLock lock(stream);
    EXPECT_FALSE(lock.lock(50, 10, 0));
    EXPECT_EQ(log.calls, Log());
    EXPECT_TRUE(lock.lock(0, 10));
    EXPECT_FALSE(lock.lock(50, 10, 0));
    EXPECT_EQ(log.calls, Log({"lock 0 10"}));
    EXPECT_FALSE(other.lock(0, 10));
    EXPECT_TRUE(other.lock(50, 10));
}

TEST_F(OCFileStreamLockTest, ATimedLockOfLengthZeroIsTrueWithoutACall) {
    LockLog log;
    OCFileStreamLock lock(stream);
    EXPECT_TRUE(lock.lock(0, 0, 1));
    EXPECT_FALSE(lock.lock(0, 0, 0));
    EXPECT_EQ(log.calls, Log());
}

TEST_F(OCFileStreamLockTest, AFailingClockStopsATimedLock) {
    LockLog log;
    OCFileStreamLock lock(stream);
    Failing failing(calls::gettimeofday, EFAULT);
    EXPECT_EQ(thrown<OXCountdown_AcquireTimeError>([&] { lock.lock(0, 10, 1000); }),
              "OXCountdown_AcquireTimeError: Error acquiring the current time");
    EXPECT_EQ(log.calls, Log());
}

TEST_F(OCFileStreamLockTest, ClosingAnyDescriptorOfTheFileDropsTheLocks) {
    OtherProcess other(name);
    OCFileStreamLock lock(stream);
    EXPECT_TRUE(lock.lock(0, 10));
    EXPECT_FALSE(other.lock(0, 10));
    { OCFileStream second(name.c_str(), FileCreateModeRead, FileShareModeRead); }
    EXPECT_TRUE(other.lock(0, 10));
}

TEST(OXFileStreamLock, TheLeafStoresItsClassMessageAndTheSystemsText) {
    EXPECT_EQ(
        thrown<OXFileStreamLock_AcquireError>([] { throw OXFileStreamLock_AcquireError(EDEADLK); }),
        "OXFileStreamLock_AcquireError: Can not acquire the file stream lock (Resource "
        "deadlock avoided)");
    EXPECT_EQ(OXFileStreamLock_AcquireError(EDEADLK).getDetails().getCount(), 1U);
    EXPECT_TRUE((std::is_base_of_v<OXFileStream, OXFileStreamLock>));
    EXPECT_TRUE((std::is_base_of_v<OXFileStreamLock, OXFileStreamLock_AcquireError>));
    EXPECT_FALSE(std::is_default_constructible_v<OXFileStreamLock>);
}
