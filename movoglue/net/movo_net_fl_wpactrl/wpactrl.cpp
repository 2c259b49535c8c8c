#include "movo_net_fl_wpactrl/wpactrl.h"

#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_wpactrl/channel.h"
#include "support/atomic.h"
#include "support/command.h"
#include "support/log.h"
#include "support/text.h"

#include <cstdlib>
#include <new>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wpactrl", &movoglue_net_debug};

/** Links taken from their interface at the stop; handlers may still stand in one. */
Wpactrl_t* s_pRetired;

void retire(Wpactrl_t* w)
{
    const ScopedLock lock(essTableLock);
    w->nextRetired = s_pRetired;
    s_pRetired = w;
}

Wpactrl_t* makeWpactrl()
{
    void* memory = std::calloc(1, sizeof(Wpactrl_t));
    return memory != nullptr ? new (memory) Wpactrl_t{} : nullptr;
}

/** Stops whatever gives the interface an address; the link is gone. */
void stopAddressing(MovoNetIface_t& iface)
{
    if (load(iface.ipMode) == _MOVO_NET_IPMODE_DHCP_) {
        (void)ShutdownDhcpcd(&iface, kRelease);
    } else {
        (void)runShell(FixedText<40>("ifconfig %s 0.0.0.0", iface.name));
    }
}

/** The checks of the questions about a connection; NULL when one fails, and `result` says how. */
Wpactrl_t* openLink(MovoNetIface_t* pIface, const void* output, RETURN_TYPE& result, CallSite at)
{
    result = kBadArgument;
    if (pIface == nullptr) {
        reportFailure("pIface", kLog.name, at);
        return nullptr;
    }
    Wpactrl_t* w = wpactrl_iface(pIface);
    if (w == nullptr || output == nullptr) {
        return nullptr;
    }
    result = kOk;
    return w;
}
} // namespace

namespace movonet {
void discardWpactrl(MovoNetWifi_t& wifi)
{
    std::free(wifi.priv);
    wifi.priv = nullptr;
}
} // namespace movonet

Wpactrl_t* wpactrl_iface(MovoNetIface_t* iface)
{
    MovoNetWifi_t* wifi = wifi_iface(iface);
    return wifi != nullptr ? static_cast<Wpactrl_t*>(load(wifi->priv)) : nullptr;
}

RETURN_TYPE int_Movo_Net_Wpactrl_Init(MovoNetIface_t* pIface)
{
    if (pIface == nullptr) {
        NET_REPORT("pIface");
        return kBadArgument;
    }
    MovoNetWifi_t* wifi = wifi_iface(pIface);
    if (wifi == nullptr) {
        return kBadArgument;
    }
    Wpactrl_t* w = makeWpactrl();
    if (w == nullptr) {
        NET_ERROR("malloc wpactrl interface failed\n");
        return kFail;
    }
    switch (w->lock.make()) {
    case MutexError::Attribute:
        NET_ERROR("int_Movo_Net_Wpactrl_Init, init mutex failed\n");
        std::free(w);
        return kFail;
    case MutexError::Mutex:
        // Deliberate: names another function.
        NET_ERROR("int_Movo_Net_InitWifi, init mutex failed\n");
        std::free(w);
        return kFail;
    case MutexError::None:
        break;
    }
    w->pWifiIface = wifi;
    store(wifi->priv, w);
    return kOk;
}

RETURN_TYPE int_Movo_Net_Wpactrl_DeInit(MovoNetIface_t* pIface)
{
    RETURN_TYPE result = kOk;
    Wpactrl_t* w = openLink(pIface, pIface, result, NET_HERE);
    if (w == nullptr) {
        return result;
    }
    store(wifi_iface(pIface)->priv, nullptr);
    retire(w);
    return kOk;
}

RETURN_TYPE int_Movo_Net_Wpactrl_RemoveNetwork(MovoNetIface_t* pIface)
{
    RETURN_TYPE result = kOk;
    Wpactrl_t* w = openLink(pIface, pIface, result, NET_HERE);
    if (w == nullptr) {
        return result;
    }
    MovoNetWifi_t& wifi = *wifi_iface(pIface);
    ScopedLock link(w->lock);
    if (!link) {
        NET_ERROR("lock wpactrl mutex failed\n");
        return kFail;
    }
    store(w->connectStatus, WPACTRL_STATUS_NONE);
    store(w->isWpsMode, kFalse);
    if (Wpactrl_ExecCmd(w, "REMOVE_NETWORK ALL") != kOk) {
        NET_ERROR("[REMOVE_NETWORK] failed\n");
    }
    link.unlock();

    ScopedLock lock(wifi.lock);
    if (!lock) {
        NET_ERROR("lock wifi iface failed\n");
        return kFail;
    }
    markCurrentConnected(wifi, kFalse);
    lock.unlock();
    store(pIface->isConnected, kFalse);
    stopAddressing(*pIface);
    const LoopGate gate; // a lease that the loop is at comes to its end first, and is gone with its client
    store(pIface->isConnected, kFalse);
    return kOk;
}

RETURN_TYPE int_Movo_Net_Wpactrl_IsConnected(MovoNetIface_t* pIface, kest_bool* isConnected)
{
    RETURN_TYPE result = kOk;
    if (const Wpactrl_t* w = openLink(pIface, isConnected, result, NET_HERE); w != nullptr) {
        *isConnected = load(w->connectStatus) == WPACTRL_STATUS_CONNECTED ? kTrue : kFalse;
    }
    return result;
}

RETURN_TYPE int_Movo_Net_Wpactrl_Status(MovoNetIface_t* pIface, kest_bool* isWpanone)
{
    RETURN_TYPE result = kOk;
    if (const Wpactrl_t* w = openLink(pIface, isWpanone, result, NET_HERE); w != nullptr) {
        *isWpanone = load(w->connectStatus) == WPACTRL_STATUS_NONE ? kTrue : kFalse;
    }
    return result;
}

RETURN_TYPE int_Movo_Net_Wpactrl_IsReconnecting(MovoNetIface_t* pIface, kest_bool* isReconnecting)
{
    RETURN_TYPE result = kOk;
    if (const Wpactrl_t* w = openLink(pIface, isReconnecting, result, NET_HERE); w != nullptr) {
        const WpactrlConnectStatus_e status = load(w->connectStatus);
        const bool withoutAddress = status == WPACTRL_STATUS_CONNECTED && !load(pIface->isConnected);
        *isReconnecting = status == WPACTRL_STATUS_CONNECTING || withoutAddress ? kTrue : kFalse;
    }
    return result;
}
