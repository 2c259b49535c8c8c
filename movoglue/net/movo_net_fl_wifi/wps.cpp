#include "movo_net_fl_wifi/wifi.h"
#include "movo_net_fl_wpactrl/wpactrl.h"
#include "support/atomic.h"
#include "support/log.h"

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wifi", &movoglue_net_debug};

// Both speak for int_Movo_NET_WifiStartWpsConnection.

RETURN_TYPE startPushButton(MovoNetIface_t* pIface, CallSite at)
{
    const RETURN_TYPE result = int_Movo_Net_Wpactrl_WPSPBC(pIface);
    if (result != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "WPS PBC failed\n");
    }
    return result;
}

RETURN_TYPE startPin(MovoNetIface_t* pIface, const char* pin, CallSite at)
{
    const RETURN_TYPE result = int_Movo_Net_Wpactrl_WPSSetPIN(pIface, pin);
    if (result != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "WPS PIN failed\n");
    }
    return result;
}

/** Sends what the mode asks for; an unknown mode asks for nothing and becomes none. */
RETURN_TYPE startWps(MovoNetIface_t* pIface, MovoNetWifiWPSMode_e& mode, const char* pin, CallSite at)
{
    switch (mode) {
    case _MOVO_NET_WIFI_WPS_PBC_:
        return startPushButton(pIface, at);
    case _MOVO_NET_WIFI_WPS_PIN:
        return startPin(pIface, pin, at);
    case _MOVO_NET_WIFI_WPS_PBC_PIN: {
        if (pin == nullptr) {
            return startPin(pIface, pin, at); // refuses it, before the push button starts anything
        }
        // Deliberate: the PIN request discards the push button's network and is the one left running.
        const RETURN_TYPE result = startPushButton(pIface, at);
        return result == kOk ? startPin(pIface, pin, at) : result;
    }
    case _MOVO_NET_WIFI_WPS_NONE_:
        break;
    }
    mode = _MOVO_NET_WIFI_WPS_NONE_;
    return kOk;
}
} // namespace

RETURN_TYPE int_Movo_NET_WifiStartWpsConnection(MovoNetIface_t* pIface, MovoNetWifiWPSMode_e mode, const char* pin)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    if (const RETURN_TYPE result = startWps(pIface, mode, pin, NET_HERE); result != kOk) {
        return result;
    }
    MovoNetWifi_t& wifi = *wifi_iface(pIface);
    const ScopedLock lock(wifi.lock);
    if (!lock) {
        NET_ERROR("lock wifi iface failed\n");
        return kFail;
    }
    store(wifi.wpsMode, mode);
    return kOk;
}
