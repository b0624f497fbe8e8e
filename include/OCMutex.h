#ifndef ORVABASE_OCMUTEX_H
#define ORVABASE_OCMUTEX_H

#include "OXException.h"

#include <pthread.h>

/// A recursive mutex: the thread that holds it may acquire it again and releases it as often.
///
/// Any number of threads may acquire and release it. Creating and destroying are not synchronised:
/// a mutex that a thread still holds must not be destroyed. Prefer `OCMutexLock` to releasing by
/// hand.
///
///     OCMutex mutex;
///     {
///         OCMutexLock lock(mutex);
///         ++counter;
///     }
class ORVABASE_EXPORT OCMutex : public OCObject {
public:
    /// A mutex that nobody holds.
    /// @throws OXMutex_CreateError with the system's text.
    OCMutex();
    OCMutex(const OCMutex&) = delete;
    OCMutex& operator=(const OCMutex&) = delete;
    ~OCMutex() noexcept override;

    /// Waits until no other thread holds the mutex and takes it.
    /// @throws OXMutex_AcquireError with the system's text.
    void acquireMutex() {
        const int result = pthread_mutex_lock(&mutex);
        if (__builtin_expect(result != 0, 0))
            throwAcquireError(result);
    }
    /// Releases the mutex once.
    /// @return 0, or the error number of `pthread_mutex_unlock`, such as `EPERM` when another
    /// thread holds the mutex.
    int releaseMutex() noexcept { return pthread_mutex_unlock(&mutex); }

    /// The system's mutex, for waiting on a condition variable with it.
    pthread_mutex_t* internalStructure() noexcept { return &mutex; }

    /// Creates the system's mutex, for an object that has been through `destroyMutex`.
    /// @throws OXMutex_CreateError with the system's text.
    void createMutex();
    /// Destroys the system's mutex, if there is one. Acquiring fails from then on.
    void destroyMutex() noexcept;
    void destroy() noexcept { destroyMutex(); }

private:
    [[noreturn]] static void throwAcquireError(int result);

    int created;
    pthread_mutex_t mutex;
};

/// Holds a mutex for the length of a scope. It refers to the mutex, which must outlive it.
class ORVABASE_EXPORT OCMutexLock : public OCObject {
public:
    /// Acquires `target`.
    /// @throws OXMutex_AcquireError with the system's text.
    explicit OCMutexLock(OCMutex& target) : mutex(target) { mutex.acquireMutex(); }
    OCMutexLock(const OCMutexLock&) = delete;
    OCMutexLock& operator=(const OCMutexLock&) = delete;
    /// Releases the mutex once.
    ~OCMutexLock() noexcept override { mutex.releaseMutex(); }

private:
    OCMutex& mutex;
};

/// The family of the mutex's failures.
class ORVABASE_EXPORT OXMutex : public OXAutoException {
public:
    ~OXMutex() noexcept override;

protected:
    OXMutex();
};

/// "Error waiting for synchronization mutex", with the system's text for `code`.
class ORVABASE_EXPORT OXMutex_AcquireError : public OXMutex {
public:
    explicit OXMutex_AcquireError(unsigned int code);
    ~OXMutex_AcquireError() noexcept override;
};

/// "Error creating synchronization mutex", with the system's text for `code`.
class ORVABASE_EXPORT OXMutex_CreateError : public OXMutex {
public:
    explicit OXMutex_CreateError(unsigned int code);
    ~OXMutex_CreateError() noexcept override;
};

#endif
