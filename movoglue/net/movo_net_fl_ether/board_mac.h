/** The MAC address that the board's configuration gives the wired interface. */
#ifndef MOVO_NET_FL_ETHER_BOARD_MAC_H
#define MOVO_NET_FL_ETHER_BOARD_MAC_H

#include "movo_net_internal.h"
#include "support/report.h"

namespace movonet {
/** Takes the interface down and gives it the board's address, as far as there is one; speaks for `at`. */
void programBoardMac(MovoNetIface_t& iface, CallSite at);
} // namespace movonet

#endif
