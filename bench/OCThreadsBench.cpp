// Mutexes and events beside the standard library's mutexes and condition variables.

#include "OCEvent.h"

#include <benchmark/benchmark.h>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

using benchmark::ClobberMemory;
using benchmark::DoNotOptimize;
using benchmark::State;

// A mutex that nobody else wants

void orvabaseMutex(State& state) {
    OCMutex mutex;
    unsigned long counter = 0;
    for (auto _ : state) {
        OCMutexLock lock(mutex);
        DoNotOptimize(++counter);
    }
}

void stdRecursiveMutex(State& state) {
    std::recursive_mutex mutex;
    unsigned long counter = 0;
    for (auto _ : state) {
        std::lock_guard<std::recursive_mutex> lock(mutex);
        DoNotOptimize(++counter);
    }
}

// An event, signalled and waited for

/// The same made of a condition variable, notified under its lock.
class ConditionEvent {
public:
    void signal() {
        std::lock_guard<std::mutex> lock(mutex);
        signalled = true;
        condition.notify_all();
    }
    void wait() {
        std::unique_lock<std::mutex> lock(mutex);
        condition.wait(lock, [this] { return signalled; });
        signalled = false;
    }

private:
    std::mutex mutex;
    std::condition_variable condition;
    bool signalled = false;
};

void orvabaseEvent(State& state) {
    OCEvent event(EventStateNotSignalled, EventTypeAutoReset);
    for (auto _ : state) {
        event.signalEvent();
        event.waitFor();
        ClobberMemory();
    }
}

void stdConditionVariable(State& state) {
    ConditionEvent event;
    for (auto _ : state) {
        event.signal();
        event.wait();
        ClobberMemory();
    }
}

// Two threads that wait for each other in turn

constexpr int rounds = 1000;

void orvabasePingPong(State& state) {
    for (auto _ : state) {
        OCEvent ping(EventStateNotSignalled, EventTypeAutoReset);
        OCEvent pong(EventStateNotSignalled, EventTypeAutoReset);
        std::thread other([&] {
            for (int i = 0; i < rounds; ++i) {
                ping.waitFor();
                pong.signalEvent();
            }
        });
        for (int i = 0; i < rounds; ++i) {
            ping.signalEvent();
            pong.waitFor();
        }
        other.join();
    }
}

void stdPingPong(State& state) {
    for (auto _ : state) {
        ConditionEvent ping;
        ConditionEvent pong;
        std::thread other([&] {
            for (int i = 0; i < rounds; ++i) {
                ping.wait();
                pong.signal();
            }
        });
        for (int i = 0; i < rounds; ++i) {
            ping.signal();
            pong.wait();
        }
        other.join();
    }
}

BENCHMARK(orvabaseMutex)->Name("BM_mutex_uncontended/orvabase");
BENCHMARK(stdRecursiveMutex)->Name("BM_mutex_uncontended/std_recursive_mutex");
BENCHMARK(orvabaseEvent)->Name("BM_event_signal_and_wait/orvabase");
BENCHMARK(stdConditionVariable)->Name("BM_event_signal_and_wait/std_condition_variable");
BENCHMARK(orvabasePingPong)->Name("BM_event_ping_pong/orvabase")->UseRealTime();
BENCHMARK(stdPingPong)->Name("BM_event_ping_pong/std_condition_variable")->UseRealTime();

} // namespace
