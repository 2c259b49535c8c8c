/** The soft access point, who joins it, and wake-up over Wi-Fi. Usable from C and C++. */
#ifndef MOVO_NET_HOSTAP_H
#define MOVO_NET_HOSTAP_H

#include "movo_net_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What the soft access point's network looks like. */
typedef struct MovoHotspotconfig_t {
    char Ssid[33];          /**< Its name; keeps the line end that the set's name property has. */
    unsigned char Bssid[6]; /**< First byte first. */
    kest_bool Hidden;
} MovoHotspotconfig_t;

/** A device that has an address from the soft access point; texts, empty when unknown. */
typedef struct Softap_Connection_info_t {
    char timestamp[32]; /**< When its lease ends, seconds since 1970. */
    char macaddr[24];
    char ipaddr[24];
    char devicename[128];
    char packetmac[32]; /**< Its DHCP client identifier. */
} Softap_Connection_info_t;

/**
 * The first device of the list of leases when the list was last written; all empty when it was empty. Written by the
 * glue before SOFTAPCONNECTED is sent, never while a callback runs: read it inside a callback.
 */
extern Softap_Connection_info_t softap_connectinfo;

/**
 * Starts the soft access point on a thread of its own: up to 20 s go by while the set has no name yet.
 *
 * @param[in] appid  Ignored.
 *
 * @retval 0  Being started, or started before; `Movo_Net_WiFi_HostAP_Status` tells when.
 * @retval 1  There is no thread.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      None.
 * @par Callbacks  SOFTAPCONNECTED each time the list of leases is written, also when it is emptied: a device that gets
 * an address may bring two, of which the first finds no device. Each start keeps watching the list, also after a stop:
 * after k starts a device brings 2k, from the eighth start on 16. They come on threads with a stack of 256 KB.
 * SOFTAPSCAN and SOFTAPDISCONNECTED as the platform tells. Their parameter begins with the name bcm0; it belongs to no
 * listed interface.
 */
RETURN_TYPE Movo_Net_WiFi_HostAP_Start(int appid);

/**
 * Stops the soft access point and takes its interface away.
 *
 * @param[in] appid  Ignored.
 *
 * @retval 0  Stopped, now or before. A start that still looks for a name goes on.
 * @retval 1  A step failed; it may be tried again.
 *
 * @par Threads  Any, also from inside the callback. Waits for the platform's switches.
 * @par Locks    None.
 */
RETURN_TYPE Movo_Net_WiFi_HostAP_Stop(int appid);

/**
 * Tells whether the soft access point is up.
 *
 * @param[in] appid  Ignored.
 *
 * @return 1 when it is, else 0.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
kest_bool Movo_Net_WiFi_HostAP_Status(int appid);

/**
 * Tells what the soft access point's network looks like; a usual name and no address while it is not up.
 *
 * @param[in]  appid   Ignored.
 * @param[out] config  The caller's; NULL is passed over.
 *
 * @retval 0  Always.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
RETURN_TYPE Movo_Net_WiFi_HostAP_Config(int appid, MovoHotspotconfig_t* config);

/**
 * Arms the Wi-Fi chip for wake-up before standby. It is never disarmed.
 *
 * @param[in] appid   Ignored.
 * @param[in] iface   Ignored.
 * @param[in] wakeup  Ignored.
 *
 * @retval 0  Armed.
 * @retval 1  The chip's tool failed.
 *
 * @par Threads  Any, also from inside the callback. Waits for the tool.
 * @par Locks    None.
 */
RETURN_TYPE Movo_Net_WiFi_Wakeup(int appid, char* iface, kest_bool wakeup);

#ifdef __cplusplus
}
#endif

#endif
