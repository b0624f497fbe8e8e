#include "support/FaultInjection.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>

#if FAULT_MEMCHECK
#include <dlfcn.h>
#endif

// These run before the sanitizers are ready and inside their own start, so they are not
// instrumented.
#define FAULT_PLAIN __attribute__((no_sanitize("address", "thread", "undefined")))

extern "C" {
// The names are those of the C library and of the sanitizers.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
#if FAULT_SANITIZED
void* __interceptor_malloc(std::size_t);
void* __interceptor_calloc(std::size_t, std::size_t);
void* __interceptor_realloc(void*, std::size_t);
void __interceptor_free(void*);
#elif !FAULT_MEMCHECK
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);
#endif
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
}

namespace {

#if FAULT_SANITIZED
constexpr auto underlyingMalloc = __interceptor_malloc;
constexpr auto underlyingCalloc = __interceptor_calloc;
constexpr auto underlyingRealloc = __interceptor_realloc;
constexpr auto underlyingFree = __interceptor_free;
#elif FAULT_MEMCHECK
/// The functions of the C library, in whose place valgrind puts its heap, but under no other names
/// for them. All are found at the first request: finding one later could come between a failure of
/// the loader and the question what it was. Finding them asks for no memory.
struct Underlying {
    template<typename Function>
    static void find(Function& function, const char* name) {
        function = reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
    }
    Underlying() {
        find(allocate, "malloc");
        find(allocateClear, "calloc");
        find(reallocate, "realloc");
        find(release, "free");
    }

    void* (*allocate)(std::size_t);
    void* (*allocateClear)(std::size_t, std::size_t);
    void* (*reallocate)(void*, std::size_t);
    void (*release)(void*);
};

const Underlying& underlying() {
    static const Underlying functions;
    return functions;
}

void* underlyingMalloc(std::size_t size) {
    return underlying().allocate(size);
}

void* underlyingCalloc(std::size_t count, std::size_t size) {
    return underlying().allocateClear(count, size);
}

void* underlyingRealloc(void* block, std::size_t size) {
    return underlying().reallocate(block, size);
}

void underlyingFree(void* block) {
    underlying().release(block);
}
#else
constexpr auto underlyingMalloc = __libc_malloc;
constexpr auto underlyingCalloc = __libc_calloc;
constexpr auto underlyingRealloc = __libc_realloc;
constexpr auto underlyingFree = __libc_free;
#endif

struct ThreadState {
    fault::HeapRecord record;
    unsigned long countdown; // the request that fails, counted from the next; 0 for none
    bool following;
    bool triggered;
};

thread_local ThreadState state;

/// Counts a request and tells whether it is to fail.
FAULT_PLAIN bool refuses(std::size_t size) {
    ThreadState& own = state;
    ++own.record.requests;
    own.record.lastSize = size;
    if (size > own.record.largestSize)
        own.record.largestSize = size;
    bool refused = false;
    if (own.countdown != 0) {
        refused = own.countdown == 1;
        if (!refused || !own.following)
            --own.countdown;
        own.triggered = own.triggered || refused;
    }
#if FAULT_SANITIZED || FAULT_MEMCHECK
    // A sanitizer ends the program, and valgrind complains, where the C library merely refuses.
    refused = refused || size > (std::size_t(1) << 39);
#endif
    if (refused)
        errno = ENOMEM;
    return refused;
}

FAULT_PLAIN void* gained(void* block) {
    if (block != nullptr)
        ++state.record.liveBlocks;
    return block;
}

} // namespace

extern "C" {

FAULT_PLAIN void* malloc(std::size_t size) {
    return refuses(size) ? nullptr : gained(underlyingMalloc(size));
}

FAULT_PLAIN void* calloc(std::size_t count, std::size_t size) {
    std::size_t total = 0;
    if (__builtin_mul_overflow(count, size, &total))
        total = SIZE_MAX;
    return refuses(total) ? nullptr : gained(underlyingCalloc(count, size));
}

FAULT_PLAIN void free(void* block) {
    if (block != nullptr) {
        ++state.record.releases;
        --state.record.liveBlocks;
    }
    underlyingFree(block);
}

FAULT_PLAIN void* realloc(void* block, std::size_t size) {
    if (block == nullptr)
        return malloc(size);
    if (size == 0) {
        free(block);
        return nullptr;
    }
    return refuses(size) ? nullptr : underlyingRealloc(block, size);
}

} // extern "C"

namespace fault {

HeapRecord heapRecord() noexcept {
    return state.record;
}

void resetLargestSize() noexcept {
    state.record.largestSize = 0;
}

HeapFault::HeapFault(unsigned long number, Extent extent) noexcept {
    state.countdown = number;
    state.following = extent == Following;
    state.triggered = false;
}

HeapFault::~HeapFault() {
    disarm();
}

bool HeapFault::triggered() const noexcept {
    return state.triggered;
}

void HeapFault::disarm() noexcept {
    state.countdown = 0;
}

} // namespace fault
