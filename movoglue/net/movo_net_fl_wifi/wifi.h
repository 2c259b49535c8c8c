/** The back end of wireless interfaces. */
#ifndef MOVO_NET_FL_WIFI_WIFI_H
#define MOVO_NET_FL_WIFI_WIFI_H

#include "movo_net_internal.h"

extern "C" {

/** Set while a connection that the application asked for has no address yet. Read and written atomically. */
extern kest_bool g_isWifiConnectByUI;

/** Adds the wireless operations to a record. This build has none: 1. */
RETURN_TYPE int_Movo_Net_InitWifi(MovoNetIface_t* pIface);

} // extern "C"

#endif
