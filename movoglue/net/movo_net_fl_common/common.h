/** Operations that every interface has: initialisation, activation, addresses, DHCP. */
#ifndef MOVO_NET_FL_COMMON_COMMON_H
#define MOVO_NET_FL_COMMON_COMMON_H

#include "movo_net_internal.h"

namespace movonet {
/** Base path of the DHCP client's notify pipes; NULL until the first `int_Movo_Net_Init`. */
extern const char* s_sDhcpcdPipeName;

/** Tells whether an address can be a host's or a server's, judging by its first octet. */
bool isPlausible(std::uint32_t address);

/** Tells whether the interface's mode takes the stored addresses rather than a lease's. */
bool usesStaticAddress(const MovoNetIface_t& iface);

/** The priority of an interface that has an address: wired before wireless. */
int priorityWithAddress(const MovoNetIface_t& iface);

/** Forgets address, mask, gateway, name servers and priority, which belong to a connection. */
void clearAddresses(MovoNetIface_t& iface);

/** As ConfigIP, for an interface that the caller has seen active: one that is not any more stays down, which gives 0.
 */
RETURN_TYPE configureActive(MovoNetIface_t* pIface, kest_bool force);
} // namespace movonet

// A NULL record ends the process in all of these but ifconfig_up and int_Movo_Net_GetThroughput.
extern "C" {

/**
 * Resets a record and fills its operations by its type. IP mode, static addresses and the DHCP retry fields are kept.
 *
 * @retval 0  Ready.
 * @retval 1  The pipe name of the environment is too long (told once), the back end failed, or the type is unknown.
 */
RETURN_TYPE int_Movo_Net_Init(MovoNetIface_t* pIface);

/** Takes the interface down if it is active and ends its back end; the OR of both results. */
RETURN_TYPE int_Movo_Net_DeInit(MovoNetIface_t* pIface);

/** 1 for a loopback interface, else 0; back ends replace it. */
int int_Movo_Net_CanActive(MovoNetIface_t* pIface);

/** Brings the interface up, or takes it down. 0 done or nothing to do, 1 failed or not able to. */
RETURN_TYPE int_Movo_Net_Active(MovoNetIface_t* pIface, kest_bool isActive);

/** The getters copy a field: 0, or 5 for a NULL output. */
RETURN_TYPE int_Movo_Net_IsConnected(MovoNetIface_t* pIface, kest_bool* isConnected);
RETURN_TYPE int_Movo_Net_GetIpv4(MovoNetIface_t* pIface, std::uint32_t* ipv4);
RETURN_TYPE int_Movo_Net_GetMaskv4(MovoNetIface_t* pIface, std::uint32_t* maskv4);
RETURN_TYPE int_Movo_Net_GetGwv4(MovoNetIface_t* pIface, std::uint32_t* gwv4);
RETURN_TYPE int_Movo_Net_Getdnsv4(MovoNetIface_t* pIface, std::uint32_t* dns1v4, std::uint32_t* dns2v4);

/** Stores the static address; in a static mode and active also applies it and sends IPCHANGED. 1 when it is refused. */
RETURN_TYPE int_Movo_Net_SetIpv4(MovoNetIface_t* pIface, std::uint32_t ipv4);

/** Stores the static mask; in a static mode and active also applies it. 1 when it is refused. */
RETURN_TYPE int_Movo_Net_SetMaskv4(MovoNetIface_t* pIface, std::uint32_t mask);

/** Store the static gateway or servers, in a static mode also as the current ones; ResetGwAndDns applies them. 0. */
RETURN_TYPE int_Movo_Net_SetGwv4(MovoNetIface_t* pIface, std::uint32_t gateway);
RETURN_TYPE int_Movo_Net_Setdnsv4(MovoNetIface_t* pIface, std::uint32_t dns1, std::uint32_t dns2);

/**
 * Reads the MAC address into the six lowest-addressed bytes of `*pMac`: the record's if it has one, else the kernel's.
 *
 * @retval 0  Read.
 * @retval 1  The kernel does not tell; the six bytes are zeroed unless there was no socket.
 * @retval 5  `pMac` is NULL.
 */
RETURN_TYPE int_Movo_Net_GetMacAddr(MovoNetIface_t* pIface, std::int64_t* pMac);

/** Not supported: writes 0 and returns 1 all the same, 5 for a NULL output. */
RETURN_TYPE int_Movo_Net_GetThroughput(MovoNetIface_t* pIface, std::int32_t* throughput);

/** Brings any interface up. 0 done, 1 failed, 5 for a NULL or empty name. */
RETURN_TYPE ifconfig_up(const char* ifname);

/** Leaves the mark that tells the time client that there is an address. */
void NotifyNtpclient(void);

/**
 * Configures the address of an interface: applies the static one, or starts the DHCP client. When an interface that was
 * active is taken down meanwhile, by another thread or a callback, it stays down and nothing more is reported.
 *
 * @param[in] force  1 restarts a client that runs, 0 leaves it alone.
 *
 * @retval 0  Applied, refused (STATICIP_FAILED), the client runs, or the interface was taken down meanwhile.
 * @retval 1  The client could not be started.
 */
RETURN_TYPE ConfigIP(MovoNetIface_t* pIface, kest_bool force);

} // extern "C"

#endif
