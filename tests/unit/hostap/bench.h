/** What the tests of the soft access point share. */
#ifndef UNIT_HOSTAP_BENCH_H
#define UNIT_HOSTAP_BENCH_H

#include "movo_net_fl_hostap/hostap.h"
#include "movo_net_fl_hostap/ifc.h"
#include "sim/sim.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace hostap {
using Lines = std::vector<std::string>;

inline constexpr const char* kModule = "movo_net_fl_hostap";
/** A line of the file of leases. */
inline constexpr const char* kPhoneLease = "1795206803 02:00:00:00:02:00 192.168.255.182 phone1 *\n";
inline constexpr const char* kLeases = "/tmp/dnsmasq.leases";
inline constexpr const char* kPipe = "/tmp/softapnotify.pipe.bcm0";
inline constexpr const char* kConfiguration = "/data/wifi/hostapd.conf";
inline constexpr const char* kGetName = "getprop persist.device_name";
inline constexpr const char* kCreate = "/bin/wpa_cli INTERFACE_CREATE bcm0";
inline constexpr const char* kDelete = "/bin/wpa_cli interface_del bcm0";

inline const Lines kStartCommands = {kGetName, kCreate, "netcfg bcm0 up", "setprop hostapd.enable 1",
                                     "setprop dnsmasq.enable 1"};

/** A set called MyTV whose event loop runs, with an empty list of leases and callbacks recorded. */
struct Bench {
    explicit Bench(unsigned seed = 0);
    ~Bench();
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    /** Starts the access point on the test's own thread, without a watch of the leases. */
    void startHere();
    /** As an application does, until everything has come to rest and the loop knows the pipe. */
    void start();
    /** `startHere`, and everything before is forgotten. */
    void startAndForget();
    /** The lease list is written. */
    void writeLeases(const std::string& contents);
    /** Somebody writes into the notify pipe, and the loop deals with it. */
    void say(const std::string& words);

    /** Messages of the module, like "ERROR s_SoftAP_Start: HOSTAP: retry = 1\n". */
    Lines said() const;
    /** Those of one function, level and text only. */
    Lines said(const std::string& function) const;
    /** Commands, each as it was run. */
    Lines ran() const;

    sim::Set set;
};
} // namespace hostap

#endif
