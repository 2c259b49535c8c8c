#include "movo_net_fg/fg.h"
#include "movo_net_fg/lookup.h"
#include "movo_net_fl_common/common.h"
#include "movo_net_fl_common/dhcp.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_wpactrl/wpactrl.h"
#include "movo_net_iface.h"
#include "support/ifreq.h"
#include "support/log.h"

#include <cstring>
#include <linux/ethtool.h>
#include <linux/sockios.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fg", &movoglue_net_debug};

int positionOf(const MovoNetIface_t* wanted)
{
    int position = 0;
    for (const MovoNetIface_t* ift = firstInterface(); ift != nullptr; ift = nextInterface(ift), ++position) {
        if (ift == wanted) {
            return position;
        }
    }
    return -1;
}

const MovoNetIface_t* interfaceAt(int position)
{
    const MovoNetIface_t* ift = firstInterface();
    for (; ift != nullptr && position > 0; --position) {
        ift = nextInterface(ift);
    }
    return ift;
}

bool isActivedLink(const MovoNetIface_t& ift)
{
    return load(ift.isActived) && ift.type != _MOVO_NET_IFACE_LO_;
}

void disable(MovoNetIface_t& ift)
{
    const LoopGate gate; // no activation finds it inactive while its link is still open
    store(ift.isEnabled, kFalse);
    store(ift.isActived, kFalse);
    store(ift.isConnected, kFalse);
    (void)ShutdownDhcpcd(&ift, kKeepIfconfig);
    clearAddresses(ift);
    store(ift.macaddr, 0);
    if (ift.type == _MOVO_NET_IFACE_WIFI_) {
        (void)ShutdownWpactrl(&ift);
    }
}
} // namespace

RETURN_TYPE Movo_NET_GetNumOfIfaces(kest_sint32 /*appid*/, int* retval)
{
    if (!started()) {
        return kFail;
    }
    if (retval == nullptr) {
        return kBadArgument;
    }
    const ScopedLock lock(ifaceListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return kFail;
    }
    int count = 0;
    for (const MovoNetIface_t* ift = firstInterface(); ift != nullptr; ift = nextInterface(ift)) {
        ++count;
    }
    *retval = count;
    return kOk;
}

RETURN_TYPE Movo_NET_GetIfaceName(kest_sint32 /*appid*/, int ifidx, int length, char* retval)
{
    if (!started()) {
        return kFail;
    }
    if (retval == nullptr) {
        return kBadArgument;
    }
    const ScopedLock lock(ifaceListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return kFail;
    }
    const MovoNetIface_t* ift = interfaceAt(ifidx);
    if (ift == nullptr) {
        NET_ERROR("interface not found: %d\n", ifidx);
        return kFail;
    }
    if (ifidx < 0) {
        return kOk; // Deliberate: a negative position is no error while there are interfaces, and writes nothing.
    }
    const std::size_t size = std::strlen(ift->name);
    if (static_cast<int>(size) > length) {
        NET_ERROR("buffer too small\n");
        return kBufferTooSmall;
    }
    std::memcpy(retval, ift->name, size + 1); // Deliberate: `length` does not count the end mark.
    return kOk;
}

RETURN_TYPE Movo_NET_GetIfaceType(kest_sint32 /*appid*/, const char* ifname, MovoNetIfaceType_e* retval)
{
    return readInterface(ifname, &MovoNetIface_t::type, retval);
}

RETURN_TYPE Movo_NET_GetIfaceMacAddress(kest_sint32 /*appid*/, const char* ifname, long long* macaddr)
{
    if (!started()) {
        return kFail;
    }
    if (macaddr == nullptr) {
        return kBadArgument;
    }
    MovoNetIface_t* ift = listedInterface(ifname);
    if (ift == nullptr || ift->funcs.GetMacAddr == nullptr) {
        return kFail;
    }
    std::int64_t mac = *macaddr; // the operation leaves two of the eight bytes alone
    const RETURN_TYPE result = ift->funcs.GetMacAddr(ift, &mac);
    *macaddr = mac;
    return result;
}

RETURN_TYPE Movo_NET_GetIfaceThroughput(kest_sint32 /*appid*/, const char* ifname, int* retval)
{
    if (!started()) {
        return kFail;
    }
    if (retval == nullptr) {
        return kBadArgument;
    }
    MovoNetIface_t* ift = listedInterface(ifname);
    if (ift == nullptr) {
        return kFail;
    }
    NET_REQUIRE(ift->funcs.GetIfaceThroughput != nullptr, "ift->funcs.GetIfaceThroughput");
    return ift->funcs.GetIfaceThroughput(ift, retval);
}

RETURN_TYPE Movo_NET_EnableIface(kest_sint32 /*appid*/, const char* ifname)
{
    MovoNetIface_t* ift = knownInterface(ifname);
    if (ift == nullptr) {
        return kFail;
    }
    store(ift->isEnabled, kTrue);
    (void)SaveNetConfig();
    if (!load(ift->isAvailable)) {
        NET_INFO("ifname not available: %s\n", ifname);
        return kFail; // Deliberate: enabled and saved all the same.
    }
    NET_REQUIRE(ift->funcs.Active != nullptr, "ift->funcs.Active");
    NET_INFO("ifname=%s\n", ifname);
    return ift->funcs.Active(ift, kTrue);
}

RETURN_TYPE Movo_NET_DisableIface(kest_sint32 /*appid*/, const char* ifname)
{
    MovoNetIface_t* ift = knownInterface(ifname);
    if (ift == nullptr) {
        return kFail;
    }
    store(ift->isEnabled, kFalse); // Deliberate: not saved.
    NET_REQUIRE(ift->funcs.Active != nullptr, "ift->funcs.Active");
    NET_INFO("ifname=%s\n", ifname);
    return ift->funcs.Active(ift, kFalse);
}

RETURN_TYPE Movo_NET_DisableAllIfaces(kest_sint32 /*appid*/)
{
    if (!started()) {
        return kFail;
    }
    for (MovoNetIface_t* ift = firstInterface(); ift != nullptr; ift = nextInterface(ift)) {
        if (load(ift->isEnabled)) {
            disable(*ift);
        }
    }
    return kOk;
}

kest_bool Movo_NET_IsEnabledIface(kest_sint32 /*appid*/, const char* ifname)
{
    if (!started()) {
        return kTrue;
    }
    const MovoNetIface_t* ift = listedInterface(ifname);
    return ift != nullptr ? load(ift->isEnabled) : kFalse;
}

kest_bool Movo_NET_IsActivedIface(kest_sint32 /*appid*/, const char* ifname)
{
    if (!started()) {
        return kTrue;
    }
    const MovoNetIface_t* ift = listedInterface(ifname);
    if (ift == nullptr) {
        return kFalse;
    }
    if (!load(ift->isEnabled)) {
        NET_ERROR("iface not enabled: %s\n", ifname);
        return kFalse;
    }
    return load(ift->isActived);
}

RETURN_TYPE Movo_NET_GetActivedIface(kest_sint32 /*appid*/, int* retval)
{
    if (!started()) {
        return kFail;
    }
    if (retval == nullptr) {
        return kBadArgument;
    }
    const ScopedLock lock(ifaceListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return kFail;
    }
    const MovoNetIface_t* best = highestPriority(isActivedLink);
    *retval = best != nullptr ? positionOf(best) : -1;
    return kOk;
}

RETURN_TYPE Movo_NET_GetActivedIfaceType(kest_sint32 /*appid*/, MovoNetIfaceType_e* retval)
{
    if (!started()) {
        return kFail;
    }
    if (retval == nullptr) {
        return kBadArgument;
    }
    const MovoNetIface_t* best = highestPriority(isActivedLink);
    if (best == nullptr) {
        NET_ERROR("no actived iface found\n");
        return kFail;
    }
    *retval = best->type;
    return kOk;
}

kest_bool Movo_NET_IsPhyConnected(kest_sint32 /*appid*/, const char* ifname)
{
    if (!started()) {
        return kTrue;
    }
    MovoNetIface_t* ift = listedInterface(ifname);
    if (ift == nullptr) {
        return kTrue;
    }
    if (ift->funcs.CanActive == nullptr) {
        NET_ERROR("ift->funcs.CanActive not set. ifname: %s\n", ifname);
        return kTrue;
    }
    return ift->funcs.CanActive(ift) != 0 ? kTrue
                                          : kFalse; // Deliberate: a PHY that does not answer counts as connected.
}

RETURN_TYPE Movo_NET_SetIfacePriority(kest_sint32 /*appid*/, const char* ifname, int priority)
{
    MovoNetIface_t* ift = knownInterface(ifname);
    if (ift == nullptr) {
        return kFail;
    }
    NET_INFO("set %s priority to %d\n", ifname, priority);
    store(ift->priority, priority);
    (void)SaveNetConfig();
    return ResetGwAndDns();
}

RETURN_TYPE Movo_NET_GetIfacePriority(kest_sint32 /*appid*/, const char* ifname, int* retval)
{
    return readInterface(ifname, &MovoNetIface_t::priority, retval);
}

RETURN_TYPE Movo_NET_FilterOutIF(kest_sint32 /*appid*/, const char* /*ifname*/)
{
    return kOk;
}

RETURN_TYPE Movo_NET_SetWol(kest_sint32 /*appid*/, const char* ifname, kest_bool wol_enable)
{
    if (!started()) {
        return kFail;
    }
    ethtool_wolinfo setting{};
    setting.cmd = ETHTOOL_SWOL;
    setting.wolopts = wol_enable == kTrue ? WAKE_MAGIC : 0;
    ifreq request = ifreqFor(ifname != nullptr ? ifname : "");
    request.ifr_data = reinterpret_cast<char*>(&setting);
    switch (issueIfreq(SIOCETHTOOL, request)) {
    case IfreqError::Socket:
        NET_ERROR("Cannot get control socket"); // Deliberate: no line end, nor below.
        return kFail;
    case IfreqError::Ioctl:
        NET_ERROR("ioctl failed, Cannot set new wake-on-lan settings");
        return kFail;
    case IfreqError::None:
        break;
    }
    return kOk;
}
