/** The network that the supplicant learnt by WPS. */
#ifndef MOVO_NET_FL_WPACTRL_LEARNT_H
#define MOVO_NET_FL_WPACTRL_LEARNT_H

#include "movo_net_fl_wifi/ess.h"

extern "C" {

/**
 * Reads the first network of the supplicant's configuration and sets the configuration back to the shipped one.
 *
 * @param[in,out] pEss  All zero; filled with what the configuration tells, left so when it cannot be read.
 */
void Wpa_GetSavedEss(MovNetWifiEssItem_t* pEss);

} // extern "C"

#endif
