#include "movo_net_fl_wifi/wifi.h"
#include "movo_net_fl_wpactrl/wpactrl.h"
#include "support/atomic.h"
#include "support/log.h"
#include "support/text.h"

using namespace movonet;

// Every function here starts with checkActiveWifi; those with a network's name go on with findEss.

namespace {
constexpr LogModule kLog{"movo_net_fl_wifi", &movoglue_net_debug};

constexpr std::int32_t kHighestPriority = 7;

struct FoundEss {
    RETURN_TYPE result;
    MovNetWifiEssItem_t ess;
};

/** The checks, then the first network of that name; `output` is the caller's, tested before the look-up. */
FoundEss findEss(MovoNetIface_t* pIface, const char* essid, const void* output, CallSite at)
{
    FoundEss found{checkActiveWifi(pIface, kLog, at), {}};
    if (found.result != kOk) {
        return found;
    }
    if (essid == nullptr || output == nullptr) {
        found.result = kBadArgument;
        return found;
    }
    found.result = findScannedEss(*wifi_iface(pIface), essid, found.ess) ? kOk : kFail;
    return found;
}

template <typename Field>
RETURN_TYPE readEss(MovoNetIface_t* pIface, const char* essid, Field MovNetWifiEssItem_t::*field, Field* out,
                    CallSite at = CallSite::current())
{
    const FoundEss found = findEss(pIface, essid, out, at);
    if (found.result == kOk) {
        *out = found.ess.*field;
    }
    return found.result;
}

/** Channels of IEEE 802.11 by frequency; every row counts up in steps of 5 MHz. */
struct ChannelRange {
    int lowest;
    int highest;
    int firstChannel;
};
constexpr ChannelRange kChannelRanges[] = {
    {2412, 2472, 1},
    {2484, 2484, 14},
    {4915, 4980, 183},
    {5035, 5825, 7},
};
constexpr int kChannelStep = 5;

int channelOf(int frequency)
{
    for (const ChannelRange& range : kChannelRanges) {
        if (frequency >= range.lowest && frequency <= range.highest) {
            return (frequency - range.lowest) / kChannelStep + range.firstChannel;
        }
    }
    return 0;
}
} // namespace

namespace movonet {
RETURN_TYPE checkActiveWifi(MovoNetIface_t* pIface, const LogModule& log, CallSite at)
{
    if (pIface == nullptr) {
        reportFailure("pIface", log.name, at);
        return kBadArgument;
    }
    if (wpactrl_iface(pIface) == nullptr) {
        return kBadArgument;
    }
    if (!load(pIface->isActived)) {
        const LogModule& kLog = log; // the caller's, for whom this speaks
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "not actived yet");
        return kFail;
    }
    return kOk;
}
} // namespace movonet

RETURN_TYPE int_Movo_NET_WifiGetNumOfEsss(MovoNetIface_t* pIface, std::int32_t* num)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    if (num == nullptr) {
        return kBadArgument;
    }
    {
        const ScopedLock table(essTableLock);
        *num = wifi_iface(pIface)->esss_num;
    }
    NET_INFO("num of esss: %d\n", *num);
    return kOk;
}

RETURN_TYPE int_Movo_NET_WifiGetSsidEss(MovoNetIface_t* pIface, std::int32_t essidx, char* ssid)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    if (ssid == nullptr) {
        return kBadArgument;
    }
    const MovoNetWifi_t& wifi = *wifi_iface(pIface);
    ScopedLock table(essTableLock);
    if (essidx < 0 || essidx >= wifi.esss_num) {
        table.unlock();
        NET_ERROR("ess index invalid\n");
        return kFail;
    }
    // Deliberate: 32 bytes and no end mark of their own.
    copyPadded(ssid, wifi.esss[essidx].essid, MOVO_NET_ESSID_LENGTH);
    return kOk;
}

RETURN_TYPE int_Movo_NET_WifiGetConnectedEss(MovoNetIface_t* pIface, char* essid, std::int32_t len)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    if (essid == nullptr || len <= 0) {
        return kBadArgument;
    }
    const MovNetWifiEssItem_t current = copyEss(wifi_iface(pIface)->curOperatingEsss);
    if (!current.isConnected) {
        NET_INFO("no connected esss found\n");
        return kOk;
    }
    const auto room = static_cast<std::size_t>(len) - 1;
    copyPadded(essid, current.essid, room);
    essid[room] = '\0';
    NET_INFO("connected esss: %s\n", essid);
    return kOk;
}

RETURN_TYPE int_Movo_NET_WifiGetWpsModeEss(MovoNetIface_t* pIface, MovoNetWifiWPSMode_e* mode)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    if (mode == nullptr) {
        return kBadArgument;
    }
    *mode = load(wifi_iface(pIface)->wpsMode);
    return kOk;
}

RETURN_TYPE int_Movo_NET_WifiGetDevType(MovoNetIface_t* pIface, MovoNetWifiDevType_e* devType)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    if (devType == nullptr) {
        return kBadArgument;
    }
    *devType = load(wifi_iface(pIface)->devType);
    return kOk;
}

RETURN_TYPE int_Movo_NET_WifiGetBssidEss(MovoNetIface_t* pIface, const char* essid, std::int64_t* macaddr)
{
    return readEss(pIface, essid, &MovNetWifiEssItem_t::bssid, macaddr);
}

RETURN_TYPE int_Movo_NET_WifiGetSignalEss(MovoNetIface_t* pIface, const char* essid, std::int32_t* signal)
{
    return readEss(pIface, essid, &MovNetWifiEssItem_t::signalVal, signal);
}

RETURN_TYPE int_Movo_NET_WifiIsWPS(MovoNetIface_t* pIface, const char* essid, kest_bool* bWPS)
{
    return readEss(pIface, essid, &MovNetWifiEssItem_t::bWPS, bWPS);
}

RETURN_TYPE int_Movo_NET_WifiGetEncryptionEss(MovoNetIface_t* pIface, const char* essid, MovoNetWifiEncryption_e* type)
{
    return readEss(pIface, essid, &MovNetWifiEssItem_t::encrypType, type);
}

RETURN_TYPE int_Movo_NET_WifiGetSecurityEss(MovoNetIface_t* pIface, const char* essid, MovoNetWifiSecurity_e* type)
{
    return readEss(pIface, essid, &MovNetWifiEssItem_t::securityType, type);
}

RETURN_TYPE int_Movo_NET_WifiGetFrequencyEss(MovoNetIface_t* pIface, const char* essid, std::int32_t* frequency)
{
    return readEss(pIface, essid, &MovNetWifiEssItem_t::frequency, frequency);
}

RETURN_TYPE int_Movo_NET_WifiGetChannelEss(MovoNetIface_t* pIface, const char* essid, std::int32_t* channel)
{
    const FoundEss found = findEss(pIface, essid, channel, NET_HERE);
    if (found.result == kOk) {
        *channel = channelOf(found.ess.frequency);
    }
    return found.result;
}

RETURN_TYPE int_Movo_NET_WifiGetPriorityEss(MovoNetIface_t* pIface, const char* essid, std::int32_t* priority)
{
    return readEss(pIface, essid, &MovNetWifiEssItem_t::priority, priority);
}

RETURN_TYPE int_Movo_NET_WifiSetPriorityEss(MovoNetIface_t* pIface, const char* essid, std::int32_t priority)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    if (priority < 0 || priority > kHighestPriority || essid == nullptr) {
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
    // Another thread may have replaced the table since the look-up.
    const bool found = changeEss(wifi, essid, [priority](MovNetWifiEssItem_t& ess) { ess.priority = priority; });
    return found ? kOk : kFail;
}

RETURN_TYPE int_Movo_NET_WifiConnectEss(MovoNetIface_t* pIface, const char* essid)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    if (essid == nullptr) {
        return kBadArgument;
    }
    MovNetWifiEssItem_t ess; // a copy: another thread's scan may put another network into its place
    if (!findScannedEss(*wifi_iface(pIface), essid, ess)) {
        return kFail;
    }
    store(g_isWifiConnectByUI, kTrue);
    return int_Movo_Net_Wpactrl_Connect(pIface, &ess);
}
