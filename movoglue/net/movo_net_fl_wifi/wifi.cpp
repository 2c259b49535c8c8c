#include "movo_net_fl_wifi/wifi.h"

#include "movo_net_fl_wifi/saved.h"
#include "movo_net_fl_wpactrl/wpactrl.h"
#include "support/atomic.h"
#include "support/log.h"
#include "support/wiped.h"

#include <cstdlib>
#include <new>
#include <string_view>

using namespace movonet;

kest_bool g_isWifiConnectByUI;

namespace {
constexpr LogModule kLog{"movo_net_fl_wifi", &movoglue_net_debug};

void installWifiOps(MovoNetIfaceFunc_t& ops)
{
    ops.Init = int_Movo_Net_InitWifi;
    ops.DeInit = int_Movo_Net_DeInitWifi;
    ops.CanActive = int_Movo_Net_CanActiveWifi;
    ops.Active = int_Movo_Net_Wpactrl_Active;
    ops.WifiScanEsss = int_Movo_Net_Wpactrl_Scan;
    ops.WifiUpdateEsss = int_Movo_Net_Wpactrl_ScanResult;
    ops.WifiGetNumOfEsss = int_Movo_NET_WifiGetNumOfEsss;
    ops.WifiGetSsidEss = int_Movo_NET_WifiGetSsidEss;
    ops.WifiGetSignalEss = int_Movo_NET_WifiGetSignalEss;
    ops.WifiIsWPS = int_Movo_NET_WifiIsWPS;
    ops.WifiGetEncryptionEss = int_Movo_NET_WifiGetEncryptionEss;
    ops.WifiGetSecurityEss = int_Movo_NET_WifiGetSecurityEss;
    ops.WifiGetFrequencyEss = int_Movo_NET_WifiGetFrequencyEss;
    ops.WifiGetChannelEss = int_Movo_NET_WifiGetChannelEss;
    ops.WifiSetPriorityEss = int_Movo_NET_WifiSetPriorityEss;
    ops.WifiGetPriorityEss = int_Movo_NET_WifiGetPriorityEss;
    ops.WifiSetKey = int_Movo_NET_WifiSetKey;
    ops.WifiGetKey = int_Movo_NET_WifiGetKey;
    ops.WifiConnectEss = int_Movo_NET_WifiConnectEss;
    ops.WifiDisConnect = int_Movo_Net_Wpactrl_Disconnect;
    ops.WifiGetConnectedEss = int_Movo_NET_WifiGetConnectedEss;
    ops.WifiGetWpsModeEss = int_Movo_NET_WifiGetWpsModeEss;
    ops.WifiStartWpsConnection = int_Movo_NET_WifiStartWpsConnection;
    ops.WifiGenerateWpsPin = int_Movo_Net_Wpactrl_WPSGetPIN;
    ops.WifiSearchHideEss = int_Movo_Net_Wpactrl_SearchHideEss;
    ops.WifiGetBssidEss = int_Movo_NET_WifiGetBssidEss;
    ops.WifiGetDevType = int_Movo_NET_WifiGetDevType;
    ops.WifiIsReconnecting = int_Movo_Net_Wpactrl_IsReconnecting;
}

/** A zeroed state, or NULL without memory. */
MovoNetWifi_t* makeWifi()
{
    void* memory = std::calloc(1, sizeof(MovoNetWifi_t));
    return memory != nullptr ? new (memory) MovoNetWifi_t{} : nullptr;
}

/** Attaches state, supplicant link and operations; speaks for int_Movo_Net_InitWifi. */
RETURN_TYPE attachWifi(MovoNetIface_t* pIface, CallSite at)
{
    MovoNetWifi_t* wifi = makeWifi();
    if (wifi == nullptr) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "malloc memory failed\n");
        return kFail;
    }
    const ScopedLock lock(wifi->lock);
    if (!lock) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "lock wifi iface failed\n");
        freeWiped(wifi);
        return kFail;
    }
    store(pIface->priv, wifi);
    wifi->piface = pIface;
    if (const RETURN_TYPE result = int_Movo_Net_Wpactrl_Init(pIface); result != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "init wpa_ctrl failed\n");
        return result;
    }
    installWifiOps(pIface->funcs);
    return kOk;
}

/** The remembered networks are the table until the first scan. */
void listRemembered(MovoNetWifi_t& wifi)
{
    const ScopedLock saved(essListLock);
    const ScopedLock table(essTableLock);
    for (const MovNetWifiEssItem_t* ess = g_pSavedEsss; ess != nullptr && wifi.esss_num < MOVO_NET_MAX_ESSS;
         ess = ess->next) {
        wifi.esss[wifi.esss_num++] = *ess;
    }
}
} // namespace

namespace movonet {
void discardWifi(MovoNetIface_t& iface)
{
    MovoNetWifi_t* wifi = wifi_iface(&iface);
    if (wifi == nullptr) {
        return;
    }
    discardWpactrl(*wifi);
    freeWiped(wifi);
    iface.priv = nullptr;
}
} // namespace movonet

RETURN_TYPE int_Movo_Net_InitWifi(MovoNetIface_t* pIface)
{
    NET_INFO("ifname = %s\n", pIface->name);
    const std::string_view name(pIface->name);
    if (name == "wifi0" || name == "p2p0") {
        return kOk;
    }
    if (const RETURN_TYPE result = attachWifi(pIface, NET_HERE); result != kOk) {
        return result;
    }
    MovoNetWifi_t& wifi = *wifi_iface(pIface);
    if (!essListLock.create() || !wifi.lock.create()) {
        NET_ERROR("init mutex failed\n");
        return kFail;
    }
    if (hasSavedEsss()) {
        return kOk; // an earlier interface has loaded them, and its table holds them
    }
    if (LoadEsss() != kOk) {
        NET_ERROR("load esss failed\n");
    }
    listRemembered(wifi);
    // Deliberate: always visible.
    NET_ERROR("pWifiIface->esss_num[%d]\n", wifi.esss_num);
    return kOk;
}

RETURN_TYPE int_Movo_Net_DeInitWifi(MovoNetIface_t* pIface)
{
    if (pIface == nullptr) {
        NET_REPORT("pIface");
        return kBadArgument;
    }
    MovoNetWifi_t* wifi = wifi_iface(pIface);
    if (wifi == nullptr || load(wifi->priv) == nullptr) {
        return kBadArgument;
    }
    ScopedLock saved(essListLock);
    if (!saved) {
        NET_ERROR("lock essList mutex failed\n");
        return kFail;
    }
    forgetSavedEsss();
    saved.unlock();

    const ScopedLock lock(wifi->lock);
    if (!lock) {
        NET_ERROR("lock essList mutex failed\n");
        return kFail;
    }
    const RETURN_TYPE result = int_Movo_Net_Wpactrl_DeInit(pIface);
    if (result != kOk) {
        NET_ERROR("DeInit wpa_ctrl failed\n");
    }
    return result;
}

int int_Movo_Net_CanActiveWifi(MovoNetIface_t* /*pIface*/)
{
    return 1;
}

RETURN_TYPE int_Movo_Net_WifiGetThroughput(MovoNetIface_t* /*pIface*/, std::int32_t* /*throughput*/)
{
    return kFail;
}
