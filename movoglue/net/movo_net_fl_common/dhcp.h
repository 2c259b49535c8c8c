/** The DHCP client: its process, its messages, its retries. */
#ifndef MOVO_NET_FL_COMMON_DHCP_H
#define MOVO_NET_FL_COMMON_DHCP_H

#include "movo_net_internal.h"

extern "C" {

/** The event loop's handler of the client's messages; `data` is the record. 0, or 1 when nothing could be read. */
RETURN_TYPE OnDhcpEventRev(int fd, void* data, kest_bool isTimeout);

/** Schedules the next retry after a lost address, or after a retry that could not start the client. 0, or 1 when there
 * are no more retries or no timer. */
RETURN_TYPE AddDhcpDownEvent(MovoNetIface_t* pIface);

/** The event loop's handler of that retry; `data` is the record. */
RETURN_TYPE OnDhcpDown(int fd, void* data, kest_bool isTimeout);

/** 1 only when the client runs and its pipe is open and watched; cleans up what is left of it otherwise. */
kest_bool IsDhcpcdRunning(MovoNetIface_t* pIface);

} // extern "C"

#endif
