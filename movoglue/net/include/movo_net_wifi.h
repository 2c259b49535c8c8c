/**
 * Scanning, joining and leaving Wi-Fi networks. Usable from C and C++.
 *
 * A call that waits for the supplicant's answer sends one command or several, one after the other. Each takes no time
 * from a supplicant that is well; one that hangs lets each last up to 5 s until it is sent and 10 s until it is
 * answered.
 */
#ifndef MOVO_NET_WIFI_H
#define MOVO_NET_WIFI_H

#include "movo_net_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Starts a scan for the networks around.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 *
 * @retval 0  Scanning.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active. The supplicant refused.
 * @retval 4  No memory for the time-out.
 * @retval 5  The interface has no Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback. Waits for the supplicant's answer.
 * @par Locks      ifaceListLock during the look-up; then those of the link to the supplicant, and eventListLock while a
 * timer is replaced, an address given back or the callback called.
 * @par Callbacks  WIFISCANDONE when it has ended, after 30 s at the latest, or before the call has returned; also after
 * a refusal for being busy. The end of a scan that was started inside the WIFISCANDONE of one that took the 30 s is not
 * told.
 */
RETURN_TYPE Movo_NET_WifiScanEsss(kest_sint32 appid, const char* ifname);

/**
 * Reads what the last scan found into the table that the calls below ask: one network a name, the strongest access
 * point's, at most 50. Keys and priorities that were set in the table before are forgotten. A name is its bytes as
 * they are sent, mostly UTF-8. One that holds a control character is listed as the supplicant writes it, with escapes,
 * and cannot be joined.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active. The supplicant told no table, or its
 * copy in `/tmp/wpa_scan_result` could not be written. Or the copy could not be opened again: then MovoNetWifi_t.lock
 * stays taken by the calling thread for good, and every other thread that needs it waits for ever.
 * @retval 5  The interface has no Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback. Waits for the supplicant's answer.
 * @par Locks      ifaceListLock during the look-up; then those of the link to the supplicant, and eventListLock while a
 * timer is replaced, an address given back or the callback called.
 * @par Callbacks  WIFIESSSUPDATED, on this thread, before it returns 0.
 */
RETURN_TYPE Movo_NET_WifiUpdateEsss(kest_sint32 appid, const char* ifname);

/**
 * Joins a network of the table with the key that `Movo_NET_WifiSetKey` gave it.
 *
 * The first command leaves the network joined so far, unless the new one is not in the table. A refusal after that, a
 * wrong key and a time-out leave the interface without any, and nothing joins the former one again. An application that
 * wants it back notes it before (`Movo_NET_WifiGetConnectedEss`, `Movo_NET_WifiGetKey`) and joins it after a refusal,
 * on WIFIBADKEY and on WIFITIMEOUT, as examples/join.c does.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[in]  essid   Network name; the first 32 bytes count.
 *
 * @retval 0  Being joined.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active; network not scanned. The supplicant
 * refused, as a WPA key of fewer than 8 or of 64 characters, or the key has no length of a WEP key.
 * @retval 4  No memory for the time-out.
 * @retval 5  No name, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback. Waits for the supplicant's answer.
 * @par Locks      ifaceListLock during the look-up; then those of the link to the supplicant, and eventListLock while
 * the network is enabled, a timer replaced, an address given back or the callback called.
 * @par Callbacks  IFCONNECTED, then those of the address; or WIFIBADKEY; or WIFITIMEOUT after 30 s. After WIFIBADKEY
 * the network is removed, and a join or WPS that was begun inside that callback goes with it, with no callback: begin
 * it when the callback has returned.
 */
RETURN_TYPE Movo_NET_WifiConnectEss(kest_sint32 appid, const char* ifname, const char* essid);

/**
 * Leaves the network that an interface is connected to, or is connecting to.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 *
 * @retval 0  Left.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active.
 * @retval 5  The interface has no Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback. Waits for the supplicant's answer.
 * @par Locks      ifaceListLock during the look-up; then those of the link to the supplicant, and eventListLock while a
 * timer is replaced, an address given back or the callback called.
 * @par Callbacks  IFDISCONNECTED, on this thread, before it returns 0. Called inside the IFDISCONNECTED of a network
 * that was lost, it leaves that one, yet the interface counts as reconnecting until the next join or leave: leave when
 * the callback has returned.
 */
RETURN_TYPE Movo_NET_WifiDisConnect(kest_sint32 appid, const char* ifname);

/**
 * Reads the name of the joined network.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[out] essid   `len` bytes; gets an end mark. Untouched when no network is joined.
 * @param[in]  len     At least 33 for a name of 32 bytes; a longer name is cut.
 *
 * @retval 0  Read, or none is joined.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active.
 * @retval 5  No buffer, a length below 1, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiGetConnectedEss(kest_sint32 appid, const char* ifname, char* essid, int len);

/**
 * Tells which way of WPS was started last.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[out] mode    Untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active.
 * @retval 5  No output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiGetWpsModeEss(kest_sint32 appid, const char* ifname, MovoNetWifiWPSMode_e* mode);

/**
 * Joins a network by WPS: by its push button, by a PIN that is typed there, or both, where the PIN is the one that
 * stays. Any other mode starts nothing and is kept as none.
 *
 * A router that hands out its key as 64 hexadecimal digits is joined and remembered without it. After a restart the
 * interface's attempt to rejoin it is refused, and the first join that is asked for afterwards has no time-out: neither
 * is it ended nor does WIFITIMEOUT come. After 30 s without an address a remembered network in range replaces it.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[in]  mode    The way.
 * @param[in]  pin     The PIN, of a mode with PIN.
 *
 * @retval 0  Started: the supplicant took the push button, or gave the PIN back as it was, whatever it is.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active. The supplicant refused, or gave back
 * anything but the PIN.
 * @retval 5  No PIN for a mode that has one, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback. Waits for the supplicant's answer.
 * @par Locks      ifaceListLock during the look-up; then those of the link to the supplicant, and eventListLock while a
 * timer is replaced, an address given back or the callback called.
 * @par Callbacks  IFDISCONNECTED, on this thread, when the push button takes a connection away; then as for
 * `Movo_NET_WifiConnectEss`, with 120 s in place of 30.
 */
RETURN_TYPE Movo_NET_WifiStartWpsConnection(kest_sint32 appid, const char* ifname, MovoNetWifiWPSMode_e mode,
                                            const char* pin);

/**
 * Has the supplicant make a PIN to show. The network joined so far is left. The supplicant itself begins WPS with it;
 * the glue does not: no time-out runs and no network is learnt before `Movo_NET_WifiStartWpsConnection`.
 *
 * @param[in]  appid    Ignored.
 * @param[in]  ifname   Wi-Fi interface, at most 8 characters.
 * @param[out] pin      `pinsize` bytes, all of which are written: whatever the supplicant replied, "FAIL" and a line
 * end for instance. Show it when it has eight digits.
 * @param[in]  pinsize  At least 9 for the usual eight digits.
 *
 * @retval 0  The supplicant replied.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active. The reply does not fit, or there was
 * none.
 * @retval 5  No output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback. Waits for the supplicant's answer.
 * @par Locks      ifaceListLock during the look-up; then those of the link to the supplicant, and eventListLock while a
 * timer is replaced, an address given back or the callback called.
 */
RETURN_TYPE Movo_NET_WifiGenerateWpsPin(kest_sint32 appid, const char* ifname, char* pin, int pinsize);

/**
 * Looks for an open network that does not send its name. The network joined so far is left.
 *
 * @param[in]  appid   Ignored.
 * @param[in]  ifname  Wi-Fi interface, at most 8 characters.
 * @param[in]  ssid    Its name, not empty; the supplicant refuses more than 32 bytes.
 *
 * @retval 0  Searching.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active. The supplicant refused.
 * @retval 4  No memory for the time-out.
 * @retval 5  No name or an empty one, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback. Waits for the supplicant's answer.
 * @par Locks      ifaceListLock during the look-up; then those of the link to the supplicant, and eventListLock while a
 * timer is replaced, an address given back or the callback called.
 * @par Callbacks  WIFISCANDONE once: with the first results of a scan, whether it is among them or not; when the
 * supplicant joins it; or after 30 s.
 */
RETURN_TYPE Movo_NET_WifiSearchHideEss(kest_sint32 appid, const char* ifname, const char* ssid);

/**
 * Tells which chip the interface has.
 *
 * @param[in]  appid    Ignored.
 * @param[in]  ifname   Wi-Fi interface, at most 8 characters.
 * @param[out] devType  Untouched unless 0 is returned.
 *
 * @retval 0  Read.
 * @retval 1  The glue does not run; interface unknown, not Wi-Fi or not active.
 * @retval 5  No output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiGetDevType(kest_sint32 appid, const char* ifname, MovoNetWifiDevType_e* devType);

/**
 * Tells whether a connection is being made, or is made and has no address yet.
 *
 * @param[in]  appid           Ignored.
 * @param[in]  ifname          Wi-Fi interface, at most 8 characters.
 * @param[out] isReconnecting  1 or 0; untouched unless 0 is returned.
 *
 * @retval 0  Read; also of an interface that is not active. One that was joined when it was disabled gives 1 for as
 * long as it stays so; one that was being joined gives 1 until its time-out.
 * @retval 1  The glue does not run; interface unknown or not Wi-Fi.
 * @retval 5  No output, or an interface without Wi-Fi back end.
 *
 * @par Threads    Any, also from inside the callback.
 * @par Locks      ifaceListLock during the look-up only.
 */
RETURN_TYPE Movo_NET_WifiIsReconnecting(kest_sint32 appid, const char* ifname, kest_bool* isReconnecting);

/**
 * Chooses how the next connections take their network, in spite of what the scan told.
 *
 * @param[in] appid         Ignored.
 * @param[in] SecurityType  None: open. WEP. Mix: WPA and WPA2 with either cipher. Default: as scanned. Any other value:
 * as scanned, with a pass phrase.
 *
 * @retval 0  Kept, also before the start.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
RETURN_TYPE Movo_NET_WifiSetSecurityType(kest_sint32 appid, MovoNetWifiUISecurity_e SecurityType);

/**
 * Finds the connected Wi-Fi interface of highest priority, its network and its signal level.
 *
 * @param[in]  appid   Ignored.
 * @param[out] ifname  At least 8 bytes, all of which are written; a name of 8 characters gets no end mark.
 * @param[out] essid   At least 32 bytes; gets an end mark.
 * @param[out] retval  Level in dBm.
 *
 * @retval 0  Found.
 * @retval 1  The glue does not run; no Wi-Fi interface is connected; its network's name is longer than 31 bytes or not
 * in the table. Where the glue runs `essid` and `retval` are written all the same.
 * @retval 5  An argument is NULL.
 *
 * @par Threads  Any, also from inside the callback.
 * @par Locks    None.
 */
RETURN_TYPE Movo_NET_WifiGetConnectedSignal(kest_sint32 appid, char* ifname, char* essid, int* retval);

#ifdef __cplusplus
}
#endif

#endif
