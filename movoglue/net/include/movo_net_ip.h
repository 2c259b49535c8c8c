/**
 * IPv4 configuration of interfaces, and whether the network works. Usable from C and C++.
 *
 * An interface is called by its kernel name, at most 8 characters; a NULL name is the name of no interface. Before the
 * start and after the stop each call does nothing and returns what its comment says of a glue that does not run.
 * Addresses, masks, gateways and name servers are in network byte order.
 */
#ifndef MOVO_NET_IP_H
#define MOVO_NET_IP_H

#include "movo_net_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Changes how an interface gets its address, saves the configuration and configures an active interface anew on a
 * thread of its own. The mode that is set already is left alone: nothing is saved, configured or reported. For a static
 * address call `Movo_NET_ConfigIPStatic` first: what is stored when the thread gets there is applied.
 *
 * @param[in] appid   Ignored.
 * @param[in] ifname  The interface.
 * @param[in] mode    DHCP, auto-IP, static or DNS-only; the last two take the addresses of `Movo_NET_ConfigIPStatic`.
 * Any other value is kept and configures as DHCP.
 *
 * @retval 0  Set, and being configured.
 * @retval 1  The glue does not run or has no such interface; or there is no thread: the mode is set and saved all the
 * same.
 *
 * @par Threads    Any, also from inside the callback. Takes as long as a flash write.
 * @par Locks      ifaceListLock during look-up and flash write only.
 * @par Callbacks  On an active interface, from another thread: IPCHANGED, then STATICIP_SUCCESS or STATICIP_FAILED; or
 * DHCP_FAILED; or IPCHANGED and DHCP_SUCCESS when there is a lease.
 */
RETURN_TYPE Movo_NET_ConfigIPMode(kest_sint32 appid, const char* ifname, MovoNetIPMode_e mode);

/**
 * Reads how an interface gets its address.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  The interface.
 * @param[out] retval  The mode; untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run, or has no such interface.
 * @retval 5  `retval` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_GetIPMode(kest_sint32 appid, const char* ifname, MovoNetIPMode_e* retval);

/**
 * Reads the state of an interface's address.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  The interface.
 * @param[out] retval  The state; untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run, or has no such interface.
 * @retval 5  `retval` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_GetIPStatus(kest_sint32 appid, const char* ifname, MovoNetIPStatus_e* retval);

/**
 * Reads an interface's current addresses; of an interface that is not connected all are 0.
 *
 * @param[in]  appid    Ignored.
 * @param[in]  ifname   The interface.
 * @param[out] ip       Address.
 * @param[out] mask     Mask.
 * @param[out] gateway  Default gateway.
 * @param[out] dns1     First name server.
 * @param[out] dns2     Second name server. All five are untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run, or has no such interface.
 * @retval 5  One of the five is NULL; also when the glue does not run.
 *
 * @par Threads  Any, also from inside the callback. An address that changes meanwhile may be read half old, half new.
 * @par Locks    ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_GetIP(kest_sint32 appid, const char* ifname, unsigned int* ip, unsigned int* mask,
                           unsigned int* gateway, unsigned int* dns1, unsigned int* dns2);

/**
 * Stores the addresses of the static modes, saves the configuration and configures an active interface anew on a thread
 * of its own, whatever its mode; the mode is not changed. A lease overwrites what was stored. While a DHCP client runs,
 * the kernel's address is cleared, and stays so until the client sets one again.
 *
 * From DHCP to a static address: this first, `Movo_NET_ConfigIPMode` right after it. In the other order the addresses
 * of the last lease, or none, may be applied before these. Each of the two calls has its own thread, one after the
 * other, and each applies what is stored when its turn comes: mostly both find the static mode and these addresses, so
 * that STATICIP_SUCCESS comes twice. Do not count them; read `Movo_NET_GetIP` at each. In a static mode this call alone
 * is enough, and STATICIP_SUCCESS comes once.
 *
 * @param[in] appid    Ignored.
 * @param[in] ifname   The interface.
 * @param[in] ip       Address; its first octet must not be 0 or 255, or else STATICIP_FAILED follows.
 * @param[in] mask     Mask.
 * @param[in] gateway  Default gateway; as for the address.
 * @param[in] dns1     First name server.
 * @param[in] dns2     Second name server; one of the two must be as the address.
 *
 * @retval 0  Stored, being saved and configured.
 * @retval 1  The glue does not run or has no such interface; or there is no thread: stored, but not saved.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 * @par Callbacks  As for `Movo_NET_ConfigIPMode`; of a DHCP client that runs already, IPCHANGED alone.
 */
RETURN_TYPE Movo_NET_ConfigIPStatic(kest_sint32 appid, const char* ifname, unsigned int ip, unsigned int mask,
                                    unsigned int gateway, unsigned int dns1, unsigned int dns2);

/**
 * Reads the stored addresses of an interface's static modes.
 *
 * @param[in]  appid    Ignored.
 * @param[in]  ifname   The interface.
 * @param[out] ip       Address; NULL when it is not wanted, as all five.
 * @param[out] mask     Mask.
 * @param[out] gateway  Default gateway.
 * @param[out] dns1     First name server.
 * @param[out] dns2     Second name server. All five are untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run, or has no such interface.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_GetIPStatic(kest_sint32 appid, const char* ifname, unsigned int* ip, unsigned int* mask,
                                 unsigned int* gateway, unsigned int* dns1, unsigned int* dns2);

/**
 * Tells whether an interface has an address: a static one that was applied, or was refused, or a lease.
 *
 * @param[in]  appid        Ignored.
 * @param[in]  ifname       The interface.
 * @param[out] isConnected  1 when it has, else 0; untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run, or has no such interface.
 * @retval 5  `isConnected` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_IsConnected(kest_sint32 appid, const char* ifname, kest_bool* isConnected);

/**
 * Tells whether the system's resolver file names a server. It does not ask the server.
 *
 * @param[in] appid   Ignored.
 * @param[in] ifname  Ignored: the resolver is the whole system's.
 *
 * @return 1 when it does, or when the glue does not run; else 0.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
kest_bool Movo_NET_IsDNSOK(kest_sint32 appid, const char* ifname);

/**
 * Tells whether an interface other than the loopback one is up and connected, and the resolver file names a server.
 *
 * @param[in] appid  Ignored.
 *
 * @return 1 when both are so; else 0, also when the glue does not run.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
kest_bool Movo_NET_IsNetworkOK(kest_sint32 appid);

/**
 * Gives up the address of a connected interface: takes a wired one down, disconnects a wireless one.
 *
 * @param[in] appid   Ignored.
 * @param[in] ifname  The interface.
 *
 * @retval 0  Given up, or there was none.
 * @retval 1  The glue does not run, has no such interface, or could not move the default route.
 *
 * @par Threads    Any, also from inside the callback. Waits for the DHCP client's end, 2 s at the most.
 * @par Locks      ifaceListLock during the look-up only; eventListLock while a DHCP client's pipe is closed and while
 * route and resolver move.
 * @par Callbacks  Wireless: as for `Movo_NET_WifiDisConnect`.
 */
RETURN_TYPE Movo_NET_ClearIP(kest_sint32 appid, const char* ifname);

#ifdef __cplusplus
}
#endif

#endif
