/** Types of the network glue that applications see. Usable from C and C++. */
#ifndef MOVO_NET_TYPES_H
#define MOVO_NET_TYPES_H

#include <kest.h>

#ifdef __cplusplus
#define MOVO_NET_ENUM32 : int
#else
#define MOVO_NET_ENUM32
#endif

/** Result of most calls: 0 success, 1 failure, 3 buffer too small, 4 out of memory, 5 invalid argument, 6 not
 * supported. */
typedef kest_sint32 RETURN_TYPE;

/** What an interface is; the value chooses its back end. */
typedef enum MovoNetIfaceType_e MOVO_NET_ENUM32 {
    _MOVO_NET_IFACE_LO_ = 0,
    _MOVO_NET_IFACE_ETHER_ = 1,
    _MOVO_NET_IFACE_WIFI_ = 2
} MovoNetIfaceType_e;

/** How an interface gets its IPv4 configuration. */
typedef enum MovoNetIPMode_e MOVO_NET_ENUM32 {
    _MOVO_NET_IPMODE_DHCP_ = 0,
    _MOVO_NET_IPMODE_AUTOIP_ = 1,
    _MOVO_NET_IPMODE_STATIC_ = 2,
    _MOVO_NET_IPMODE_DNSONLY_ = 3
} MovoNetIPMode_e;

/** State of an interface's address. */
typedef enum MovoNetIPStatus_e MOVO_NET_ENUM32 {
    _MOVO_NET_IPSTATUS_NONE_ = 0,
    _MOVO_NET_IPSTATUS_STATIC_ = 1,
    _MOVO_NET_IPSTATUS_DHCP_ACQUIRING_ = 2,
    _MOVO_NET_IPSTATUS_DHCP_GOT_ = 3,
    _MOVO_NET_IPSTATUS_DHCP_RELEASED_ = 4,
    _MOVO_NET_IPSTATUS_DHCP_AUTOIP_ = 5
} MovoNetIPStatus_e;

/** Security of a Wi-Fi network. */
typedef enum MovoNetWifiSecurity_e MOVO_NET_ENUM32 {
    _MOVO_NET_WIFI_SECURITY_OPEN_ = 0,
    _MOVO_NET_WIFI_SECURITY_SHARED_ = 1,
    _MOVO_NET_WIFI_SECURITY_WPA2_PSK_ = 2,
    _MOVO_NET_WIFI_SECURITY_WPA_PSK_ = 3,
    _MOVO_NET_WIFI_SECURITY_WPA_PSK_A2_ = 4,
    _MOVO_NET_WIFI_SECURITY_WPA_ = 5
} MovoNetWifiSecurity_e;

/** Security of a Wi-Fi network as a person is asked for it. */
typedef enum MovoNetWifiUISecurity_e MOVO_NET_ENUM32 {
    _MOVO_NET_WIFI_UI_NONE_ = 0,
    _MOVO_NET_WIFI_UI_WEP_ = 1,
    _MOVO_NET_WIFI_UI_MIX_ = 2,
    _MOVO_NET_WIFI_UI_DEFAULT_ = 3
} MovoNetWifiUISecurity_e;

/** Cipher of a Wi-Fi network. */
typedef enum MovoNetWifiEncryption_e MOVO_NET_ENUM32 {
    _MOVO_NET_WIFI_ENCRYP_NONE_ = 0,
    _MOVO_NET_WIFI_ENCRYP_WEP_ = 1,
    _MOVO_NET_WIFI_ENCRYP_WEP_RYP_TKIP_ = 2,
    _MOVO_NET_WIFI_ENCRYP_AES_ = 3,
    _MOVO_NET_WIFI_ENCRYP_TKIPAES_ = 4
} MovoNetWifiEncryption_e;

/** Ways of Wi-Fi protected set-up. */
typedef enum MovoNetWifiWPSMode_e MOVO_NET_ENUM32 {
    _MOVO_NET_WIFI_WPS_NONE_ = 0,
    _MOVO_NET_WIFI_WPS_PBC_ = 1,
    _MOVO_NET_WIFI_WPS_PIN = 2,
    _MOVO_NET_WIFI_WPS_PBC_PIN = 3
} MovoNetWifiWPSMode_e;

/** The Wi-Fi chips that the glue knows. */
typedef enum MovoNetWifiDevType_e MOVO_NET_ENUM32 {
    _MOVO_NET_WIFI_UNKNOWN_ = 0,
    _MOVO_NET_WIFI_ATHEROS_ = 1,
    _MOVO_NET_WIFI_REALTEK_8188EU_ = 2,
    _MOVO_NET_WIFI_REALTEK_8812AU_ = 3,
    _MOVO_NET_WIFI_BRCM_43242_ = 4,
    _MOVO_NET_WIFI_BRCM_43569_ = 5,
    _MOVO_NET_WIFI_BRCM_LITEON_43569_ = 6
} MovoNetWifiDevType_e;

/**
 * Why the application is called back; the record names the interface.
 *
 * WIFIBADKEY is about the network that was being joined, whose name no call returns. It is that of the last
 * `Movo_NET_WifiConnectEss` or `Movo_NET_WifiStartWpsConnection` that returned 0: keep it. It also comes when nobody
 * asked for a join: for a network that was joined, then lost, and is being joined again; and after an interface came
 * up, for a remembered network that it rejoins by itself, and again 30 s later. One failed handshake is enough, and a
 * disturbed radio can fail it with the right key: try a key that has worked before once more. The network is removed
 * when the callback returns; what is remembered stays.
 */
typedef enum MovoNetCBReason_e MOVO_NET_ENUM32 {
    /** An interface was brought up: its cable is in, or its Wi-Fi is ready. Comes after the report of a static address.
     */
    _MOVO_NET_CALLBACK_IFFOUND_ = 0,
    /** The cable was pulled, or the Wi-Fi interface went away. The address goes after the callback. */
    _MOVO_NET_CALLBACK_IFREMOVED_ = 1,
    /** A Wi-Fi network was left or lost, or a lease was lost or did not come within 90 s. */
    _MOVO_NET_CALLBACK_IFDISCONNECTED_ = 2,
    /** A Wi-Fi network was joined. It has no address yet. */
    _MOVO_NET_CALLBACK_IFCONNECTED_ = 3,
    /** Never sent. */
    _MOVO_NET_CALLBACK_IFACTIVED_ = 4,
    /** Never sent. */
    _MOVO_NET_CALLBACK_IFDEACTIVED_ = 5,
    /** The address may be another one: read it. Mostly STATICIP_SUCCESS or DHCP_SUCCESS follows. */
    _MOVO_NET_CALLBACK_IPCHANGED_ = 6,
    /** A scan has ended: `Movo_NET_WifiUpdateEsss` reads what it found. */
    _MOVO_NET_CALLBACK_WIFISCANDONE_ = 7,
    /** `Movo_NET_WifiUpdateEsss` has read the table of networks. */
    _MOVO_NET_CALLBACK_WIFIESSSUPDATED_ = 8,
    /** A network refused the key; see above. */
    _MOVO_NET_CALLBACK_WIFIBADKEY_ = 9,
    /** A network was not joined in time, or gave no address. It is removed. */
    _MOVO_NET_CALLBACK_WIFITIMEOUT_ = 10,
    /** A device joined the soft access point. */
    _MOVO_NET_CALLBACK_SOFTAPSCAN_ = 11,
    /** The soft access point's list of leases was written. */
    _MOVO_NET_CALLBACK_SOFTAPCONNECTED_ = 12,
    /** A device left the soft access point. */
    _MOVO_NET_CALLBACK_SOFTAPDISCONNECTED_ = 13,
    /** A static configuration was applied. Why it may come twice: `Movo_NET_ConfigIPStatic`. */
    _MOVO_NET_CALLBACK_STATICIP_SUCCESS_ = 14,
    /** A static configuration was refused at some step; the steps before it stay. */
    _MOVO_NET_CALLBACK_STATICIP_FAILED_ = 15,
    /** There is a lease. */
    _MOVO_NET_CALLBACK_DHCP_SUCCESS_ = 16,
    /** After a change of mode or addresses: no DHCP client could be started, or no Wi-Fi network is joined. */
    _MOVO_NET_CALLBACK_DHCP_FAILED_ = 17
} MovoNetCBReason_e;

/** Platform resources; the glue accepts this one alone. */
enum { PLFRes_netlink = 65536 };

/** One interface; only its name, the first member, is for applications: `(const char*)record`. */
typedef struct MovoNetIface_t MovoNetIface_t;

/**
 * The application's callback.
 *
 * @param[in] reason   Why it is called.
 * @param[in] context  What was given to `Movo_NET_InstallCallback`.
 * @param[in] param    The record (`MovoNetIface_t*`) of the interface that it is about, owned by the glue and valid as
 * long as the process lives. The soft access point's is in no list.
 *
 * @par Threads  Called on whichever thread reports: the event loop, a configuration thread, or the thread of a public
 * call. Two callbacks never overlap. Every public function may be called from inside, except `Movo_NET_Glue_Init`,
 * `Movo_NET_Glue_Exit` and `WaitForChild2Exit`.
 * @par Locks    callbackListLock is held, and the event loop is held off: a callback must not wait for another event.
 * Never hold a lock of your own in a call of the glue when your callback takes that lock: many calls wait for a
 * callback that runs, which then waits for you; and many call back on the calling thread.
 */
typedef void (*MovoNetCallback_t)(MovoNetCBReason_e reason, void* context, void* param);

#endif
