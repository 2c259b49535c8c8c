/** Routes, and the bytes in which the kernel tells of them. */
#ifndef SIM_NETLINK_H
#define SIM_NETLINK_H

#include <cstdint>
#include <string>

namespace sim {
/** One route of the kernel; addresses are dotted quads, "" when there is none. */
struct Route {
    std::string ifname;
    std::string gateway = "";
    std::string destination = "";
    int prefix = 0;
    int family = 2;  ///< AF_INET
    int table = 254; ///< RT_TABLE_MAIN
    std::string source = "";
};

/** Fields of a netlink message's head; the defaults are what the kernel's dump has. */
struct MessageHead {
    std::uint16_t type = 24; ///< RTM_NEWROUTE
    std::uint16_t flags = 2; ///< NLM_F_MULTI
    std::uint32_t sequence = 0;
    int port = -1;        ///< -1: this process
    int lengthChange = 0; ///< Added to the true length.
};

/** One message with this body, padded to 4 bytes. */
std::string netlinkMessage(const MessageHead& head, const std::string& body);
/** One route message as the kernel sends it; the interface must exist. */
std::string routeMessage(const Route& route, const MessageHead& head = {});
/** One attribute, padded; `lengthChange` is added to its true length. */
std::string routeAttribute(std::uint16_t type, const std::string& payload, int lengthChange = 0);
/** The end of a dump. */
std::string doneMessage();
} // namespace sim

#endif
