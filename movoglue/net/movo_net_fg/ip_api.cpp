#include "movo_net_fg/fg.h"
#include "movo_net_fg/lookup.h"
#include "movo_net_fl_common/common.h"
#include "movo_net_fl_common/route.h"
#include "movo_net_ip.h"
#include "movo_net_wifi.h"
#include "support/log.h"

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fg", &movoglue_net_debug};

bool hasNameServer()
{
    unsigned int dns1 = 0;
    unsigned int dns2 = 0;
    return GetDNS(&dns1, &dns2) == kOk;
}

void copyUnlessNull(unsigned int* to, const std::uint32_t& field)
{
    if (to != nullptr) {
        *to = load(field);
    }
}
} // namespace

RETURN_TYPE Movo_NET_ConfigIPMode(kest_sint32 /*appid*/, const char* ifname, MovoNetIPMode_e mode)
{
    MovoNetIface_t* ift = knownInterface(ifname);
    if (ift == nullptr) {
        return kFail;
    }
    if (load(ift->ipMode) == mode) {
        return kOk;
    }
    NET_INFO("set %s to %d\n", ifname, static_cast<int>(mode));
    store(ift->ipMode, mode);
    (void)SaveNetConfig();
    return CreateConfigIPThread(ift);
}

RETURN_TYPE Movo_NET_GetIPMode(kest_sint32 /*appid*/, const char* ifname, MovoNetIPMode_e* retval)
{
    return readInterface(ifname, &MovoNetIface_t::ipMode, retval);
}

RETURN_TYPE Movo_NET_GetIPStatus(kest_sint32 /*appid*/, const char* ifname, MovoNetIPStatus_e* retval)
{
    return readInterface(ifname, &MovoNetIface_t::ipStatus, retval);
}

RETURN_TYPE Movo_NET_GetIP(kest_sint32 /*appid*/, const char* ifname, unsigned int* ip, unsigned int* mask,
                           unsigned int* gateway, unsigned int* dns1, unsigned int* dns2)
{
    if (ip == nullptr || mask == nullptr || gateway == nullptr || dns1 == nullptr || dns2 == nullptr) {
        return kBadArgument; // Deliberate: told before whether the glue runs.
    }
    const MovoNetIface_t* ift = knownInterface(ifname);
    if (ift == nullptr) {
        return kFail;
    }
    if (!load(ift->isConnected)) {
        NET_INFO("interface not connected\n");
        *ip = *mask = *gateway = *dns1 = *dns2 = 0;
        return kOk;
    }
    *ip = load(ift->ipv4);
    *mask = load(ift->maskv4);
    *gateway = load(ift->gwv4);
    *dns1 = load(ift->dns1v4);
    *dns2 = load(ift->dns2v4);
    return kOk;
}

RETURN_TYPE Movo_NET_ConfigIPStatic(kest_sint32 /*appid*/, const char* ifname, unsigned int ip, unsigned int mask,
                                    unsigned int gateway, unsigned int dns1, unsigned int dns2)
{
    if (!started()) {
        return kFail;
    }
    NET_INFO("if=%s, ip=%08x, mask=%08x, gw=%08x, dns1=%08x, dns2=%08x\n", nameOrNull(ifname), ip, mask, gateway, dns1,
             dns2);
    MovoNetIface_t* ift = listedInterface(ifname);
    if (ift == nullptr) {
        return kFail;
    }
    store(ift->sipv4, ip);
    store(ift->smaskv4, mask);
    store(ift->sgwv4, gateway);
    store(ift->sdns1v4, dns1);
    store(ift->sdns2v4, dns2);
    return CreateConfigIPThread(ift);
}

RETURN_TYPE Movo_NET_GetIPStatic(kest_sint32 /*appid*/, const char* ifname, unsigned int* ip, unsigned int* mask,
                                 unsigned int* gateway, unsigned int* dns1, unsigned int* dns2)
{
    const MovoNetIface_t* ift = knownInterface(ifname);
    if (ift == nullptr) {
        return kFail;
    }
    copyUnlessNull(ip, ift->sipv4);
    copyUnlessNull(mask, ift->smaskv4);
    copyUnlessNull(gateway, ift->sgwv4);
    copyUnlessNull(dns1, ift->sdns1v4);
    copyUnlessNull(dns2, ift->sdns2v4);
    return kOk;
}

RETURN_TYPE Movo_NET_IsConnected(kest_sint32 /*appid*/, const char* ifname, kest_bool* isConnected)
{
    if (!started()) {
        return kFail;
    }
    if (isConnected == nullptr) {
        return kBadArgument;
    }
    MovoNetIface_t* ift = listedInterface(ifname, KEST_LEVEL_INFO);
    if (ift == nullptr) {
        return kFail;
    }
    NET_REQUIRE(ift->funcs.IsConnected != nullptr, "ift->funcs.IsConnected");
    return ift->funcs.IsConnected(ift, isConnected);
}

kest_bool Movo_NET_IsDNSOK(kest_sint32 /*appid*/, const char* /*ifname*/)
{
    if (!started()) {
        return kTrue;
    }
    return hasNameServer() ? kTrue : kFalse;
}

kest_bool Movo_NET_IsNetworkOK(kest_sint32 /*appid*/)
{
    if (!started()) {
        return kFalse;
    }
    for (const MovoNetIface_t* ift = firstInterface(); ift != nullptr; ift = nextInterface(ift)) {
        if (ift->type != _MOVO_NET_IFACE_LO_ && load(ift->isActived) && load(ift->isConnected)) {
            return hasNameServer() ? kTrue : kFalse;
        }
    }
    return kFalse;
}

RETURN_TYPE Movo_NET_ClearIP(kest_sint32 /*appid*/, const char* ifname)
{
    MovoNetIface_t* ift = knownInterface(ifname);
    if (ift == nullptr) {
        return kFail;
    }
    if (!load(ift->isConnected)) {
        NET_INFO("Interface: %s not connected\n", ifname);
        return kOk;
    }
    NET_INFO("Clear IP/GW/DNS of %s\n", ifname);
    switch (ift->type) {
    case _MOVO_NET_IFACE_ETHER_:
        return ifdown(ift);
    case _MOVO_NET_IFACE_WIFI_:
        return Movo_NET_WifiDisConnect(0, ifname);
    case _MOVO_NET_IFACE_LO_:
        break;
    }
    return kOk;
}
