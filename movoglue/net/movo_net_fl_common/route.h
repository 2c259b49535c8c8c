/** The system's default route and name servers. No locks: route and resolver file are the whole system's. */
#ifndef MOVO_NET_FL_COMMON_ROUTE_H
#define MOVO_NET_FL_COMMON_ROUTE_H

#include "movo_net_internal.h"

struct nlmsghdr;

extern "C" {

/** One route of the kernel's table. */
struct route_info {
    std::uint32_t dstAddr;
    std::uint32_t srcAddr;
    std::uint32_t gateWay;
    char ifName[16];
};

/**
 * Reads default routes of the main table.
 *
 * @param[out] gw      Gateway, network byte order; 0 when there is none or on any error.
 * @param[in]  ifname  Look for the route through this interface; NULL: count them all, `gw` is the last one's.
 *
 * @return 1 or 0 with a name, else the number of default routes; 0 on any error.
 */
int GetDefaultGateway(unsigned int* gw, const char* ifname);

/** Reads the answer to a route request into a buffer of 8192 bytes; its length, or -1. */
int readNlSock(int sockFd, char* bufPtr, int seqNum, int pId);

/** Reads one route message: 1 when it is a default route (through `ifname` if given), whose gateway is then written. */
int parseRoutesGetDefGw(struct nlmsghdr* nlHdr, struct route_info* rtInfo, unsigned int* gateway, const char* ifname);

/** Deletes one default route (through `ifname` if given). 0 deleted, 1 not. */
RETURN_TYPE DelDefaultGateway(char* ifname);

/** Deletes `gw_num` default routes, then adds the one through `gw` on `ifname`. 0 added, 1 not. */
RETURN_TYPE SetDefaultGateway(const char* ifname, unsigned int gw, int gw_num);

/** Reads the first two name servers of the resolver file. 0 when there is one at least; the second may stay untouched.
 */
RETURN_TYPE GetDNS(unsigned int* dns1, unsigned int* dns2);

/** Writes the resolver file with two servers. 0 written, 1 not. */
RETURN_TYPE SetDNS(unsigned int dns1, unsigned int dns2);

/** Writes the resolver file from what the interface's DHCP client learnt. 0 written, 1 not. */
RETURN_TYPE SetDNSDhcp(MovoNetIface_t* pIface);

/** Reads the gateway that the interface's DHCP client learnt. 0 read, 1 not; the output is then 0. */
RETURN_TYPE GetDefaultGatewayDHCP(unsigned int* gateway, const char* ifname);

} // extern "C"

#endif
