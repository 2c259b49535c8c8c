#include "sim/calls.h"
#include "sim/world.h"

// The real calls come last and unhidden: the sanitizers see the product's locks as they are.

using namespace sim;

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
    return pthread_mutex_init(mutex, attributes);
}

int sim_pthread_mutex_lock(pthread_mutex_t* mutex)
{
    if (active()) {
        if (const auto strike = enter(Call::MutexLock, {.object = mutex})) {
            return strike->error;
        }
        parkLoopAt(mutex);
    }
    return pthread_mutex_lock(mutex);
}

int sim_pthread_mutex_trylock(pthread_mutex_t* mutex)
{
    if (active()) {
        if (const auto strike = enter(Call::MutexTryLock, {.object = mutex})) {
            return strike->error;
        }
    }
    return pthread_mutex_trylock(mutex);
}
