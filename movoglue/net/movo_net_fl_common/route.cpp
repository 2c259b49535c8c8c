#include "movo_net_fl_common/route.h"

#include "support/command.h"
#include "support/fd.h"
#include "support/ifreq.h"
#include "support/log.h"
#include "support/text.h"

#include <algorithm>
#include <cstring>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/route.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_common", &movoglue_net_debug};

constexpr int kReplySize = 8192;
// Deliberate: the request carries 0, so the sequence number never ends the reading; the done message does.
constexpr int kExpectedSequence = 1;

struct RouteRequest {
    nlmsghdr header;
    rtmsg route;
};
static_assert(sizeof(RouteRequest) == 28);

template <typename T>
T readAs(const char* at)
{
    T value;
    std::memcpy(&value, at, sizeof(value));
    return value;
}

/** What is kept of one datagram: `length` bytes of messages, and whether the done message followed them. */
struct Piece {
    int length;
    bool done;
};

bool isOfAnotherFamily(const nlmsghdr& header, const char* message)
{
    return header.nlmsg_type == RTM_NEWROUTE && header.nlmsg_len >= NLMSG_LENGTH(sizeof(rtmsg)) &&
           readAs<rtmsg>(message + NLMSG_HDRLEN).rtm_family != AF_INET;
}

/**
 * Cuts a datagram at the done message, which may share it with the last routes: waiting for another one would never
 * end. Removes routes of other families: neighbours advertise any number of IPv6 prefixes, which must not fill the
 * reply.
 */
Piece keepUsable(char* datagram, int received)
{
    int kept = 0;
    int at = 0;
    while (received - at >= static_cast<int>(sizeof(nlmsghdr))) {
        const auto header = readAs<nlmsghdr>(datagram + at);
        if (header.nlmsg_type == NLMSG_DONE) {
            return {kept, true};
        }
        const int left = received - at;
        if (header.nlmsg_len < sizeof(nlmsghdr) || header.nlmsg_len > static_cast<unsigned>(left)) {
            break;
        }
        const int size = std::min(static_cast<int>(NLMSG_ALIGN(header.nlmsg_len)), left);
        if (!isOfAnotherFamily(header, datagram + at)) {
            std::memmove(datagram + kept, datagram + at, static_cast<std::size_t>(size));
            kept += size;
        }
        at += size;
    }
    std::memmove(datagram + kept, datagram + at, static_cast<std::size_t>(received - at));
    return {kept + received - at, false};
}

bool sendRequest(int fd, int processId)
{
    RouteRequest request{};
    request.header.nlmsg_len = sizeof(request);
    request.header.nlmsg_type = RTM_GETROUTE;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.header.nlmsg_pid = static_cast<std::uint32_t>(processId);
    return send(fd, &request, sizeof(request), 0) >= 0;
}

void readAttribute(const rtattr& attribute, const char* payload, route_info& route)
{
    if (attribute.rta_len < RTA_LENGTH(sizeof(std::uint32_t))) {
        return; // too short for any that is wanted
    }
    const auto value = readAs<std::uint32_t>(payload);
    switch (attribute.rta_type) {
    case RTA_OIF:
        (void)if_indextoname(value, route.ifName);
        break;
    case RTA_GATEWAY:
        route.gateWay = value;
        break;
    case RTA_PREFSRC:
        route.srcAddr = value;
        break;
    case RTA_DST:
        route.dstAddr = value;
        break;
    default:
        break;
    }
}

void readAttributes(const char* at, std::size_t left, route_info& route)
{
    while (left >= sizeof(rtattr)) {
        const auto attribute = readAs<rtattr>(at);
        if (attribute.rta_len < sizeof(rtattr) || attribute.rta_len > left) {
            return;
        }
        readAttribute(attribute, at + RTA_LENGTH(0), route);
        const std::size_t step = RTA_ALIGN(attribute.rta_len);
        if (step >= left) {
            return;
        }
        at += step;
        left -= step;
    }
}

/** Walks the messages; how many default routes of the main table they hold, 1 at the most with a name. */
int countDefaultRoutes(char* buffer, int length, unsigned int* gw, const char* ifname)
{
    int count = 0;
    while (length >= static_cast<int>(sizeof(nlmsghdr))) {
        const auto header = readAs<nlmsghdr>(buffer);
        if (header.nlmsg_len < sizeof(nlmsghdr) || header.nlmsg_len > static_cast<unsigned>(length)) {
            break;
        }
        route_info route{};
        if (parseRoutesGetDefGw(reinterpret_cast<nlmsghdr*>(buffer), &route, gw, ifname) != 0) {
            ++count;
            if (ifname != nullptr) {
                break;
            }
        }
        const int step = static_cast<int>(NLMSG_ALIGN(header.nlmsg_len));
        buffer += step;
        length -= step;
    }
    return count;
}
} // namespace

int readNlSock(int sockFd, char* bufPtr, int seqNum, int pId)
{
    alignas(nlmsghdr) char datagram[kReplySize];
    int total = 0;
    for (;;) {
        const int room = kReplySize - total;
        // With no room left the end may be lost already, and waiting for more would never end.
        const ssize_t result = room > 0 ? recv(sockFd, datagram, sizeof(datagram), 0) : 0;
        if (result < 0) {
            NET_ERROR("recv failed\n");
            return -1;
        }
        const int received = static_cast<int>(result);
        const bool hasHeader = received >= static_cast<int>(sizeof(nlmsghdr));
        const auto header = hasHeader ? readAs<nlmsghdr>(datagram) : nlmsghdr{};
        if (header.nlmsg_len < sizeof(nlmsghdr) || header.nlmsg_len > static_cast<unsigned>(received) ||
            header.nlmsg_type == NLMSG_ERROR) {
            NET_ERROR("Error in recieved packet\n");
            return -1;
        }
        const Piece piece = keepUsable(datagram, received);
        if (piece.length + (piece.done ? static_cast<int>(sizeof(nlmsghdr)) : 0) > room) {
            NET_ERROR("Error in recieved packet\n");
            return -1;
        }
        std::memcpy(bufPtr + total, datagram, static_cast<std::size_t>(piece.length));
        total += piece.length;
        if (piece.done || (header.nlmsg_flags & NLM_F_MULTI) == 0) {
            return total;
        }
        if (header.nlmsg_seq == static_cast<unsigned>(seqNum) && header.nlmsg_pid == static_cast<unsigned>(pId)) {
            return total;
        }
    }
}

int parseRoutesGetDefGw(nlmsghdr* nlHdr, route_info* rtInfo, unsigned int* gateway, const char* ifname)
{
    const char* message = reinterpret_cast<const char*>(nlHdr);
    const auto header = readAs<nlmsghdr>(message);
    if (header.nlmsg_len < NLMSG_LENGTH(sizeof(rtmsg))) {
        return 0;
    }
    const auto route = readAs<rtmsg>(message + NLMSG_HDRLEN);
    if (route.rtm_family != AF_INET || route.rtm_table != RT_TABLE_MAIN) {
        return 0;
    }
    const std::size_t attributes = NLMSG_SPACE(sizeof(rtmsg));
    if (header.nlmsg_len > attributes) {
        readAttributes(message + attributes, header.nlmsg_len - attributes, *rtInfo);
    }
    if (rtInfo->dstAddr != 0 || (ifname != nullptr && std::strcmp(rtInfo->ifName, ifname) != 0)) {
        return 0;
    }
    *gateway = rtInfo->gateWay;
    return 1;
}

int GetDefaultGateway(unsigned int* gw, const char* ifname)
{
    NET_REQUIRE(gw != nullptr, "gw");
    *gw = 0;
    const UniqueFd netlink(socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_ROUTE));
    if (!netlink) {
        NET_ERROR("create socket failed\n");
        return 0;
    }
    const int processId = static_cast<int>(getpid());
    if (!sendRequest(netlink.get(), processId)) {
        NET_ERROR("Write To Socket Failed\n");
        return 0;
    }
    alignas(nlmsghdr) char reply[kReplySize] = {};
    const int length = readNlSock(netlink.get(), reply, kExpectedSequence, processId);
    if (length < 0) {
        NET_ERROR("Read From Socket Failed\n");
        return 0;
    }
    return countDefaultRoutes(reply, length, gw, ifname);
}

RETURN_TYPE DelDefaultGateway(char* ifname)
{
    rtentry entry{};
    entry.rt_dst.sa_family = AF_INET;
    entry.rt_gateway.sa_family = AF_INET;
    entry.rt_genmask.sa_family = AF_INET;
    entry.rt_dev = ifname;
    const UniqueFd control(openControlSocket());
    if (!control) {
        NET_ERROR("Del default gateway failed!\n");
        return kFail;
    }
    return ioctl(control.get(), SIOCDELRT, &entry) < 0 ? kFail : kOk;
}

RETURN_TYPE SetDefaultGateway(const char* ifname, unsigned int gw, int gw_num)
{
    for (int deleted = 0; deleted < gw_num; ++deleted) {
        (void)DelDefaultGateway(nullptr);
    }
    if (runShell(FixedText<64>("route add default gw %s dev %s", DottedQuad(gw).c_str(), ifname)) != 0) {
        NET_ERROR("set gateway failed\n");
        return kFail;
    }
    return kOk;
}
