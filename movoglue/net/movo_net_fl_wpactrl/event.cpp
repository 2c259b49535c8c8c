#include "movo_net_fl_wifi/saved.h"
#include "movo_net_fl_wpactrl/channel.h"
#include "movo_net_fl_wpactrl/learnt.h"
#include "movo_net_fl_wpactrl/name.h"
#include "support/atomic.h"
#include "support/log.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <wpa_ctrl.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wpactrl", &movoglue_net_debug};

constexpr std::size_t kMessageSize = 256;
constexpr int kBadKeyFailures = 1; // Deliberate: a single failed handshake is a wrong key.

/** Whether the drain goes on; a callback may have shut the link down, and a lock may fail. */
enum class Drain { GoOn, Stop, LockFailed };

/** One drain of the monitor connection: whose it is, and what speaks for OnWpactrlEventRev. */
struct Link {
    MovoNetIface_t* iface;
    MovoNetWifi_t& wifi;
    Wpactrl_t& w;
    ScopedLock& lock; // of the link, held
    std::uint32_t generation;
    CallSite at;

    /** Tells whether the connection that is being drained is still the link's. */
    bool open() const { return load(w.generation) == generation && load(w.mon_conn) != nullptr; }
    /** Tells whether the network still is the joined one: callbacks may leave it, or begin to join another. */
    bool joined() const { return open() && load(w.connectStatus) == WPACTRL_STATUS_CONNECTED; }
    Drain outcome() const { return open() ? Drain::GoOn : Drain::Stop; }
};

/** Searches the supplicant's own words; the name in quotes between them is whatever an access point calls itself. */
bool contains(std::string_view message, std::string_view text)
{
    const std::size_t open = std::min(message.find_first_of("'\""), message.size());
    const std::string_view before = message.substr(0, open);
    std::string_view after = message.substr(open);
    if (!after.empty()) {
        const std::size_t close = after.rfind(after.front()); // the last one: names may hold quotes
        after = close == 0 ? std::string_view{} : after.substr(close + 1);
    }
    return before.find(text) != std::string_view::npos || after.find(text) != std::string_view::npos;
}

/** Removes a timer of the link; on the loop's thread, so that no lock stands in the way. */
void removeTimer(std::int32_t& handle)
{
    if (const std::int32_t armed = exchange(handle, 0); armed != 0) {
        (void)int_removeEvent(armed);
    }
}

/** The network that the supplicant is about to join, as it writes its name; empty when the message has none. */
std::string_view ssidOf(std::string_view message)
{
    constexpr std::string_view kBefore = "SSID='";
    const std::size_t start = message.find(kBefore);
    if (start == std::string_view::npos) {
        return {};
    }
    const std::string_view rest = message.substr(start + kBefore.size());
    const std::size_t end = rest.rfind("' freq"); // a name may hold this text, too
    if (rest.starts_with('\'') || end == std::string_view::npos) {
        return {};
    }
    return rest.substr(0, end);
}

/** WPS tells which network it joins before it has joined it. */
Drain learnNetwork(Link& link, std::string_view message)
{
    char ssid[kMessageSize] = {};
    (void)ssidOf(message).copy(ssid, sizeof(ssid) - 1);
    decodeName(ssid);
    if (ssid[0] == '\0' || std::strlen(ssid) > MOVO_NET_ESSID_LENGTH) {
        return Drain::GoOn;
    }
    NET_LOG_AT(link.at, KEST_LEVEL_INFO, "get wps ssid: %s\n", ssid);
    MovNetWifiEssItem_t ess;
    if (!findScannedEss(link.wifi, ssid, ess)) {
        NET_LOG_AT(link.at, KEST_LEVEL_ERROR, "get essid: %s in index failed\n", ssid);
        return Drain::GoOn;
    }
    const ScopedLock lock(link.wifi.lock);
    if (!lock) {
        NET_LOG_AT(link.at, KEST_LEVEL_ERROR, "lock wifi iface mutex failed\n");
        link.lock.leaveLocked(); // Deliberate: this failure returns with the link's lock held.
        return Drain::LockFailed;
    }
    ess.isConnected = kFalse;
    storeEss(link.wifi.curOperatingEsss, ess);
    store(link.w.isWpsEssSaved, kTrue);
    return Drain::GoOn;
}

/** The key comes from the supplicant's configuration, the network too where no message told it. */
void takeWpsNetwork(Link& link)
{
    MovNetWifiEssItem_t learnt{};
    Wpa_GetSavedEss(&learnt);
    MovNetWifiEssItem_t current = copyEss(link.wifi.curOperatingEsss);
    if (!load(link.w.isWpsEssSaved)) {
        current = learnt;
        store(link.w.isWpsEssSaved, kTrue);
    }
    std::memcpy(&current.Key, &learnt.Key, sizeof(learnt.Key));
    storeEss(link.wifi.curOperatingEsss, current);
    store(link.w.isWpsMode, kFalse);
}

/** Makes the current network the joined one, listed and remembered. */
Drain recordJoined(Link& link)
{
    ScopedLock lock(link.wifi.lock);
    if (!lock) {
        NET_LOG_AT(link.at, KEST_LEVEL_ERROR, "lock wifi iface mutex failed\n");
        return Drain::LockFailed;
    }
    if (load(link.w.isWpsMode)) {
        takeWpsNetwork(link);
    }
    markCurrentConnected(link.wifi, kTrue);
    MovNetWifiEssItem_t current = copyEss(link.wifi.curOperatingEsss);
    if (get_essid_index(&link.wifi, current.essid) < 0) {
        appendCurrentEss(link.wifi);
    }
    lock.unlock();
    (void)int_Movo_Net_SaveEss(&current);
    return Drain::GoOn;
}

/** Reports, configures and remembers the network that was joined, as long as callbacks do not end that. */
Drain bringUp(Link& link)
{
    (void)NotifyApp(_MOVO_NET_CALLBACK_IFCONNECTED_, link.iface);
    if (!link.joined()) {
        return link.outcome(); // bringing up what the callback has taken down would leave it active without a network
    }
    (void)ifup(link.iface);
    return link.joined() ? recordJoined(link) : link.outcome();
}

Drain onConnected(Link& link)
{
    Wpactrl_t& w = link.w;
    removeTimer(w.connectTimerEventHandle);
    store(w.connectStatus, WPACTRL_STATUS_CONNECTED);
    NET_LOG_AT(link.at, KEST_LEVEL_INFO, "connected\n");
    store(w.handshake_fail_count, 0);
    store(w.disconnect_count, 0);
    const Drain outcome = bringUp(link);
    if (outcome == Drain::GoOn) {
        removeTimer(w.firstConnectHandle); // also of a network that was left again: nothing is to rejoin it
    }
    return outcome;
}

Drain onHandshakeFailed(Link& link)
{
    Wpactrl_t& w = link.w;
    const std::int32_t count = load(w.handshake_fail_count) + 1;
    store(w.handshake_fail_count, count);
    NET_LOG_AT(link.at, KEST_LEVEL_INFO, "handshake failed count: %d\n", count);
    if (count < kBadKeyFailures) {
        return Drain::GoOn;
    }
    NET_LOG_AT(link.at, KEST_LEVEL_INFO, "too many handshake failed events\n");
    removeTimer(w.connectTimerEventHandle);
    store(w.handshake_fail_count, 0);
    (void)NotifyApp(_MOVO_NET_CALLBACK_WIFIBADKEY_, link.iface);
    if (!link.open()) {
        return Drain::Stop;
    }
    // Deliberate: after the callback, whatever connection it has started goes too.
    (void)int_Movo_Net_Wpactrl_RemoveNetwork(link.iface);
    return link.outcome();
}

Drain onMessageWhileConnecting(Link& link, std::string_view message)
{
    if (load(link.w.isWpsMode) && !load(link.w.isWpsEssSaved) && contains(message, "Trying to associate with")) {
        if (const Drain learnt = learnNetwork(link, message); learnt != Drain::GoOn) {
            return learnt;
        }
    }
    if (contains(message, "CTRL-EVENT-CONNECTED ")) {
        return onConnected(link);
    }
    if (contains(message, "Handshake failed")) {
        return onHandshakeFailed(link);
    }
    return Drain::GoOn;
}

Drain onMessageWhileConnected(Link& link, std::string_view message)
{
    if (!contains(message, "CTRL-EVENT-DISCONNECTED ")) {
        return Drain::GoOn;
    }
    (void)NotifyApp(_MOVO_NET_CALLBACK_IFDISCONNECTED_, link.iface);
    if (!link.open()) {
        return Drain::Stop;
    }
    (void)int_Movo_Net_Wpactrl_ResetConnecting(link.iface);
    return link.outcome();
}

/** Removes the network of a hidden search; where a retry has made a connection of it, that goes, too. */
void removeSearched(Link& link)
{
    if (load(link.w.connectStatus) == WPACTRL_STATUS_NONE) {
        (void)Wpactrl_ExecCmd(&link.w, "REMOVE_NETWORK ALL");
    } else {
        (void)int_Movo_Net_Wpactrl_RemoveNetwork(link.iface);
    }
}

Drain checkScanEnd(Link& link, std::string_view message)
{
    Wpactrl_t& w = link.w;
    const bool scanned = load(w.isScanning) && contains(message, "CTRL-EVENT-SCAN-RESULTS ");
    const bool found = load(w.isSearchingHideEss) && contains(message, "Trying to associate with");
    if (!scanned && !found) {
        return Drain::GoOn;
    }
    removeTimer(w.scanTimerEventHandle);
    store(w.scanEnds, load(w.scanEnds) + 1); // before: a scan marks itself and then looks
    store(w.isScanning, kFalse);
    if (load(w.isSearchingHideEss)) {
        removeSearched(link);
        store(w.isSearchingHideEss, kFalse);
    }
    NET_LOG_AT(link.at, KEST_LEVEL_INFO, "scan done\n");
    (void)NotifyApp(_MOVO_NET_CALLBACK_WIFISCANDONE_, link.iface);
    return link.outcome();
}

Drain onMessage(Link& link, std::string_view message)
{
    Drain outcome = Drain::GoOn;
    switch (load(link.w.connectStatus)) {
    case WPACTRL_STATUS_CONNECTING:
        outcome = onMessageWhileConnecting(link, message);
        break;
    case WPACTRL_STATUS_CONNECTED:
        outcome = onMessageWhileConnected(link, message);
        break;
    case WPACTRL_STATUS_NONE:
        break;
    }
    return outcome == Drain::GoOn ? checkScanEnd(link, message) : outcome;
}

/** Receives and handles what is pending. */
Drain drain(Link& link)
{
    while (wpa_ctrl_pending(load(link.w.mon_conn)) > 0) {
        char message[kMessageSize] = {};
        std::size_t length = sizeof(message) - 1;
        if (wpa_ctrl_recv(load(link.w.mon_conn), message, &length) != 0) {
            NET_LOG_AT(link.at, KEST_LEVEL_ERROR, "could not read pending message.\n");
            return Drain::GoOn;
        }
        message[length] = '\0';
        if (const Drain outcome = onMessage(link, message); outcome != Drain::GoOn) {
            return outcome;
        }
    }
    return Drain::GoOn;
}
} // namespace

RETURN_TYPE OnWpactrlEventRev(int /*fd*/, void* data, kest_bool /*isTimeout*/)
{
    auto* pIface = static_cast<MovoNetIface_t*>(data);
    if (pIface == nullptr) {
        NET_REPORT("pIface");
        return kBadArgument;
    }
    MovoNetWifi_t* wifi = wifi_iface(pIface);
    if (wifi == nullptr) {
        return kBadArgument;
    }
    Wpactrl_t* w = wpactrl_iface(pIface);
    if (w == nullptr || load(w->mon_conn) == nullptr) {
        return kFail;
    }
    ScopedLock lock(w->lock);
    if (!lock) {
        NET_ERROR("lock wpactrl mutex failed\n");
        return kFail;
    }
    Link link{pIface, *wifi, *w, lock, load(w->generation), NET_HERE};
    const Drain outcome = drain(link);
    lock.unlock();
    if (outcome == Drain::GoOn && wpa_ctrl_pending(load(w->mon_conn)) < 0) {
        NET_ERROR("Connection to wpa_supplicant lost - trying to reconnect\n");
    }
    return outcome == Drain::LockFailed ? kFail : kOk;
}
