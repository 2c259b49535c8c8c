#include "sim/calls.h"
#include "sim/sim.h"
#include "sim/world.h"

#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_internal.h"

#include <memory>

namespace sim {
namespace {
thread_local Thread* t_self;

Thread* findThread(pthread_t id)
{
    for (Thread& thread : world().threads.all) {
        if (thread.tracked && pthread_equal(thread.id, id) != 0) {
            return &thread;
        }
    }
    return nullptr;
}

Thread& newThread(ThreadKind kind)
{
    Threads& threads = world().threads;
    Thread& thread = threads.all.emplace_back();
    thread.kind = kind;
    thread.id = pthread_self();
    thread.random = world().seed * 2654435761U + static_cast<unsigned>(threads.all.size());
    return thread;
}

bool isQuiet(const Thread& thread)
{
    switch (thread.place) {
    case Place::Ended:
    case Place::Held:
    case Place::Asleep:
    case Place::Waiting:
        return true;
    case Place::Selecting:
    case Place::Reading:
        return thread.seen == world().threads.generation;
    case Place::Joining: {
        const Thread* other = findThread(thread.joins);
        return other != nullptr && other->place != Place::Ended;
    }
    case Place::Running:
        return false;
    }
    return false;
}

/** What a new thread of the product begins with. */
struct Start {
    void* (*body)(void*);
    void* argument;
    Thread* thread;
};

void* runThread(void* argument)
{
    const std::unique_ptr<Start> start(static_cast<Start*>(argument));
    World& w = world();
    {
        Hold hold;
        t_self = start->thread;
        t_self->id = pthread_self();
        while (t_self->kind == ThreadKind::Loop && w.threads.holdLoop) {
            t_self->place = Place::Held;
            w.changed.notify_all();
            hold.wait();
        }
        t_self->place = Place::Running;
    }
    void* result = start->body(start->argument);
    handToTest();
    const Hold hold;
    t_self->place = Place::Ended;
    t_self->terminate = nullptr;
    if (t_self->kind == ThreadKind::Loop) {
        w.threads.loopReached = true;
    }
    w.changed.notify_all();
    return result;
}

/** Lets a loop thread go on that is held back by nothing else. */
void letLoopGo()
{
    World& w = world();
    for (Thread& thread : w.threads.all) {
        if (thread.place == Place::Held && !w.threads.holdLoop && !w.threads.parkLoop) {
            thread.place = Place::Running;
        }
    }
    w.changed.notify_all();
}

/** Waiting ends with the wait; whoever wakes the waiter has said so already. */
class AtPlace {
public:
    AtPlace(Place place, const void* condition, pthread_t joined)
    {
        const Hold hold;
        Thread& me = sim::self();
        me.place = place;
        me.waitsFor = condition;
        me.joins = joined;
        world().changed.notify_all();
    }
    ~AtPlace()
    {
        const Hold hold;
        sim::self().place = Place::Running;
    }
    AtPlace(const AtPlace&) = delete;
    AtPlace& operator=(const AtPlace&) = delete;
};

void noteWake(const void* condition)
{
    const Hold hold;
    for (Thread& thread : world().threads.all) {
        if (thread.place == Place::Waiting && thread.waitsFor == condition) {
            thread.place = Place::Running;
        }
    }
}

int createThread(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*), void* argument,
                 ThreadKind kind)
{
    auto start = std::make_unique<Start>(Start{body, argument, nullptr});
    {
        const Hold hold;
        Thread& record = newThread(kind);
        record.tracked = true;
        if (kind == ThreadKind::Loop) {
            record.terminate = static_cast<const unsigned char*>(argument);
            world().threads.loopCreated = true;
            world().threads.loopReached = false;
            world().threads.parkLoop = world().seed == 0;
        }
        start->thread = &record;
    }
    Thread* record = start->thread;
    const int result = pthread_create(thread, attributes, runThread, start.get());
    const Hold hold;
    if (result == 0) {
        record->id = *thread; // known before the thread itself begins
        (void)start.release();
    } else {
        record->place = Place::Ended;
    }
    return result;
}

void* runBody(void* argument)
{
    const std::unique_ptr<std::function<void()>> body(static_cast<std::function<void()>*>(argument));
    (*body)();
    return nullptr;
}
} // namespace

Thread& self()
{
    if (t_self == nullptr) {
        t_self = &newThread(ThreadKind::Other);
    }
    return *t_self;
}

ThreadKind selfKind()
{
    const Hold hold;
    return self().kind;
}

void unparkLoop()
{
    world().threads.parkLoop = false;
    letLoopGo();
}

void parkLoopAt(const void* mutex)
{
    Hold hold;
    World& w = world();
    Thread& me = self();
    const auto* address = static_cast<const char*>(mutex);
    const auto* begin = reinterpret_cast<const char*>(&movonet::eventListLock);
    if (me.kind != ThreadKind::Loop || address < begin || address >= begin + sizeof(movonet::eventListLock)) {
        return;
    }
    while (w.threads.parkLoop && !isToEnd(me)) {
        me.place = Place::Held;
        w.changed.notify_all();
        hold.wait();
    }
    me.place = Place::Running;
}

bool quiet(const Thread* except)
{
    for (const Thread& thread : world().threads.all) {
        const bool counts = thread.tracked || thread.place == Place::Selecting;
        if (counts && &thread != except && !isQuiet(thread)) {
            return false;
        }
    }
    return true;
}

void Set::holdLoopThread()
{
    const Hold hold;
    world().threads.holdLoop = true;
}

void Set::releaseLoopThread()
{
    const Hold hold;
    world().threads.holdLoop = false;
    letLoopGo();
}

void Set::background(std::function<void()> body)
{
    auto argument = std::make_unique<std::function<void()>>(std::move(body));
    pthread_t thread{};
    if (createThread(&thread, nullptr, runBody, argument.get(), ThreadKind::Other) == 0) {
        (void)argument.release();
        const Hold hold;
        world().threads.background.push_back(thread);
    } else {
        ADD_FAILURE() << "no thread for a background body";
    }
}

void Set::joinBackground()
{
    std::vector<pthread_t> threads;
    {
        const Hold hold;
        threads.swap(world().threads.background);
    }
    for (const pthread_t thread : threads) {
        {
            Hold hold;
            const Thread* record = findThread(thread);
            hold.waitUntil("the end of a background body", [record] { return record->place == Place::Ended; });
        }
        (void)pthread_join(thread, nullptr);
    }
}

int Set::liveThreads() const
{
    const Hold hold;
    int count = 0;
    for (const Thread& thread : world().threads.all) {
        count += thread.tracked && thread.place != Place::Ended ? 1 : 0;
    }
    return count;
}
} // namespace sim

using namespace sim;

int sim_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*), void* argument)
{
    if (!active()) {
        return pthread_create(thread, attributes, body, argument);
    }
    if (const auto strike = enter(Call::ThreadCreate, {})) {
        return strike->error;
    }
    const ThreadKind kind = body == int_eventLoopThread ? ThreadKind::Loop : ThreadKind::Product;
    return createThread(thread, attributes, body, argument, kind);
}

int sim_pthread_join(pthread_t thread, void** result)
{
    if (!active()) {
        return pthread_join(thread, result);
    }
    if (const auto strike = enter(Call::ThreadJoin, {})) {
        return strike->error;
    }
    handToTest();
    const AtPlace place(Place::Joining, nullptr, thread);
    return pthread_join(thread, result);
}

int sim_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex)
{
    if (!active()) {
        return pthread_cond_wait(condition, mutex);
    }
    if (enter(Call::CondWait, {.object = condition})) {
        return 0; // awake for no reason, as a wait may be
    }
    {
        const Hold hold;
        world().threads.holdLoop = false;
        letLoopGo();
    }
    handToTest();
    const AtPlace place(Place::Waiting, condition, {});
    return pthread_cond_wait(condition, mutex);
}

int sim_pthread_cond_signal(pthread_cond_t* condition)
{
    if (active()) {
        (void)enter(Call::CondSignal, {.object = condition});
        noteWake(condition);
    }
    return pthread_cond_signal(condition);
}

int sim_pthread_cond_broadcast(pthread_cond_t* condition)
{
    if (active()) {
        (void)enter(Call::CondSignal, {.object = condition});
        noteWake(condition);
    }
    return pthread_cond_broadcast(condition);
}
