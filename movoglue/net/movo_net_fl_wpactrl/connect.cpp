#include "movo_net_fl_wpactrl/connect.h"

#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_wifi/wifi.h"
#include "support/atomic.h"
#include "support/log.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace movonet;

kest_uint8 g_WEPLinkType;
MovoNetWifiUISecurity_e g_UISecurityType = _MOVO_NET_WIFI_UI_DEFAULT_;

namespace {
constexpr LogModule kLog{"movo_net_fl_wpactrl", &movoglue_net_debug};

constexpr std::size_t kCommandSize = 100;

/** How a network is joined. */
enum class Branch { Open, Wep, Wpa };

Branch chooseBranch(MovoNetWifiEncryption_e encryption, MovoNetWifiUISecurity_e wish)
{
    const bool none = encryption == _MOVO_NET_WIFI_ENCRYP_NONE_;
    if (wish == _MOVO_NET_WIFI_UI_NONE_ || (none && wish == _MOVO_NET_WIFI_UI_DEFAULT_)) {
        return Branch::Open;
    }
    const bool wep = encryption == _MOVO_NET_WIFI_ENCRYP_WEP_;
    if (wish == _MOVO_NET_WIFI_UI_WEP_ || (wep && wish == _MOVO_NET_WIFI_UI_DEFAULT_)) {
        return Branch::Wep;
    }
    return Branch::Wpa;
}

void sendOpen(CommandSequence& sequence, int id)
{
    sequence.send("SET_NETWORK %d key_mgmt NONE", id);
}

/** Speaks for int_Movo_Net_Wpactrl_Connect; false for a key of no known length. */
bool sendWepKey(CommandSequence& sequence, int id, const char* key, CallSite at)
{
    switch (std::strlen(key)) {
    case 5:
    case 13:
    case 16:
        sequence.send("SET_NETWORK %d wep_key0 \"%s\"", id, key);
        return true;
    case 10:
    case 26:
    case 32:
        sequence.send("SET_NETWORK %d wep_key0 %s", id, key);
        return true;
    default:
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "BAD key length\n");
        return false;
    }
}

RETURN_TYPE sendWep(CommandSequence& sequence, int id, const char* key, CallSite at)
{
    sequence.send("SET_NETWORK %d key_mgmt NONE", id);
    if (sequence.result() == kOk && !sendWepKey(sequence, id, key, at)) {
        return kFail;
    }
    sequence.send("SET_NETWORK %d wep_tx_keyidx 0", id);
    if (load(g_WEPLinkType) != 0) {
        sequence.send("SET_NETWORK %d auth_alg OPEN", id);
    } else {
        sequence.send("SET_NETWORK %d auth_alg OPEN SHARED", id);
    }
    return sequence.result();
}

void sendProtocol(CommandSequence& sequence, int id, MovoNetWifiSecurity_e security)
{
    switch (security) {
    case _MOVO_NET_WIFI_SECURITY_WPA2_PSK_:
    case _MOVO_NET_WIFI_SECURITY_WPA_PSK_A2_:
        sequence.send("SET_NETWORK %d proto RSN", id);
        return;
    case _MOVO_NET_WIFI_SECURITY_WPA_PSK_:
    case _MOVO_NET_WIFI_SECURITY_WPA_:
        sequence.send("SET_NETWORK %d proto WPA", id);
        return;
    case _MOVO_NET_WIFI_SECURITY_OPEN_:
    case _MOVO_NET_WIFI_SECURITY_SHARED_:
        break;
    }
    sequence.send("SET_NETWORK %d proto WPA RSN", id);
}

void sendKeyManagement(CommandSequence& sequence, int id, MovoNetWifiSecurity_e security)
{
    // Deliberate: no identity is ever sent; such a network gets the pass phrase below all the same.
    if (security == _MOVO_NET_WIFI_SECURITY_WPA_PSK_A2_ || security == _MOVO_NET_WIFI_SECURITY_WPA_) {
        sequence.send("SET_NETWORK %d key_mgmt WPA-EAP", id);
    } else {
        sequence.send("SET_NETWORK %d key_mgmt WPA-PSK", id);
    }
}

void sendCipher(CommandSequence& sequence, int id, MovoNetWifiEncryption_e encryption)
{
    switch (encryption) {
    case _MOVO_NET_WIFI_ENCRYP_WEP_RYP_TKIP_:
        sequence.send("SET_NETWORK %d pairwise TKIP", id);
        return;
    case _MOVO_NET_WIFI_ENCRYP_AES_:
    case _MOVO_NET_WIFI_ENCRYP_TKIPAES_: // Deliberate: both ciphers means the better one.
        sequence.send("SET_NETWORK %d pairwise CCMP", id);
        return;
    case _MOVO_NET_WIFI_ENCRYP_NONE_:
    case _MOVO_NET_WIFI_ENCRYP_WEP_:
        break;
    }
    sequence.send("SET_NETWORK %d pairwise CCMP TKIP", id);
}

void sendWpa(CommandSequence& sequence, int id, const MovNetWifiEssItem_t& ess, MovoNetWifiUISecurity_e wish)
{
    if (wish == _MOVO_NET_WIFI_UI_MIX_) {
        sequence.send("SET_NETWORK %d proto WPA RSN", id);
        sequence.send("SET_NETWORK %d key_mgmt WPA-PSK", id);
        sequence.send("SET_NETWORK %d pairwise CCMP TKIP", id);
    } else {
        sendProtocol(sequence, id, ess.securityType);
        sendKeyManagement(sequence, id, ess.securityType);
        sendCipher(sequence, id, ess.encrypType);
    }
    sequence.send("SET_NETWORK %d psk \"%s\"", id, ess.Key);
}

/** Describes the network to the supplicant. Logs for int_Movo_Net_Wpactrl_Connect. */
RETURN_TYPE sendNetwork(Wpactrl_t* w, int id, const MovNetWifiEssItem_t& ess, CallSite at)
{
    const MovoNetWifiUISecurity_e wish = load(g_UISecurityType);
    CommandSequence sequence(w, at);
    sequence.send("SET_NETWORK %d ssid \"%s\"", id, ess.essid);
    sequence.send("SET_NETWORK %d scan_ssid 1", id);
    switch (chooseBranch(ess.encrypType, wish)) {
    case Branch::Open:
        sendOpen(sequence, id);
        break;
    case Branch::Wep:
        if (const RETURN_TYPE result = sendWep(sequence, id, ess.Key, at); result != kOk) {
            return result;
        }
        break;
    case Branch::Wpa:
        sendWpa(sequence, id, ess, wish);
        break;
    }
    return sequence.result();
}

/** Lets the supplicant try the network, with a time-out. Logs for int_Movo_Net_Wpactrl_Connect. */
RETURN_TYPE enableNetwork(Wpactrl_t* w, int id, CallSite at)
{
    CommandSequence sequence(w, at);
    sequence.send("ENABLE_NETWORK  %d", id);
    if (sequence.result() != kOk) {
        return sequence.result();
    }
    const RETURN_TYPE result = Wpactrl_Add_ConnectEvent(w, kConnectTimeoutTicks);
    if (result != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "add connect time out event failed\n");
    }
    return result;
}

/** The network becomes the current one; speaks for int_Movo_Net_Wpactrl_Connect. */
RETURN_TYPE makeCurrent(MovoNetWifi_t& wifi, MovNetWifiEssItem_t ess, CallSite at)
{
    const ScopedLock lock(wifi.lock);
    if (!lock) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "lock wifi iface mutex failed\n");
        return kFail;
    }
    ess.isConnected = kFalse;
    storeEss(wifi.curOperatingEsss, ess);
    return kOk;
}
} // namespace

namespace movonet {
kest_bool s_bFirstConnect;

void CommandSequence::send(const char* format, ...)
{
    if (m_result != kOk) {
        return;
    }
    char command[kCommandSize];
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(command, sizeof(command), format, arguments);
    va_end(arguments);
    m_result = Wpactrl_ExecCmd(m_wpactrl, command);
    if (m_result != kOk) {
        NET_LOG_AT(m_at, KEST_LEVEL_ERROR, "[%s] failed\n", command);
    }
}

RETURN_TYPE addNetwork(Wpactrl_t* w, int& id, CallSite at)
{
    Reply reply;
    const RETURN_TYPE result = Wpactrl_SendCmd(w, "ADD_NETWORK", reply.text, &reply.length);
    if (result != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "Wpactrl_SendCmd failed\n");
        return result;
    }
    id = static_cast<int>(std::strtol(reply.text, nullptr, 10));
    return kOk;
}
} // namespace movonet

RETURN_TYPE int_Movo_Net_Wpactrl_Connect(MovoNetIface_t* pIface, MovNetWifiEssItem_t* pEss)
{
    if (pIface == nullptr) {
        NET_REPORT("pIface");
        return kBadArgument;
    }
    Wpactrl_t* w = wpactrl_iface(pIface);
    if (w == nullptr || pEss == nullptr) {
        return kBadArgument;
    }
    const MovNetWifiEssItem_t ess = copyEss(*pEss); // the caller's may be a line of the table, which a scan replaces
    NET_INFO("try to connect to esss [%s]\n", ess.essid);
    endHiddenSearch(*w);
    if (int_Movo_Net_Wpactrl_RemoveNetwork(pIface) != kOk) {
        NET_INFO("[REMOVE_NETWORK] failed\n");
    }
    int id = 0;
    if (const RETURN_TYPE result = addNetwork(w, id, NET_HERE); result != kOk) {
        return result;
    }
    if (const RETURN_TYPE result = sendNetwork(w, id, ess, NET_HERE); result != kOk) {
        return result;
    }
    const LoopGate gate; // an event that is faster than the reply is read when all that follows is in place
    store(w->connectStatus, WPACTRL_STATUS_CONNECTING);
    if (const RETURN_TYPE result = enableNetwork(w, id, NET_HERE); result != kOk) {
        store(w->connectStatus, WPACTRL_STATUS_NONE);
        return result;
    }
    if (const RETURN_TYPE result = makeCurrent(*wifi_iface(pIface), ess, NET_HERE); result != kOk) {
        return result;
    }
    store(s_bFirstConnect, kFalse);
    NET_INFO("connect to %s, with netid %d OK\n", ess.essid, id);
    return kOk;
}

RETURN_TYPE int_Movo_Net_Wpactrl_Disconnect(MovoNetIface_t* pIface)
{
    if (pIface == nullptr) {
        NET_REPORT("pIface");
        return kBadArgument;
    }
    if (wpactrl_iface(pIface) == nullptr) {
        return kBadArgument;
    }
    if (!load(pIface->isActived)) {
        NET_ERROR("not actived yet\n");
        return kFail;
    }
    if (int_Movo_Net_Wpactrl_RemoveNetwork(pIface) != kOk) {
        return kFail;
    }
    store(pIface->isConnected, kFalse);
    (void)NotifyApp(_MOVO_NET_CALLBACK_IFDISCONNECTED_, pIface);
    return kOk;
}

RETURN_TYPE int_Movo_Net_Wpactrl_ResetConnecting(MovoNetIface_t* pIface)
{
    if (pIface == nullptr) {
        NET_REPORT("pIface");
        return kBadArgument;
    }
    Wpactrl_t* w = wpactrl_iface(pIface);
    if (w == nullptr) {
        return kBadArgument;
    }
    MovoNetWifi_t& wifi = *wifi_iface(pIface);
    ScopedLock wifiLock(wifi.lock);
    if (!wifiLock) {
        NET_ERROR("lock wifi iface failed\n");
        return kFail;
    }
    markCurrentConnected(wifi, kFalse);
    wifiLock.unlock();

    ScopedLock link(w->lock);
    if (!link) {
        NET_ERROR("lock wpa_ctrl iface failed\n");
        return kFail;
    }
    store(w->disconnect_count, 0);
    store(w->isWpsMode, kFalse);
    store(w->connectStatus, WPACTRL_STATUS_CONNECTING);
    link.unlock();
    store(pIface->isConnected, kFalse);

    // Deliberate: network 0, whatever id the last connection got, and the words of a failed scan for both.
    for (const char* command : {"DISABLE_NETWORK 0", "ENABLE_NETWORK 0"}) {
        if (const RETURN_TYPE result = Wpactrl_ExecCmd(w, command); result != kOk) {
            NET_ERROR("[SCAN] failed\n");
            return result;
        }
    }
    return kOk;
}
