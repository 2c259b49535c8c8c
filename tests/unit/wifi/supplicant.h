/** A supplicant that speaks from a script, in place of its client library, and a wireless interface that is linked to
 * it. */
#ifndef UNIT_WIFI_SUPPLICANT_H
#define UNIT_WIFI_SUPPLICANT_H

#include "movo_net_fl_wifi/saved.h"
#include "movo_net_fl_wifi/wifi.h"
#include "movo_net_fl_wpactrl/connect.h"
#include "sim/sim.h"

#include <cstring>

#include <deque>
#include <map>
#include <string>
#include <vector>

namespace wifi {
using Lines = std::vector<std::string>;

/** What the client library is asked, and what it answers. One at a time: the calls have no argument to tell apart. */
struct Supplicant {
    Supplicant();
    ~Supplicant();
    Supplicant(const Supplicant&) = delete;
    Supplicant& operator=(const Supplicant&) = delete;

    /** Replies to a command, one a request, the last one for good. Others are answered "OK". */
    std::map<std::string, std::deque<std::string>> replies;
    /** What a request returns: 0, -1 for a lost peer, -2 for a time-out; one a request, then 0. */
    std::deque<int> results;
    /** Messages that wait on the monitor connection. */
    std::deque<std::string> events;
    int openFailures = 0; ///< So many connections are refused, after `openGrants`.
    int openGrants = 0;
    bool attachFails = false;
    bool receiveFails = false;
    int pendingAtEnd = 0; ///< What is told of a connection without messages.

    Lines commands; ///< As they were sent.
    Lines opened;   ///< Paths.
    int closed = 0;
    int attached = 0;
    int detached = 0;
};

/** The commands of a supplicant since the last time. */
Lines sent(Supplicant& supplicant);

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
    Supplicant supplicant;
    MovoNetIface_t iface{};
};

/** The messages of one level of the set, "function: text". */
Lines told(const sim::Set& set, int level);

/** The whole of a file of tests/fixtures. */
std::string fixture(const std::string& name);
} // namespace wifi

#endif
