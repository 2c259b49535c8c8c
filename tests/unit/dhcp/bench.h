/** What the tests of the DHCP client and of bringing interfaces up and down share. */
#ifndef UNIT_DHCP_BENCH_H
#define UNIT_DHCP_BENCH_H

#include "movo_net_fl_common/common.h"
#include "movo_net_fl_common/dhcp.h"
#include "movo_net_fl_wifi/wifi.h"
#include "unit/ip/tools.h"
#include "wifi_fake.h"

#include <atomic>
#include <initializer_list>
#include <string>

namespace dhcp {
using ip::address;
using ip::Lines;
using ip::ran;
using ip::told;

inline constexpr const char* kMarker = "/tmp/NotifyNtpclient";
inline constexpr const char* kPidFile = "/tmp/dhcp/dhcpcd-eth0.pid";
inline constexpr int kPid = 4711; ///< Its usual number.
inline constexpr const char* kPipe = "/tmp/dhcpnotify.pipe.eth0";
inline constexpr const char* kLaunch =
    "export DHCP_NOTIFY_PIPE_DIR=\"/tmp/dhcpnotify.pipe.eth0\"; /system/bin/dhcpcd  -B "
    "--noarp -h movo-tv  -t 90 eth0 &";

/** Every member of the record but name, type and links, as an active interface has them that never had an address. */
void makeFresh(MovoNetIface_t& iface);

/** The lines that begin with one of the beginnings, in their order. */
Lines only(const Lines& lines, std::initializer_list<const char*> beginnings);

/** What the module of these tests said, without its name: "INFO ConfigIP: if=eth0\n". */
Lines said(const sim::Set& set);

/** Descriptors of the product, without the board's stream, which stays open. */
Lines openFiles(const sim::Set& set);

/** Signals above 0 that were sent; looking for a process is none. */
std::vector<sim::Signal> sent(const sim::Set& set);

/** Stands for an environment that names the pipes so. Before the first bench; `base` must outlive the process. */
void namePipes(const char* base);

/** Waits until another thread is under way and, as far as this computer lets it, waits for this one. */
void goesAsFarAsItCan(const std::atomic<bool>& underWay);

/** A set whose event loop runs, with one active interface in the list: eth0 with its cable in, or wlan0. */
class Bench {
public:
    explicit Bench(MovoNetIfaceType_e type = _MOVO_NET_IFACE_ETHER_, unsigned seed = 0);

    /** Another interface of the machine in the list. */
    MovoNetIface_t& add(const std::string& name, MovoNetIfaceType_e type);
    /** Configures DHCP anew; the client runs and everything before is forgotten. */
    void launch();
    /** As `launch`, and the client has a lease. */
    void lease(const sim::Lease& lease = {});
    /** One tick: the loop takes up at its next pass what was registered on this thread. */
    void nextPass() { set.grantTicks(1); }
    /** Writes to the notify pipe and waits until the loop has dealt with it. */
    void hear(const std::string& message);
    /** A static configuration that is accepted, in the record and not applied. */
    void setStatic();

    sim::Set set;
    MovoNetIface_t& iface;
};
} // namespace dhcp

#endif
