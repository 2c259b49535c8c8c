#include "sim/world.h"

#include "movo_net_fg/fg.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_wpactrl/wpactrl.h"

#include <algorithm>
#include <atomic>
#include <set>
#include <vector>

// What the thread sanitizer cannot know of the product's locks: threads that hold the event loop's lock never wait for
// one another, in whatever order they take the rest. That holds as long as nobody takes it with another one in hand.

namespace sim {
namespace {
thread_local int t_loopLock; // how often the thread holds it
thread_local int t_others;   // how often it holds others that have a place in the order
std::atomic<int> s_held;     // all of them, by all threads
thread_local std::vector<const void*> t_held;

bool isOf(const void* mutex, const movonet::Mutex& lock)
{
    const auto* address = static_cast<const char*>(mutex);
    const auto* begin = reinterpret_cast<const char*>(&lock);
    return address >= begin && address < begin + sizeof(lock);
}

/** The mutexes that the product has initialised; its static ones stand outside of the order. */
std::set<const void*>& made()
{
    static auto& all = *new std::set<const void*>;
    return all;
}

/** The lock of a listed interface's link to its supplicant. */
bool isLinkLock(const void* mutex)
{
    for (MovoNetIface_t* iface = movonet::firstInterface(); iface != nullptr; iface = movonet::nextInterface(iface)) {
        const bool isReal = iface->funcs.Active == int_Movo_Net_Wpactrl_Active; // and not a test's own
        const Wpactrl_t* link = isReal ? wpactrl_iface(iface) : nullptr;
        if (link != nullptr && isOf(mutex, link->lock)) {
            return true;
        }
    }
    return false;
}

void count(const void* mutex, int change)
{
    if (isOf(mutex, movonet::eventListLock)) {
        t_loopLock += change;
        s_held += change;
        return;
    }
    const Hold hold;
    t_others += made().contains(mutex) ? change : 0;
    s_held += made().contains(mutex) ? change : 0;
}
} // namespace

int Set::heldLocks() const
{
    return s_held;
}

bool looksTried(const void* mutex)
{
    return isOf(mutex, movonet::callbackListLock) || (t_loopLock > 0 && isLinkLock(mutex));
}

void noteMade(const void* mutex)
{
    const Hold hold;
    made().insert(mutex);
}

void checkOrder(const void* mutex)
{
    if (isOf(mutex, movonet::eventListLock) && t_loopLock == 0 && t_others > 0) {
        problem("the event loop's lock was asked for with another one in hand");
    }
}

void noteLocked(const void* mutex)
{
    count(mutex, 1);
    t_held.push_back(mutex);
}

void noteUnlocked(const void* mutex)
{
    count(mutex, -1);
    if (const auto last = std::ranges::find(t_held, mutex); last != t_held.end()) {
        t_held.erase(last);
    }
}

bool Set::holds(const movonet::Mutex& lock) const
{
    return std::ranges::any_of(t_held, [&lock](const void* mutex) { return isOf(mutex, lock); });
}
} // namespace sim
