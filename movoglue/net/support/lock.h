/** Mutexes that can be taken away from their users, and the lock that holds one for a scope. */
#ifndef MOVO_NET_SUPPORT_LOCK_H
#define MOVO_NET_SUPPORT_LOCK_H

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

/** Holds a mutex until the end of the scope, if it could be taken: test it before going on. */
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
} // namespace movonet

#endif
