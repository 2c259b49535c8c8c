/** What the texts of a scan mean. No state, no locks. */
#ifndef MOVO_NET_FL_WPACTRL_FLAGS_H
#define MOVO_NET_FL_WPACTRL_FLAGS_H

#include "movo_net_fl_wifi/ess.h"

enum { MOVO_NET_INFO_SIZE = 128 };

extern "C" {

/** Cipher by the first known word. 0, or 5 for NULL or an empty text. */
RETURN_TYPE encryp_str_to_type(const char* encryp_str, MovoNetWifiEncryption_e* type);

/**
 * Key management by the first known word; open when there is none. 0, or 5 for NULL.
 *
 * @param[out] info_str  NULL, or MOVO_NET_INFO_SIZE bytes for the group that decided; the whole text when none did.
 */
RETURN_TYPE security_str_to_type(const char* flags_str, MovoNetWifiSecurity_e* type, char* info_str);

/** Both, the cipher from the group that decided the key management; an empty text leaves the latter alone. */
void flags_to_encryp_security(const char* flags_str, MovoNetWifiEncryption_e* encrypType,
                              MovoNetWifiSecurity_e* securityType);

/** Six bytes from six pairs of digits; what is missing or no digit counts as 0. */
std::int64_t mac_string_to_long_long(const char* address);

/** Fills one network from the fields of a scan line; empty name and address leave theirs, NULL flags leave the types.
 */
void Wpa_Add_EsssItem(MovNetWifiEssItem_t* esss, const char* bssid_str, const char* ssid_str, const char* frequency_str,
                      int signal, const char* flags_str, kest_bool bWPS);

} // extern "C"

#endif
