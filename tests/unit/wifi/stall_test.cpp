#include "stall.h"

#include "movo_net_fl_common/dhcp.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_hostap/hostap.h"
#include "unit/fg/every_call.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <movo_net.h>
#include <regex>
#include <sstream>
#include <unistd.h>

// How long each public call and each handler waits when all it asks is as slow as it can be. The table in
// docs/concurrency.md holds what is found here: whoever adds a wait sees its row fail.

using namespace wifi;
using namespace movonet;

namespace {
using sim::Call;
using sim::ThreadKind;

constexpr int kPassTicks = 10;
constexpr const char* kGetName = "getprop persist.device_name";
constexpr const char* kLeases = "/tmp/dnsmasq.leases";
constexpr const char* kSoftApPipe = "/tmp/softapnotify.pipe.bcm0";

struct Row {
    std::string name;
    void (Slow::*prepare)();
    ThreadKind kind;
    /** What is done before the waits count. */
    std::function<void(Slow&)> before;
    std::function<void(Slow&)> action;
};
void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.name;
}

void nothing(Slow&) {}

void takeDown(Slow&)
{
    EXPECT_EQ(Movo_NET_DisableIface(0, kIf), 0);
}

std::vector<Row> calls()
{
    std::vector<Row> rows;
    for (const PublicCall& each : everyCall()) {
        const bool enables = std::string(each.name) == "Movo_NET_EnableIface";
        rows.push_back({each.name, &Slow::join, ThreadKind::Test, enables ? takeDown : nothing,
                        [call = each.call](Slow& slow) { call(slow.set, kIf); }});
    }
    rows.push_back(
        {"Movo_NET_Glue_Init", nullptr, ThreadKind::Test, nothing, [](Slow& slow) { EXPECT_EQ(slow.set.start(), 0); }});
    rows.push_back({"Movo_NET_Glue_Exit", &Slow::join, ThreadKind::Test, nothing,
                    [](Slow& slow) { EXPECT_EQ(slow.set.stop(), 0); }});
    return rows;
}

/** A handler that a test calls in the loop's stead. */
Row direct(const char* name, void (Slow::*prepare)(), std::function<void(Slow&)> before,
           RETURN_TYPE (*handler)(int, void*, kest_bool))
{
    return {name, prepare, ThreadKind::Test, std::move(before), [handler](Slow& slow) {
                const LoopGate gate;
                (void)handler(kNoFd, &slow.television.mlan0(), kTrue);
            }};
}

/** A handler that the loop calls, for a message of the supplicant. */
Row heard(const char* name, void (Slow::*prepare)(), std::function<void(Slow&)> before, const char* message)
{
    return {name, prepare, ThreadKind::Loop, std::move(before),
            [message](Slow& slow) { slow.television.hears({message}); }};
}

void scan(Slow&)
{
    EXPECT_EQ(Movo_NET_WifiScanEsss(0, kIf), 0);
}

std::vector<Row> handlers()
{
    const auto loseLease = [](Slow& slow) { slow.set.dhcp(kIf).loses(); };
    return {
        heard("`OnWpactrlEventRev`, connected", &Slow::tryToJoin, nothing, kConnected),
        heard("`OnWpactrlEventRev`, disconnected", &Slow::join, nothing, kDisconnected),
        heard("`OnWpactrlEventRev`, handshake failed", &Slow::tryToJoin, nothing, kHandshake),
        heard("`OnWpactrlEventRev`, scan results", &Slow::join, scan, kResults),
        direct("`OnConnectTimeoutEventRev`", &Slow::tryToJoin, nothing, OnConnectTimeoutEventRev),
        direct("`OnScanTimeoutEventRev`", &Slow::join, scan, OnScanTimeoutEventRev),
        {"`OnDhcpEventRev`, new", &Slow::join, ThreadKind::Loop, nothing,
         [](Slow& slow) { slow.set.dhcp(kIf).leases({.address = "10.0.2.16"}); }},
        {"`OnDhcpEventRev`, down", &Slow::join, ThreadKind::Loop, nothing, loseLease},
        direct("`OnDhcpDown`", &Slow::join, loseLease, OnDhcpDown),
        {"configuration thread, static", &Slow::join, ThreadKind::Product, nothing,
         [](Slow&) { EXPECT_EQ(Movo_NET_ConfigIPMode(0, kIf, _MOVO_NET_IPMODE_STATIC_), 0); }},
        {"configuration thread, DHCP", &Slow::join, ThreadKind::Product,
         [](Slow& slow) {
             EXPECT_EQ(Movo_NET_ConfigIPMode(0, kIf, _MOVO_NET_IPMODE_STATIC_), 0);
             slow.set.settle();
         },
         [](Slow&) { EXPECT_EQ(Movo_NET_ConfigIPMode(0, kIf, _MOVO_NET_IPMODE_DHCP_), 0); }},
    };
}

/** The pass that finds both interfaces gone, the cable and the dongle pulled. */
void unplug(Slow& slow)
{
    slow.set.cable("eth0").pull();
    slow.set.iface(kIf).unplugDevice();
    slow.set.grantTicks(kPassTicks);
}

/** The pass that finds them again, and joins the network. */
void plug(Slow& slow)
{
    slow.set.addIface(kIf).wireless();
    slow.set.cable("eth0").plug();
    slow.set.grantTicks(kPassTicks);
}

/** The remembered network is not joined yet, and out of range so far. */
void rejoin(Slow& slow)
{
    unplug(slow);
    plug(slow);
    slow.television.tells({});
    EXPECT_EQ(Movo_NET_WifiUpdateEsss(0, kIf), 0);
    slow.television.tells({Network{}});
}

void startAccessPoint(Slow& slow)
{
    slow.set.onCommand(kGetName).prints("MyTV\n");
    slow.set.write(kLeases, ""); // its watch would look for the list for ever
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Start(0), 0);
    slow.set.settle();
    slow.set.grantTicks(1); // the loop takes the pipe up
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
    slow.set.forget();
}

/** The start's thread, as long as the television has no name of its own; the watch that it makes is another thread. */
void startNameless(Slow& slow)
{
    slow.set.onCommand(kGetName).prints("Lumenpoint\n");
    slow.set.write(kLeases, "");
    (void)s_SoftAP_Start(nullptr);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
}

void stopAccessPoint(Slow&)
{
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Stop(0), 0);
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 0);
}

void changeLeases(Slow& slow, int failures)
{
    slow.set.fail({.call = Call::Open, .on = kLeases, .nth = 1, .times = failures, .error = EACCES});
    slow.set.write(kLeases, "1795206803 02:00:00:00:02:00 192.168.255.182 phone1 *\n");
    slow.set.watch(kLeases).modified();
}

/** The list can be opened at the last attempt. */
void leaseToPhone(Slow& slow)
{
    changeLeases(slow, 9);
    EXPECT_CALLBACKS(slow.set, {{sim::SOFTAPCONNECTED, "bcm0"}});
}

void hideLeases(Slow& slow)
{
    changeLeases(slow, 10);
    EXPECT_CALLBACKS(slow.set, {});
}

void joinPhone(Slow& slow)
{
    const int pipe = open(slow.set.real(kSoftApPipe).c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(write(pipe, "up", 2), 2);
    EXPECT_EQ(close(pipe), 0);
    slow.set.settle();
    EXPECT_CALLBACKS(slow.set, {{sim::SOFTAPSCAN, "bcm0"}});
}

std::vector<Row> passes()
{
    return {
        {"`OnLinkStatusEventRev`, interfaces found", &Slow::join, ThreadKind::Loop, unplug, plug},
        {"`OnLinkStatusEventRev`, interfaces removed", &Slow::join, ThreadKind::Loop, nothing, unplug},
        direct("`OnFirstConnectTimeout`", &Slow::join, rejoin, OnFirstConnectTimeout),
    };
}

std::vector<Row> accessPoint()
{
    return {
        {"`s_SoftAP_Start`, its thread", &Slow::join, ThreadKind::Test, nothing, startNameless},
        {"Movo_Net_WiFi_HostAP_Stop, running", &Slow::join, ThreadKind::Test, startAccessPoint, stopAccessPoint},
        {"`SoftAP_GetConnection`, lease", &Slow::join, ThreadKind::Product, startAccessPoint, leaseToPhone},
        {"`SoftAP_GetConnection`, no list", &Slow::join, ThreadKind::Product, startAccessPoint, hideLeases},
        {"`OnSoftapEventRev`", &Slow::join, ThreadKind::Loop, startAccessPoint, joinPhone},
    };
}

class StallTable : public testing::TestWithParam<Row> {};

TEST_P(StallTable, HasTheLongestWait)
{
    const Row& row = GetParam();
    Slow slow;
    slow.television.supplicant.attempts.lookAway();
    if (row.prepare != nullptr) {
        (slow.*row.prepare)();
    }
    row.before(slow);
    EXPECT_EQ(documented(row.name + " |"), slow.measure(row.name, row.kind, [&] { row.action(slow); }));
}
INSTANTIATE_TEST_SUITE_P(Calls, StallTable, testing::ValuesIn(calls()));
INSTANTIATE_TEST_SUITE_P(Handlers, StallTable, testing::ValuesIn(handlers()));
INSTANTIATE_TEST_SUITE_P(LinkPass, StallTable, testing::ValuesIn(passes()));
INSTANTIATE_TEST_SUITE_P(SoftAp, StallTable, testing::ValuesIn(accessPoint()));

TEST(StallTableRows, AreThereForEveryPublicCall)
{
    for (const std::string& name : declaredCalls()) {
        EXPECT_TRUE(name == "WaitForChild2Exit" || documented(name + " |") != "no row") << name;
    }
}

/** What the event loop calls, by their definitions. */
std::vector<std::string> definedHandlers()
{
    static const std::regex definition(R"(RETURN_TYPE (On\w+)\(int)");
    std::vector<std::string> names;
    const std::filesystem::path library = std::filesystem::path(INCLUDE_FOLDER).parent_path();
    for (const auto& each : std::filesystem::recursive_directory_iterator(library)) {
        std::ifstream file(each.path());
        for (std::string line; each.path().extension() == ".cpp" && std::getline(file, line);) {
            if (std::smatch found; std::regex_search(line, found, definition)) {
                names.push_back(found[1]);
            }
        }
    }
    return names;
}

TEST(StallTableRows, AreThereForEveryHandler)
{
    const std::vector<std::string> handlers = definedHandlers();
    EXPECT_GE(handlers.size(), 8U);
    for (const std::string& name : handlers) {
        EXPECT_NE(documented("`" + name + "`"), "no row") << name;
    }
}
} // namespace
