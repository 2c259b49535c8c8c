/**
 * Interfaces: which there are, and whether they are used. Usable from C and C++.
 *
 * An interface is called by its kernel name, at most 8 characters; a NULL name is the name of no interface. Before the
 * start and after the stop each call does nothing and returns what its comment says of a glue that does not run.
 */
#ifndef MOVO_NET_IFACE_H
#define MOVO_NET_IFACE_H

#include "movo_net_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Counts the interfaces, the loopback one included. Interfaces of an earlier run that are gone count too.
 *
 * @param[in]  appid   Ignored.
 * @param[out] retval  The number; untouched unless 0 is returned.
 *
 * @retval 0  Counted.
 * @retval 1  The glue does not run.
 * @retval 5  `retval` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock.
 */
RETURN_TYPE Movo_NET_GetNumOfIfaces(kest_sint32 appid, int* retval);

/**
 * Reads the name of an interface by its position.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifidx   Position from 0 on. A negative one returns 0 and writes nothing, unless there is no interface.
 * @param[in]  length  Characters that `retval` takes besides the end mark: it must have room for `length` + 1 bytes.
 * @param[out] retval  The name with its end mark; untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run, or has fewer interfaces.
 * @retval 3  The name has more than `length` characters.
 * @retval 5  `retval` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock.
 */
RETURN_TYPE Movo_NET_GetIfaceName(kest_sint32 appid, int ifidx, int length, char* retval);

/**
 * Reads what an interface is. The Wi-Fi interface is the one that the kernel listed in `/proc/net/wireless` when the
 * glue first saw it; the configuration file keeps that. There is one, mlan0: the supplicant's socket has that name.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  The interface.
 * @param[out] retval  Its type; untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run, or has no such interface.
 * @retval 5  `retval` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_GetIfaceType(kest_sint32 appid, const char* ifname, MovoNetIfaceType_e* retval);

/**
 * Reads an interface's MAC address: the one it was activated with, else the kernel's.
 *
 * @param[in]     appid    Ignored.
 * @param[in]     ifname   The interface.
 * @param[in,out] macaddr  The address in the six lowest-addressed bytes, first octet first; the other two keep what
 * they hold, so initialise it. The six are 0 when the kernel does not tell.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run, has no such interface, or cannot tell.
 * @retval 5  `macaddr` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_GetIfaceMacAddress(kest_sint32 appid, const char* ifname, long long* macaddr);

/**
 * Reads an interface's throughput. No interface of this glue knows it: 0 is written and 1 is returned.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  The interface.
 * @param[out] retval  The figure.
 *
 * @retval 1  The glue does not run, has no such interface, or does not know.
 * @retval 5  `retval` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_GetIfaceThroughput(kest_sint32 appid, const char* ifname, int* retval);

/**
 * Marks an interface as wanted, saves the configuration and brings the interface up if it can be.
 *
 * @param[in] appid   Ignored.
 * @param[in] ifname  The interface.
 *
 * @retval 0  Being brought up, or up before.
 * @retval 1  The glue does not run or has no such interface; or it could not be brought up, or is not available (no
 * cable): it is marked and saved all the same.
 *
 * @par Threads    Any, also from inside the callback. Takes as long as a flash write and the start of the DHCP client.
 * @par Locks      ifaceListLock during look-up and flash write only; eventListLock while the DHCP client's pipe is
 * opened, or route and resolver of a static address are set.
 * @par Callbacks  With a static address IPCHANGED and STATICIP_SUCCESS or STATICIP_FAILED before it returns; with DHCP
 * IPCHANGED and DHCP_SUCCESS when there is a lease.
 */
RETURN_TYPE Movo_NET_EnableIface(kest_sint32 appid, const char* ifname);

/**
 * Marks an interface as not wanted and takes it down; the default route moves to the best of the others. Not saved.
 * The interface comes back by itself when its cable is pulled and returned. A retry that is due after a lost lease (at
 * most 10 minutes later) starts the DHCP client of a wired interface again, and with its lease the interface is
 * connected. When its cable is pulled after that, its default route and name servers stay until another interface gets
 * an address or is taken down.
 *
 * @param[in] appid   Ignored.
 * @param[in] ifname  The interface.
 *
 * @retval 0  Down.
 * @retval 1  The glue does not run, has no such interface, or could not move the default route.
 *
 * @par Threads  Any, also from inside the callback. Waits for the DHCP client's end, 2 s at the most.
 * @par Locks    ifaceListLock during the look-up only; eventListLock while a DHCP client's pipe is closed, while route
 * and resolver move, and while a wireless interface is taken down.
 */
RETURN_TYPE Movo_NET_DisableIface(kest_sint32 appid, const char* ifname);

/**
 * Marks every wanted interface as not wanted, stops its DHCP client and forgets its address and priority. The kernel
 * keeps the address and the default route. Not saved.
 *
 * @param[in] appid  Ignored.
 *
 * @retval 0  Done.
 * @retval 1  The glue does not run.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    eventListLock while an interface is taken down; none while the interfaces are gone through.
 */
RETURN_TYPE Movo_NET_DisableAllIfaces(kest_sint32 appid);

/**
 * Tells whether an interface is wanted.
 *
 * @param[in] appid   Ignored.
 * @param[in] ifname  The interface.
 *
 * @return 1 when it is, or when the glue does not run; 0 when it is not, or when there is no such interface.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock during the look-up only.
 */
kest_bool Movo_NET_IsEnabledIface(kest_sint32 appid, const char* ifname);

/**
 * Tells whether an interface is wanted and up.
 *
 * @param[in] appid   Ignored.
 * @param[in] ifname  The interface.
 *
 * @return 1 when it is, or when the glue does not run; 0 when it is not, or when there is no such interface.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock during the look-up only.
 */
kest_bool Movo_NET_IsActivedIface(kest_sint32 appid, const char* ifname);

/**
 * Finds the interface of highest priority that is up, the loopback one left out; the earliest of equals.
 *
 * @param[in]  appid   Ignored.
 * @param[out] retval  Its position, for `Movo_NET_GetIfaceName`; -1 when none is up. Untouched unless 0 is returned.
 *
 * @retval 0  Written.
 * @retval 1  The glue does not run.
 * @retval 5  `retval` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock.
 */
RETURN_TYPE Movo_NET_GetActivedIface(kest_sint32 appid, int* retval);

/**
 * Tells the type of the interface that `Movo_NET_GetActivedIface` finds.
 *
 * @param[in]  appid   Ignored.
 * @param[out] retval  The type; untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run, or no interface is up.
 * @retval 5  `retval` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
RETURN_TYPE Movo_NET_GetActivedIfaceType(kest_sint32 appid, MovoNetIfaceType_e* retval);

/**
 * Tells whether an interface has a link: a wired one a cable, as its PHY says.
 *
 * @param[in] appid   Ignored.
 * @param[in] ifname  The interface.
 *
 * @return 0 when there is surely none; 1 when there is one, when the PHY does not answer, when the glue does not run,
 * or when there is no such interface.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock during the look-up only.
 */
kest_bool Movo_NET_IsPhyConnected(kest_sint32 appid, const char* ifname);

/**
 * Sets an interface's priority, saves the configuration and moves default route and resolver to the best connected
 * interface. The priority lasts until the interface gets another address, which sets it to 2 (wired) or 1.
 *
 * @param[in] appid     Ignored.
 * @param[in] ifname    The interface.
 * @param[in] priority  Any number; the highest wins.
 *
 * @retval 0  Set.
 * @retval 1  The glue does not run or has no such interface; or route or resolver could not be written, the priority
 * is set all the same.
 *
 * @par Threads  Any, also from inside the callback. Takes as long as a flash write.
 * @par Locks    ifaceListLock during look-up, flash write and choice only; eventListLock while route and resolver move.
 */
RETURN_TYPE Movo_NET_SetIfacePriority(kest_sint32 appid, const char* ifname, int priority);

/**
 * Reads an interface's priority.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  The interface.
 * @param[out] retval  The priority; untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run, or has no such interface.
 * @retval 5  `retval` is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_GetIfacePriority(kest_sint32 appid, const char* ifname, int* retval);

/**
 * Does nothing; there is no filter.
 *
 * @param[in] appid   Ignored.
 * @param[in] ifname  Ignored.
 *
 * @retval 0  Always, also before the start.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
RETURN_TYPE Movo_NET_FilterOutIF(kest_sint32 appid, const char* ifname);

/**
 * Lets a network card wake the set when a magic packet arrives, or forbids it. The driver keeps it, nothing is saved.
 *
 * @param[in] appid       Ignored.
 * @param[in] ifname      Any kernel interface, known to the glue or not; at most 15 characters count.
 * @param[in] wol_enable  1 to allow it, any other value to forbid it.
 *
 * @retval 0  The driver took it.
 * @retval 1  The glue does not run, or the driver did not take it.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
RETURN_TYPE Movo_NET_SetWol(kest_sint32 appid, const char* ifname, kest_bool wol_enable);

#ifdef __cplusplus
}
#endif

#endif
