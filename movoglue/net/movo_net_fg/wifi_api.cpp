#include "movo_net_ess.h"

#include "movo_net_fg/fg.h"
#include "movo_net_fg/lookup.h"
#include "movo_net_fl_wpactrl/connect.h"
#include "movo_net_wifi.h"
#include "support/log.h"
#include "support/text.h"

#include <type_traits>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fg", &movoglue_net_debug};

/** The caller's name buffer of Movo_NET_WifiGetConnectedSignal, and how much of an interface's name it gets. */
constexpr int kEssidRoom = 32;
constexpr std::size_t kIfnameLength = 8;

/** Calls an operation of a Wi-Fi interface; one that its back end does not have is an invalid argument. */
template <typename... Arguments>
RETURN_TYPE forward(MovoNetIface_t* ift, RETURN_TYPE (*MovoNetIfaceFunc_t::*slot)(MovoNetIface_t*, Arguments...),
                    std::type_identity_t<Arguments>... arguments)
{
    if (ift == nullptr) {
        return kFail;
    }
    const auto operation = ift->funcs.*slot;
    return operation != nullptr ? operation(ift, arguments...) : kBadArgument;
}

bool isConnectedWifi(const MovoNetIface_t& iface)
{
    return load(iface.isActived) && load(iface.isConnected) && iface.type == _MOVO_NET_IFACE_WIFI_;
}
} // namespace

RETURN_TYPE Movo_NET_WifiScanEsss(kest_sint32 /*appid*/, const char* ifname)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiScanEsss);
}

RETURN_TYPE Movo_NET_WifiUpdateEsss(kest_sint32 /*appid*/, const char* ifname)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiUpdateEsss);
}

RETURN_TYPE Movo_NET_GetNumOfWifiEsss(kest_sint32 /*appid*/, const char* ifname, int* retval)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiGetNumOfEsss, retval);
}

RETURN_TYPE Movo_NET_WifiGetSsidEss(kest_sint32 /*appid*/, const char* ifname, int essidx, char* retval)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiGetSsidEss, essidx, retval);
}

RETURN_TYPE Movo_NET_WifiGetSignalEss(kest_sint32 /*appid*/, const char* ifname, const char* essid, int* retval)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiGetSignalEss, essid, retval);
}

RETURN_TYPE Movo_NET_WifiIsWPS(kest_sint32 /*appid*/, const char* ifname, const char* essid, kest_bool* bWPS)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiIsWPS, essid, bWPS);
}

RETURN_TYPE Movo_NET_WifiGetEncryptionEss(kest_sint32 /*appid*/, const char* ifname, const char* essid,
                                          MovoNetWifiEncryption_e* retval)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiGetEncryptionEss, essid, retval);
}

RETURN_TYPE Movo_NET_WifiGetSecurityEss(kest_sint32 /*appid*/, const char* ifname, const char* essid,
                                        MovoNetWifiSecurity_e* retval)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiGetSecurityEss, essid, retval);
}

RETURN_TYPE Movo_NET_WifiGetFrequencyEss(kest_sint32 /*appid*/, const char* ifname, const char* essid, int* retval)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiGetFrequencyEss, essid, retval);
}

RETURN_TYPE Movo_NET_WifiGetChannelEss(kest_sint32 /*appid*/, const char* ifname, const char* essid, int* retval)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiGetChannelEss, essid, retval);
}

RETURN_TYPE Movo_NET_WifiSetPriorityEss(kest_sint32 /*appid*/, const char* ifname, const char* essid, int priority)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiSetPriorityEss, essid, priority);
}

RETURN_TYPE Movo_NET_WifiGetPriorityEss(kest_sint32 /*appid*/, const char* ifname, const char* essid, int* retval)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiGetPriorityEss, essid, retval);
}

RETURN_TYPE Movo_NET_WifiSetKey(kest_sint32 /*appid*/, const char* ifname, const char* essid, const char* key, int len)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiSetKey, essid, key, len);
}

RETURN_TYPE Movo_NET_WifiGetKey(kest_sint32 /*appid*/, const char* ifname, const char* essid, char* key, int* len)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiGetKey, essid, key, len);
}

RETURN_TYPE Movo_NET_WifiConnectEss(kest_sint32 /*appid*/, const char* ifname, const char* essid)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiConnectEss, essid);
}

RETURN_TYPE Movo_NET_WifiDisConnect(kest_sint32 /*appid*/, const char* ifname)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiDisConnect);
}

RETURN_TYPE Movo_NET_WifiGetConnectedEss(kest_sint32 /*appid*/, const char* ifname, char* essid, int len)
{
    return forward(wifiInterface(ifname, KEST_LEVEL_WARNING), &MovoNetIfaceFunc_t::WifiGetConnectedEss, essid, len);
}

RETURN_TYPE Movo_NET_WifiGetWpsModeEss(kest_sint32 /*appid*/, const char* ifname, MovoNetWifiWPSMode_e* mode)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiGetWpsModeEss, mode);
}

RETURN_TYPE Movo_NET_WifiStartWpsConnection(kest_sint32 /*appid*/, const char* ifname, MovoNetWifiWPSMode_e mode,
                                            const char* pin)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiStartWpsConnection, mode, pin);
}

RETURN_TYPE Movo_NET_WifiGenerateWpsPin(kest_sint32 /*appid*/, const char* ifname, char* pin, int pinsize)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiGenerateWpsPin, pin, pinsize);
}

RETURN_TYPE Movo_NET_WifiSearchHideEss(kest_sint32 /*appid*/, const char* ifname, const char* ssid)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiSearchHideEss, ssid);
}

RETURN_TYPE Movo_NET_WifiGetBssidEss(kest_sint32 /*appid*/, const char* ifname, const char* essid, long long* macaddr)
{
    std::int64_t bssid = 0; // another type than the caller's on some machines
    const RETURN_TYPE result = forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiGetBssidEss, essid,
                                       macaddr != nullptr ? &bssid : nullptr);
    if (result == kOk && macaddr != nullptr) {
        *macaddr = bssid;
    }
    return result;
}

RETURN_TYPE Movo_NET_WifiGetDevType(kest_sint32 /*appid*/, const char* ifname, MovoNetWifiDevType_e* devType)
{
    return forward(wifiInterface(ifname), &MovoNetIfaceFunc_t::WifiGetDevType, devType);
}

RETURN_TYPE Movo_NET_WifiIsReconnecting(kest_sint32 /*appid*/, const char* ifname, kest_bool* isReconnecting)
{
    return forward(wifiInterface(ifname, KEST_LEVEL_INFO), &MovoNetIfaceFunc_t::WifiIsReconnecting, isReconnecting);
}

RETURN_TYPE Movo_NET_WifiSetSecurityType(kest_sint32 /*appid*/, MovoNetWifiUISecurity_e SecurityType)
{
    store(g_UISecurityType, SecurityType);
    return kOk;
}

RETURN_TYPE Movo_NET_WifiGetConnectedSignal(kest_sint32 /*appid*/, char* ifname, char* essid, int* retval)
{
    if (ifname == nullptr || essid == nullptr || retval == nullptr) {
        return kBadArgument; // Deliberate: told before whether the glue runs.
    }
    if (!started()) {
        return kFail;
    }
    *retval = 0;
    essid[0] = '\0';
    MovoNetIface_t* ift = highestPriority(isConnectedWifi);
    if (ift == nullptr) {
        NET_ERROR("no connected wifi iface found\n");
        return kFail;
    }
    if (forward(ift, &MovoNetIfaceFunc_t::WifiGetConnectedEss, essid, kEssidRoom) != kOk || essid[0] == '\0') {
        NET_ERROR("get connected ess failed, iface name=%s\n", ift->name);
        return kFail;
    }
    if (forward(ift, &MovoNetIfaceFunc_t::WifiGetSignalEss, essid, retval) != kOk) {
        NET_ERROR("get signal failed, iface name=%s, essid=%s\n", ift->name, essid);
        return kFail;
    }
    copyPadded(ifname, ift->name, kIfnameLength); // Deliberate: a name of eight characters gets no end mark.
    NET_INFO("iface name=%s, connected essid=%s, signal=%d\n", ift->name, essid, *retval);
    return kOk;
}
