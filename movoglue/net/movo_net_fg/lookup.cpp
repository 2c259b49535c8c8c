#include "movo_net_fg/lookup.h"

#include "movo_net_fg/fg.h"
#include "support/log.h"

namespace {
constexpr movonet::LogModule kLog{"movo_net_fg", &movoglue_net_debug};
} // namespace

namespace movonet {
bool started(CallSite at)
{
    if (!load(s_bIsInitDone)) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "s_bIsInitDone=false\n");
        return false;
    }
    return true;
}

MovoNetIface_t* listedInterface(const char* ifname, int notFoundLevel, CallSite at)
{
    MovoNetIface_t* ift = FindInterface(ifname);
    if (ift == nullptr) {
        NET_LOG_AT(at, notFoundLevel, "ifname not found: %s\n", nameOrNull(ifname));
    }
    return ift;
}

MovoNetIface_t* knownInterface(const char* ifname, CallSite at)
{
    return started(at) ? listedInterface(ifname, KEST_LEVEL_ERROR, at) : nullptr;
}

MovoNetIface_t* wifiInterface(const char* ifname, int notFoundLevel, CallSite at)
{
    MovoNetIface_t* ift = started(at) ? listedInterface(ifname, notFoundLevel, at) : nullptr;
    if (ift != nullptr && ift->type != _MOVO_NET_IFACE_WIFI_) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "ifname is not wifi: %s\n", ifname);
        return nullptr;
    }
    return ift;
}
} // namespace movonet
