/** The link to the Wi-Fi supplicant, and everything that is asked of it. */
#ifndef MOVO_NET_FL_WPACTRL_WPACTRL_H
#define MOVO_NET_FL_WPACTRL_WPACTRL_H

#include "movo_net_fl_wifi/ess.h"
#include "movo_net_internal.h"
#include "support/lock.h"

struct wpa_ctrl;

/** State of a connection. docs/states.md has the transitions. */
enum WpactrlConnectStatus_e : int {
    WPACTRL_STATUS_NONE = 0,
    WPACTRL_STATUS_CONNECTING = 1,
    WPACTRL_STATUS_CONNECTED = 2,
};

/** The link of one wireless interface, behind `MovoNetWifi_t.priv`. Never given back while the process lives. */
struct Wpactrl_t {
    wpa_ctrl* ctrl_conn; ///< For commands; NULL while the supplicant is shut down.
    wpa_ctrl* mon_conn;  ///< For events.
    std::int32_t fd;     ///< Of mon_conn.
    std::int32_t event_handle;
    std::int32_t connectTimerEventHandle;
    std::int32_t scanTimerEventHandle;
    std::int32_t firstConnectHandle;
    kest_bool isScanning;
    kest_bool isSearchingHideEss;
    kest_bool isWpsMode;
    kest_bool isWpsEssSaved;
    WpactrlConnectStatus_e connectStatus;
    std::int32_t handshake_fail_count;
    std::int32_t disconnect_count;
    MovoNetWifi_t* pWifiIface;
    /** Guards flags, handles and counters; before MovoNetWifi_t.lock, after eventListLock. */
    movonet::Mutex lock{movonet::Mutex::Kind::Recursive};

    kest_bool ctrlClosed;     ///< ctrl_conn stands for a connection that is closed: every request fails.
    kest_bool isShuttingDown; ///< Of two threads that shut down, one does.
    std::uint32_t generation; ///< Counts openings and closings, for handlers that callbacks may have shut down.
    std::uint32_t attempts;   ///< Counts joins and starts of WPS, for a hidden search that one has overtaken.
    std::uint32_t scanEnds;   ///< Counts scans that ended with results, for one that does before its reply has come.
    Wpactrl_t* nextRetired;
};

namespace movonet {
/** Gives back the link of a record that was never listed. */
void discardWpactrl(MovoNetWifi_t& wifi);

/**
 * Stops a timer and forgets its handle; false when it is not armed. `lock` is the link's, and let go of while a timer
 * is stopped: handlers may be waiting for it.
 */
bool dropTimer(Wpactrl_t& w, ScopedLock& lock, std::int32_t& handle);

/**
 * What is going to be joined ends a search for a hidden network, whose results would remove it. Called before the
 * removal of networks, which waits for a handler that still saw the search, and again with the new state, for a search
 * that has begun in between. Its scan goes on.
 */
void endHiddenSearch(Wpactrl_t& w);

/** Keeps a timer that has just fired from firing again, unless another thread is replacing it and does so itself. */
void removeFiredTimer(std::int32_t& handle);
} // namespace movonet

// A NULL record is reported and gives 5; so does, silently, one without wireless back end or link. Other results: 0
// done, 1 failed. Any thread; on threads other than the loop's the caller holds no lock.
extern "C" {

/** The supplicant link of an interface; NULL when there is none. */
Wpactrl_t* wpactrl_iface(MovoNetIface_t* iface);

/** Makes a link without connections; takes it away again, closing nothing. */
RETURN_TYPE int_Movo_Net_Wpactrl_Init(MovoNetIface_t* pIface);
RETURN_TYPE int_Movo_Net_Wpactrl_DeInit(MovoNetIface_t* pIface);

/** The operations `Active` and `WifiDisConnect`, and the connect sequence, which returns when the commands are taken.
 */
RETURN_TYPE int_Movo_Net_Wpactrl_Active(MovoNetIface_t* pIface, kest_bool isActive);
RETURN_TYPE int_Movo_Net_Wpactrl_Disconnect(MovoNetIface_t* pIface);
RETURN_TYPE int_Movo_Net_Wpactrl_Connect(MovoNetIface_t* pIface, MovNetWifiEssItem_t* pEss);

/** Back to connecting, and the supplicant tries its network anew. */
RETURN_TYPE int_Movo_Net_Wpactrl_ResetConnecting(MovoNetIface_t* pIface);

/** Forgets every network of the supplicant and stops the interface's IP configuration. */
RETURN_TYPE int_Movo_Net_Wpactrl_RemoveNetwork(MovoNetIface_t* pIface);

/** Starts a scan; SCANDONE follows. */
RETURN_TYPE int_Movo_Net_Wpactrl_Scan(MovoNetIface_t* pIface);

/** Reads the last scan into the table; ESSSUPDATED is sent before it returns. */
RETURN_TYPE int_Movo_Net_Wpactrl_ScanResult(MovoNetIface_t* pIface);

/** Cancels a scan; 6 when the chip cannot. */
RETURN_TYPE int_Movo_Net_Wpactrl_CancelScan(MovoNetIface_t* pIface);

/** Questions about the connection; 5 for a NULL output. */
RETURN_TYPE int_Movo_Net_Wpactrl_IsConnected(MovoNetIface_t* pIface, kest_bool* isConnected);
RETURN_TYPE int_Movo_Net_Wpactrl_Status(MovoNetIface_t* pIface, kest_bool* isWpanone);
RETURN_TYPE int_Movo_Net_Wpactrl_IsReconnecting(MovoNetIface_t* pIface, kest_bool* isReconnecting);

/** WPS by push button, by PIN, and a PIN made by the supplicant in a buffer of `bufnum` bytes. */
RETURN_TYPE int_Movo_Net_Wpactrl_WPSPBC(MovoNetIface_t* pIface);
RETURN_TYPE int_Movo_Net_Wpactrl_WPSSetPIN(MovoNetIface_t* pIface, const char* pin);
RETURN_TYPE int_Movo_Net_Wpactrl_WPSGetPIN(MovoNetIface_t* pIface, char* pin, int bufnum);

/** Looks for an open network that does not send its name. */
RETURN_TYPE int_Movo_Net_Wpactrl_SearchHideEss(MovoNetIface_t* pIface, const char* ssid);

/** Tells whether a supplicant runs; starts one or waits for the system's; stops it. */
kest_bool Wpa_Wpa_supplicantIsOn(MovoNetIface_t* pIface);
RETURN_TYPE Wpa_SetWpa_supplicantOn(MovoNetIface_t* pIface);
RETURN_TYPE Wpa_SetWpa_supplicantOff(MovoNetIface_t* pIface);

/** Closes the link and stops the supplicant. */
RETURN_TYPE ShutdownWpactrl(MovoNetIface_t* pIface);

/** Handlers of the event loop; `data` is the record. */
RETURN_TYPE OnWpactrlEventRev(int fd, void* data, kest_bool isTimeout);
RETURN_TYPE OnConnectTimeoutEventRev(int fd, void* data, kest_bool isTimeout);
RETURN_TYPE OnFirstConnectTimeout(int fd, void* data, kest_bool isTimeout);
RETURN_TYPE OnScanTimeoutEventRev(int fd, void* data, kest_bool isTimeout);

} // extern "C"

#endif
