#include "support/lock.h"

namespace movonet {
namespace {
StaticMutex s_making;

MutexError initialise(pthread_mutex_t& mutex, int type)
{
    pthread_mutexattr_t attributes;
    if (pthread_mutexattr_init(&attributes) != 0) {
        return MutexError::Attribute;
    }
    MutexError error = MutexError::None;
    if (pthread_mutexattr_settype(&attributes, type) != 0) {
        error = MutexError::Attribute;
    } else if (pthread_mutex_init(&mutex, &attributes) != 0) {
        error = MutexError::Mutex;
    }
    (void)pthread_mutexattr_destroy(&attributes);
    return error;
}
} // namespace

MutexError Mutex::make()
{
    const StaticLock making(s_making);
    MutexError error = MutexError::None;
    if (!m_made) {
        error = initialise(m_mutex, m_kind == Kind::Recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_DEFAULT);
        m_made = error == MutexError::None;
    }
    return error;
}

bool Mutex::create()
{
    if (make() != MutexError::None) {
        return false;
    }
    m_state.store(State::Alive, std::memory_order_release);
    return true;
}

void Mutex::retire()
{
    m_state.store(State::Retired, std::memory_order_release);
}

bool Mutex::usable()
{
    State state = m_state.load(std::memory_order_acquire);
    if (state == State::Unmade && make() == MutexError::None) {
        (void)m_state.compare_exchange_strong(state, State::Alive, std::memory_order_acq_rel);
        state = m_state.load(std::memory_order_acquire);
    }
    return state == State::Alive;
}

bool Mutex::lock()
{
    return usable() && pthread_mutex_lock(&m_mutex) == 0;
}

bool Mutex::tryLock()
{
    return usable() && pthread_mutex_trylock(&m_mutex) == 0;
}

void Mutex::unlock()
{
    (void)pthread_mutex_unlock(&m_mutex);
}
} // namespace movonet
