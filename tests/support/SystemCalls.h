#ifndef ORVABASE_TESTS_SYSTEMCALLS_H
#define ORVABASE_TESTS_SYSTEMCALLS_H

#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <functional>
#include <pthread.h>
#include <type_traits>

/// Puts a test's own code in place of functions of the C library.
///
/// A header such as FileCalls.h defines the function itself in the test program, where the dynamic
/// linker finds it first, also for the library under test; each such function asks its
/// `SystemCall` what to do. Without a replacement that is the C library's function.
///
///     Replacement failing(calls::read, [](int, void*, size_t) -> ssize_t {
///         errno = EIO;
///         return -1;
///     });
///
/// A replacement applies from its construction to the end of its scope, to the thread that made it
/// (unless it says every thread), and not to calls that it makes itself. No thread may still be in
/// a call when the scope ends. One replacement of a function at a time.
template<class Signature>
class SystemCall;

template<class Result, class... Arguments>
class SystemCall<Result(Arguments...)> {
public:
    /// What runs instead, and for which thread.
    struct Instead {
        std::function<Result(Arguments...)> function;
        pthread_t owner;
        bool everyThread;
    };

    /// The version is needed where the C library has an older one of the same name.
    constexpr explicit SystemCall(const char* symbol, const char* symbolVersion = nullptr)
        : name(symbol), version(symbolVersion) {}

    Result operator()(Arguments... arguments) {
        if (inside || !(everyThread || pthread_equal(pthread_self(), owner)))
            return original(arguments...);
        Instead* instead = active.load(std::memory_order_acquire);
        if (instead == nullptr)
            return original(arguments...);
        struct Inside {
            Inside() { inside = true; }
            ~Inside() { inside = false; }
        } marked;
        return instead->function(arguments...);
    }

    /// The C library's function.
    Result original(Arguments... arguments) {
        void* address = next.load(std::memory_order_relaxed);
        if (address == nullptr) {
            address = find();
            next.store(address, std::memory_order_relaxed);
        }
        return reinterpret_cast<Result (*)(Arguments...)>(address)(arguments...);
    }

    void replace(Instead& instead) {
        owner = instead.owner;
        active.store(&instead, std::memory_order_release);
        everyThread = instead.everyThread;
    }
    void restore() {
        everyThread = false;
        active.store(nullptr, std::memory_order_release);
    }

private:
    void* find() const {
#if !defined(__SANITIZE_THREAD__) // which has functions of its own in between, without versions
        if (version != nullptr)
            return dlvsym(RTLD_NEXT, name, version);
#endif
        return dlsym(RTLD_NEXT, name);
    }

    static inline thread_local bool inside = false;

    const char* name;
    const char* version;
    std::atomic<void*> next{nullptr};
    std::atomic<Instead*> active{nullptr};
    // Kept here as well, so that other threads need not look at what may be going.
    std::atomic<pthread_t> owner{};
    std::atomic<bool> everyThread{false};
};

enum class Threads { This, Every };

/// The code that runs instead of a system call, for the length of a scope.
template<class Signature>
class Replacement {
public:
    template<class Code>
    Replacement(SystemCall<Signature>& target, Code code, Threads threads = Threads::This)
        : call(target), instead{code, pthread_self(), threads == Threads::Every} {
        call.replace(instead);
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() { call.restore(); }

private:
    SystemCall<Signature>& call;
    typename SystemCall<Signature>::Instead instead;
};

template<class Signature, class Code>
Replacement(SystemCall<Signature>&, Code) -> Replacement<Signature>;
template<class Signature, class Code>
Replacement(SystemCall<Signature>&, Code, Threads) -> Replacement<Signature>;

/// Makes the calls of a function from the `first`-th on (counted from 1) fail, up to `times` of
/// them, and counts all calls. A function that returns a pointer fails with null, one of the
/// pthread family with the error number, any other with -1; the latter and the pointers' set errno.
template<class Signature>
class Failing;

template<class Result, class... Arguments>
class Failing<Result(Arguments...)> {
public:
    Failing(SystemCall<Result(Arguments...)>& target, int code, unsigned long first = 1,
            unsigned long times = ~0UL)
        : replacement(target, [this, &target, code, first, times](Arguments... arguments) {
              const unsigned long number = ++count;
              if (number < first || number - first >= times)
                  return target.original(arguments...);
              if constexpr (std::is_pointer_v<Result>) {
                  errno = code;
                  return Result(nullptr);
              } else {
                  errno = code;
                  return Result(-1);
              }
          }) {}
    unsigned long calls() const { return count; }

private:
    std::atomic<unsigned long> count{0};
    Replacement<Result(Arguments...)> replacement;
};

template<class Signature>
Failing(SystemCall<Signature>&, int) -> Failing<Signature>;
template<class Signature>
Failing(SystemCall<Signature>&, int, unsigned long) -> Failing<Signature>;
template<class Signature>
Failing(SystemCall<Signature>&, int, unsigned long, unsigned long) -> Failing<Signature>;

/// Counts the calls of a function and lets them through.
template<class Signature>
class Counting;

template<class Result, class... Arguments>
class Counting<Result(Arguments...)> {
public:
    explicit Counting(SystemCall<Result(Arguments...)>& target)
        : replacement(target, [this, &target](Arguments... arguments) {
              ++count;
              return target.original(arguments...);
          }) {}
    unsigned long calls() const { return count; }

private:
    std::atomic<unsigned long> count{0};
    Replacement<Result(Arguments...)> replacement;
};

template<class Signature>
Counting(SystemCall<Signature>&) -> Counting<Signature>;

/// Defines a function of the C library in the test program. It is weak, so that several files of
/// one program may define it.
#define ORVABASE_TEST_REPLACES extern "C" __attribute__((weak, visibility("default")))

#endif
