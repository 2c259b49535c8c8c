#include "sim/world.h"

#include "movo_net_internal.h"

#include <cerrno>
#include <chrono>
#include <sched.h>

#ifdef SIM_THREAD_SANITIZER
extern "C" {
void AnnotateIgnoreReadsBegin(const char* file, int line);
void AnnotateIgnoreReadsEnd(const char* file, int line);
void AnnotateIgnoreWritesBegin(const char* file, int line);
void AnnotateIgnoreWritesEnd(const char* file, int line);
void AnnotateIgnoreSyncBegin(const char* file, int line);
void AnnotateIgnoreSyncEnd(const char* file, int line);
void __tsan_acquire(void* address);
void __tsan_release(void* address);
}
#endif

namespace sim {
namespace {
#ifdef SIM_THREAD_SANITIZER
char s_toTest;
char s_fromTest;
#endif

/** Lets other threads come first, how often and how long is up to the thread's own sequence of numbers. */
void dawdleBySeed(unsigned random)
{
    if ((random >> 28) == 0) {
        (void)sched_yield();
        return;
    }
    for (unsigned turns = (random >> 16) % 512; turns > 0; --turns) {
        __asm__ volatile("");
    }
}

/** Tells whoever waits for it that the event loop has come far enough; and the event loop that it is to end. */
void noteProgress(World& w, const Thread& me)
{
    if (me.kind == ThreadKind::Loop) {
        if (!w.threads.loopReached && int_IsEventLoopInitDone() != 0) {
            w.threads.loopReached = true;
            w.changed.notify_all();
        }
        return;
    }
    for (const Thread& thread : w.threads.all) {
        if (isToEnd(thread)) {
            w.changed.notify_all();
        }
    }
}
} // namespace

bool isToEnd(const Thread& thread)
{
    return thread.terminate != nullptr && __atomic_load_n(thread.terminate, __ATOMIC_ACQUIRE) != 0;
}

World& world()
{
    static World& everything = *new World;
    return everything;
}

Unseen::Unseen()
{
#ifdef SIM_THREAD_SANITIZER
    AnnotateIgnoreSyncBegin(__FILE__, __LINE__);
    AnnotateIgnoreReadsBegin(__FILE__, __LINE__);
    AnnotateIgnoreWritesBegin(__FILE__, __LINE__);
#endif
}

Unseen::~Unseen()
{
#ifdef SIM_THREAD_SANITIZER
    AnnotateIgnoreWritesEnd(__FILE__, __LINE__);
    AnnotateIgnoreReadsEnd(__FILE__, __LINE__);
    AnnotateIgnoreSyncEnd(__FILE__, __LINE__);
#endif
}

void handToTest()
{
#ifdef SIM_THREAD_SANITIZER
    __tsan_acquire(&s_fromTest);
    __tsan_release(&s_toTest);
#endif
}

void takeFromTest()
{
#ifdef SIM_THREAD_SANITIZER
    __tsan_acquire(&s_toTest);
    __tsan_release(&s_fromTest);
#endif
}

Hold::Hold() : m_lock(world().mutex) {}

void Hold::wait()
{
    world().changed.wait(m_lock);
}

void Hold::waitUntil(const char* what, const std::function<bool()>& condition)
{
    if (!world().changed.wait_for(m_lock, std::chrono::seconds(patienceSeconds()), condition)) {
        wedged(what);
    }
}

std::optional<Strike> enter(Call call, const Subject& subject)
{
    World& w = world();
    const int error = errno;
    std::optional<Strike> strike;
    std::function<void()> action;
    unsigned random = 0;
    {
        const Hold hold;
        w.progress.fetch_add(1, std::memory_order_relaxed);
        Thread& me = self();
        me.place = Place::Running;
        me.at = describe(call, subject.name);
        if (me.tracked) {
            ++w.threads.activity;
        }
        noteProgress(w, me);
        if (w.seed != 0) {
            random = me.random = me.random * 1103515245U + 12345U;
        }
        if (const FaultRule* rule = strikes(call, subject, me.kind); rule != nullptr) {
            action = rule->fault.does;
            if (!action) {
                strike = Strike{rule->fault.error, rule->fault.bytes};
            }
        }
    }
    if (action) {
        action();
    }
    dawdleBySeed(random);
    errno = error;
    return strike;
}

int failWith(int error)
{
    errno = error;
    return -1;
}

void problem(const std::string& text)
{
    const Hold hold;
    world().problems.push_back(text);
}
} // namespace sim
