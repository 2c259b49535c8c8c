#include "movo_net_fl_common/common.h"

#include "movo_net_fl_common/dhcp.h"
#include "movo_net_fl_ether/ether.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_wifi/wifi.h"
#include "support/atomic.h"
#include "support/command.h"
#include "support/log.h"
#include "support/slow.h"
#include "support/text.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace movonet;

kest_uint8 g_NetworkLinkType;

namespace {
constexpr LogModule kLog{"movo_net_fl_common", &movoglue_net_debug};

constexpr std::size_t kLongestPipeName = 255;
constexpr kest_uint8 kLinkTypeKeepsDown = 1;

constexpr MovoNetIfaceFunc_t kCommonOps = {
    .CanActive = int_Movo_Net_CanActive,
    .Active = int_Movo_Net_Active,
    .IsConnected = int_Movo_Net_IsConnected,
    .GetIpv4 = int_Movo_Net_GetIpv4,
    .SetIpv4 = int_Movo_Net_SetIpv4,
    .GetMaskv4 = int_Movo_Net_GetMaskv4,
    .SetMaskv4 = int_Movo_Net_SetMaskv4,
    .GetGwv4 = int_Movo_Net_GetGwv4,
    .SetGwv4 = int_Movo_Net_SetGwv4,
    .Getdnsv4 = int_Movo_Net_Getdnsv4,
    .Setdnsv4 = int_Movo_Net_Setdnsv4,
    .GetMacAddr = int_Movo_Net_GetMacAddr,
    .GetIfaceThroughput = int_Movo_Net_GetThroughput,
};

/** Reads the base path of the notify pipes once; speaks for int_Movo_Net_Init. */
bool readPipeName(CallSite at)
{
    if (load(s_sDhcpcdPipeName) != nullptr) {
        return true;
    }
    const char* fromEnvironment = std::getenv("DHCP_NOTIFY_PIPE_DIR");
    // A copy: the environment's own text goes away when the embedding application changes the variable.
    const char* name = strdup(fromEnvironment != nullptr ? fromEnvironment : "/tmp/dhcpnotify.pipe");
    if (name == nullptr) {
        return false;
    }
    store(s_sDhcpcdPipeName, name); // Deliberate: also when it is too long, so that the next call accepts it.
    if (std::strlen(name) > kLongestPipeName) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "int_Movo_Net_Init, pipe name too long\n");
        return false;
    }
    return true;
}

void resetRecord(MovoNetIface_t& iface)
{
    iface.isEnabled = kFalse;
    iface.isAvailable = kFalse;
    iface.isActived = kFalse;
    iface.isConnected = kFalse;
    iface.ipStatus = _MOVO_NET_IPSTATUS_NONE_;
    iface.dhcpcEventHandle = 0;
    clearAddresses(iface);
    iface.thoughput = 0;
    iface.priv = nullptr;
    iface.dhcpcfd = kNoFd;
    iface.macaddr = 0;
}

/** Ends the interface's address, whatever gave it. */
void dropAddress(MovoNetIface_t& iface)
{
    // Deliberate: an auto-IP interface runs the DHCP client too, but only the DHCP mode stops it here.
    if (load(iface.ipMode) == _MOVO_NET_IPMODE_DHCP_) {
        (void)ShutdownDhcpcd(&iface, kRelease);
    } else {
        (void)runShell(FixedText<40>("ifconfig %s 0.0.0.0", iface.name));
    }
}
} // namespace

namespace movonet {
const char* s_sDhcpcdPipeName;

void logSlow(const char* what)
{
    NET_ERROR("still waiting after 5 s for: %s\n", what);
}

void clearAddresses(MovoNetIface_t& iface)
{
    store(iface.ipv4, 0U);
    store(iface.maskv4, 0U);
    store(iface.gwv4, 0U);
    store(iface.dns1v4, 0U);
    store(iface.dns2v4, 0U);
    store(iface.priority, 0);
}
} // namespace movonet

RETURN_TYPE int_Movo_Net_Init(MovoNetIface_t* pIface)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    if (!readPipeName(NET_HERE)) {
        return kFail;
    }
    resetRecord(*pIface);
    pIface->funcs = kCommonOps;
    switch (pIface->type) {
    case _MOVO_NET_IFACE_LO_:
    case _MOVO_NET_IFACE_ETHER_:
        if (int_Movo_Net_InitEther(pIface) != kOk) {
            NET_ERROR("int_Movo_Net_Init, int_Movo_Net_InitEther failed\n");
            return kFail;
        }
        return kOk;
    case _MOVO_NET_IFACE_WIFI_:
        if (int_Movo_Net_InitWifi(pIface) != kOk) {
            NET_ERROR("int_Movo_Net_Init, int_Movo_Net_InitWifi failed\n");
            return kFail;
        }
        return kOk;
    }
    NET_ERROR("int_Movo_Net_Init, unknown interface type: %d\n", static_cast<int>(pIface->type));
    return kFail;
}

RETURN_TYPE int_Movo_Net_DeInit(MovoNetIface_t* pIface)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    RETURN_TYPE result = kOk;
    if (load(pIface->isActived)) {
        result = ifdown(pIface);
    }
    if (pIface->funcs.DeInit != nullptr) {
        result |= pIface->funcs.DeInit(pIface);
    }
    return result;
}

int int_Movo_Net_CanActive(MovoNetIface_t* pIface)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    return pIface->type == _MOVO_NET_IFACE_LO_ ? 1 : 0;
}

RETURN_TYPE int_Movo_Net_Active(MovoNetIface_t* pIface, kest_bool isActive)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    NET_INFO("int_Movo_Net_Active(%d), if=%s\n", isActive, pIface->name);
    if (!isActive) {
        return load(pIface->isActived) ? ifdown(pIface) : kOk;
    }
    // Deliberate: a link that cannot be told (-1) does not keep an interface from being brought up.
    if (pIface->funcs.CanActive(pIface) == 0) {
        return kFail;
    }
    if (!load(pIface->isActived) && load(g_NetworkLinkType) != kLinkTypeKeepsDown) {
        return ifup(pIface);
    }
    return kOk;
}

RETURN_TYPE ifup(MovoNetIface_t* pIface)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    NET_INFO("if=%s\n", pIface->name);

    if (runShell(FixedText<384>("netcfg %s up", pIface->name)) != 0) {
        NET_ERROR("ifup, ifup %s failed\n", pIface->name);
        return kFail;
    }
    {
        const LoopGate gate; // never in the middle of taking it down
        (void)int_Movo_Net_GetMacAddr(pIface, &pIface->macaddr);
        store(pIface->isActived, kTrue);
    }
    return configureActive(pIface, kForce);
}

RETURN_TYPE ifdown(MovoNetIface_t* pIface)
{
    store(pIface->isActived, kFalse); // at once: whatever gives the interface an address looks at it
    store(pIface->isConnected, kFalse);
    const LoopGate gate; // a lease that the loop is at comes to its end, and another thread's activation
    store(pIface->isActived, kFalse);
    store(pIface->isConnected, kFalse);
    dropAddress(*pIface);
    clearAddresses(*pIface);
    store(pIface->macaddr, 0);
    return ResetGwAndDns();
}

RETURN_TYPE ifconfig_up(const char* ifname)
{
    if (ifname == nullptr || *ifname == '\0') {
        return kBadArgument;
    }
    NET_INFO("ifconfig up interface, ifname=%s\n", ifname);
    if (runShell(FixedText<129>("netcfg %s up", ifname)) != 0) {
        NET_ERROR("ifconfig_up, ifconfig %s up failed\n", ifname);
        return kFail;
    }
    return kOk;
}

void NotifyNtpclient(void)
{
    constexpr const char* kMarker = "/tmp/NotifyNtpclient";
    struct stat status {};
    if (lstat(kMarker, &status) == 0) {
        if (!S_ISLNK(status.st_mode)) {
            return;
        }
        (void)unlink(kMarker); // a local user's; the file that it names must not be made, nor hide the mark
    }
    const int fd = open(kMarker, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (fd >= 0) {
        (void)close(fd);
    }
}
