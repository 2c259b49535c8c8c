#include "movo_net_fg/fg.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "support/log.h"

#include <optional>
#include <pthread.h>

using namespace movonet;

kest_debug_category* movoglue_net_debug;

namespace {
constexpr LogModule kLog{"movo_net_fg", &movoglue_net_debug};

constexpr int kStartPollMs = 10;
constexpr int kStopDelayMs = 100;
constexpr int kLinkStatusTicks = 10;

int s_iInitCount;
kest_bool s_bIsInitializing;
int s_iLinkStatusEventHandle;

/** Decides which of several callers starts the glue; held for that decision only. */
StaticMutex s_startDecision;

enum class LoopThread { None, Running, Joining, Joined };
StaticMutex s_loopThreadLock;
pthread_cond_t s_loopThreadJoined = PTHREAD_COND_INITIALIZER;
LoopThread s_loopThread MOVO_GUARDED_BY(s_loopThreadLock) = LoopThread::None;
pthread_t s_eventLoopThreadId MOVO_GUARDED_BY(s_loopThreadLock);

bool createLocks()
{
    return ifaceListLock.create() && callbackListLock.create() && updateIfListLock.create();
}

bool onLoopThread()
{
    const StaticLock lock(s_loopThreadLock);
    return s_loopThread != LoopThread::None && s_loopThread != LoopThread::Joined &&
           pthread_equal(s_eventLoopThreadId, pthread_self()) != 0;
}

/** The thread for whose end the caller has to wait; nothing when there is none, or somebody else waits already. */
std::optional<pthread_t> claimJoin()
{
    const StaticLock lock(s_loopThreadLock);
    if (s_loopThread != LoopThread::Running) {
        return std::nullopt;
    }
    s_loopThread = LoopThread::Joining;
    return s_eventLoopThreadId;
}

void announceJoin()
{
    const StaticLock lock(s_loopThreadLock);
    s_loopThread = LoopThread::Joined;
    (void)pthread_cond_broadcast(&s_loopThreadJoined);
}

void waitForJoin()
{
    StaticLock lock(s_loopThreadLock);
    while (s_loopThread == LoopThread::Joining) {
        lock.wait(s_loopThreadJoined);
    }
}

/**
 * Waits for the end of the loop's thread, if there is one; of several callers one joins it, the others wait for that
 * one. False on the thread itself, which cannot wait for its own end.
 */
bool joinLoopThread()
{
    if (onLoopThread()) {
        return false;
    }
    if (const std::optional<pthread_t> thread = claimJoin()) {
        (void)pthread_join(*thread, nullptr);
        announceJoin();
    } else {
        waitForJoin();
    }
    return true;
}

/** Makes the loop's thread unless an earlier, failed start has left one, whose end somebody may wait for already. */
bool startLoopThread()
{
    if (takeEventLoopFailure()) {
        (void)joinLoopThread(); // it could not begin, and would be waited for in vain
    }
    const StaticLock lock(s_loopThreadLock);
    bool there = s_loopThread == LoopThread::Running || s_loopThread == LoopThread::Joining;
    if (!there && pthread_create(&s_eventLoopThreadId, nullptr, int_eventLoopThread, &s_bThreadTerminating) == 0) {
        s_loopThread = LoopThread::Running;
        there = true;
    }
    return there;
}

enum class Start { Mine, Others, Done };

Start decideStart()
{
    const StaticLock lock(s_startDecision);
    if (load(s_bIsInitializing)) {
        return Start::Others;
    }
    if (load(s_bIsInitDone)) {
        return Start::Done;
    }
    store(s_bIsInitializing, kTrue);
    return Start::Mine;
}

// The ones below speak for the public functions whose steps they are.

RETURN_TYPE waitForOtherStart(CallSite at)
{
    NET_LOG_AT(at, KEST_LEVEL_INFO, "initializing\n");
    while (load(s_bIsInitializing)) {
        Kest_Util_Delay(kStartPollMs);
    }
    return load(s_bIsInitDone) ? kOk : kFail;
}

RETURN_TYPE firstLook()
{
    const LoopGate gate; // the loop may run already and would look for ifaceListLock from inside its own lock
    return OnLinkStatusEventRev(kNoFd, nullptr, kTrue);
}

RETURN_TYPE start(CallSite at)
{
    NET_LOG_AT(at, KEST_LEVEL_INFO, "init\n");
    if (!createLocks()) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "init mutex failed\n");
        return kFail;
    }
    clearCallback();
    if (!startLoopThread()) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "creating thread failed.\n");
        return kFail;
    }
    (void)LoadNetConfig();
    // Deliberate: the first look does not wait for the loop; a back end that registers an event too early is refused.
    if (firstLook() != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "initialize network interfaces failed.\n");
        return kFail;
    }
    waitForEventLoop();
    if (int_addEvent({kNoFd, kLinkStatusTicks, nullptr, OnLinkStatusEventRev}, &s_iLinkStatusEventHandle) != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "install event failed.\n");
        return kFail;
    }
    return kOk;
}

/** Empties the list; the records stay where they are for whoever still holds one. */
RETURN_TYPE dropInterfaces(CallSite at)
{
    const ScopedLock lock(ifaceListLock);
    if (!lock) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "lock mutex failed\n");
        return kFail;
    }
    for (MovoNetIface_t* iface = takeHeadInterface(); iface != nullptr; iface = takeHeadInterface()) {
        if (iface->funcs.DeInit != nullptr) {
            (void)iface->funcs.DeInit(iface);
        }
        retireInterface(iface);
    }
    return kOk;
}

/** A start that was under way may have filled the list again, and a link pass reported the glue done. */
void undoLatePass()
{
    store(s_bIsInitDone, kFalse);
    const ScopedLock lock(ifaceListLock);
    if (!lock) {
        return;
    }
    for (MovoNetIface_t* iface = takeHeadInterface(); iface != nullptr; iface = takeHeadInterface()) {
        retireInterface(iface);
    }
}

void endLoop()
{
    Kest_Util_Delay(kStopDelayMs);
    if (!joinLoopThread()) {
        return; // called from a callback in spite of the contract: the loop still needs the locks
    }
    undoLatePass();
    callbackListLock.retire();
    ifaceListLock.retire();
    updateIfListLock.retire();
}
} // namespace

namespace movonet {
kest_bool s_bIsInitDone;
kest_bool s_bThreadTerminating;
} // namespace movonet

RETURN_TYPE Movo_NET_Glue_Init(void)
{
    NET_INFO("enter, pid=%x\n", static_cast<unsigned>(pthread_self()));
    (void)__atomic_add_fetch(&s_iInitCount, 1, __ATOMIC_ACQ_REL);
    switch (decideStart()) {
    case Start::Others:
        return waitForOtherStart(NET_HERE);
    case Start::Done:
        return kOk;
    case Start::Mine:
        break;
    }
    const RETURN_TYPE result = start(NET_HERE);
    store(s_bIsInitializing, kFalse);
    return result;
}

RETURN_TYPE Movo_NET_Glue_Exit(void)
{
    NET_INFO("s_iInitCount=%d\n", load(s_iInitCount));
    if (__atomic_sub_fetch(&s_iInitCount, 1, __ATOMIC_ACQ_REL) > 0) {
        return kOk;
    }
    NET_INFO("deinit\n");
    store(s_bIsInitDone, kFalse);
    store(s_bThreadTerminating, kTrue);
    ScopedLock runningCallback(callbackListLock);
    if (!runningCallback) {
        NET_ERROR("lock mutex failed\n");
        return kFail;
    }
    runningCallback.unlock();
    (void)SaveNetConfig();
    if (dropInterfaces(NET_HERE) != kOk) {
        return kFail;
    }
    endLoop();
    return kOk;
}

void WaitForChild2Exit(void)
{
    (void)joinLoopThread();
}

kest_bool Movo_NET_IsInitializationDone(kest_sint32 /*appid*/)
{
    return load(s_bIsInitDone);
}
