/**
 * Start, stop, callback and platform calls of the network glue. Usable from C and C++.
 *
 * The glue runs programs from its own threads at any moment. What that asks of the host:
 *
 * - Environment: set variables before the start. `setenv` beside a running glue races with what reads them.
 * - Forks: a child has the glue's locks as they stood and none of its threads. Until it executes another program it
 *   may make async-signal-safe calls only, and none of the glue's.
 * - Descriptors: the glue's are close-on-exec. The programs that it starts inherit the host's that are not, and a DHCP
 *   client keeps them for as long as it runs.
 * - Signals: an ignored SIGCHLD makes every program seem to fail. The glue writes to standard output; a host whose
 *   output is a pipe handles SIGPIPE, since programs would inherit an ignored one.
 */
#ifndef MOVO_NET_CORE_H
#define MOVO_NET_CORE_H

#include "movo_net_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Log category of the whole glue. The program that hosts the glue sets it before the start, once, with
 * `kest_debug_category_new`; while it is NULL the platform's default category is used. Neither this nor
 * `kest_debug_init` is needed: without them the glue logs its errors, under the default category.
 */
extern kest_debug_category* movoglue_net_debug;

/**
 * Network link type chosen by the embedding software, 0 unless it writes it before the start. 1 keeps inactive
 * interfaces from being brought up; any value but 0 keeps the board's MAC address from being programmed.
 */
extern kest_uint8 g_NetworkLinkType;

/**
 * Starts the glue, or counts one more user of a started one. Runs the first look at the interfaces itself, so
 * that interfaces with a cable are being configured when it returns.
 *
 * @retval 0  Started, or already running.
 * @retval 1  A lock, the event thread or the periodic look could not be made, or the start on another thread failed.
 * The user is counted all the same.
 *
 * @par Threads    Any, not from inside the callback. Callers that come while another starts wait for it.
 * @par Locks      The event loop is held off during the first look; ifaceListLock while links are looked at.
 * @par Callbacks  An installed callback is cleared first; one that is installed while the start runs gets IFFOUND for
 * each interface brought up. To miss nothing, install it as soon as this has returned, and then read the state of each
 * interface once: `Movo_NET_GetNumOfIfaces`, `Movo_NET_GetIfaceName`, `Movo_NET_IsActivedIface` for an IFFOUND that
 * came too early, `Movo_NET_IsConnected` and `Movo_NET_GetIP` for an address. What changes after that is reported; a
 * change in between may be seen both ways.
 */
RETURN_TYPE Movo_NET_Glue_Init(void);

/**
 * Takes one user away; the last one's call stops the glue: saves the configuration, forgets the interfaces and
 * ends the event thread. DHCP clients keep running. A stopped glue does not start again in the same process: a later
 * start is never done, and takes the link of eth0 down to program the board's MAC address.
 *
 * @retval 0  Counted down, or stopped.
 * @retval 1  The glue had been stopped before.
 *
 * @par Threads  Any, not from inside the callback. Returns only after a running callback has returned.
 * @par Locks    callbackListLock, then ifaceListLock, neither while it waits for the event thread.
 */
RETURN_TYPE Movo_NET_Glue_Exit(void);

/**
 * Waits until the event thread has ended, that is, until the last `Movo_NET_Glue_Exit`. Returns at once when there is
 * none.
 *
 * @par Threads  Any, not from inside the callback.
 * @par Locks    None.
 */
void WaitForChild2Exit(void);

/**
 * Tells whether the glue has looked at the interfaces once and has not been stopped.
 *
 * @param[in] appid  Ignored.
 *
 * @return 1 when it runs, else 0.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
kest_bool Movo_NET_IsInitializationDone(kest_sint32 appid);

/**
 * Tells how many interfaces the glue handles at the most.
 *
 * @param[in]  appid   Ignored.
 * @param[out] retval  10.
 *
 * @retval 0  Written.
 * @retval 5  `retval` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
RETURN_TYPE Movo_NET_GetMaxNumOfIfacesSupported(kest_sint32 appid, int* retval);

/**
 * Tells how many Wi-Fi networks a scan keeps at the most.
 *
 * @param[in]  appid   Ignored.
 * @param[out] retval  50.
 *
 * @retval 0  Written.
 * @retval 5  `retval` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
RETURN_TYPE Movo_NET_GetMaxNumOfWifiEssSupported(kest_sint32 appid, int* retval);

/**
 * Tells whether the network was never configured. The glue does not keep track of it.
 *
 * @param[in] appid  Ignored.
 *
 * @return Always 1.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
kest_bool Movo_NET_IsNetworkModeVirgin(kest_sint32 appid);

/**
 * Writes the configuration file. Nothing is reset.
 *
 * @param[in] appid  Ignored.
 *
 * @retval 0  Always, also when the file could not be written.
 *
 * @par Threads  Any, also from inside the callback. Takes as long as a flash write.
 * @par Locks    ifaceListLock while it writes.
 */
RETURN_TYPE Movo_NET_SetNetworkToModeVirgin(kest_sint32 appid);

/**
 * Sets the one callback of the process; an earlier one is replaced.
 *
 * @param[in]  appid     Ignored.
 * @param[in]  callback  Called from now on; see MovoNetCallback_t. NULL: nobody is called.
 * @param[in]  context   Handed to the callback; the caller's, must live until the callback is taken away.
 * @param[out] cbid      0. Must not be NULL.
 *
 * @retval 0  Installed; also before the start, which clears it: see `Movo_NET_Glue_Init` for how to miss nothing.
 * @retval 1  The glue was stopped.
 * @retval 5  `cbid` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    callbackListLock; waits for a callback that runs on another thread.
 */
RETURN_TYPE Movo_NET_InstallCallback(kest_sint32 appid, MovoNetCallback_t callback, void* context, int* cbid);

/**
 * Takes the callback away; when this returns, no callback runs on another thread and none will.
 *
 * @param[in] appid  Ignored.
 * @param[in] cbid   Ignored.
 *
 * @retval 0  Nobody is called any more.
 * @retval 1  The glue was stopped.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    callbackListLock; waits for a callback that runs on another thread.
 */
RETURN_TYPE Movo_NET_UnInstallCallback(kest_sint32 appid, int cbid);

/**
 * Allots the glue to clients of the platform, replacing the earlier count.
 *
 * @param[in] resid       Must be PLFRes_netlink.
 * @param[in] nbrclients  At most 1.
 * @param[in] appid       Id of the client, read when `nbrclients` is 1; NULL is passed over.
 *
 * @retval 0  Stored.
 * @retval 1  Another resource, or too many clients; reported on standard output with a backtrace.
 *
 * @par Threads  Any, also from inside the callback; the platform allots from one thread.
 * @par Locks    None.
 */
RETURN_TYPE Movo_NET_SetResourceAllocation(kest_sint32 resid, kest_sint32 nbrclients, kest_sint32* appid);

/**
 * Allots the glue to more clients of the platform, on top of the earlier count.
 *
 * @param[in] resid       Must be PLFRes_netlink.
 * @param[in] nbrclients  Clients to add; the sum must not exceed 1.
 * @param[in] appid       Id of the client, read when the count grew; NULL is passed over.
 *
 * @retval 0  Stored.
 * @retval 1  Another resource, or too many clients; reported on standard output with a backtrace.
 *
 * @par Threads  Any, also from inside the callback; the platform allots from one thread.
 * @par Locks    None.
 */
RETURN_TYPE Movo_NET_SetClientResourceAllocation(kest_sint32 resid, kest_sint32 nbrclients, kest_sint32* appid);

#ifdef __cplusplus
}
#endif

#endif
