/** A television with a Wi-Fi chip whose supplicant speaks from a script: the whole glue, from its start on. */
#ifndef UNIT_WIFI_TELEVISION_H
#define UNIT_WIFI_TELEVISION_H

#include "bench.h"

namespace wifi {
/** A network of the air. */
struct Network {
    std::string name = "Net";
    std::string flags = "[WPA2-PSK-CCMP][WPS][ESS]";
    std::string bssid = "02:00:00:00:01:00";
    int frequency = 2437;
    int signal = -50;
};

class Television {
public:
    /** The chip, its supplicant and mlan0 are there; eth0 with its cable out, too. Nothing is started. */
    explicit Television(unsigned seed = 0);
    ~Television();
    Television(const Television&) = delete;
    Television& operator=(const Television&) = delete;

    /** Starts the glue and waits until mlan0 is active. */
    void start();
    /** The same, with a table of these networks. */
    void startWith(const std::vector<Network>& networks);

    /** The supplicant says so, and the glue has heard it. */
    void hears(const Lines& messages);
    /** The table that the supplicant tells from now on. */
    void tells(const std::vector<Network>& networks);
    /** The supplicant's process begins or ends. */
    void lives(bool alive);

    MovoNetIface_t& mlan0() const;
    Wpactrl_t& link() const { return *wpactrl_iface(&mlan0()); }

private:
    MovoNetIface_t* find() const;

    Supplicant m_supplicant; // outlives the set, which stops the glue

public:
    Supplicant& supplicant = m_supplicant;
    sim::Set set;

private:
    sim::CommandRule m_ps;
};
} // namespace wifi

#endif
