#include "movo_net_fg/fg.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "support/log.h"

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fg", &movoglue_net_debug};

/** The one callback of the process. */
struct CallbackFunc_t {
    MovoNetCallback_t s_NetCallback;
    void* context;
    int count; // kept zero
};

CallbackFunc_t s_NetCallback; // guarded by callbackListLock
} // namespace

namespace movonet {
Mutex callbackListLock{Mutex::Kind::Recursive};

void clearCallback()
{
    const ScopedLock lock(callbackListLock);
    if (lock) {
        s_NetCallback = {};
    }
}
} // namespace movonet

RETURN_TYPE NotifyApp(MovoNetCBReason_e reason, void* param)
{
    // The loop calls back with ifaceListLock held; holding its handlers off keeps the callback from waiting for it.
    const LoopGate gate;
    const ScopedLock lock(callbackListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return kFail;
    }
    const CallbackFunc_t slot = s_NetCallback; // the callback may replace it
    if (slot.s_NetCallback != nullptr) {
        NET_INFO("reason=%d, calling callback: %p\n", static_cast<int>(reason),
                 reinterpret_cast<void*>(slot.s_NetCallback));
        slot.s_NetCallback(reason, slot.context, param);
    }
    return kOk;
}

RETURN_TYPE Movo_NET_InstallCallback(kest_sint32 /*appid*/, MovoNetCallback_t callback, void* context, int* cbid)
{
    if (!load(s_bIsInitDone)) {
        NET_ERROR("Movo_net init is not done, calling movo_net func may fail\n");
    }
    if (cbid == nullptr) {
        return kBadArgument;
    }
    NET_INFO("enter\n");
    ScopedLock lock(callbackListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return kFail;
    }
    s_NetCallback = {callback, context, 0};
    *cbid = 0;
    lock.unlock();
    NET_INFO("out\n");
    return kOk;
}

RETURN_TYPE Movo_NET_UnInstallCallback(kest_sint32 /*appid*/, int /*cbid*/)
{
    if (!load(s_bIsInitDone)) {
        NET_ERROR("s_bIsInitDone=false\n");
    }
    const ScopedLock lock(callbackListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return kFail;
    }
    s_NetCallback = {};
    return kOk;
}
