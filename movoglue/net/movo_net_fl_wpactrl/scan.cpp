#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_wifi/wifi.h"
#include "movo_net_fl_wpactrl/channel.h"
#include "movo_net_fl_wpactrl/scan_table.h"
#include "support/atomic.h"
#include "support/fd.h"
#include "support/file.h"
#include "support/log.h"
#include "support/own_file.h"

#include <cstring>
#include <string_view>
#include <unistd.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wpactrl", &movoglue_net_debug};

constexpr int kScanTicks = 300;
constexpr const char* kResultFile = "/tmp/wpa_scan_result";
constexpr mode_t kResultMode = 0644;
constexpr std::string_view kHeader = "bssid / frequency / signal level / flags / ssid";

/** Held while the file has one update's results, until they are read. Nothing is taken while it is held. */
StaticMutex s_resultFileLock;

// The ones below are steps of int_Movo_Net_Wpactrl_ScanResult and speak for it.

RETURN_TYPE requestResults(Wpactrl_t* w, Reply& reply, CallSite at)
{
    if (const RETURN_TYPE result = Wpactrl_SendCmd(w, "SCAN_RESULTS", reply.text, &reply.length); result != kOk) {
        return result;
    }
    if (!std::string_view(reply.text).starts_with(kHeader)) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "not scan_result reply\n");
        return kFail;
    }
    return kOk;
}

/** Leaves the table where other programs see it. */
RETURN_TYPE writeResults(const Reply& reply, CallSite at)
{
    const UniqueFd file(openEmptied(kResultFile, kResultMode));
    if (!file) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "Could not open scan result file.\n");
        return kFail;
    }
    const std::size_t length = std::strlen(reply.text);
    if (write(file.get(), reply.text, length) != static_cast<ssize_t>(length)) {
        (void)std::printf("Error when write to scan result file");
        return kFail;
    }
    return kOk;
}

/** Puts the results into the file and reads them from there; `read` is false when it cannot be opened again. */
RETURN_TYPE passThroughFile(const Reply& reply, ScanTable& table, bool& read, CallSite at)
{
    const StaticLock lock(s_resultFileLock);
    if (writeResults(reply, at) != kOk) {
        return kFail;
    }
    const UniqueFile file(openStream(kResultFile)); // the name may have been taken meanwhile
    read = static_cast<bool>(file);
    if (read) {
        table.read(file.get());
    }
    return kOk;
}

/** The joined network is listed even where its access point has dropped out of the scan. */
void listJoined(MovoNetWifi_t& wifi, const Wpactrl_t& w)
{
    const MovNetWifiEssItem_t current = copyEss(wifi.curOperatingEsss);
    if (load(w.connectStatus) == WPACTRL_STATUS_CONNECTED && current.isConnected &&
        get_essid_index(&wifi, current.essid) < 0) {
        appendCurrentEss(wifi);
    }
}

RETURN_TYPE updateTable(MovoNetWifi_t& wifi, const Wpactrl_t& w, const Reply& reply, CallSite at)
{
    ScanTable table;
    bool read = false;
    if (passThroughFile(reply, table, read, at) != kOk) {
        return kFail;
    }
    ScopedLock lock(wifi.lock);
    if (!lock) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "lock failed\n"); // Deliberate: the update goes on without it.
    }
    if (!read) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "Could not open scan result file.\n");
        lock.leaveLocked(); // Deliberate: a result file that cannot be read again returns with the lock held.
        return kFail;
    }
    publishEsss(wifi, table.esss(), table.count());
    listJoined(wifi, w);
    return kOk;
}

/**
 * Ends a scan for the time-out; a hidden search's network goes with it. `lock` is the link's: a join on another thread
 * ends the search before that or comes after it.
 */
void reportScanEnd(MovoNetIface_t* pIface, Wpactrl_t& w, ScopedLock& lock)
{
    if (load(w.isSearchingHideEss)) {
        (void)int_Movo_Net_Wpactrl_RemoveNetwork(pIface);
    }
    lock.unlock();
    (void)NotifyApp(_MOVO_NET_CALLBACK_WIFISCANDONE_, pIface);
    store(w.isScanning, kFalse); // Deliberate: after the callback, so that a scan it started is not reported.
    store(w.isSearchingHideEss, kFalse);
}

/** A scan that has not begun runs no longer, unless an earlier one does, or a new time-out reports the failure. */
void takeBackScan(Wpactrl_t& w, kest_bool wasScanning, std::int32_t timer)
{
    const std::int32_t armed = load(w.scanTimerEventHandle);
    if (!wasScanning && (armed == 0 || armed == timer)) {
        store(w.isScanning, kFalse);
    }
}
} // namespace

RETURN_TYPE int_Movo_Net_Wpactrl_Scan(MovoNetIface_t* pIface)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    Wpactrl_t* w = wpactrl_iface(pIface);
    const std::int32_t timer = load(w->scanTimerEventHandle);
    const kest_bool wasScanning = exchange(w->isScanning, kTrue); // its results may be faster than the reply
    const std::uint32_t ends = load(w->scanEnds);
    if (const RETURN_TYPE result = Wpactrl_ExecCmd(w, "SCAN"); result != kOk) {
        NET_ERROR("[SCAN] failed\n");
        takeBackScan(*w, wasScanning, timer);
        return result;
    }
    const LoopGate gate; // the results are read before this, and reported, or after the time-out is armed
    // Not isScanning: a scan that was refused may have cleared it, or the report of an earlier one's time-out.
    // While an earlier scan ran the results were that one's, and nothing of this one was missed.
    if (!wasScanning && load(w->scanEnds) != ends) {
        return kOk;
    }
    const RETURN_TYPE result = Wpactrl_Add_ScanEvent(w, kScanTicks);
    if (result != kOk) {
        NET_ERROR("add scan time out event failed\n");
        takeBackScan(*w, wasScanning, timer);
    }
    return result;
}

RETURN_TYPE OnScanTimeoutEventRev(int /*fd*/, void* data, kest_bool /*isTimeout*/)
{
    NET_INFO("wifi scan timeout\n");
    auto* pIface = static_cast<MovoNetIface_t*>(data);
    if (wifi_iface(pIface) == nullptr) {
        return kBadArgument;
    }
    Wpactrl_t* w = wpactrl_iface(pIface);
    if (w == nullptr) {
        return kFail;
    }
    removeFiredTimer(w->scanTimerEventHandle);
    ScopedLock lock(w->lock);
    if (!lock) {
        NET_ERROR("lock wpactrl mutex failed\n");
        return kFail;
    }
    if (load(w->isScanning)) {
        reportScanEnd(pIface, *w, lock);
    }
    return kOk;
}

RETURN_TYPE int_Movo_Net_Wpactrl_CancelScan(MovoNetIface_t* pIface)
{
    if (pIface == nullptr) {
        NET_REPORT("pIface");
        return kBadArgument;
    }
    Wpactrl_t* w = wpactrl_iface(pIface);
    if (w == nullptr) {
        return kBadArgument;
    }
    if (load(wifi_iface(pIface)->devType) != _MOVO_NET_WIFI_ATHEROS_) {
        return kNotSupported;
    }
    if (const RETURN_TYPE result = Wpactrl_ExecCmd(w, "SCAN_CANCEL"); result != kOk) {
        NET_ERROR("[SCAN_CANCEL] failed\n");
        return result;
    }
    const ScopedLock lock(w->lock);
    if (!lock) {
        NET_ERROR("lock wpa_ctrl iface failed\n");
        return kFail;
    }
    store(w->isScanning, kFalse);
    return kOk;
}

RETURN_TYPE int_Movo_Net_Wpactrl_ScanResult(MovoNetIface_t* pIface)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    Wpactrl_t* w = wpactrl_iface(pIface);
    Reply reply;
    if (const RETURN_TYPE result = requestResults(w, reply, NET_HERE); result != kOk) {
        return result;
    }
    if (updateTable(*wifi_iface(pIface), *w, reply, NET_HERE) != kOk) {
        return kFail;
    }
    (void)NotifyApp(_MOVO_NET_CALLBACK_WIFIESSSUPDATED_, pIface);
    return kOk;
}
