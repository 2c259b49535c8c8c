/** The link to the Wi-Fi supplicant. */
#ifndef MOVO_NET_FL_WPACTRL_WPACTRL_H
#define MOVO_NET_FL_WPACTRL_WPACTRL_H

#include "movo_net_internal.h"

extern "C" {

/** Tells whether the interface is associated. 0, or 5 without a supplicant link. */
RETURN_TYPE int_Movo_Net_Wpactrl_IsConnected(MovoNetIface_t* pIface, kest_bool* isConnected);

/** Tells whether neither a connection nor an attempt exists. 0, or 5 without a supplicant link. */
RETURN_TYPE int_Movo_Net_Wpactrl_Status(MovoNetIface_t* pIface, kest_bool* isWpanone);

/** Starts the connection to the current network anew. 0, or 5 without a supplicant link. */
RETURN_TYPE int_Movo_Net_Wpactrl_ResetConnecting(MovoNetIface_t* pIface);

/** Closes the link and ends the supplicant. 0, also without a supplicant link. */
RETURN_TYPE ShutdownWpactrl(MovoNetIface_t* pIface);

} // extern "C"

#endif
