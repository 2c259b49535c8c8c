/** The network glue of the set: the one header that an application includes. */
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
