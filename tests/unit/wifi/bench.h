/** A wireless interface that is linked to a scripted supplicant, for tests of single functions of the back end. */
#ifndef UNIT_WIFI_BENCH_H
#define UNIT_WIFI_BENCH_H

#include "movo_net_fl_wifi/saved.h"
#include "movo_net_fl_wifi/wifi.h"
#include "movo_net_fl_wpactrl/connect.h"
#include "supplicant.h"

#include <cstring>

namespace wifi {
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

/** The whole of a file of tests/fixtures. */
std::string fixture(const std::string& name);
} // namespace wifi

#endif
