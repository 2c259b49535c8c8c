/** Access to plain fields that several threads use: single loads and stores are whole, never torn. */
#ifndef MOVO_NET_SUPPORT_SHARED_H
#define MOVO_NET_SUPPORT_SHARED_H

namespace movonet {
template <typename T>
struct Plain {
    using type = T;
};

/** Reads a field; what its writer wrote before `set` is seen too. */
template <typename T>
T get(const T& field)
{
    T value;
    __atomic_load(&field, &value, __ATOMIC_ACQUIRE);
    return value;
}

/** Writes a field. */
template <typename T>
void set(T& field, typename Plain<T>::type value)
{
    __atomic_store(&field, &value, __ATOMIC_RELEASE);
}

/** Writes a field and returns what it held; of several callers, one gets the old value. */
template <typename T>
T take(T& field, typename Plain<T>::type value)
{
    T old;
    __atomic_exchange(&field, &value, &old, __ATOMIC_ACQ_REL);
    return old;
}
} // namespace movonet

#endif
