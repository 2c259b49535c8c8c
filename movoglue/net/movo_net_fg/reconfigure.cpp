#include "movo_net_fg/fg.h"
#include "movo_net_fl_common/common.h"
#include "movo_net_fl_common/route.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "support/log.h"
#include "support/text.h"

#include <pthread.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fg", &movoglue_net_debug};

/**
 * Held by a configuration thread for its whole life, so that two quick changes of one interface do not open its pipe
 * twice. Nobody else takes it, so it comes before every other lock.
 */
StaticMutex s_configuring;

bool startDetached(void* (*body)(void*), void* arg)
{
    pthread_t thread;
    if (pthread_create(&thread, nullptr, body, arg) != 0) {
        return false;
    }
    (void)pthread_detach(thread);
    return true;
}

/**
 * Stops a client that outlived its interface, which was taken down in another mode: it would connect it some day. An
 * auto-IP interface keeps its own.
 */
void stopStrayClient(MovoNetIface_t* pIface)
{
    const LoopGate gate;
    const bool stray = !load(pIface->isActived) && !load(pIface->isConnected) && load(pIface->dhcpcfd) != kNoFd;
    if (stray && load(pIface->ipMode) != _MOVO_NET_IPMODE_AUTOIP_) {
        (void)ShutdownDhcpcd(pIface, kRelease);
    }
}

bool mayHoldDefaultRoute(const MovoNetIface_t& iface)
{
    return load(iface.isConnected) && iface.type != _MOVO_NET_IFACE_LO_ &&
           load(iface.ipStatus) != _MOVO_NET_IPSTATUS_DHCP_AUTOIP_;
}

/** The two steps of ResetGwAndDns after its choice; they speak for it. */
RETURN_TYPE resetGateway(MovoNetIface_t& iface, CallSite at)
{
    std::uint32_t current = 0;
    const int routes = GetDefaultGateway(&current, nullptr);
    if (routes < 0) {
        return kOk;
    }
    const std::uint32_t gateway = load(iface.gwv4);
    const auto gw = octets(gateway);
    NET_LOG_AT(at, KEST_LEVEL_INFO, "set gateway to %d.%d.%d.%d\n", gw[0], gw[1], gw[2], gw[3]);
    if (SetDefaultGateway(iface.name, gateway, routes) != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "SetGateway failed\n");
        return kFail;
    }
    return kOk;
}

RETURN_TYPE resetDns(MovoNetIface_t& iface, CallSite at)
{
    const std::uint32_t dns1 = load(iface.dns1v4);
    const std::uint32_t dns2 = load(iface.dns2v4);
    std::uint32_t current1 = 0;
    std::uint32_t current2 = 0;
    if (GetDNS(&current1, &current2) == kOk && current1 == dns1 && current2 == dns2) {
        return kOk;
    }
    const auto d1 = octets(dns1);
    const auto d2 = octets(dns2);
    NET_LOG_AT(at, KEST_LEVEL_INFO, "set DNS to %d.%d.%d.%d, %d.%d.%d.%d\n", d1[0], d1[1], d1[2], d1[3], d2[0], d2[1],
               d2[2], d2[3]);
    const MovoNetIPMode_e mode = load(iface.ipMode);
    if (mode == _MOVO_NET_IPMODE_STATIC_ || mode == _MOVO_NET_IPMODE_DNSONLY_) {
        return SetDNS(dns1, dns2);
    }
    return SetDNSDhcp(&iface);
}
} // namespace

void* ConfigIPThread(void* arg)
{
    if (arg == nullptr) {
        NET_REPORT("arg != ((void *)0)");
        return nullptr;
    }
    auto* pIface = static_cast<MovoNetIface_t*>(arg);
    const StaticLock lock(s_configuring);
    (void)SaveNetConfig();
    if (load(pIface->isActived) && configureActive(pIface, kNoForce) == kFail) {
        (void)NotifyApp(_MOVO_NET_CALLBACK_DHCP_FAILED_, pIface);
    }
    stopStrayClient(pIface);
    return nullptr;
}

RETURN_TYPE CreateConfigIPThread(MovoNetIface_t* pIface)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    if (!startDetached(ConfigIPThread, pIface)) {
        NET_ERROR("create ConfigIP thread failed\n");
        return kFail;
    }
    NET_INFO("create ConfigIP thread\n");
    return kOk;
}

RETURN_TYPE ResetGwAndDns(void)
{
    const LoopGate gate; // one at a time: between the choice and its route another thread could set a second one
    ScopedLock lock(ifaceListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return kFail;
    }
    MovoNetIface_t* best = highestPriority(mayHoldDefaultRoute);
    lock.unlock();
    if (best == nullptr) {
        NET_INFO("no connected interface\n");
        return kOk;
    }
    NET_INFO("ifname=%s\n", best->name);
    if (resetGateway(*best, NET_HERE) != kOk) {
        return kFail;
    }
    return resetDns(*best, NET_HERE);
}
