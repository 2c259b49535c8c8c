/**
 * The network glue of a television: the one header that an application includes.
 *
 * The first questions, and where the whole answer stands:
 *
 * - The logger needs no set-up. `kest_debug_init` (kest.h) only reads how much is logged.
 * - Start with `Movo_NET_Glue_Init`, then install the callback, then look at the interfaces once: what was reported
 *   before is their state by then (movo_net_core.h).
 * - The Wi-Fi interface is the one of type `_MOVO_NET_IFACE_WIFI_`, named mlan0 (`Movo_NET_GetIfaceType`).
 * - A static address: `Movo_NET_ConfigIPStatic` first, then `Movo_NET_ConfigIPMode`; STATICIP_SUCCESS may come twice
 *   (movo_net_ip.h).
 * - What each callback means, and which network WIFIBADKEY is about: MovoNetCBReason_e (movo_net_types.h).
 *
 * examples/listen.c is a whole application.
 */
#ifndef MOVO_NET_H
#define MOVO_NET_H

#include "movo_net_core.h"
#include "movo_net_ess.h"
#include "movo_net_hostap.h"
#include "movo_net_iface.h"
#include "movo_net_ip.h"
#include "movo_net_types.h"
#include "movo_net_wifi.h"

#endif
