/** Interface requests: one socket, one ioctl. */
#ifndef MOVO_NET_SUPPORT_IFREQ_H
#define MOVO_NET_SUPPORT_IFREQ_H

#include <cstdint>
#include <net/if.h>

namespace movonet {
/** Which of the two steps of `issueIfreq` failed. */
enum class IfreqError { None, Socket, Ioctl };

/** A request that names an interface; a longer name is cut. */
ifreq ifreqFor(const char* ifname);

/** A request that names an interface and carries an IPv4 address in network byte order. */
ifreq ifreqFor(const char* ifname, std::uint32_t ipv4);

/** The IPv4 address that a request carries, in network byte order. */
std::uint32_t ipv4Of(const ifreq& request);

/** Issues `code` over a datagram socket of its own; errno is that of the failed step. */
IfreqError issueIfreq(unsigned long code, ifreq& request);

/** Opens the kind of socket that interface requests go through, close-on-exec; -1 when there is none. */
int openControlSocket();
} // namespace movonet

#endif
