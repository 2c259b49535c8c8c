/** The back end of wired and loopback interfaces. */
#ifndef MOVO_NET_FL_ETHER_ETHER_H
#define MOVO_NET_FL_ETHER_ETHER_H

#include "movo_net_internal.h"

extern "C" {

/** Adds the wired operations to a record and gives `eth0` the board's MAC address. 0, or 1 when its lock cannot be
 * made. */
RETURN_TYPE int_Movo_Net_InitEther(MovoNetIface_t* pIface);

/** Nothing to end: 0. */
RETURN_TYPE int_Movo_Net_DeInitEther(MovoNetIface_t* pIface);

/** Reads the link from the PHY: 1 up, 0 down, -1 when the PHY does not answer. */
int int_Movo_Net_CanActiveEther(MovoNetIface_t* pIface);

/** Value of a hexadecimal digit; 0 for any other character. */
int GetOprd(char c);

} // extern "C"

#endif
