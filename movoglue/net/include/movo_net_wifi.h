/** Wi-Fi calls of the network glue. Usable from C and C++. */
#ifndef MOVO_NET_WIFI_H
#define MOVO_NET_WIFI_H

#include "movo_net_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Leaves the network that an interface is connected to, or is connecting to.
 *
 * @param[in] appid   Ignored.
 * @param[in] ifname  Wi-Fi interface, at most 8 characters.
 *
 * @retval 0  Left.
 * @retval 1  The glue does not run; interface unknown or not Wi-Fi.
 * @retval 5  The interface has no Wi-Fi back end.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiDisConnect(kest_sint32 appid, const char* ifname);

#ifdef __cplusplus
}
#endif

#endif
