#include "movo_net_fl_common/dhcp.h"

#include "movo_net_fl_common/common.h"
#include "movo_net_fl_common/route.h"
#include "movo_net_fl_ether/ether.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_wifi/wifi.h"
#include "movo_net_fl_wpactrl/wpactrl.h"
#include "support/atomic.h"
#include "support/ifreq.h"
#include "support/log.h"
#include "support/text.h"

#include <cerrno>
#include <cstring>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_common", &movoglue_net_debug};

constexpr std::size_t kMessageSize = 16;
constexpr int kRouteDelayMs = 500;
/** Ticks to the next retry, by the number of retries so far; no row, no retry. */
constexpr int kRetryTicks[] = {10, 200, 3000, 6000, 6000, 6000};
constexpr int kMaxRetries = static_cast<int>(std::size(kRetryTicks));

void GetRealIPAddress(MovoNetIface_t* pIface)
{
    ifreq request = ifreqFor(pIface->name);
    switch (issueIfreq(SIOCGIFADDR, request)) {
    case IfreqError::Socket:
        NET_ERROR("cannot get control socket\n");
        return;
    case IfreqError::Ioctl:
        NET_ERROR("ioctl failed\n");
        return;
    case IfreqError::None:
        store(pIface->ipv4, ipv4Of(request));
    }
}

void GetRealNetMask(MovoNetIface_t* pIface)
{
    ifreq request = ifreqFor(pIface->name);
    switch (issueIfreq(SIOCGIFNETMASK, request)) {
    case IfreqError::Socket:
        NET_ERROR("cannot get control socket\n");
        return;
    case IfreqError::Ioctl:
        NET_ERROR("ioctl failed\n");
        return;
    case IfreqError::None:
        store(pIface->maskv4, ipv4Of(request));
    }
}

void readLease(MovoNetIface_t* pIface)
{
    GetRealIPAddress(pIface);
    GetRealNetMask(pIface);
    Kest_Util_Delay(kRouteDelayMs); // the client installs the route shortly after the address
    std::uint32_t gateway = 0;
    (void)GetDefaultGateway(&gateway, pIface->name);
    store(pIface->gwv4, gateway);
    std::uint32_t dns1 = load(pIface->dns1v4);
    std::uint32_t dns2 = load(pIface->dns2v4);
    (void)GetDNS(&dns1, &dns2);
    store(pIface->dns1v4, dns1);
    store(pIface->dns2v4, dns2);
}

/** The lease becomes the static configuration too. */
void rememberLease(MovoNetIface_t& iface)
{
    store(iface.sipv4, load(iface.ipv4));
    store(iface.smaskv4, load(iface.maskv4));
    store(iface.sgwv4, load(iface.gwv4));
    store(iface.sdns1v4, load(iface.dns1v4));
    store(iface.sdns2v4, load(iface.dns2v4));
    store(iface.dhcpDownCount, 0);
}

// The handlers of the messages are steps of OnDhcpEventRev and speak for it.

void logLease(const MovoNetIface_t& iface, CallSite at)
{
    const auto ip = octets(load(iface.ipv4));
    const auto mask = octets(load(iface.maskv4));
    const auto gw = octets(load(iface.gwv4));
    const auto dns1 = octets(load(iface.dns1v4));
    const auto dns2 = octets(load(iface.dns2v4));
    NET_LOG_AT(at, KEST_LEVEL_INFO,
               "%s got IP. \n\tIP: %d.%d.%d.%d\n\tMASK: %d.%d.%d.%d\n\tGW: %d.%d.%d.%d\n\tDNS1: %d.%d.%d.%d\n\tDNS2: "
               "%d.%d.%d.%d\n",
               iface.name, ip[0], ip[1], ip[2], ip[3], mask[0], mask[1], mask[2], mask[3], gw[0], gw[1], gw[2], gw[3],
               dns1[0], dns1[1], dns1[2], dns1[3], dns2[0], dns2[1], dns2[2], dns2[3]);
}

MovoNetIPStatus_e statusOf(std::uint32_t address)
{
    const auto octet = octets(address);
    return octet[0] == 169 && octet[1] == 254 ? _MOVO_NET_IPSTATUS_DHCP_AUTOIP_ : _MOVO_NET_IPSTATUS_DHCP_GOT_;
}

void onAddressObtained(MovoNetIface_t* pIface, CallSite at)
{
    NET_LOG_AT(at, KEST_LEVEL_INFO, "message: new\n");
    const bool wasActive = load(pIface->isActived) != kFalse;
    const auto takenDown = [=] { return wasActive && !load(pIface->isActived); };
    readLease(pIface);
    if (takenDown()) {
        return; // by a thread that clears the addresses as soon as the loop lets it
    }
    rememberLease(*pIface);
    logLease(*pIface, at);
    store(pIface->ipStatus, statusOf(load(pIface->ipv4)));
    store(pIface->isConnected, kTrue);
    store(pIface->priority, priorityWithAddress(*pIface));
    (void)ResetGwAndDns();
    store(g_isWifiConnectByUI, kFalse);
    (void)NotifyApp(_MOVO_NET_CALLBACK_IPCHANGED_, pIface);
    if (takenDown()) {
        return;
    }
    NotifyNtpclient();
    (void)NotifyApp(_MOVO_NET_CALLBACK_DHCP_SUCCESS_, pIface);
}

void announceAndRetry(MovoNetIface_t* pIface)
{
    const bool wasActive = load(pIface->isActived) != kFalse;
    (void)NotifyApp(_MOVO_NET_CALLBACK_IFDISCONNECTED_, pIface);
    if (!wasActive || load(pIface->isActived)) { // a callback that takes it down wants no new address
        (void)AddDhcpDownEvent(pIface);
    }
}

void onWifiAddressLost(MovoNetIface_t* pIface)
{
    if (!load(g_isWifiConnectByUI)) {
        kest_bool associated = kFalse;
        (void)int_Movo_Net_Wpactrl_IsConnected(pIface, &associated);
        if (associated) {
            announceAndRetry(pIface);
        }
        return;
    }
    kest_bool idle = kFalse;
    (void)int_Movo_Net_Wpactrl_Status(pIface, &idle);
    if (idle) {
        return;
    }
    store(g_isWifiConnectByUI, kFalse);
    if (pIface->funcs.WifiDisConnect != nullptr) {
        (void)pIface->funcs.WifiDisConnect(pIface);
    }
    (void)NotifyApp(_MOVO_NET_CALLBACK_WIFITIMEOUT_, pIface);
}

void onAddressLost(MovoNetIface_t* pIface, CallSite at)
{
    NET_LOG_AT(at, KEST_LEVEL_INFO, "message: down\n");
    store(pIface->isConnected, kFalse);
    clearAddresses(*pIface);
    store(pIface->ipStatus, _MOVO_NET_IPSTATUS_DHCP_RELEASED_);
    if (!IsDhcpcdRunning(pIface)) { // one that runs keeps trying and may come back with an address
        (void)ShutdownDhcpcd(pIface, kRelease);
    }
    (void)ResetGwAndDns();
    switch (pIface->type) {
    case _MOVO_NET_IFACE_ETHER_:
        announceAndRetry(pIface);
        break;
    case _MOVO_NET_IFACE_WIFI_:
        onWifiAddressLost(pIface);
        break;
    case _MOVO_NET_IFACE_LO_:
        break;
    }
}

/** Removes the retry timer. Only this interface's: the configuration file brings back handles of an earlier process. */
void removeRetryTimer(MovoNetIface_t* pIface)
{
    (void)removeEventOf(exchange(pIface->dhcpDownHandle, 0), OnDhcpDown, pIface);
}

/** When the client cannot be started, the next retry follows: nobody else would start it. */
RETURN_TYPE restartClient(MovoNetIface_t* pIface)
{
    const RETURN_TYPE result = ConfigIP(pIface, kForce);
    if (result != kOk) {
        (void)AddDhcpDownEvent(pIface);
    }
    return result;
}
} // namespace

RETURN_TYPE OnDhcpEventRev(int fd, void* data, kest_bool isTimeout)
{
    NET_REQUIRE(data != nullptr, "data");
    NET_REQUIRE(!isTimeout, "!isTimeout");
    auto* pIface = static_cast<MovoNetIface_t*>(data);
    if (fd != load(pIface->dhcpcfd)) {
        return kFail;
    }
    char buffer[kMessageSize] = {};
    const ssize_t length = read(fd, buffer, sizeof(buffer) - 1);
    if (length < 0 && errno == EAGAIN) {
        NET_INFO("no data yet: %s\n", std::strerror(errno));
        return kFail;
    }
    if (length < 0) {
        NET_ERROR("unknown error: %s\n", std::strerror(errno));
        return kFail;
    }
    if (length == 0) {
        NET_ERROR("read zero data!!!!!!: %s\n", std::strerror(errno));
        return kFail;
    }
    const std::string_view message(buffer, static_cast<std::size_t>(length));
    if (message.starts_with("up") || message.starts_with("new")) {
        onAddressObtained(pIface, NET_HERE);
    } else if (message.starts_with("down")) {
        onAddressLost(pIface, NET_HERE);
    } else {
        NET_INFO("unknown message: %s\n", buffer);
    }
    return kOk;
}

RETURN_TYPE AddDhcpDownEvent(MovoNetIface_t* pIface)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    if (load(pIface->dhcpDownHandle) != 0) {
        removeRetryTimer(pIface);
    }
    const int count = load(pIface->dhcpDownCount);
    if (count >= kMaxRetries) {
        NET_ERROR("dhcp down too many times, stop trying\n");
        return kFail;
    }
    if (count < 0) {
        NET_ERROR("dhcp down count incorrect, reset to 0\n");
        store(pIface->dhcpDownCount, 0);
        return kFail;
    }
    if (int_addEvent({kNoFd, kRetryTicks[count], pIface, OnDhcpDown}, &pIface->dhcpDownHandle) != kOk) {
        NET_ERROR("cannot add dhcp down event\n");
        return kFail;
    }
    NET_INFO("add dhcp down event, count is %d\n", count);
    store(pIface->dhcpDownCount, count + 1);
    return kOk;
}

RETURN_TYPE OnDhcpDown(int /*fd*/, void* data, kest_bool /*isTimeout*/)
{
    NET_REQUIRE(data != nullptr, "data");
    auto* pIface = static_cast<MovoNetIface_t*>(data);
    removeRetryTimer(pIface);
    if (load(pIface->isConnected)) {
        store(pIface->dhcpDownCount, 0);
        return kOk;
    }
    switch (pIface->type) {
    case _MOVO_NET_IFACE_ETHER_:
        return int_Movo_Net_CanActiveEther(pIface) == 1 ? restartClient(pIface) : kFail;
    case _MOVO_NET_IFACE_WIFI_:
        return int_Movo_Net_Wpactrl_ResetConnecting(pIface);
    case _MOVO_NET_IFACE_LO_:
        break;
    }
    return kFail;
}
