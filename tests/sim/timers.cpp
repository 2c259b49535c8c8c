#include "sim/calls.h"
#include "sim/sim.h"
#include "sim/world.h"

namespace sim {
namespace {

Timer& timerOf(timer_t id)
{
    return world().time.timers.at(reinterpret_cast<std::uintptr_t>(id));
}

/** Those that are over, each once. */
std::vector<Timer> takeExpired()
{
    std::vector<Timer> expired;
    for (Timer& timer : world().time.timers) {
        if (timer.armed && timer.ends <= world().time.microseconds) {
            timer.armed = false;
            expired.push_back(timer);
        }
    }
    return expired;
}
} // namespace

void spend(std::int64_t microseconds)
{
    std::vector<Timer> expired;
    {
        const Hold hold;
        world().time.microseconds += microseconds;
        self().waited += microseconds;
        expired = takeExpired();
    }
    for (const Timer& timer : expired) {
        timer.function(timer.value);
    }
}

std::int64_t Set::waited(ThreadKind kind) const
{
    const Hold hold;
    std::int64_t microseconds = 0;
    for (const Thread& thread : world().threads.all) {
        microseconds += thread.kind == kind ? thread.waited : 0;
    }
    return microseconds / 1000;
}

void Set::spend(int milliseconds)
{
    sim::spend(std::int64_t{milliseconds} * 1000);
}
} // namespace sim

using namespace sim;

int sim_timer_create(clockid_t clock, struct sigevent* event, timer_t* timer)
{
    if (!active()) {
        return timer_create(clock, event, timer);
    }
    if (const auto strike = enter(Call::TimerCreate, {})) {
        return failWith(strike->error);
    }
    const Hold hold;
    auto& timers = world().time.timers;
    *timer = reinterpret_cast<timer_t>(timers.size());
    timers.push_back({event->sigev_notify_function, event->sigev_value});
    return 0;
}

int sim_timer_settime(timer_t timer, int flags, const struct itimerspec* wanted, struct itimerspec* before)
{
    if (!active()) {
        return timer_settime(timer, flags, wanted, before);
    }
    const Hold hold;
    const std::int64_t wait =
        std::int64_t{wanted->it_value.tv_sec} * kMicrosecondsPerSecond + wanted->it_value.tv_nsec / 1000;
    timerOf(timer).armed = wait > 0;
    timerOf(timer).ends = world().time.microseconds + wait;
    return 0;
}

int sim_timer_gettime(timer_t timer, struct itimerspec* left)
{
    if (!active()) {
        return timer_gettime(timer, left);
    }
    const Hold hold;
    const Timer& asked = timerOf(timer);
    const std::int64_t wait = asked.armed ? asked.ends - world().time.microseconds : 0;
    *left = {};
    left->it_value.tv_sec = static_cast<time_t>(wait / kMicrosecondsPerSecond);
    left->it_value.tv_nsec = static_cast<long>(wait % kMicrosecondsPerSecond * 1000);
    return 0;
}
