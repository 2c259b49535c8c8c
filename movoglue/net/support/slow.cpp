#include "support/slow.h"

#include "support/lock.h"
#include "support/text.h"

#include <csignal>
#include <ctime>

namespace movonet {
/** One wait: its timer, made at first use and kept, and what it waits for. */
struct SlowWait {
    timer_t timer;
    bool made;
    bool busy;
    char what[256];
};

namespace {
constexpr itimerspec kSlow{.it_interval = {}, .it_value = {.tv_sec = 5, .tv_nsec = 0}};
constexpr itimerspec kDisarmed{};

StaticMutex s_waitsLock;
SlowWait s_waits[8] MOVO_GUARDED_BY(s_waitsLock);

/** Runs late, on a thread of libc: its wait may be free by then, or somebody else's whose time is not over. */
void onSlow(sigval value)
{
    auto* wait = static_cast<SlowWait*>(value.sival_ptr);
    decltype(wait->what) what;
    {
        const StaticLock lock(s_waitsLock);
        itimerspec left{};
        if (!wait->busy || timer_gettime(wait->timer, &left) != 0 || left.it_value.tv_sec != 0 ||
            left.it_value.tv_nsec != 0) {
            return;
        }
        copyText(what, wait->what);
    }
    logSlow(what);
}

bool makeTimer(SlowWait& wait)
{
    if (!wait.made) {
        sigevent event{};
        event.sigev_notify = SIGEV_THREAD;
        event.sigev_notify_function = onSlow;
        event.sigev_value.sival_ptr = &wait;
        wait.made = timer_create(CLOCK_MONOTONIC, &event, &wait.timer) == 0;
    }
    return wait.made;
}

SlowWait* takeWait() MOVO_REQUIRES(s_waitsLock)
{
    for (SlowWait& wait : s_waits) {
        if (!wait.busy && makeTimer(wait)) {
            wait.busy = true;
            return &wait;
        }
    }
    return nullptr;
}
} // namespace

SlowWatch::SlowWatch(const char* what)
{
    const StaticLock lock(s_waitsLock);
    m_wait = takeWait();
    if (m_wait != nullptr) {
        copyText(m_wait->what, what);
        (void)timer_settime(m_wait->timer, 0, &kSlow, nullptr);
    }
}

SlowWatch::~SlowWatch()
{
    if (m_wait == nullptr) {
        return;
    }
    const StaticLock lock(s_waitsLock);
    (void)timer_settime(m_wait->timer, 0, &kDisarmed, nullptr);
    m_wait->busy = false;
}
} // namespace movonet
