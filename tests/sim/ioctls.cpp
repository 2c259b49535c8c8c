#include "sim/calls.h"
#include "sim/ethtool.h"
#include "sim/world.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <linux/mii.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <net/route.h>
#include <netinet/in.h>
#include <sys/ioctl.h>

namespace sim {
namespace {
// Each answers 0 or an errno. The world is held.

void putAddress(ifreq& request, std::uint32_t address)
{
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_addr.s_addr = address;
    std::memcpy(&request.ifr_addr, &to, sizeof(to));
}

std::uint32_t takenAddress(const ifreq& request)
{
    sockaddr_in from{};
    std::memcpy(&from, &request.ifr_addr, sizeof(from));
    return from.sin_addr.s_addr;
}

std::uint32_t maskByClass(std::uint32_t address)
{
    const std::uint32_t first = ntohl(address) >> 24;
    return htonl(first < 128 ? 0xff000000U : first < 192 ? 0xffff0000U : 0xffffff00U);
}

int answerMii(const KernelIface& iface, unsigned long code, ifreq& request)
{
    if (!iface.mii) {
        return EOPNOTSUPP;
    }
    mii_ioctl_data data{};
    std::memcpy(&data, &request.ifr_data, sizeof(data));
    constexpr __u16 kPhy = 5;
    if (code == SIOCGMIIPHY) {
        data.phy_id = kPhy;
    } else {
        data.val_out = data.phy_id == kPhy && data.reg_num == MII_BMSR ? iface.bmsr : 0;
    }
    std::memcpy(&request.ifr_data, &data, sizeof(data));
    return 0;
}

int setAddress(KernelIface& iface, std::uint32_t address)
{
    clearAddress(iface);
    iface.address = address;
    iface.mask = address != 0 ? maskByClass(address) : 0;
    return 0;
}

int answerIface(KernelIface& iface, unsigned long code, ifreq& request)
{
    switch (code) {
    case SIOCGIFADDR:
    case SIOCGIFNETMASK:
        if (iface.address == 0) {
            return EADDRNOTAVAIL;
        }
        putAddress(request, code == SIOCGIFADDR ? iface.address : iface.mask);
        return 0;
    case SIOCSIFADDR:
        return setAddress(iface, takenAddress(request));
    case SIOCSIFNETMASK:
        if (iface.address == 0) {
            return EADDRNOTAVAIL;
        }
        iface.mask = takenAddress(request);
        return 0;
    case SIOCGIFHWADDR:
        request.ifr_hwaddr.sa_family = ARPHRD_ETHER;
        std::memcpy(request.ifr_hwaddr.sa_data, iface.mac.data(), iface.mac.size());
        return 0;
    case SIOCGIFFLAGS:
        request.ifr_flags = iface.up ? IFF_UP : 0;
        return 0;
    case SIOCSIFFLAGS:
        iface.up = (request.ifr_flags & IFF_UP) != 0;
        return 0;
    case SIOCGMIIPHY:
    case SIOCGMIIREG:
        return answerMii(iface, code, request);
    case SIOCETHTOOL:
        return answerEthtool(iface.name, request.ifr_data);
    default:
        return ENOTTY;
    }
}

int deleteRoute(const rtentry& entry)
{
    sockaddr_in destination{};
    std::memcpy(&destination, &entry.rt_dst, sizeof(destination));
    const std::string device = entry.rt_dev != nullptr ? entry.rt_dev : "";
    auto& routes = world().kernel.routes;
    const auto found = std::ranges::find_if(routes, [&](const Route& route) {
        return route.family == AF_INET && route.table == 254 && route.destination.empty() &&
               destination.sin_addr.s_addr == 0 && (device.empty() || route.ifname == device);
    });
    if (found == routes.end()) {
        return ESRCH;
    }
    routes.erase(found);
    return 0;
}

int answer(int fd, unsigned long code, void* argument)
{
    const Descriptor* descriptor = findDescriptor(fd);
    if (descriptor == nullptr) {
        return EBADF;
    }
    if (descriptor->kind != DescriptorKind::Inet) {
        return ENOTTY;
    }
    if (code == SIOCDELRT) {
        return deleteRoute(*static_cast<const rtentry*>(argument));
    }
    auto& request = *static_cast<ifreq*>(argument);
    KernelIface* iface = findIface(std::string(request.ifr_name, strnlen(request.ifr_name, IFNAMSIZ)));
    return iface != nullptr ? answerIface(*iface, code, request) : ENODEV;
}

/** The interface that a request names. */
std::string subjectOf(unsigned long code, const void* argument)
{
    if (code == SIOCDELRT || argument == nullptr) {
        return "";
    }
    const auto& request = *static_cast<const ifreq*>(argument);
    return std::string(request.ifr_name, strnlen(request.ifr_name, IFNAMSIZ));
}
} // namespace
} // namespace sim

using namespace sim;

int sim_ioctl(int fd, unsigned long code, ...)
{
    va_list arguments;
    va_start(arguments, code);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (!active()) {
        return ioctl(fd, code, argument);
    }
    if (const auto strike = enter(Call::Ioctl, {.name = subjectOf(code, argument), .code = code})) {
        return failWith(strike->error);
    }
    int error = 0;
    {
        const Hold hold;
        error = answer(fd, code, argument);
    }
    return error == 0 ? 0 : failWith(error);
}
