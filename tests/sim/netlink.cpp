#include "sim/sim.h"
#include "sim/world.h"

#include <arpa/inet.h>
#include <cstring>
#include <linux/rtnetlink.h>
#include <unistd.h>

namespace sim {
namespace {
constexpr std::size_t kDatagramRoom = 3776; // what the kernel fills before it begins another one

template <typename Record>
std::string bytesOf(const Record& record)
{
    return std::string(reinterpret_cast<const char*>(&record), sizeof(record));
}

std::string padded(std::string bytes)
{
    bytes.resize((bytes.size() + 3) & ~std::size_t{3}, '\0');
    return bytes;
}

std::string binary(int family, const std::string& text)
{
    std::string bytes(family == AF_INET6 ? sizeof(in6_addr) : sizeof(in_addr), '\0');
    if (inet_pton(family, text.c_str(), bytes.data()) != 1) {
        problem("\"" + text + "\" is no address");
    }
    return bytes;
}

int indexOf(const std::string& ifname)
{
    const Hold hold;
    return ifaceOrFail(ifname).index;
}

void appendAddress(std::string& body, const Route& route, std::uint16_t type, const std::string& text)
{
    if (!text.empty()) {
        body += routeAttribute(type, binary(route.family, text));
    }
}

int prefixOf(std::uint32_t mask)
{
    return __builtin_popcount(mask);
}

/** The routes that an address brings with it: the host's own and the network's. */
void appendAddressRoutes(const KernelIface& iface, std::vector<Route>& routes)
{
    if (iface.address != 0) {
        const std::string own = textOf(iface.address);
        routes.push_back(
            {.ifname = iface.name, .destination = own, .prefix = 32, .table = RT_TABLE_LOCAL, .source = own});
        routes.push_back({.ifname = iface.name,
                          .destination = textOf(iface.address & iface.mask),
                          .prefix = prefixOf(iface.mask),
                          .source = own});
    }
}

std::vector<Route> allRoutes()
{
    const Kernel& kernel = world().kernel;
    std::vector<Route> routes = kernel.routes;
    for (const KernelIface& iface : kernel.ifaces) {
        appendAddressRoutes(iface, routes);
    }
    return routes;
}
} // namespace

std::string netlinkMessage(const MessageHead& head, const std::string& body)
{
    nlmsghdr header{};
    header.nlmsg_len = static_cast<std::uint32_t>(static_cast<int>(sizeof(header) + body.size()) + head.lengthChange);
    header.nlmsg_type = head.type;
    header.nlmsg_flags = head.flags;
    header.nlmsg_seq = head.sequence;
    header.nlmsg_pid = static_cast<std::uint32_t>(head.port == -1 ? getpid() : head.port);
    return padded(bytesOf(header) + body);
}

std::string routeAttribute(std::uint16_t type, const std::string& payload, int lengthChange)
{
    rtattr attribute{};
    attribute.rta_len =
        static_cast<unsigned short>(static_cast<int>(sizeof(attribute) + payload.size()) + lengthChange);
    attribute.rta_type = type;
    return padded(bytesOf(attribute) + payload);
}

std::string routeMessage(const Route& route, const MessageHead& head)
{
    rtmsg fixed{};
    fixed.rtm_family = static_cast<unsigned char>(route.family);
    fixed.rtm_dst_len = static_cast<unsigned char>(route.prefix);
    fixed.rtm_table = static_cast<unsigned char>(route.table);
    fixed.rtm_protocol = RTPROT_BOOT;
    fixed.rtm_type = RTN_UNICAST;
    const std::uint32_t table = static_cast<std::uint32_t>(route.table);

    std::string body = bytesOf(fixed) + routeAttribute(RTA_TABLE, bytesOf(table));
    appendAddress(body, route, RTA_DST, route.destination);
    appendAddress(body, route, RTA_PREFSRC, route.source);
    appendAddress(body, route, RTA_GATEWAY, route.gateway);
    body += routeAttribute(RTA_OIF, bytesOf(indexOf(route.ifname)));
    return netlinkMessage(head, body);
}

std::string doneMessage()
{
    return netlinkMessage({.type = NLMSG_DONE}, std::string(sizeof(int), '\0'));
}

std::vector<std::string> dumpRoutes()
{
    std::vector<Route> routes;
    {
        const Hold hold;
        Kernel& kernel = world().kernel;
        if (kernel.scriptedDump) {
            auto datagrams = std::move(*kernel.scriptedDump);
            kernel.scriptedDump.reset();
            return datagrams;
        }
        routes = allRoutes();
    }
    std::vector<std::string> datagrams;
    std::string datagram;
    for (const Route& route : routes) {
        const std::string message = routeMessage(route);
        if (datagram.size() + message.size() > kDatagramRoom) {
            datagrams.push_back(std::move(datagram));
            datagram.clear();
        }
        datagram += message;
    }
    if (!datagram.empty()) {
        datagrams.push_back(std::move(datagram));
    }
    datagrams.push_back(doneMessage());
    return datagrams;
}

void Set::addRoute(const Route& route)
{
    const Hold hold;
    world().kernel.routes.push_back(route);
}

void Set::addDefaultRoute(const std::string& ifname, const std::string& gateway)
{
    addRoute({.ifname = ifname, .gateway = gateway});
}

std::vector<std::string> Set::defaultRoutes() const
{
    const Hold hold;
    std::vector<std::string> texts;
    for (const Route& route : world().kernel.routes) {
        if (route.family == AF_INET && route.table == RT_TABLE_MAIN && route.destination.empty()) {
            texts.push_back(route.gateway + " dev " + route.ifname);
        }
    }
    return texts;
}

std::vector<std::string> Set::netlinkRequests() const
{
    const Hold hold;
    return world().records.netlinkRequests;
}

void Set::answerDump(std::vector<std::string> datagrams)
{
    const Hold hold;
    world().kernel.scriptedDump = std::move(datagrams);
}
} // namespace sim
