#include "names.h"
#include "television.h"

#include <gtest/gtest.h>
#include <movo_net.h>
#include <sys/mman.h>

using namespace wifi;
using namespace movonet;

// The supplicant may end at any command. The glue does not notice by itself: what is asked fails, and taking the
// interface down and up again starts another one.

namespace {
struct Request {
    const char* name;
    std::function<void(Television&)> make;
};
void PrintTo(const Request& row, std::ostream* out)
{
    *out << row.name;
}

void join(const char* essid)
{
    (void)Movo_NET_WifiSetKey(0, kIf, essid, "12345", 5);
    (void)Movo_NET_WifiConnectEss(0, kIf, essid);
}

const std::vector<Request> kRequests{
    {"Open", [](Television&) { join("Open"); }},
    {"Wep", [](Television&) { join("Wep"); }},
    {"Wpa", [](Television&) { join("Wpa"); }},
    {"Scan", [](Television&) { (void)Movo_NET_WifiScanEsss(0, kIf); }},
    {"Update", [](Television&) { (void)Movo_NET_WifiUpdateEsss(0, kIf); }},
    {"Leave", [](Television&) { (void)Movo_NET_WifiDisConnect(0, kIf); }},
    {"Hidden", [](Television&) { (void)Movo_NET_WifiSearchHideEss(0, kIf, "Hidden"); }},
    {"PushAndPin",
     [](Television&) { (void)Movo_NET_WifiStartWpsConnection(0, kIf, _MOVO_NET_WIFI_WPS_PBC_PIN, "12345670"); }},
    {"MakePin",
     [](Television&) {
         char pin[9];
         (void)Movo_NET_WifiGenerateWpsPin(0, kIf, pin, sizeof(pin));
     }},
    {"Disable", [](Television&) { (void)Movo_NET_DisableIface(0, kIf); }},
    {"BadKey",
     [](Television& television) {
         join("Open");
         television.hears({kHandshake});
     }},
    {"LinkLost",
     [](Television& television) {
         join("Open");
         television.hears({kConnected, kDisconnected});
     }},
    {"TimeOut",
     [](Television& television) {
         join("Open");
         television.set.grantTicks(301);
     }},
    {"HiddenFound",
     [](Television& television) {
         (void)Movo_NET_WifiSearchHideEss(0, kIf, "Hidden");
         television.hears({"<3>Trying to associate with 02:00:00:00:01:00 (SSID='Hidden' freq=2412 MHz)"});
     }},
};

const std::vector<Network> kAir{{"Open", "[ESS]"}, {"Wep", "[WEP][ESS]"}, {"Wpa", "[WPA2-PSK-CCMP][ESS]"}};

/** How many commands the request sends to a supplicant that lives. */
std::size_t commandsOf(const Request& request)
{
    void* shared = mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    (void)sim::forkedRun([&] {
        Television television;
        television.startWith(kAir);
        request.make(television);
        *static_cast<int*>(shared) = static_cast<int>(television.supplicant.commands.size());
    });
    const auto count = static_cast<std::size_t>(*static_cast<int*>(shared));
    (void)munmap(shared, sizeof(int));
    return count;
}

/** The documented way back, and that it leads somewhere. */
void expectWayBack(Television& television)
{
    television.set.grantTicks(20);
    (void)Movo_NET_DisableIface(0, kIf);
    EXPECT_EQ(television.supplicant.connections(), 0);
    EXPECT_EQ(Movo_NET_EnableIface(0, kIf), 0);
    television.set.grantTicks(1); // its events are heard from now on
    EXPECT_TRUE(television.supplicant.isAlive());
    EXPECT_EQ(television.supplicant.connections(), 2);
    EXPECT_EQ(Movo_NET_WifiUpdateEsss(0, kIf), 0);
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, "Open"), 0);
    television.set.forget();
    television.hears({kConnected});
    EXPECT_CALLBACKS(television.set, {{sim::IFCONNECTED, kIf}});
}

class DeathOfTheSupplicant : public testing::TestWithParam<Request> {};

TEST_P(DeathOfTheSupplicant, AtAnyCommandHasAWayBack)
{
    const std::size_t commands = commandsOf(GetParam());
    ASSERT_GT(commands, 0U);
    for (std::size_t deadly = 1; deadly <= commands; ++deadly) {
        const int failed = sim::forkedRun([deadly] {
            Television television;
            television.startWith(kAir);
            std::size_t seen = 0;
            television.supplicant.onCommand = [&](const std::string&) {
                if (++seen == deadly) {
                    television.lives(false);
                }
            };
            GetParam().make(television);
            EXPECT_FALSE(television.supplicant.isAlive());
            EXPECT_LOGGED(television.set, KEST_LEVEL_ERROR, "movo_net_fl_wpactrl", "Wpactrl_SendCmd",
                          "wpa_ctrl_request error\n");
            expectWayBack(television);
        });
        EXPECT_EQ(failed, 0) << "at command " << deadly;
    }
}
INSTANTIATE_TEST_SUITE_P(Requests, DeathOfTheSupplicant, testing::ValuesIn(kRequests),
                         [](const auto& row) { return row.param.name; });
} // namespace

TEST(DownAndUp, AHundredTimesKeepsNothing)
{
    Television television;
    television.startWith(kAir);
    const Lines open = television.set.openDescriptors();
    const int threads = television.set.liveThreads();
    for (int round = 0; round < 100; ++round) {
        ASSERT_EQ(Movo_NET_WifiConnectEss(0, kIf, "Open"), 0);
        television.hears({kConnected});
        television.set.dhcp(kIf).leases();
        ASSERT_EQ(Movo_NET_DisableIface(0, kIf), 0);
        television.set.settle();
        ASSERT_EQ(television.supplicant.connections(), 0) << round;
        ASSERT_EQ(television.set.openDescriptors(), open) << round;
        ASSERT_EQ(Movo_NET_EnableIface(0, kIf), 0);
        television.set.grantTicks(1);
        ASSERT_EQ(television.supplicant.connections(), 2) << round;
        ASSERT_EQ(television.set.openDescriptors(), open) << round;
        ASSERT_EQ(television.set.liveThreads(), threads) << round;
        ASSERT_EQ(television.set.heldLocks(), 0) << round;
        television.set.forget();
    }
}
