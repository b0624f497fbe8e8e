#ifndef ORVABASE_TESTS_GATE_H
#define ORVABASE_TESTS_GATE_H

#include <semaphore.h>

/// A counter that one thread raises and another waits for. It is made of a semaphore, so it makes
/// none of the calls that the tests of mutexes and events watch.
class Gate {
public:
    Gate() { sem_init(&semaphore, 0, 0); }
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;
    ~Gate() { sem_destroy(&semaphore); }

    void raise() { sem_post(&semaphore); }
    /// Waits until the gate has been raised `times` more often than it was waited for.
    void await(unsigned int times = 1) {
        while (times-- > 0) {
            while (sem_wait(&semaphore) != 0) {
            }
        }
    }
    /// Whether it has been raised more often than it was waited for; does not wait.
    bool isRaised() {
        int value = 0;
        sem_getvalue(&semaphore, &value);
        return value > 0;
    }

private:
    sem_t semaphore;
};

#endif
