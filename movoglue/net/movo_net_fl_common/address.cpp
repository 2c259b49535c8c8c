#include "movo_net_fl_common/common.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "support/atomic.h"
#include "support/ifreq.h"
#include "support/log.h"
#include "support/text.h"

#include <array>
#include <cstring>
#include <sys/ioctl.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_common", &movoglue_net_debug};

using Mac = std::array<std::uint8_t, 6>;

template <typename Field>
RETURN_TYPE readField(const Field& field, Field* out)
{
    if (out == nullptr) {
        return kBadArgument;
    }
    *out = load(field);
    return kOk;
}

/** Puts the six bytes where they belong in the 64-bit value; the two others keep theirs. */
void storeMac(std::int64_t& to, const Mac& mac)
{
    std::int64_t value = load(to);
    std::memcpy(&value, mac.data(), mac.size());
    store(to, value);
}

/** False when another thread has taken the interface down meanwhile; a reselection would choose it. */
bool connectStatic(MovoNetIface_t& iface, std::uint32_t ipv4)
{
    const LoopGate gate;
    if (!load(iface.isActived)) {
        return false;
    }
    store(iface.ipv4, ipv4);
    store(iface.isConnected, kTrue);
    store(iface.ipStatus, _MOVO_NET_IPSTATUS_STATIC_);
    return true;
}

Mac macOf(std::int64_t value)
{
    Mac mac;
    std::memcpy(mac.data(), &value, mac.size());
    return mac;
}
} // namespace

namespace movonet {
bool isPlausible(std::uint32_t address)
{
    const int first = octets(address)[0];
    return first != 0 && first != 255;
}

bool usesStaticAddress(const MovoNetIface_t& iface)
{
    const MovoNetIPMode_e mode = load(iface.ipMode);
    return mode == _MOVO_NET_IPMODE_STATIC_ || mode == _MOVO_NET_IPMODE_DNSONLY_;
}

int priorityWithAddress(const MovoNetIface_t& iface)
{
    constexpr int kWired = 2;
    constexpr int kOther = 1;
    return iface.type == _MOVO_NET_IFACE_ETHER_ ? kWired : kOther;
}
} // namespace movonet

RETURN_TYPE int_Movo_Net_IsConnected(MovoNetIface_t* pIface, kest_bool* isConnected)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    return readField(pIface->isConnected, isConnected);
}

RETURN_TYPE int_Movo_Net_GetIpv4(MovoNetIface_t* pIface, std::uint32_t* ipv4)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    return readField(pIface->ipv4, ipv4);
}

RETURN_TYPE int_Movo_Net_GetMaskv4(MovoNetIface_t* pIface, std::uint32_t* maskv4)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    return readField(pIface->maskv4, maskv4);
}

RETURN_TYPE int_Movo_Net_GetGwv4(MovoNetIface_t* pIface, std::uint32_t* gwv4)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    return readField(pIface->gwv4, gwv4);
}

RETURN_TYPE int_Movo_Net_Getdnsv4(MovoNetIface_t* pIface, std::uint32_t* dns1v4, std::uint32_t* dns2v4)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    if (dns1v4 == nullptr || dns2v4 == nullptr) {
        return kBadArgument;
    }
    *dns1v4 = load(pIface->dns1v4);
    *dns2v4 = load(pIface->dns2v4);
    return kOk;
}

RETURN_TYPE int_Movo_Net_SetIpv4(MovoNetIface_t* pIface, std::uint32_t ipv4)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    store(pIface->sipv4, ipv4);
    if (!usesStaticAddress(*pIface) || !load(pIface->isActived)) {
        return kOk;
    }
    NET_INFO("setting ip to %08x\n", ipv4);

    ifreq request = ifreqFor(pIface->name, ipv4);
    switch (issueIfreq(SIOCSIFADDR, request)) {
    case IfreqError::Socket:
        NET_ERROR("Cannot get control socket\n");
        return kFail;
    case IfreqError::Ioctl:
        NET_ERROR("Set IP Address ERROR\n");
        return kFail;
    case IfreqError::None:
        break;
    }
    if (!connectStatic(*pIface, ipv4)) {
        return kOk;
    }
    (void)NotifyApp(_MOVO_NET_CALLBACK_IPCHANGED_, pIface);
    return kOk;
}

RETURN_TYPE int_Movo_Net_SetMaskv4(MovoNetIface_t* pIface, std::uint32_t mask)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    store(pIface->smaskv4, mask);
    if (!usesStaticAddress(*pIface) || !load(pIface->isActived)) {
        return kOk;
    }
    NET_INFO("setting ip mask to %08x\n", mask);

    ifreq request = ifreqFor(pIface->name, mask);
    switch (issueIfreq(SIOCSIFNETMASK, request)) {
    case IfreqError::Socket:
        NET_ERROR("Cannot get control socket\n");
        return kFail;
    case IfreqError::Ioctl:
        NET_ERROR("Set IP MASK ERROR\n");
        return kFail;
    case IfreqError::None:
        break;
    }
    store(pIface->maskv4, mask);
    return kOk;
}

RETURN_TYPE int_Movo_Net_SetGwv4(MovoNetIface_t* pIface, std::uint32_t gateway)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    store(pIface->sgwv4, gateway);
    if (usesStaticAddress(*pIface)) {
        store(pIface->gwv4, gateway);
    }
    return kOk;
}

RETURN_TYPE int_Movo_Net_Setdnsv4(MovoNetIface_t* pIface, std::uint32_t dns1, std::uint32_t dns2)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    store(pIface->sdns1v4, dns1);
    store(pIface->sdns2v4, dns2);
    if (usesStaticAddress(*pIface)) {
        store(pIface->dns1v4, dns1);
        store(pIface->dns2v4, dns2);
    }
    return kOk;
}

RETURN_TYPE int_Movo_Net_GetMacAddr(MovoNetIface_t* pIface, std::int64_t* pMac)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    if (pMac == nullptr) {
        return kBadArgument;
    }
    if (const std::int64_t known = load(pIface->macaddr); known != 0) {
        storeMac(*pMac, macOf(known));
        return kOk;
    }
    ifreq request = ifreqFor(pIface->name);
    switch (issueIfreq(SIOCGIFHWADDR, request)) {
    case IfreqError::Socket:
        NET_ERROR("Cannot get control socket\n");
        return kFail;
    case IfreqError::Ioctl:
        storeMac(*pMac, Mac{});
        return kFail;
    case IfreqError::None:
        break;
    }
    Mac mac;
    std::memcpy(mac.data(), &request.ifr_hwaddr.sa_data, mac.size());
    storeMac(*pMac, mac);
    NET_INFO("int_Movo_Net_GetMacAddr, %s: %02X:%02X:%02X:%02X:%02X:%02X\n", pIface->name, mac[0], mac[1], mac[2],
             mac[3], mac[4], mac[5]);
    return kOk;
}

RETURN_TYPE int_Movo_Net_GetThroughput(MovoNetIface_t* /*pIface*/, std::int32_t* throughput)
{
    if (throughput == nullptr) {
        return kBadArgument;
    }
    *throughput = 0;
    return kFail; // Deliberate: not supported, in spite of the figure.
}
