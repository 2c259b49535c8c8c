#include "fake_state.h"

#include <cstring>

using namespace fake;

namespace {
/** As the calls that fill a buffer of the caller's. */
RETURN_TYPE wroteText(int result, char* out, const char* text)
{
    if (result == 0) {
        std::strcpy(out, text);
    }
    return result;
}
} // namespace

void fake::setNetworks(const std::vector<std::string>& names)
{
    state().networks = names;
}

void fake::setSecurity(MovoNetWifiSecurity_e security)
{
    state().security = security;
}

void fake::setJoined(bool joined)
{
    state().joined = joined;
}

void fake::setCipher(MovoNetWifiEncryption_e cipher)
{
    state().cipher = cipher;
}

RETURN_TYPE Movo_NET_WifiScanEsss(kest_sint32, const char* ifname)
{
    return called("Movo_NET_WifiScanEsss", ifname);
}

RETURN_TYPE Movo_NET_WifiUpdateEsss(kest_sint32, const char* ifname)
{
    return called("Movo_NET_WifiUpdateEsss", ifname);
}

RETURN_TYPE Movo_NET_GetNumOfWifiEsss(kest_sint32, const char* ifname, int* retval)
{
    return wrote(called("Movo_NET_GetNumOfWifiEsss", ifname), retval, static_cast<int>(state().networks.size()));
}

RETURN_TYPE Movo_NET_WifiGetSsidEss(kest_sint32, const char* ifname, int essidx, char* retval)
{
    return wroteText(called("Movo_NET_WifiGetSsidEss", ifname, essidx), retval,
                     state().networks[static_cast<std::size_t>(essidx)].c_str());
}

RETURN_TYPE Movo_NET_WifiGetSignalEss(kest_sint32, const char* ifname, const char* essid, int* retval)
{
    return wrote(called("Movo_NET_WifiGetSignalEss", ifname, essid), retval, -50);
}

RETURN_TYPE Movo_NET_WifiIsWPS(kest_sint32, const char* ifname, const char* essid, kest_bool* bWPS)
{
    return wrote(called("Movo_NET_WifiIsWPS", ifname, essid), bWPS, kest_bool{1});
}

RETURN_TYPE Movo_NET_WifiGetEncryptionEss(kest_sint32, const char* ifname, const char* essid,
                                          MovoNetWifiEncryption_e* retval)
{
    return wrote(called("Movo_NET_WifiGetEncryptionEss", ifname, essid), retval, state().cipher);
}

RETURN_TYPE Movo_NET_WifiGetSecurityEss(kest_sint32, const char* ifname, const char* essid,
                                        MovoNetWifiSecurity_e* retval)
{
    return wrote(called("Movo_NET_WifiGetSecurityEss", ifname, essid), retval, state().security);
}

RETURN_TYPE Movo_NET_WifiGetFrequencyEss(kest_sint32, const char* ifname, const char* essid, int* retval)
{
    return wrote(called("Movo_NET_WifiGetFrequencyEss", ifname, essid), retval, 2437);
}

RETURN_TYPE Movo_NET_WifiGetChannelEss(kest_sint32, const char* ifname, const char* essid, int* retval)
{
    return wrote(called("Movo_NET_WifiGetChannelEss", ifname, essid), retval, 6);
}

RETURN_TYPE Movo_NET_WifiSetPriorityEss(kest_sint32, const char* ifname, const char* essid, int priority)
{
    return called("Movo_NET_WifiSetPriorityEss", ifname, essid, priority);
}

RETURN_TYPE Movo_NET_WifiGetPriorityEss(kest_sint32, const char* ifname, const char* essid, int* retval)
{
    return wrote(called("Movo_NET_WifiGetPriorityEss", ifname, essid), retval, 3);
}

RETURN_TYPE Movo_NET_WifiSetKey(kest_sint32, const char* ifname, const char* essid, const char* key, int len)
{
    return called("Movo_NET_WifiSetKey", ifname, essid, key, len);
}

RETURN_TYPE Movo_NET_WifiGetKey(kest_sint32, const char* ifname, const char* essid, char* key, int* len)
{
    constexpr const char* kKey = "correct horse";
    const int result = called("Movo_NET_WifiGetKey", ifname, essid);
    (void)wrote(result, len, static_cast<int>(std::strlen(kKey)));
    return wroteText(result, key, kKey);
}

RETURN_TYPE Movo_NET_WifiConnectEss(kest_sint32, const char* ifname, const char* essid)
{
    return called("Movo_NET_WifiConnectEss", ifname, essid);
}

RETURN_TYPE Movo_NET_WifiDisConnect(kest_sint32, const char* ifname)
{
    return called("Movo_NET_WifiDisConnect", ifname);
}

RETURN_TYPE Movo_NET_WifiGetConnectedEss(kest_sint32, const char* ifname, char* essid, int len)
{
    return wroteText(called("Movo_NET_WifiGetConnectedEss", ifname, len), essid,
                     state().joined ? state().networks[0].c_str() : "");
}

RETURN_TYPE Movo_NET_WifiGetWpsModeEss(kest_sint32, const char* ifname, MovoNetWifiWPSMode_e* mode)
{
    return wrote(called("Movo_NET_WifiGetWpsModeEss", ifname), mode, _MOVO_NET_WIFI_WPS_PBC_);
}

RETURN_TYPE Movo_NET_WifiStartWpsConnection(kest_sint32, const char* ifname, MovoNetWifiWPSMode_e mode, const char* pin)
{
    return called("Movo_NET_WifiStartWpsConnection", ifname, static_cast<int>(mode), pin);
}

RETURN_TYPE Movo_NET_WifiGenerateWpsPin(kest_sint32, const char* ifname, char* pin, int pinsize)
{
    return wroteText(called("Movo_NET_WifiGenerateWpsPin", ifname, pinsize), pin, "12345670");
}

RETURN_TYPE Movo_NET_WifiSearchHideEss(kest_sint32, const char* ifname, const char* ssid)
{
    return called("Movo_NET_WifiSearchHideEss", ifname, ssid);
}

RETURN_TYPE Movo_NET_WifiGetBssidEss(kest_sint32, const char* ifname, const char* essid, long long* macaddr)
{
    constexpr unsigned char kBssid[] = {0x02, 0x00, 0x00, 0x00, 0x01, 0xff};
    const int result = called("Movo_NET_WifiGetBssidEss", ifname, essid);
    std::memcpy(macaddr, kBssid, result == 0 ? sizeof(kBssid) : 0);
    return result;
}

RETURN_TYPE Movo_NET_WifiGetDevType(kest_sint32, const char* ifname, MovoNetWifiDevType_e* devType)
{
    return wrote(called("Movo_NET_WifiGetDevType", ifname), devType, _MOVO_NET_WIFI_REALTEK_8812AU_);
}

RETURN_TYPE Movo_NET_WifiIsReconnecting(kest_sint32, const char* ifname, kest_bool* isReconnecting)
{
    return wrote(called("Movo_NET_WifiIsReconnecting", ifname), isReconnecting, kest_bool{0});
}

RETURN_TYPE Movo_NET_WifiSetSecurityType(kest_sint32, MovoNetWifiUISecurity_e SecurityType)
{
    return called("Movo_NET_WifiSetSecurityType", static_cast<int>(SecurityType));
}

RETURN_TYPE Movo_NET_WifiGetConnectedSignal(kest_sint32, char* ifname, char* essid, int* retval)
{
    const int result = called("Movo_NET_WifiGetConnectedSignal");
    (void)wroteText(result, ifname, "wlan0");
    (void)wroteText(result, essid, state().networks[0].c_str());
    return wrote(result, retval, -50);
}
