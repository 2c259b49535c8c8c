#include "sim/calls.h"
#include "sim/world.h"

#include <cerrno>
#include <sched.h>

// The real calls come last and unhidden: the sanitizers see the product's locks as they are.

using namespace sim;

/**
 * The link pass takes the callback's lock and that of a supplicant's link with the list's in hand, a callback and the
 * supplicant's events the list's with their own: no deadlock, since all hold the event loop's lock. The thread
 * sanitizer would call it one, unless it sees one of two as merely tried.
 */
static int lockForSanitizer(pthread_mutex_t* mutex)
{
#ifdef SIM_THREAD_SANITIZER
    if (looksTried(mutex)) {
        int result = 0;
        while ((result = pthread_mutex_trylock(mutex)) == EBUSY) {
            (void)sched_yield();
        }
        return result;
    }
#endif
    return pthread_mutex_lock(mutex);
}

int sim_pthread_mutexattr_init(pthread_mutexattr_t* attributes)
{
    if (active()) {
        if (const auto strike = enter(Call::MutexAttrInit, {})) {
            return strike->error;
        }
    }
    return pthread_mutexattr_init(attributes);
}

int sim_pthread_mutexattr_settype(pthread_mutexattr_t* attributes, int type)
{
    if (active()) {
        if (const auto strike = enter(Call::MutexAttrSetType, {})) {
            return strike->error;
        }
    }
    return pthread_mutexattr_settype(attributes, type);
}

int sim_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes)
{
    if (active()) {
        if (const auto strike = enter(Call::MutexInit, {.object = mutex})) {
            return strike->error;
        }
    }
    const int result = pthread_mutex_init(mutex, attributes);
    if (result == 0) {
        noteMade(mutex);
    }
    return result;
}

int sim_pthread_mutex_lock(pthread_mutex_t* mutex)
{
    if (active()) {
        if (const auto strike = enter(Call::MutexLock, {.object = mutex})) {
            return strike->error;
        }
        parkLoopAt(mutex);
        checkOrder(mutex);
    }
    const int result = lockForSanitizer(mutex);
    if (result == 0) {
        noteLocked(mutex);
    }
    return result;
}

int sim_pthread_mutex_trylock(pthread_mutex_t* mutex)
{
    if (active()) {
        if (const auto strike = enter(Call::MutexTryLock, {.object = mutex})) {
            return strike->error;
        }
    }
    const int result = pthread_mutex_trylock(mutex);
    if (result == 0) {
        noteLocked(mutex);
    }
    return result;
}

int sim_pthread_mutex_unlock(pthread_mutex_t* mutex)
{
    noteUnlocked(mutex);
    return pthread_mutex_unlock(mutex);
}
