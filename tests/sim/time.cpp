#include "sim/calls.h"
#include "sim/sim.h"
#include "sim/world.h"

#include <fcntl.h>
#include <sched.h>

namespace sim {
namespace {

} // namespace

bool anybodySelects()
{
    for (const Thread& thread : world().threads.all) {
        if (thread.place == Place::Selecting) {
            return true;
        }
    }
    return false;
}

namespace {
/** The descriptors of one select call, and what is to be told of them. */
struct Watched {
    int count;
    fd_set* reading;
    fd_set wanted;

    /** As select with no time at all: how many are readable, or -1. */
    int look()
    {
        fd_set readable = wanted;
        timeval none{};
        const int found = ::select(count, &readable, nullptr, nullptr, &none);
        if (found >= 0 && reading != nullptr) {
            *reading = readable;
        }
        return found;
    }

    /** A descriptor that is closed during the wait is not looked at any more; only the next wait fails with it. */
    void dropClosed()
    {
        for (int fd = 0; fd < count; ++fd) {
            if (FD_ISSET(fd, &wanted) && fcntl(fd, F_GETFD) < 0) {
                FD_CLR(fd, &wanted);
            }
        }
    }
};

/** May the wait of `me` be over, with nothing to read? */
bool takeTick(const Thread& me, std::int64_t microseconds)
{
    Time& time = world().time;
    if (isToEnd(me)) {
        return true;
    }
    if (microseconds < 0 || time.ticks == 0 || !quiet(&me)) {
        return false;
    }
    --time.ticks;
    time.microseconds += microseconds;
    return true;
}

/** Waits until there is input or a tick for the calling thread. */
int selectInWorld(Watched& watched, Place place, std::int64_t microseconds)
{
    Hold hold;
    World& w = world();
    Thread& me = self();
    me.seen = 0;
    me.place = place;
    for (;;) {
        const int found = watched.look();
        if (found != 0 || takeTick(me, microseconds)) {
            me.place = Place::Running;
            return found;
        }
        if (me.seen != w.threads.generation) {
            me.seen = w.threads.generation;
            w.changed.notify_all();
            if (takeTick(me, microseconds)) {
                me.place = Place::Running;
                return 0;
            }
        }
        hold.wait();
        watched.dropClosed();
    }
}

/** What a signal that comes in the middle of a wait leaves of it. */
void passHalf(timeval& timeout)
{
    const Hold hold;
    const std::int64_t wait = std::int64_t{timeout.tv_sec} * kMicrosecondsPerSecond + timeout.tv_usec;
    const std::int64_t left = wait / 2;
    world().time.microseconds += wait - left;
    timeout = {static_cast<time_t>(left / kMicrosecondsPerSecond),
               static_cast<suseconds_t>(left % kMicrosecondsPerSecond)};
}

void sleepInWorld(std::int64_t microseconds)
{
    {
        Hold hold;
        World& w = world();
        Thread& me = self();
        Time& time = w.time;
        time.microseconds += microseconds;
        me.waited += microseconds;
        const bool held = time.holdSleepsMs > 0 && microseconds >= std::int64_t{time.holdSleepsMs} * 1000;
        if (held && me.kind != ThreadKind::Test) {
            me.place = Place::Asleep;
            w.changed.notify_all();
            const unsigned before = time.wakes;
            while (time.wakes == before && time.holdSleepsMs > 0 && !isToEnd(me)) {
                hold.wait();
            }
            me.place = Place::Running;
        }
    }
    (void)sched_yield();
}

/** Waits until the product is quiet, having looked at all input, and nothing moved in between. */
void settleInWorld(Hold& hold, const char* what)
{
    World& w = world();
    unparkLoop();
    unsigned before = 0;
    do {
        before = w.threads.activity;
        ++w.threads.generation;
        w.changed.notify_all();
        hold.waitUntil(what, [] { return quiet(nullptr); });
    } while (before != w.threads.activity);
}
} // namespace

void waitForInput(int fd)
{
    Watched watched{fd + 1, nullptr, {}};
    FD_SET(fd, &watched.wanted);
    handToTest();
    (void)selectInWorld(watched, Place::Reading, -1);
    handToTest();
}

std::int64_t Set::clock() const
{
    const Hold hold;
    return world().time.microseconds / 1000;
}

void Set::settle()
{
    settleWorld();
}

void settleWorld()
{
    takeFromTest();
    {
        Hold hold;
        if (!self().tracked) { // a callback cannot wait for its own thread
            settleInWorld(hold, "the product to become quiet");
        }
    }
    takeFromTest();
}

void Set::grantTicks(int count)
{
    passTicks(count);
}

void passTicks(int count)
{
    settleWorld();
    {
        Hold hold;
        Time& time = world().time;
        time.ticks = count;
        world().changed.notify_all();
        hold.waitUntil("the ticks to pass",
                       [&time] { return time.ticks == 0 || (quiet(nullptr) && !anybodySelects()); });
        settleInWorld(hold, "the product to become quiet after its ticks");
        if (time.ticks != 0) {
            ADD_FAILURE() << time.ticks << " of " << count << " ticks did not pass: nobody waits in select";
            time.ticks = 0;
        }
    }
    takeFromTest();
}

void Set::holdSleeps(int atLeastMs)
{
    const Hold hold;
    world().time.holdSleepsMs = atLeastMs;
    world().changed.notify_all();
}

bool Set::wake()
{
    settle();
    {
        const Hold hold;
        bool sleeping = false;
        for (Thread& thread : world().threads.all) {
            if (thread.place == Place::Asleep) {
                thread.place = Place::Running;
                sleeping = true;
            }
        }
        if (!sleeping) {
            return false;
        }
        ++world().time.wakes;
        world().changed.notify_all();
    }
    settle();
    return true;
}
} // namespace sim

using namespace sim;

int sim_select(int count, fd_set* reading, fd_set* writing, fd_set* failing, struct timeval* timeout)
{
    if (!active()) {
        return select(count, reading, writing, failing, timeout);
    }
    if (const auto strike = enter(Call::Select, {})) {
        if (strike->error == EINTR && timeout != nullptr) {
            passHalf(*timeout);
        }
        return failWith(strike->error);
    }
    Watched watched{count, reading, {}};
    if (reading != nullptr) {
        watched.wanted = *reading;
    }
    const std::int64_t wait =
        timeout != nullptr ? std::int64_t{timeout->tv_sec} * kMicrosecondsPerSecond + timeout->tv_usec : -1;
    handToTest();
    const int result = selectInWorld(watched, Place::Selecting, wait);
    handToTest();
    return result;
}

int sim_usleep(useconds_t microseconds)
{
    if (!active()) {
        return usleep(microseconds);
    }
    if (const auto strike = enter(Call::Sleep, {})) {
        return failWith(strike->error);
    }
    handToTest();
    sleepInWorld(microseconds);
    handToTest();
    return 0;
}

int sim_nanosleep(const struct timespec* wanted, struct timespec* left)
{
    if (!active()) {
        return nanosleep(wanted, left);
    }
    if (const auto strike = enter(Call::Sleep, {})) {
        if (left != nullptr) {
            *left = *wanted;
        }
        return failWith(strike->error);
    }
    handToTest();
    sleepInWorld(std::int64_t{wanted->tv_sec} * kMicrosecondsPerSecond + wanted->tv_nsec / 1000);
    handToTest();
    return 0;
}
