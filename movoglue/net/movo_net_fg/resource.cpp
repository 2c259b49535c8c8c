#include "movo_net_fg/fg.h"
#include "support/log.h"

#include <cstdint>
#include <iterator>

using namespace movonet;

kest_sint32 m_appid[1];
kest_sint32 m_nbrclients;

namespace {
constexpr LogModule kLog{"movo_net_fg", &movoglue_net_debug};

constexpr kest_sint32 kMaxClients = std::size(m_appid);
constexpr int kMaxEss = 50;

bool isOurs(kest_sint32 resid, CallSite at)
{
    if (resid != PLFRes_netlink) {
        reportFailure("resid == PLFRes_netlink", kLog.name, at);
        return false;
    }
    return true;
}
} // namespace

RETURN_TYPE Movo_NET_SetResourceAllocation(kest_sint32 resid, kest_sint32 nbrclients, kest_sint32* appid)
{
    if (!isOurs(resid, NET_HERE)) {
        return kFail;
    }
    if (nbrclients > kMaxClients) {
        NET_REPORT("nbrclients <= ((1))");
        return kFail;
    }
    store(m_nbrclients, nbrclients);
    if (nbrclients == kMaxClients && appid != nullptr) {
        store(m_appid[0], *appid);
    }
    return kOk;
}

RETURN_TYPE Movo_NET_SetClientResourceAllocation(kest_sint32 resid, kest_sint32 nbrclients, kest_sint32* appid)
{
    if (!isOurs(resid, NET_HERE)) {
        return kFail;
    }
    const kest_sint32 before = load(m_nbrclients);
    const std::int64_t sum = std::int64_t{before} + nbrclients; // neither count is bounded below
    if (sum > kMaxClients) {
        NET_REPORT("nbrallocatedclients + nbrclients <= ((1))");
        return kFail;
    }
    store(m_nbrclients, static_cast<kest_sint32>(sum < INT32_MIN ? INT32_MIN : sum));
    if (sum > before && before == 0 && appid != nullptr) { // the only place that the array has
        store(m_appid[0], *appid);
    }
    return kOk;
}

RETURN_TYPE Movo_NET_GetMaxNumOfIfacesSupported(kest_sint32 /*appid*/, int* retval)
{
    if (retval == nullptr) {
        return kBadArgument;
    }
    *retval = MOVO_NET_MAX_IFACES;
    return kOk;
}

RETURN_TYPE Movo_NET_GetMaxNumOfWifiEssSupported(kest_sint32 /*appid*/, int* retval)
{
    if (retval == nullptr) {
        return kBadArgument;
    }
    *retval = kMaxEss;
    return kOk;
}

kest_bool Movo_NET_IsNetworkModeVirgin(kest_sint32 /*appid*/)
{
    return kTrue;
}

RETURN_TYPE Movo_NET_SetNetworkToModeVirgin(kest_sint32 /*appid*/)
{
    (void)SaveNetConfig();
    return kOk;
}
