#include "movo_net_fl_eventloop/eventloop.h"

#include "support/atomic.h"
#include "support/lock.h"
#include "support/log.h"

#include <cerrno>
#include <cstdlib>
#include <sys/select.h>
#include <utility>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_eventloop", &movoglue_net_debug};

constexpr int kTickMicroseconds = 100000;
constexpr int kPauseAfterErrorMs = 500;

/** One registration, as the loop keeps it. */
struct MovoNetEventInt_t {
    MovoNetEvent_t event;
    int countdown;
    kest_bool removed;
    int handle;
    MovoNetEventInt_t* next;
};

MovoNetEventInt_t* eventList;          // guarded by eventListLock
MovoNetEventInt_t* eventListToBeAdded; // guarded by eventListTodoLock
int cur_handle;                        // guarded by eventListTodoLock
kest_bool initDone;
StaticMutex eventLoopInitLock;
bool s_startFailed MOVO_GUARDED_BY(eventLoopInitLock);
pthread_cond_t eventLoopInitCond = PTHREAD_COND_INITIALIZER;

template <typename Matches>
MovoNetEventInt_t* findEvent(MovoNetEventInt_t* list, int handle, Matches matches)
{
    for (MovoNetEventInt_t* node = list; node != nullptr; node = node->next) {
        if (node->handle == handle && matches(node->event)) {
            return node;
        }
    }
    return nullptr;
}

/** Marks the event with `handle` for removal; it speaks under the name of int_removeEvent, whoever asks. */
template <typename Matches>
RETURN_TYPE removeMatchingEvent(int handle, Matches matches, CallSite at)
{
    if (!load(initDone)) {
        return kFail;
    }
    NET_LOG_AT(at, KEST_LEVEL_INFO, "handle = %d\n", handle);
    if (handle == 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "handle = 0\n");
        return kBadArgument;
    }
    const ScopedLock listLock(eventListLock);
    if (!listLock) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "lock mutex failed\n");
        return kFail;
    }
    if (MovoNetEventInt_t* node = findEvent(eventList, handle, matches); node != nullptr) {
        node->removed = kTrue;
        return kOk;
    }
    NET_LOG_AT(at, KEST_LEVEL_INFO, "event not found in main list\n");

    const ScopedLock todoLock(eventListTodoLock);
    if (!todoLock) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "lock mutex failed\n");
        return kFail;
    }
    if (MovoNetEventInt_t* node = findEvent(eventListToBeAdded, handle, matches); node != nullptr) {
        node->removed = kTrue;
        return kOk;
    }
    NET_LOG_AT(at, KEST_LEVEL_ERROR, "event not found\n");
    return kBadArgument;
}

void spliceNewEvents()
{
    MovoNetEventInt_t** end = &eventListToBeAdded;
    while (*end != nullptr) {
        end = &(*end)->next;
    }
    *end = eventList;
    eventList = eventListToBeAdded;
    eventListToBeAdded = nullptr;
}

void sweepRemovedEvents()
{
    MovoNetEventInt_t** link = &eventList;
    while (*link != nullptr) {
        MovoNetEventInt_t* node = *link;
        if (node->removed) {
            *link = node->next;
            std::free(node);
        } else {
            link = &node->next;
        }
    }
}

/** Makes new events live and frees removed ones, at the start of a pass. */
void int_updateEvents()
{
    const ScopedLock listLock(eventListLock);
    if (!listLock) {
        NET_ERROR("lock mutex failed\n");
        return;
    }
    if (ScopedLock todoLock(eventListTodoLock); todoLock) {
        spliceNewEvents();
    } else {
        NET_ERROR("lock mutex failed\n");
    }
    sweepRemovedEvents();
}

void pauseAfterError()
{
    Kest_Util_Delay(kPauseAfterErrorMs);
}

bool ending(const kest_bool* terminate)
{
    return load(*terminate) != kFalse;
}

/** The descriptors that one pass waits for. */
struct WaitSet {
    fd_set descriptors;
    int highest;
};

// The two below speak for the loop's thread function, whose steps they are.

/** Makes the live list current and tells what to wait for; false when this pass is over already. */
bool collectDescriptors(WaitSet& waitSet, const kest_bool* terminate, CallSite at)
{
    FD_ZERO(&waitSet.descriptors);
    waitSet.highest = -1;
    ScopedLock listLock(eventListLock);
    if (!listLock) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "lock mutex failed\n");
        pauseAfterError();
        return false;
    }
    int_updateEvents();
    for (const MovoNetEventInt_t* node = eventList; node != nullptr; node = node->next) {
        // Deliberate: a descriptor beyond the set parks the loop for good; only the end of the glue frees it.
        while (node->event.fd >= FD_SETSIZE) {
            listLock.unlock();
            NET_LOG_AT(at, KEST_LEVEL_ERROR, "evt->event.fd >= FD_SETSIZE\n");
            pauseAfterError();
            if (ending(terminate)) {
                return false;
            }
        }
        if (node->event.fd >= 0) { // any negative one is no descriptor
            FD_SET(node->event.fd, &waitSet.descriptors);
            waitSet.highest = node->event.fd > waitSet.highest ? node->event.fd : waitSet.highest;
        }
    }
    return true;
}

void callHandler(const MovoNetEvent_t& event, kest_bool isTimeout)
{
    if (event.OnEventRev != nullptr) {
        (void)event.OnEventRev(event.fd, event.data, isTimeout);
    }
}

void dispatchReady(const WaitSet& ready)
{
    for (MovoNetEventInt_t* node = eventList; node != nullptr; node = node->next) {
        if (!node->removed && node->event.fd >= 0 && FD_ISSET(node->event.fd, &ready.descriptors)) {
            callHandler(node->event, kFalse);
        }
    }
}

void dispatchTick()
{
    for (MovoNetEventInt_t* node = eventList; node != nullptr; node = node->next) {
        if (node->removed || node->event.timeoutTick <= 0) {
            continue;
        }
        if (--node->countdown < 1) {
            node->countdown = node->event.timeoutTick;
            callHandler(node->event, kTrue);
        }
    }
}

/** Waits for one tick or for input, and calls the handlers. */
void runPass(const kest_bool* terminate, CallSite at)
{
    WaitSet waitSet;
    timeval left{0, kTickMicroseconds}; // Linux subtracts what a wait lasted, also one that a signal of the host ended
    int ready = 0;
    do {
        if (!collectDescriptors(waitSet, terminate, at)) {
            return;
        }
        ready = select(waitSet.highest + 1, &waitSet.descriptors, nullptr, nullptr, &left);
        if (ending(terminate)) {
            return;
        }
    } while (ready < 0 && errno == EINTR);
    if (ready < 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "select failed\n");
        pauseAfterError();
        return;
    }
    const ScopedLock listLock(eventListLock);
    if (!listLock) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "lock mutex failed\n");
        pauseAfterError();
        return;
    }
    if (ready > 0) {
        dispatchReady(waitSet);
    } else {
        dispatchTick();
    }
}

void announceStart(bool done)
{
    if (done) {
        store(initDone, kTrue);
    }
    const StaticLock lock(eventLoopInitLock);
    s_startFailed = !done;
    (void)pthread_cond_broadcast(&eventLoopInitCond);
}
} // namespace

namespace movonet {
Mutex eventListLock{Mutex::Kind::Recursive};
Mutex eventListTodoLock{Mutex::Kind::Recursive};

RETURN_TYPE removeEventOf(int handle, RETURN_TYPE (*handler)(int, void*, kest_bool), const void* data)
{
    const auto matches = [handler, data](const MovoNetEvent_t& event) {
        return event.OnEventRev == handler && event.data == data;
    };
    return removeMatchingEvent(handle, matches, CallSite{"int_removeEvent", __LINE__});
}

void waitForEventLoop()
{
    StaticLock lock(eventLoopInitLock);
    while (!load(initDone) && !s_startFailed) {
        lock.wait(eventLoopInitCond);
    }
}

bool takeEventLoopFailure()
{
    const StaticLock lock(eventLoopInitLock);
    return std::exchange(s_startFailed, false);
}
} // namespace movonet

kest_bool int_IsEventLoopInitDone(void)
{
    return load(initDone);
}

RETURN_TYPE int_addEvent(MovoNetEvent_t event, int* handle)
{
    if (!load(initDone)) {
        return kFail;
    }
    if (handle == nullptr) {
        NET_ERROR("handle = NULL\n");
        return kBadArgument;
    }
    if (event.fd == kNoFd && event.timeoutTick < 1) {
        NET_ERROR("invalid param\n");
        return kBadArgument;
    }
    auto* node = static_cast<MovoNetEventInt_t*>(std::malloc(sizeof(MovoNetEventInt_t)));
    if (node == nullptr) {
        NET_ERROR("out of memory\n");
        return kNoMemory;
    }
    ScopedLock todoLock(eventListTodoLock);
    if (!todoLock) {
        NET_ERROR("lock mutex failed\n");
        std::free(node);
        return kFail;
    }
    const int added = ++cur_handle;
    *node = {event, event.timeoutTick, kFalse, added, eventListToBeAdded};
    store(*handle, added); // a handler that is called at once on the loop's thread reads it there
    eventListToBeAdded = node;
    todoLock.unlock();

    NET_INFO("handle = %d\n", added);
    return kOk;
}

RETURN_TYPE int_removeEvent(int handle)
{
    return removeMatchingEvent(
        handle, [](const MovoNetEvent_t&) { return true; }, NET_HERE);
}

void* int_eventLoopThread(void* param)
{
    const auto* terminate = static_cast<const kest_bool*>(param);
    if (!eventListLock.create() || !eventListTodoLock.create()) {
        NET_ERROR("init mutex failed\n");
        announceStart(false);
        return reinterpret_cast<void*>(1);
    }
    announceStart(true);
    while (!ending(terminate)) {
        runPass(terminate, NET_HERE);
    }
    eventListTodoLock.retire();
    eventListLock.retire();
    return nullptr;
}
