/** A wireless interface that is linked to a scripted supplicant, for tests of single functions of the back end. */
#ifndef UNIT_WIFI_BENCH_H
#define UNIT_WIFI_BENCH_H

#include "movo_net_fl_wifi/saved.h"
#include "movo_net_fl_wifi/wifi.h"
#include "movo_net_fl_wpactrl/connect.h"
#include "supplicant.h"

#include <cstring>

namespace wifi {
/** Events as the supplicant words them. */
inline constexpr const char* kConnected =
    "<3>CTRL-EVENT-CONNECTED - Connection to 02:00:00:00:01:00 completed [id=0 id_str=]";
inline constexpr const char* kDisconnected = "<3>CTRL-EVENT-DISCONNECTED bssid=02:00:00:00:01:00 reason=3";
inline constexpr const char* kHandshake = "<3>WPA: 4-Way Handshake failed - pre-shared key may be incorrect";
inline constexpr const char* kResults = "<3>CTRL-EVENT-SCAN-RESULTS ";

/** A reply to SCAN_RESULTS with one network. */
inline const std::string kTableHeader = "bssid / frequency / signal level / flags / ssid\n";
inline const std::string kTable = kTableHeader + "02:00:00:00:01:00\t2412\t-40\t[ESS]\tNet\n";

/** A network with a name and nothing else. */
MovNetWifiEssItem_t networkNamed(const std::string& name);
/** Saves it, as the back end does after a connection. */
RETURN_TYPE remember(MovNetWifiEssItem_t ess);
/** Names of the remembered networks, the latest first. */
Lines rememberedNames();

/** A set whose loop runs, with an active mlan0 whose link is open. */
struct Bench {
    Bench();
    ~Bench();
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    Wpactrl_t& link() { return *wpactrl_iface(&iface); }
    MovoNetWifi_t& wifi() { return *wifi_iface(&iface); }
    /** Puts a network into the table. */
    MovNetWifiEssItem_t& list(const std::string& name, MovoNetWifiSecurity_e security, MovoNetWifiEncryption_e cipher,
                              const std::string& key = "");
    /** Messages arrive, and the handler of the monitor connection is called. */
    RETURN_TYPE hear(const Lines& messages);
    /** A connection to a WPA2 network with a key, up to its commands; they are forgotten. */
    void connect();

    sim::Set set;
    MovoNetIface_t iface{};
    Supplicant supplicant{[this] { return &iface; }};
};

/** The messages of one level of the set, "function: text". */
Lines told(const sim::Set& set, int level);
Lines errors(const sim::Set& set);

/** The whole of a file of tests/fixtures. */
std::string fixture(const std::string& name);
} // namespace wifi

#endif
