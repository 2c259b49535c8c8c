/** Two kinds of mutexes, one whose taking can fail and one whose taking cannot, and what holds them for a scope. */
#ifndef MOVO_NET_SUPPORT_LOCK_H
#define MOVO_NET_SUPPORT_LOCK_H

#include "support/thread_safety.h"

#include <atomic>
#include <pthread.h>

namespace movonet {
/** Which step of making a mutex failed. */
enum class MutexError { None, Attribute, Mutex };

/**
 * A mutex that lives as long as the process. It is made on first use or by `create`, and never destroyed: after
 * `retire` every attempt to take it fails, which is what a user who comes too late is told, until `create` brings it
 * back.
 */
class Mutex {
public:
    enum class Kind { Plain, Recursive };

    constexpr explicit Mutex(Kind kind) : m_kind(kind) {}
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    /** Makes the mutex unless it is there, and lets it be taken (again). False when the platform cannot make it. */
    bool create();
    /** Makes the mutex unless it is there, and tells what the platform cannot make. */
    MutexError make();
    /** Lets nobody take it any more; a holder still releases it. */
    void retire();
    /** False when it was retired or cannot be made. */
    bool lock();
    /** As `lock`, and also false when it is held. */
    bool tryLock();
    void unlock();

private:
    enum class State { Unmade, Alive, Retired };

    bool usable();

    const Kind m_kind;
    std::atomic<State> m_state{State::Unmade};
    bool m_made = false; // guarded by the one mutex under which all others are made
    pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
};

/** Holds a Mutex until the end of the scope, if it could be taken: test it before going on. */
class [[nodiscard]] ScopedLock {
public:
    explicit ScopedLock(Mutex& mutex) : m_mutex(mutex.lock() ? &mutex : nullptr) {}
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;
    ~ScopedLock() { unlock(); }

    explicit operator bool() const { return m_mutex != nullptr; }
    /** Releases it before the end of the scope. */
    void unlock()
    {
        if (m_mutex != nullptr) {
            m_mutex->unlock();
            m_mutex = nullptr;
        }
    }
    /** Takes one again after `unlock`. */
    void relock(Mutex& mutex) { m_mutex = mutex.lock() ? &mutex : nullptr; }
    /** Returns from the scope with the mutex still held. */
    void leaveLocked() { m_mutex = nullptr; }

private:
    Mutex* m_mutex;
};

/** A mutex that is there from the start, lives as long as the process and is never retired: taking it cannot fail. */
class MOVO_LOCK StaticMutex {
public:
    constexpr StaticMutex() = default;
    StaticMutex(const StaticMutex&) = delete;
    StaticMutex& operator=(const StaticMutex&) = delete;

    void lock() MOVO_ACQUIRE() { (void)pthread_mutex_lock(&m_mutex); }
    void unlock() MOVO_RELEASE() { (void)pthread_mutex_unlock(&m_mutex); }
    /** For a condition to wait with. */
    pthread_mutex_t& native() { return m_mutex; }

private:
    pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
};

/** Holds a StaticMutex until the end of the scope. */
class MOVO_SCOPED_LOCK StaticLock {
public:
    explicit StaticLock(StaticMutex& mutex) MOVO_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.lock(); }
    ~StaticLock() MOVO_RELEASE() { m_mutex.unlock(); }
    StaticLock(const StaticLock&) = delete;
    StaticLock& operator=(const StaticLock&) = delete;

    /** Lets go of it until the condition is signalled, and takes it again. */
    void wait(pthread_cond_t& condition) { (void)pthread_cond_wait(&condition, &m_mutex.native()); }

private:
    StaticMutex& m_mutex;
};
} // namespace movonet

#endif
