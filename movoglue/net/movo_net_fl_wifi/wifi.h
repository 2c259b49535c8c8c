/** The back end of wireless interfaces: its life, and the questions about scanned networks. */
#ifndef MOVO_NET_FL_WIFI_WIFI_H
#define MOVO_NET_FL_WIFI_WIFI_H

#include "movo_net_fl_wifi/ess.h"
#include "movo_net_internal.h"
#include "support/log.h"

namespace movonet {
/** Gives back what a failed initialisation left attached to a record that was never listed. */
void discardWifi(MovoNetIface_t& iface);

/**
 * The checks with which every operation on the scanned networks begins: 0, 5 for a NULL record (reported under `at`) or
 * one without back end, 1 when the interface is not active (logged for the module `log` under `at`).
 */
RETURN_TYPE checkActiveWifi(MovoNetIface_t* pIface, const LogModule& log, CallSite at = CallSite::current());
} // namespace movonet

// Unless told otherwise these return 0, 1 for an inactive interface, an unknown network or a failed lock, and 5 for a
// NULL argument or a record without wireless back end. Any thread; the readers take no lock but essTableLock.
extern "C" {

/** Set while a connection that the application asked for has no address yet. Read and written atomically. */
extern kest_bool g_isWifiConnectByUI;

/** Adds the wireless back end to a record, with the remembered networks as its first table. 0, or 1. */
RETURN_TYPE int_Movo_Net_InitWifi(MovoNetIface_t* pIface);

/** Forgets the remembered networks (not their file) and the supplicant link; stops nothing. 0, 1 or 5. */
RETURN_TYPE int_Movo_Net_DeInitWifi(MovoNetIface_t* pIface);

/** A wireless interface can always be activated: 1. */
int int_Movo_Net_CanActiveWifi(MovoNetIface_t* pIface);

/** Not supported: 1. */
RETURN_TYPE int_Movo_Net_WifiGetThroughput(MovoNetIface_t* pIface, std::int32_t* throughput);

/** Number of scanned networks. */
RETURN_TYPE int_Movo_NET_WifiGetNumOfEsss(MovoNetIface_t* pIface, std::int32_t* num);

/** Name by index: exactly 32 bytes are written, without an end mark when the name fills them. */
RETURN_TYPE int_Movo_NET_WifiGetSsidEss(MovoNetIface_t* pIface, std::int32_t essidx, char* ssid);

/** Name of the joined network in a buffer of `len` bytes; 0 and untouched when none is joined. */
RETURN_TYPE int_Movo_NET_WifiGetConnectedEss(MovoNetIface_t* pIface, char* essid, std::int32_t len);

/** The WPS mode last started. */
RETURN_TYPE int_Movo_NET_WifiGetWpsModeEss(MovoNetIface_t* pIface, MovoNetWifiWPSMode_e* mode);

/** The chip found at activation. */
RETURN_TYPE int_Movo_NET_WifiGetDevType(MovoNetIface_t* pIface, MovoNetWifiDevType_e* devType);

/** Facts of the first scanned network of that name; signal in dBm, frequency in MHz. */
RETURN_TYPE int_Movo_NET_WifiGetBssidEss(MovoNetIface_t* pIface, const char* essid, std::int64_t* macaddr);
RETURN_TYPE int_Movo_NET_WifiGetSignalEss(MovoNetIface_t* pIface, const char* essid, std::int32_t* signal);
RETURN_TYPE int_Movo_NET_WifiIsWPS(MovoNetIface_t* pIface, const char* essid, kest_bool* bWPS);
RETURN_TYPE int_Movo_NET_WifiGetEncryptionEss(MovoNetIface_t* pIface, const char* essid, MovoNetWifiEncryption_e* type);
RETURN_TYPE int_Movo_NET_WifiGetSecurityEss(MovoNetIface_t* pIface, const char* essid, MovoNetWifiSecurity_e* type);
RETURN_TYPE int_Movo_NET_WifiGetFrequencyEss(MovoNetIface_t* pIface, const char* essid, std::int32_t* frequency);
RETURN_TYPE int_Movo_NET_WifiGetChannelEss(MovoNetIface_t* pIface, const char* essid, std::int32_t* channel);
RETURN_TYPE int_Movo_NET_WifiGetPriorityEss(MovoNetIface_t* pIface, const char* essid, std::int32_t* priority);

/** Sets the priority, 0 to 7 (else 5), of a scanned network; the remembered one keeps its own. */
RETURN_TYPE int_Movo_NET_WifiSetPriorityEss(MovoNetIface_t* pIface, const char* essid, std::int32_t priority);

/** Joins a scanned network; the result of `int_Movo_Net_Wpactrl_Connect`. */
RETURN_TYPE int_Movo_NET_WifiConnectEss(MovoNetIface_t* pIface, const char* essid);

/** Starts WPS: push button, PIN, or both; the mode is kept. */
RETURN_TYPE int_Movo_NET_WifiStartWpsConnection(MovoNetIface_t* pIface, MovoNetWifiWPSMode_e mode, const char* pin);

} // extern "C"

#endif
