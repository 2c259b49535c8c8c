#include "movo_net_fl_wifi/ess.h"

#include "support/atomic.h"
#include "support/log.h"

#include <cstring>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wifi", &movoglue_net_debug};

int indexOf(const MovoNetWifi_t& wifi, const char* essid)
{
    const ScopedLock lock(essTableLock);
    for (int index = 0; index < wifi.esss_num; ++index) {
        if (sameEssid(wifi.esss[index].essid, essid)) {
            return index;
        }
    }
    return -1;
}
} // namespace

namespace movonet {
Mutex essTableLock{Mutex::Kind::Recursive};

MovNetWifiEssItem_t copyEss(const MovNetWifiEssItem_t& from)
{
    const ScopedLock lock(essTableLock);
    return from;
}

void storeEss(MovNetWifiEssItem_t& to, const MovNetWifiEssItem_t& from)
{
    const ScopedLock lock(essTableLock);
    to = from;
}

void markCurrentConnected(MovoNetWifi_t& wifi, kest_bool isConnected)
{
    const ScopedLock lock(essTableLock);
    wifi.curOperatingEsss.isConnected = isConnected;
}

void appendCurrentEss(MovoNetWifi_t& wifi)
{
    const ScopedLock lock(essTableLock);
    const int index = wifi.esss_num < MOVO_NET_MAX_ESSS ? wifi.esss_num : MOVO_NET_MAX_ESSS - 1;
    wifi.esss[index] = wifi.curOperatingEsss;
    wifi.esss_num = index + 1;
}

void publishEsss(MovoNetWifi_t& wifi, const MovNetWifiEssItem_t (&esss)[MOVO_NET_MAX_ESSS], int count)
{
    const ScopedLock lock(essTableLock);
    std::memcpy(&wifi.esss, &esss, sizeof(esss));
    wifi.esss_num = count;
}

bool findScannedEss(MovoNetWifi_t& wifi, const char* essid, MovNetWifiEssItem_t& ess)
{
    const ScopedLock lock(essTableLock);
    const int index = get_essid_index(&wifi, essid);
    if (index < 0) {
        return false;
    }
    ess = wifi.esss[index];
    return true;
}

bool sameEssid(const char* left, const char* right)
{
    return std::strncmp(left, right, MOVO_NET_ESSID_LENGTH) == 0;
}
} // namespace movonet

MovoNetWifi_t* wifi_iface(MovoNetIface_t* iface)
{
    return iface != nullptr ? static_cast<MovoNetWifi_t*>(load(iface->priv)) : nullptr;
}

int get_essid_index(MovoNetWifi_t* wifi, const char* essid)
{
    const int index = indexOf(*wifi, essid);
    if (index < 0) {
        NET_ERROR("no matched essid %s\n", essid);
    }
    return index;
}
