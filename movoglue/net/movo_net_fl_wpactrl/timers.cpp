#include "movo_net_fl_wpactrl/channel.h"
#include "movo_net_fl_wpactrl/connect.h"
#include "support/atomic.h"
#include "support/log.h"

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wpactrl", &movoglue_net_debug};

constexpr int kFirstConnectTicks = 300;

bool hasOwner(const Wpactrl_t* w)
{
    return w != nullptr && w->pWifiIface != nullptr && w->pWifiIface->piface != nullptr;
}

RETURN_TYPE addFirstConnectTimer(Wpactrl_t& w, MovoNetIface_t* iface, CallSite at)
{
    const MovoNetEvent_t event{kNoFd, kFirstConnectTicks, iface, OnFirstConnectTimeout};
    const RETURN_TYPE result = int_addEvent(event, &w.firstConnectHandle);
    if (result == kOk) {
        NET_LOG_AT(at, KEST_LEVEL_INFO, "add first connect event\n");
    }
    return result;
}

RETURN_TYPE addConnectTimer(Wpactrl_t& w, MovoNetIface_t* iface, int timeout, CallSite at)
{
    const RETURN_TYPE result =
        int_addEvent({kNoFd, timeout, iface, OnConnectTimeoutEventRev}, &w.connectTimerEventHandle);
    if (result == kOk) {
        NET_LOG_AT(at, KEST_LEVEL_INFO, "add connect timer event\n");
    }
    return result;
}
} // namespace

namespace movonet {
bool dropTimer(Wpactrl_t& w, ScopedLock& lock, std::int32_t& handle)
{
    // Forgotten before the lock is let go of, so that a handle stored meanwhile is not lost.
    const std::int32_t armed = exchange(handle, 0);
    if (armed == 0) {
        return false;
    }
    lock.unlock();
    (void)int_removeEvent(armed);
    lock.relock(w.lock);
    return true;
}

void removeFiredTimer(std::int32_t& handle)
{
    if (const std::int32_t fired = exchange(handle, 0); fired != 0) {
        (void)int_removeEvent(fired);
    }
}
} // namespace movonet

RETURN_TYPE Wpactrl_Add_ScanEvent(Wpactrl_t* w, int timeout)
{
    if (!hasOwner(w) || timeout < 0) {
        return kBadArgument;
    }
    ScopedLock lock(w->lock);
    if (!lock) {
        NET_ERROR("lock wpactrl mutex failed\n");
        return kFail;
    }
    while (dropTimer(*w, lock, w->scanTimerEventHandle)) {
        // Another thread may have armed one meanwhile.
    }
    const MovoNetEvent_t event{kNoFd, timeout, w->pWifiIface->piface, OnScanTimeoutEventRev};
    if (const RETURN_TYPE result = int_addEvent(event, &w->scanTimerEventHandle); result != kOk) {
        return result;
    }
    NET_INFO("add scan timer event\n");
    store(w->isScanning, kTrue);
    return kOk;
}

RETURN_TYPE Wpactrl_Add_ConnectEvent(Wpactrl_t* w, int timeout)
{
    if (!hasOwner(w) || timeout < 0) {
        return kBadArgument;
    }
    ScopedLock lock(w->lock);
    if (!lock) {
        NET_ERROR("lock wpactrl mutex failed\n");
        return kFail;
    }
    while (dropTimer(*w, lock, w->connectTimerEventHandle) || dropTimer(*w, lock, w->firstConnectHandle)) {
        // Another thread may have armed one meanwhile.
    }
    MovoNetIface_t* iface = w->pWifiIface->piface;
    const RETURN_TYPE result = load(s_bFirstConnect) ? addFirstConnectTimer(*w, iface, NET_HERE)
                                                     : addConnectTimer(*w, iface, timeout, NET_HERE);
    if (result != kOk) {
        return result;
    }
    store(w->attempts, load(w->attempts) + 1);
    endHiddenSearch(*w); // one that has begun since the networks were removed
    store(w->connectStatus, WPACTRL_STATUS_CONNECTING);
    store(w->handshake_fail_count, 0);
    store(w->disconnect_count, 0);
    return kOk;
}
