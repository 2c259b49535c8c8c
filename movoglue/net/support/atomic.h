/** Loads and stores of plain fields that several threads use, in the words of std::atomic; none is ever torn. */
#ifndef MOVO_NET_SUPPORT_ATOMIC_H
#define MOVO_NET_SUPPORT_ATOMIC_H

#include <type_traits>

namespace movonet {
/** Reads a field; what its writer wrote before `store` is seen too. */
template <typename T>
T load(const T& field)
{
    T value;
    __atomic_load(&field, &value, __ATOMIC_ACQUIRE);
    return value;
}

/** Writes a field. */
template <typename T>
void store(T& field, std::type_identity_t<T> value)
{
    __atomic_store(&field, &value, __ATOMIC_RELEASE);
}

/** Writes a field and returns what it held; of several callers, one gets the old value. */
template <typename T>
T exchange(T& field, std::type_identity_t<T> value)
{
    T old;
    __atomic_exchange(&field, &value, &old, __ATOMIC_ACQ_REL);
    return old;
}
} // namespace movonet

#endif
