#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_wifi/device.h"
#include "movo_net_fl_wifi/saved.h"
#include "movo_net_fl_wifi/wifi.h"
#include "movo_net_fl_wpactrl/connect.h"
#include "support/atomic.h"
#include "support/log.h"

using namespace movonet;

kest_bool g_bWiFiAutoLink = kTrue;

namespace {
constexpr LogModule kLog{"movo_net_fl_wpactrl", &movoglue_net_debug};

// The ones below are steps of the public function that they take the place of, and speak for it.

RETURN_TYPE openLink(MovoNetIface_t* pIface, Wpactrl_t* w, CallSite at)
{
    if (const RETURN_TYPE result = Wpactrl_Init(w, pIface->name); result != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "Wpactrl_Init failed\n");
        return result;
    }
    const RETURN_TYPE result = int_addEvent({load(w->fd), 0, pIface, OnWpactrlEventRev}, &w->event_handle);
    if (result != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "add event failed\n"); // the next activation closes what is open
    }
    return result;
}

/** Copies the remembered network that was connected last; false when there is none. */
bool copySavedConnectedEss(MovNetWifiEssItem_t& ess)
{
    const ScopedLock list(essListLock);
    const MovNetWifiEssItem_t* saved = int_Movo_Net_GetSavedConnectedEss();
    if (saved == nullptr) {
        return false;
    }
    ess = *saved;
    return true;
}

void joinRemembered(MovoNetIface_t* pIface, CallSite at)
{
    if (!load(g_bWiFiAutoLink)) {
        return;
    }
    if (!hasSavedEsss()) {
        NET_LOG_AT(at, KEST_LEVEL_INFO, "no saved Esss, need manual connect\n");
        return;
    }
    MovNetWifiEssItem_t ess;
    if (!copySavedConnectedEss(ess)) {
        NET_LOG_AT(at, KEST_LEVEL_INFO, "no saved connected esss, need manual connect\n");
        return;
    }
    store(s_bFirstConnect, kTrue);
    if (int_Movo_Net_Wpactrl_Connect(pIface, &ess) != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "connect to saved esss failed");
    }
}

RETURN_TYPE activate(MovoNetIface_t* pIface, CallSite at)
{
    NET_LOG_AT(at, KEST_LEVEL_INFO, "start to active interface %s\n", pIface->name);
    const MovoNetWifiDevType_e devType = int_Wifi_GetDevType(pIface->name);
    store(wifi_iface(pIface)->devType, devType);
    if (devType == _MOVO_NET_WIFI_UNKNOWN_) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "Wifi device type unknown\n");
        return kFail;
    }
    if (Wpa_SetWpa_supplicantOn(pIface) != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "start wpa_supplicant failed\n");
        return kFail;
    }
    {
        const LoopGate gate; // connection and event change together: a closed one that is watched fails every wait
        if (load(pIface->isActived)) {
            return kOk; // another thread was faster
        }
        if (const RETURN_TYPE result = openLink(pIface, wpactrl_iface(pIface), at); result != kOk) {
            return result;
        }
        store(pIface->isActived, kTrue);
    }
    joinRemembered(pIface, at);
    return kOk;
}

RETURN_TYPE deactivate(MovoNetIface_t* pIface)
{
    const LoopGate gate; // no activation finds it inactive while its link is still open
    (void)ifdown(pIface);
    (void)ShutdownWpactrl(pIface);
    store(pIface->isActived, kFalse);
    store(g_isWifiConnectByUI, kFalse);
    return kOk;
}

bool sameAccessPoint(const MovNetWifiEssItem_t& left, const MovNetWifiEssItem_t& right)
{
    return sameEssid(left.essid, right.essid) && left.bssid == right.bssid && left.securityType == right.securityType &&
           left.encrypType == right.encrypType;
}

/** Copies the newest remembered network that the last scan has seen; false when there is none. */
bool copyRememberedInRange(const MovoNetWifi_t& wifi, MovNetWifiEssItem_t& ess)
{
    const ScopedLock list(essListLock);
    const ScopedLock table(essTableLock);
    for (const MovNetWifiEssItem_t* saved = g_pSavedEsss; saved != nullptr; saved = saved->next) {
        for (int index = 0; index < wifi.esss_num; ++index) {
            if (sameAccessPoint(*saved, wifi.esss[index])) {
                ess = *saved;
                return true;
            }
        }
    }
    return false;
}

/** Fills the table if it is empty. 0 when it holds networks, 1 when it cannot be filled or stays empty. */
enum class Table { Filled, Empty, Failed };

Table fillTable(MovoNetIface_t* pIface)
{
    const MovoNetIfaceFunc_t& ops = pIface->funcs;
    std::int32_t count = 0;
    if (ops.WifiGetNumOfEsss == nullptr || ops.WifiUpdateEsss == nullptr) {
        return Table::Failed;
    }
    (void)ops.WifiGetNumOfEsss(pIface, &count);
    if (count == 0) {
        if (ops.WifiUpdateEsss(pIface) != kOk) {
            return Table::Failed;
        }
        (void)ops.WifiGetNumOfEsss(pIface, &count);
    }
    return count > 0 ? Table::Filled : Table::Empty;
}
} // namespace

RETURN_TYPE int_Movo_Net_Wpactrl_Active(MovoNetIface_t* pIface, kest_bool isActive)
{
    if (pIface == nullptr) {
        NET_REPORT("pIface");
        return kBadArgument;
    }
    if (wpactrl_iface(pIface) == nullptr) {
        return kBadArgument;
    }
    const bool wanted = isActive != kFalse;
    if (wanted == (load(pIface->isActived) != kFalse)) {
        return kOk;
    }
    return wanted ? activate(pIface, NET_HERE) : deactivate(pIface);
}

RETURN_TYPE OnFirstConnectTimeout(int /*fd*/, void* data, kest_bool /*isTimeout*/)
{
    auto* pIface = static_cast<MovoNetIface_t*>(data);
    MovoNetWifi_t* wifi = wifi_iface(pIface);
    if (wifi == nullptr) {
        return kBadArgument;
    }
    Wpactrl_t* w = wpactrl_iface(pIface);
    if (w == nullptr) {
        return kFail;
    }
    removeFiredTimer(w->firstConnectHandle);
    ScopedLock lock(w->lock);
    if (!lock) {
        NET_ERROR("lock wpactrl mutex failed\n");
        return kFail;
    }
    lock.unlock();
    if (load(pIface->isConnected)) {
        NET_INFO("first connect successfully\n");
        return kOk;
    }
    if (!hasSavedEsss()) {
        NET_INFO("no saved esss\n");
        return kOk;
    }
    switch (fillTable(pIface)) {
    case Table::Failed:
        return kFail;
    case Table::Empty:
        NET_INFO("no esss in scan list\n");
        return kOk;
    case Table::Filled:
        break;
    }
    MovNetWifiEssItem_t ess;
    return copyRememberedInRange(*wifi, ess) ? int_Movo_Net_Wpactrl_Connect(pIface, &ess) : kOk;
}

RETURN_TYPE OnConnectTimeoutEventRev(int /*fd*/, void* data, kest_bool /*isTimeout*/)
{
    NET_INFO("wifi connect timeout\n");
    auto* pIface = static_cast<MovoNetIface_t*>(data);
    if (wifi_iface(pIface) == nullptr) {
        return kBadArgument;
    }
    Wpactrl_t* w = wpactrl_iface(pIface);
    if (w == nullptr) {
        return kFail;
    }
    removeFiredTimer(w->connectTimerEventHandle);
    const WpactrlConnectStatus_e status = load(w->connectStatus);
    if (status != WPACTRL_STATUS_CONNECTING) {
        return kOk;
    }
    NET_INFO("ctrl->status=%d, ifname=%s\n", static_cast<int>(status), pIface->name);
    const RETURN_TYPE result = int_Movo_Net_Wpactrl_RemoveNetwork(pIface);
    (void)NotifyApp(_MOVO_NET_CALLBACK_WIFITIMEOUT_, pIface);
    NET_INFO("int_Movo_Net_Wpactrl_RemoveNetwork returned %d\n", result);
    return result;
}
