/** What the tests of addresses, routes, name servers and the wired back end share. */
#ifndef UNIT_IP_TOOLS_H
#define UNIT_IP_TOOLS_H

#include "movo_net_internal.h"
#include "sim/sim.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ip {
using Lines = std::vector<std::string>;

/** A dotted quad as the product holds it: in network byte order. */
std::uint32_t address(const std::string& dottedQuad);

/** An active record that no list knows. */
MovoNetIface_t record(const std::string& name, MovoNetIPMode_e mode = _MOVO_NET_IPMODE_DHCP_,
                      MovoNetIfaceType_e type = _MOVO_NET_IFACE_ETHER_);

/** Puts a connected record into the interface list; it lives as long as the process. */
MovoNetIface_t& listed(const MovoNetIface_t& iface, int priority);

/** All messages since the start or the last `forget`, like "ERROR movo_net_fl_common GetDNS: no\n". */
Lines told(const sim::Set& set);

/** All commands since then. */
Lines ran(const sim::Set& set);
} // namespace ip

#endif
