#include "movo_net_fl_wifi/saved.h"
#include "movo_net_fl_wifi/wifi.h"
#include "support/log.h"
#include "support/text.h"

#include <cstring>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wifi", &movoglue_net_debug};

/** A network learnt by WPS has no BSSID until it is first seen in a scan. False when it stays without. */
bool completeWpsEss(MovNetWifiEssItem_t& saved, const MovNetWifiEssItem_t& scanned)
{
    if (scanned.bssid == 0) {
        return false;
    }
    saved.bssid = scanned.bssid;
    // Deliberate: the newest network equals itself by now, so that its file is not written.
    (void)int_Movo_Net_SaveEss(&saved);
    return true;
}

/** Tells whether the remembered network is the scanned one, by its BSSID. The caller holds essListLock. */
bool isSameAccessPoint(MovNetWifiEssItem_t& saved, const MovNetWifiEssItem_t& scanned)
{
    if (saved.bWPS && saved.bssid == 0 && !completeWpsEss(saved, scanned)) {
        return true;
    }
    return saved.bssid == 0 || saved.bssid == scanned.bssid;
}
} // namespace

RETURN_TYPE int_Movo_NET_WifiSetKey(MovoNetIface_t* pIface, const char* essid, const char* key, std::int32_t len)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    if (key == nullptr || essid == nullptr || len <= 0 || len > MOVO_NET_KEY_LENGTH) {
        return kBadArgument;
    }
    MovoNetWifi_t& wifi = *wifi_iface(pIface);
    if (get_essid_index(&wifi, essid) < 0) {
        return kFail;
    }
    const ScopedLock lock(wifi.lock);
    if (!lock) {
        NET_ERROR("lock wifi Iface failed\n");
        return kFail;
    }
    const auto length = static_cast<std::size_t>(len);
    // Another thread may have replaced the table since the look-up.
    const bool found = changeEss(wifi, essid, [key, length](MovNetWifiEssItem_t& ess) {
        copyPadded(ess.Key, key, length);
        ess.Key[length] = '\0';
    });
    return found ? kOk : kFail;
}

RETURN_TYPE int_Movo_NET_WifiGetKey(MovoNetIface_t* pIface, const char* essid, char* key, std::int32_t* len)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    if (key == nullptr || essid == nullptr || len == nullptr) {
        return kBadArgument;
    }
    MovNetWifiEssItem_t scanned;
    if (!findScannedEss(*wifi_iface(pIface), essid, scanned)) {
        return kFail;
    }
    const ScopedLock list(essListLock); // the node must not go away while it is looked at
    MovNetWifiEssItem_t* saved = int_Movo_Net_GetSavedEss(essid);
    if (saved == nullptr || !isSameAccessPoint(*saved, scanned)) {
        NET_ERROR("%s not found in saved esss\n", essid);
        return kFail;
    }
    const std::size_t length = strnlen(saved->Key, MOVO_NET_KEY_LENGTH);
    std::memcpy(key, saved->Key, length);
    key[length] = '\0';
    *len = static_cast<std::int32_t>(length);
    return kOk;
}
