#include "support/lock.h"

namespace movonet {
namespace {
pthread_mutex_t s_making = PTHREAD_MUTEX_INITIALIZER;

bool initialise(pthread_mutex_t& mutex, int type)
{
    pthread_mutexattr_t attributes;
    if (pthread_mutexattr_init(&attributes) != 0) {
        return false;
    }
    const bool made = pthread_mutexattr_settype(&attributes, type) == 0 && pthread_mutex_init(&mutex, &attributes) == 0;
    (void)pthread_mutexattr_destroy(&attributes);
    return made;
}
} // namespace

bool Mutex::make()
{
    (void)pthread_mutex_lock(&s_making);
    if (!m_made) {
        m_made = initialise(m_mutex, m_kind == Kind::Recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_DEFAULT);
    }
    const bool made = m_made;
    (void)pthread_mutex_unlock(&s_making);
    return made;
}

bool Mutex::create()
{
    if (!make()) {
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
    if (state == State::Unmade && make()) {
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
