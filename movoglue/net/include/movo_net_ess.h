/** Questions about the Wi-Fi networks of the last scan, and their keys. Usable from C and C++. */
#ifndef MOVO_NET_ESS_H
#define MOVO_NET_ESS_H

#include "movo_net_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Tells how many networks the table holds. They are numbered from 0.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[out] retval  0 to 50.
 *
 * @retval 0  Written.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active.
 * @retval 5  No output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_GetNumOfWifiEsss(kest_sint32 appid, const char* ifname, int* retval);

/**
 * Reads the name of a network of the table.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[in]  essidx  Its number.
 * @param[out] retval  At least 32 bytes, all of which are written; a name of 32 bytes gets no end mark.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active. No such number.
 * @retval 5  No output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiGetSsidEss(kest_sint32 appid, const char* ifname, int essidx, char* retval);

/**
 * Reads the signal level of a network.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[in]  essid   Network name; the first 32 bytes count.
 * @param[out] retval  Level in dBm, as the supplicant reports it; untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active; network not scanned.
 * @retval 5  No name or output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiGetSignalEss(kest_sint32 appid, const char* ifname, const char* essid, int* retval);

/**
 * Tells whether a network offers WPS.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[in]  essid   Network name; the first 32 bytes count.
 * @param[out] bWPS    1 or 0; untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active; network not scanned.
 * @retval 5  No name or output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiIsWPS(kest_sint32 appid, const char* ifname, const char* essid, kest_bool* bWPS);

/**
 * Reads the cipher of a network.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[in]  essid   Network name; the first 32 bytes count.
 * @param[out] retval  Untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active; network not scanned.
 * @retval 5  No name or output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiGetEncryptionEss(kest_sint32 appid, const char* ifname, const char* essid,
                                          MovoNetWifiEncryption_e* retval);

/**
 * Reads the key management of a network.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[in]  essid   Network name; the first 32 bytes count.
 * @param[out] retval  Untouched unless 0 is returned. A WEP network is open; its cipher tells.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active; network not scanned.
 * @retval 5  No name or output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiGetSecurityEss(kest_sint32 appid, const char* ifname, const char* essid,
                                        MovoNetWifiSecurity_e* retval);

/**
 * Reads the frequency of a network.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[in]  essid   Network name; the first 32 bytes count.
 * @param[out] retval  MHz; untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active; network not scanned.
 * @retval 5  No name or output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiGetFrequencyEss(kest_sint32 appid, const char* ifname, const char* essid, int* retval);

/**
 * Reads the channel of a network.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[in]  essid   Network name; the first 32 bytes count.
 * @param[out] retval  IEEE 802.11 channel, 0 for a frequency that has none; untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active; network not scanned.
 * @retval 5  No name or output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiGetChannelEss(kest_sint32 appid, const char* ifname, const char* essid, int* retval);

/**
 * Sets the priority of a network of the table. It is not remembered, and the next `Movo_NET_WifiUpdateEsss` forgets it.
 *
 * @param[in]  appid     Ignored.
 * @param[in]  ifname    Wi-Fi interface, at most 8 characters.
 * @param[in]  essid     Network name; the first 32 bytes count.
 * @param[in]  priority  0 to 7.
 *
 * @retval 0  Set.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active; network not scanned.
 * @retval 5  Another priority, no name, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up, MovoNetWifi_t.lock while the priority is stored.
 */
RETURN_TYPE Movo_NET_WifiSetPriorityEss(kest_sint32 appid, const char* ifname, const char* essid, int priority);

/**
 * Reads the priority of a network.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[in]  essid   Network name; the first 32 bytes count.
 * @param[out] retval  0 to 7; untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active; network not scanned.
 * @retval 5  No name or output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiGetPriorityEss(kest_sint32 appid, const char* ifname, const char* essid, int* retval);

/**
 * Gives a network of the table its key, for the next connection to it. It is remembered once that has worked; until
 * then the next `Movo_NET_WifiUpdateEsss` forgets it. The table that an update reads has no keys, none of remembered
 * networks either: give those what `Movo_NET_WifiGetKey` reads. A wrong key, also one of a length that its network does
 * not take, shows itself only after the network joined so far has been left: look at the length first.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[in]  essid   Network name; the first 32 bytes count.
 * @param[in]  key     Pass phrase or WEP key; at most `len` bytes are read.
 * @param[in]  len     1 to 64. A WPA network takes 8 to 63 characters; 64, also 64 hexadecimal digits, are taken here
 * and refused by the supplicant when the network is joined.
 *
 * @retval 0  Taken.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active; network not scanned.
 * @retval 5  No name or key, another length, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up, MovoNetWifi_t.lock while the key is stored.
 */
RETURN_TYPE Movo_NET_WifiSetKey(kest_sint32 appid, const char* ifname, const char* essid, const char* key, int len);

/**
 * Reads the remembered key of a network of the table.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[in]  essid   Network name; the first 32 bytes count.
 * @param[out] key     At least 65 bytes; gets an end mark.
 * @param[out] len     Its length; 0 for a network that is remembered without key.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active; network not scanned or not remembered,
 * or another access point's.
 * @retval 5  No name or output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback. Takes as long as a flash write when a network is being
 * remembered.
 * @par Locks      ifaceListLock during the look-up, essListLock while the key is read.
 */
RETURN_TYPE Movo_NET_WifiGetKey(kest_sint32 appid, const char* ifname, const char* essid, char* key, int* len);

/**
 * Reads the address of a network's access point.
 *
 * @param[in]  appid    Ignored.
 * @param[in]  ifname   Wi-Fi interface, at most 8 characters.
 * @param[in]  essid    Network name; the first 32 bytes count.
 * @param[out] macaddr  First byte in the lowest-addressed byte; untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active; network not scanned.
 * @retval 5  No name or output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiGetBssidEss(kest_sint32 appid, const char* ifname, const char* essid, long long* macaddr);

#ifdef __cplusplus
}
#endif

#endif
