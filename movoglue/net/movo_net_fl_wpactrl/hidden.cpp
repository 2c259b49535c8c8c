#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_wifi/wifi.h"
#include "movo_net_fl_wpactrl/connect.h"
#include "support/atomic.h"
#include "support/log.h"

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wpactrl", &movoglue_net_debug};

constexpr int kScanTicks = 300;

/** A chip that can cancel scans scans anew; for others the time-out alone ends the search. Speaks for its caller. */
RETURN_TYPE restartScan(MovoNetIface_t* pIface, Wpactrl_t* w, CallSite at)
{
    if (int_Movo_Net_Wpactrl_CancelScan(pIface) == kOk) {
        const RETURN_TYPE result = int_Movo_Net_Wpactrl_Scan(pIface);
        if (result != kOk) {
            NET_LOG_AT(at, KEST_LEVEL_ERROR, "[SCAN] failed\n");
        }
        return result;
    }
    const LoopGate gate; // the report of an earlier scan's time-out, which clears the marks, comes to its end first
    const RETURN_TYPE result = Wpactrl_Add_ScanEvent(w, kScanTicks);
    if (result != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "add scan time out event failed\n");
    }
    return result;
}

/** Marks the search, unless a join has taken its network's place since there were `attempts`; logs under its caller's
 * name. */
RETURN_TYPE markSearch(Wpactrl_t& w, std::uint32_t attempts, CallSite at)
{
    const ScopedLock lock(w.lock);
    if (!lock) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "lock wpa_ctrl iface failed\n");
        return kFail;
    }
    // Without a join a retry of a lost lease has made CONNECTING: it tries the searched network, which must go.
    const bool overtaken = load(w.attempts) != attempts && load(w.connectStatus) != WPACTRL_STATUS_NONE;
    store(w.isSearchingHideEss, overtaken ? kFalse : kTrue);
    return kOk;
}

/** Describes the network that is looked for; logs under its caller's name. */
RETURN_TYPE sendProbeNetwork(Wpactrl_t* w, int id, const char* ssid, CallSite at)
{
    CommandSequence sequence(w, at);
    sequence.send("SET_NETWORK %d ssid \"%s\"", id, ssid);
    sequence.send("SET_NETWORK %d key_mgmt NONE", id);
    sequence.send("SET_NETWORK %d scan_ssid 1", id);
    return sequence.result();
}
} // namespace

void movonet::endHiddenSearch(Wpactrl_t& w)
{
    store(w.isSearchingHideEss, kFalse);
}

RETURN_TYPE int_Movo_Net_Wpactrl_SearchHideEss(MovoNetIface_t* pIface, const char* ssid)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    if (ssid == nullptr || *ssid == '\0') {
        NET_ERROR("invalid ssid\n");
        return kBadArgument;
    }
    Wpactrl_t* w = wpactrl_iface(pIface);
    const std::uint32_t attempts = load(w->attempts);
    if (int_Movo_Net_Wpactrl_RemoveNetwork(pIface) != kOk) {
        NET_INFO("[REMOVE_NETWORK] failed\n");
    }
    int id = 0;
    if (const RETURN_TYPE result = addNetwork(w, id, NET_HERE); result != kOk) {
        return result;
    }
    if (const RETURN_TYPE result = sendProbeNetwork(w, id, ssid, NET_HERE); result != kOk) {
        return result;
    }
    if (const RETURN_TYPE result = restartScan(pIface, w, NET_HERE); result != kOk) {
        return result;
    }
    CommandSequence select(w);
    select.send("SELECT_NETWORK  %d", id);
    if (select.result() != kOk) {
        return select.result();
    }
    return markSearch(*w, attempts, NET_HERE);
}
