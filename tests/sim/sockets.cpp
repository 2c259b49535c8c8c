#include "sim/calls.h"
#include "sim/world.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <unistd.h>

namespace sim {
namespace {
const char* nameOf(int domain)
{
    return domain == AF_NETLINK ? "netlink" : "inet";
}

bool isNetlink(int fd)
{
    const Hold hold;
    const Descriptor* descriptor = findDescriptor(fd);
    return descriptor != nullptr && descriptor->kind == DescriptorKind::Netlink;
}

/** Is it the request for a dump of all routes, as the kernel wants it? */
bool isDumpRequest(const void* buffer, size_t size)
{
    nlmsghdr header{};
    if (size < sizeof(header) + sizeof(rtmsg)) {
        return false;
    }
    std::memcpy(&header, buffer, sizeof(header));
    constexpr int kWanted = NLM_F_REQUEST | NLM_F_DUMP;
    return header.nlmsg_len == size && header.nlmsg_type == RTM_GETROUTE && (header.nlmsg_flags & kWanted) == kWanted;
}

ssize_t sendTo(int fd, const void* buffer, size_t size)
{
    if (!isNetlink(fd)) {
        return failWith(ENOTSOCK);
    }
    if (!isDumpRequest(buffer, size)) {
        problem("a netlink request that is no dump of routes");
        return failWith(EINVAL);
    }
    const auto datagrams = dumpRoutes();
    const Hold hold;
    world().records.netlinkRequests.emplace_back(static_cast<const char*>(buffer), size);
    auto& waiting = world().files.descriptors.at(fd).datagrams;
    waiting.insert(waiting.end(), datagrams.begin(), datagrams.end());
    return static_cast<ssize_t>(size);
}

/** Takes one datagram; what does not fit is lost. */
ssize_t receiveFrom(int fd, void* buffer, size_t size)
{
    if (!isNetlink(fd)) {
        return failWith(ENOTSOCK);
    }
    const Hold hold;
    auto& waiting = world().files.descriptors.at(fd).datagrams;
    if (waiting.empty()) {
        world().problems.push_back("recv(\"netlink\") waits for a datagram that cannot come");
        return failWith(EAGAIN);
    }
    const std::string datagram = std::move(waiting.front());
    waiting.pop_front();
    const size_t taken = std::min(size, datagram.size());
    std::memcpy(buffer, datagram.data(), taken);
    return static_cast<ssize_t>(taken);
}

template <typename Transfer>
ssize_t transfer(Call call, int fd, size_t size, Transfer real)
{
    const auto strike = enter(call, {.name = isNetlink(fd) ? "netlink" : "inet"});
    if (strike && strike->bytes < 0) {
        return failWith(strike->error);
    }
    return real(strike ? std::min(size, static_cast<size_t>(strike->bytes)) : size);
}
} // namespace
} // namespace sim

using namespace sim;

int sim_socket(int domain, int type, int protocol)
{
    if (!active()) {
        return socket(domain, type, protocol);
    }
    if (const auto strike = enter(Call::Socket, {.name = nameOf(domain)})) {
        return failWith(strike->error);
    }
    if (domain != AF_INET && domain != AF_NETLINK) {
        return failWith(EAFNOSUPPORT);
    }
    // A descriptor of the machine, so that its number and its flags are real; nothing goes through it.
    const int fd = open("/dev/null", O_RDWR | ((type & SOCK_CLOEXEC) != 0 ? O_CLOEXEC : 0));
    if (fd >= 0) {
        const Hold hold;
        noteDescriptor(fd, {domain == AF_NETLINK ? DescriptorKind::Netlink : DescriptorKind::Inet, nameOf(domain),
                            describe(Call::Socket, nameOf(domain))});
    }
    return fd;
}

ssize_t sim_sendto(int fd, const void* buffer, size_t size, int flags, const struct sockaddr* to, socklen_t length)
{
    if (!active()) {
        return sendto(fd, buffer, size, flags, to, length);
    }
    return transfer(Call::Send, fd, size, [&](size_t some) { return sendTo(fd, buffer, some); });
}

ssize_t sim_send(int fd, const void* buffer, size_t size, int flags)
{
    return sim_sendto(fd, buffer, size, flags, nullptr, 0);
}

ssize_t sim_recvfrom(int fd, void* buffer, size_t size, int flags, struct sockaddr* from, socklen_t* length)
{
    if (!active()) {
        return recvfrom(fd, buffer, size, flags, from, length);
    }
    return transfer(Call::Recv, fd, size, [&](size_t some) { return receiveFrom(fd, buffer, some); });
}

ssize_t sim_recv(int fd, void* buffer, size_t size, int flags)
{
    return sim_recvfrom(fd, buffer, size, flags, nullptr, nullptr);
}

char* sim_if_indextoname(unsigned index, char* name)
{
    if (!active()) {
        return if_indextoname(index, name);
    }
    if (const auto strike = enter(Call::IfIndexToName, {})) {
        errno = strike->error;
        return nullptr;
    }
    const Hold hold;
    for (const KernelIface& iface : world().kernel.ifaces) {
        if (static_cast<unsigned>(iface.index) == index) {
            std::memcpy(name, iface.name.c_str(), std::min<size_t>(iface.name.size() + 1, IFNAMSIZ));
            return name;
        }
    }
    errno = ENXIO;
    return nullptr;
}
