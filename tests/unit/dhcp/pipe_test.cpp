#include "bench.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

using namespace dhcp;

// Pipes of unusual names, pipes left over, and wireless interfaces.

namespace {
/** A base path of so many characters, in folders of at most 100. */
std::string baseOf(std::size_t length)
{
    std::string base = "/tmp";
    while (base.size() < length) {
        base += "/" + std::string(std::min<std::size_t>(length - base.size() - 1, 100), 'p');
    }
    return base;
}

class LongPipe : public testing::TestWithParam<std::size_t> {};

TEST_P(LongPipe, HasOnePathInEveryCommand)
{
    static const std::string base = baseOf(GetParam());
    ASSERT_EQ(base.size(), GetParam());
    namePipes(base.c_str());
    Bench bench;
    bench.set.write(base.substr(0, base.rfind('/')) + "/.keep", "");
    std::string("longname").copy(bench.iface.name, 8);
    const std::string path = base + ".longname";
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(ran(bench.set), (Lines{"ifconfig longname 0.0.0.0", "chmod 777 " + path,
                                     "export DHCP_NOTIFY_PIPE_DIR=\"" + path +
                                         "\"; /system/bin/dhcpcd  -B --noarp -h movo-tv  -t 90 longname &"}));
    EXPECT_TRUE(bench.set.exists(path));
    EXPECT_EQ(openFiles(bench.set), Lines{"open(\"" + path + "\")"});
}

INSTANTIATE_TEST_SUITE_P(Lengths, LongPipe, testing::Values(22U, 255U, 256U, 700U));

TEST(PipePathOf31Characters, FitsWhenTheClientIsStopped)
{
    namePipes("/tmp/abcdefghijklmnopqrstu");
    Bench bench;
    ASSERT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    bench.set.forget();
    EXPECT_EQ(ShutdownDhcpcd(&bench.iface, movonet::kRelease), 1);
    EXPECT_EQ(said(bench.set)[1],
              "INFO ShutdownDhcpcd: removing dhcpcd pipe: /tmp/abcdefghijklmnopqrstu.eth0, return=0\n");
}

TEST(PipeNames, OfEightCharactersFitTheDefaultBase)
{
    Bench bench;
    std::string("longname").copy(bench.iface.name, 8);
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    bench.set.write("/tmp/dhcp/dhcpcd-longname.pid", "");
    bench.set.forget();
    EXPECT_EQ(ShutdownDhcpcd(&bench.iface, movonet::kRelease), 1);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fl_common", "ShutdownDhcpcd",
                  "removing dhcpcd pipe: /tmp/dhcpnotify.pipe.longname, return=0\n");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fl_common", "ShutdownDhcpcd",
                  "ShutdownDhcpcd, checking file /tmp/dhcp/dhcpcd-longname.pid\n");
    EXPECT_FALSE(bench.set.exists("/tmp/dhcp/dhcpcd-longname.pid"));
}

/** A client that has made its pid file and not yet written it: it counts as not running, its pipe stays open. */
TEST(StalePipe, OfAnEmptyPidFileIsClosedByTheNextStart)
{
    Bench bench;
    bench.launch();
    bench.set.write(kPidFile, "");
    const int event = bench.iface.dhcpcEventHandle;
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    bench.nextPass();
    EXPECT_EQ(openFiles(bench.set), Lines{"open(\"/tmp/dhcpnotify.pipe.eth0\")"});
    EXPECT_NE(bench.iface.dhcpcEventHandle, event);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fl_eventloop", "int_removeEvent",
                  "handle = " + std::to_string(event) + "\n");

    bench.set.forget();
    bench.hear("down");
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fl_common", "OnDhcpEventRev", "message: down\n");
}

TEST(StalePipe, ThatIsStillWrittenToDoesNotStopTheTimers)
{
    Bench bench;
    bench.launch();
    bench.set.write(kPidFile, "");
    const int oldClient = open(bench.set.real(kPipe).c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(oldClient, 0);
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(write(oldClient, "new", 3), 3);
    bench.set.grantTicks(3); // ends the test when they do not pass
    EXPECT_EQ(close(oldClient), 0);
    EXPECT_NOT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fl_common", "OnDhcpEventRev", "message: new\n");
}

TEST(Wireless, LaunchWaitsForTheAssociation)
{
    Bench bench(_MOVO_NET_IFACE_WIFI_);
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 1);
    EXPECT_EQ(wifiFake.asked, &bench.iface);
    EXPECT_EQ(said(bench.set).back(), "INFO ConfigIP: wifi not connected, can not dhcp\n");
    EXPECT_EQ(ran(bench.set), Lines{"ifconfig wlan0 0.0.0.0"});
    EXPECT_EQ(bench.iface.dhcpcfd, -1);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(Wireless, LaunchWithoutASupplicantIsRefused)
{
    Bench bench(_MOVO_NET_IFACE_WIFI_);
    wifiFake.associated = 1;
    wifiFake.askResult = 5;
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 1);
    EXPECT_EQ(bench.set.dhcp("wlan0").launches(), 0);
}

TEST(Wireless, LaunchesWhenAssociated)
{
    Bench bench(_MOVO_NET_IFACE_WIFI_);
    wifiFake.associated = 1;
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_TRUE(bench.set.dhcp("wlan0").running());
    EXPECT_EQ(bench.set.dhcp("wlan0").pipe(), "/tmp/dhcpnotify.pipe.wlan0");
}

TEST(Wireless, StopsTheClientBeforeItAsksForTheAssociation)
{
    Bench bench(_MOVO_NET_IFACE_WIFI_);
    wifiFake.associated = 1;
    bench.launch();
    const int pid = bench.set.dhcp("wlan0").pid();
    wifiFake.associated = 0;
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 1);
    EXPECT_EQ(sent(bench.set), (std::vector<sim::Signal>{{pid, SIGHUP, 0}}));
}

TEST(Wireless, LeavesARunningClientAloneThoughNotAssociated)
{
    Bench bench(_MOVO_NET_IFACE_WIFI_);
    wifiFake.associated = 1;
    bench.launch();
    wifiFake.associated = 0;
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kNoForce), 0);
    EXPECT_CALLBACKS(bench.set, {{sim::IPCHANGED, "wlan0"}});
}
} // namespace
