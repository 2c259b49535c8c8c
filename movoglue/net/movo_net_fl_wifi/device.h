/** Which Wi-Fi chip is fitted; its names come from the board's environment. Stateless, any thread, no locks. */
#ifndef MOVO_NET_FL_WIFI_DEVICE_H
#define MOVO_NET_FL_WIFI_DEVICE_H

#include "movo_net_internal.h"

extern "C" {

/** Kernel driver, USB id and supplicant command template of a chip; the environment's own text, NULL when not set. */
const char* int_Wifi_GetDrvName(MovoNetWifiDevType_e type);
const char* int_Wifi_GetDevID(MovoNetWifiDevType_e type);
const char* int_Wifi_GetWpaSupplicantStr(MovoNetWifiDevType_e type);

/** Probes one chip with a shell command; 0 for a NULL name or a chip that is not configured. */
kest_bool int_Wifi_IsDevAvailable(const char* ifname, MovoNetWifiDevType_e type);

/** The first chip found, in the order of probing; unknown when there is none. */
MovoNetWifiDevType_e int_Wifi_GetDevType(const char* ifname);

} // extern "C"

#endif
