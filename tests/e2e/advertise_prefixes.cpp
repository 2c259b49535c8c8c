/** Router advertisements of many prefixes, as a neighbour may send them:  advertise_prefixes IFACE COUNT */
#include <algorithm>
#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <net/if.h>
#include <netinet/icmp6.h>
#include <unistd.h>

namespace {
constexpr int kPrefixesPerMessage = 40; // 16 + 40 * 32 bytes fit an Ethernet frame

struct Advertisement {
    nd_router_advert head;
    nd_opt_prefix_info prefixes[kPrefixesPerMessage];
};

nd_opt_prefix_info prefixOf(int number)
{
    nd_opt_prefix_info option{};
    option.nd_opt_pi_type = ND_OPT_PREFIX_INFORMATION;
    option.nd_opt_pi_len = 4; // of 8 bytes
    option.nd_opt_pi_prefix_len = 64;
    option.nd_opt_pi_flags_reserved = ND_OPT_PI_FLAG_ONLINK;
    option.nd_opt_pi_valid_time = htonl(3600);
    option.nd_opt_pi_preferred_time = htonl(3600);
    char text[INET6_ADDRSTRLEN];
    (void)std::snprintf(text, sizeof(text), "2001:db8:0:%x::", static_cast<unsigned>(number));
    (void)inet_pton(AF_INET6, text, &option.nd_opt_pi_prefix);
    return option;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        (void)std::fprintf(stderr, "usage: advertise_prefixes IFACE COUNT\n");
        return 2;
    }
    const int fd = socket(AF_INET6, SOCK_RAW, IPPROTO_ICMPV6);
    const int hops = 255; // others are not believed
    sockaddr_in6 everyone{};
    everyone.sin6_family = AF_INET6;
    everyone.sin6_scope_id = if_nametoindex(argv[1]);
    if (setsockopt(fd, IPPROTO_IPV6, IPV6_MULTICAST_HOPS, &hops, sizeof(hops)) != 0 ||
        inet_pton(AF_INET6, "ff02::1", &everyone.sin6_addr) != 1) {
        std::perror("advertise_prefixes");
        return 1;
    }
    const auto count = static_cast<int>(std::strtol(argv[2], nullptr, 10));
    for (int sent = 0; sent < count;) {
        Advertisement message{};
        message.head.nd_ra_type = ND_ROUTER_ADVERT;
        const int held = std::min(kPrefixesPerMessage, count - sent);
        for (int at = 0; at < held; ++at) {
            message.prefixes[at] = prefixOf(sent++);
        }
        const std::size_t size = sizeof(message.head) + static_cast<std::size_t>(held) * sizeof(message.prefixes[0]);
        if (sendto(fd, &message, size, 0, reinterpret_cast<sockaddr*>(&everyone), sizeof(everyone)) < 0) {
            std::perror("advertise_prefixes");
            return 1;
        }
    }
    return close(fd);
}
