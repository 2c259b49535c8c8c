/** The DHCP client: its process, its messages, its retries. */
#ifndef MOVO_NET_FL_COMMON_DHCP_H
#define MOVO_NET_FL_COMMON_DHCP_H

#include "movo_net_internal.h"

extern "C" {

/** The event loop's handler of the client's messages; `data` is the record. 0, or 1 when nothing could be read. */
RETURN_TYPE OnDhcpEventRev(int fd, void* data, kest_bool isTimeout);

/** Schedules the next retry after a lost address. 0, or 1 when there are no more retries or no timer. */
RETURN_TYPE AddDhcpDownEvent(MovoNetIface_t* pIface);

/** The event loop's handler of that retry; `data` is the record. */
RETURN_TYPE OnDhcpDown(int fd, void* data, kest_bool isTimeout);

/**
 * Closes the notify pipe and stops the client.
 *
 * @param[in] bKeepIfconfig  1: the client leaves the address in place; 0: it gives the lease back, and is waited for,
 *                           2 s at the most.
 *
 * @return 0 when the client could not be signalled, else 1.
 *
 * @par Locks  eventListLock, if the pipe is open: the caller holds no lock that a handler takes.
 */
kest_bool ShutdownDhcpcd(MovoNetIface_t* pIface, kest_bool bKeepIfconfig);

/** 1 only when the client runs and its pipe is open and watched; cleans up what is left of it otherwise. */
kest_bool IsDhcpcdRunning(MovoNetIface_t* pIface);

} // extern "C"

#endif
