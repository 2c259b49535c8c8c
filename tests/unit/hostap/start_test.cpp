#include "bench.h"

#include "support/atomic.h"

#include <sys/stat.h>

using namespace hostap;
using sim::Call;

// The start of the soft access point, step by step.

namespace {
std::string configurationFor(const std::string& name)
{
    return "interface=bcm0\ndriver=nl80211\nctrl_interface=/data/wifi\nchannel=0\nhw_mode=g\nieee80211n=1\nssid=" +
           name + "\nignore_broadcast_ssid=0\n";
}

TEST(SoftApStart, RunsItsCommandsInOrder)
{
    Bench bench;
    bench.startHere();
    EXPECT_EQ(bench.ran(), kStartCommands);
}

TEST(SoftApStart, SaysEveryStep)
{
    Bench bench;
    bench.set.addIface("bcm0").setMac("42:00:00:0a:FF:01");
    bench.startHere();
    EXPECT_EQ(bench.said(),
              (Lines{"ERROR s_SoftAP_Start: HOSTAP: retry = 1\n",
                     "ERROR s_SoftAP_Start: HOSTAP: Get name MyTV\n\n",
                     "ERROR SoftAP_isInterfaceAvailable: HOSTAP :find bcm0\n",
                     "INFO SoftAP_initializeInterface: HOSTAP :enter SoftAP_initializeInterface1\n ",
                     "INFO SoftAP_initializeInterface: HOSTAP:42\n",
                     "INFO SoftAP_initializeInterface: HOSTAP:00\n",
                     "INFO SoftAP_initializeInterface: HOSTAP:00\n",
                     "INFO SoftAP_initializeInterface: HOSTAP:0A\n",
                     "INFO SoftAP_initializeInterface: HOSTAP:FF\n",
                     "INFO SoftAP_initializeInterface: HOSTAP:01\n",
                     "ERROR s_SoftAP_Start: HOSTAP : Movo_Net_WiFi_HostAP_Init success\n ",
                     "ERROR SoftAP_isInterfaceAvailable: HOSTAP :find bcm0\n",
                     "INFO SoftAP_enableInterface: HOSTAP :Command: netcfg bcm0 up\n",
                     "INFO SoftAP_setIPAddress: HOSTAP:enter SoftAP_setIPAddress success!\n",
                     "ERROR SoftAP_setIPAddress: HOSTAP:SoftAP_setIPAddress success!\n",
                     "ERROR SoftAP_startHostapd: HOSTAP :start hostapd at channel=6 SSID=MyTV\n hidden_ssid=0\n",
                     "ERROR SoftAP_startHostapd: HOSTAP :run hostapd \n",
                     "INFO SoftAP_hostapd_setprop: HOSTAP :run dnsmasq \n",
                     "INFO SoftAP_hostapd_setprop: HOSTAP:Command: setprop hostapd.enable 1\n",
                     "INFO SoftAP_dnsmasq_setprop: HOSTAP :run dnsmasq \n",
                     "INFO SoftAP_dnsmasq_setprop: HOSTAP:Command: setprop dnsmasq.enable 1\n",
                     "ERROR s_SoftAP_Start: HOSTAP: SoftAP Check Connection Thread Creating Failed.......\n"}));
}

TEST(SoftApStart, BringsTheInterfaceUpWithItsAddress)
{
    Bench bench;
    bench.startHere();
    EXPECT_TRUE(bench.set.iface("bcm0").up());
    EXPECT_EQ(bench.set.iface("bcm0").address(), "192.168.255.249");
    EXPECT_EQ(bench.set.iface("bcm0").mask(), "255.255.255.0"); // by the address's class: nobody sets one
}

TEST(SoftApStart, EndsStartedAlsoWithoutAWatch)
{
    Bench bench;
    bench.startHere();
    EXPECT_EQ(bench.said("s_SoftAP_Start").back(),
              "ERROR HOSTAP: SoftAP Check Connection Thread Creating Failed.......\n");
    EXPECT_EQ(hotspot.mState, HOTSPOT_STARTED);
    EXPECT_EQ(bench.set.openDescriptors(), Lines{});
}

TEST(SoftApStart, WritesTheConfigurationOfHostapd)
{
    Bench bench;
    bench.startHere();
    EXPECT_EQ(bench.set.read(kConfiguration), configurationFor("MyTV\n"));
    struct stat status {};
    ASSERT_EQ(stat(bench.set.real(kConfiguration).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0777U);
}

/** What the configuration is before its mode is changed. */
TEST(SoftApStart, MakesTheConfigurationForItsOwnerToWrite)
{
    Bench bench;
    const mode_t mask = umask(0);
    (void)bench.set.fail({.call = Call::Chmod, .on = kConfiguration, .error = EPERM});
    EXPECT_EQ(s_SoftAP_Start(nullptr), nullptr);
    struct stat status {};
    ASSERT_EQ(stat(bench.set.real(kConfiguration).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644U);
    (void)umask(mask);
}

TEST(SoftApStart, ReplacesAnOlderConfiguration)
{
    Bench bench;
    bench.set.write(kConfiguration, std::string(1000, 'x'));
    bench.startHere();
    EXPECT_EQ(bench.set.read(kConfiguration), configurationFor("MyTV\n"));
}

TEST(SoftApStart, KeepsTheLineEndOfTheNameSoThatAnEmptyLineFollows)
{
    Bench bench;
    bench.startHere();
    EXPECT_NE(bench.set.read(kConfiguration).find("\nssid=MyTV\n\nignore_broadcast_ssid=0\n"), std::string::npos);
    EXPECT_STREQ(hotspot.mSSID, "MyTV\n");
}

TEST(SoftApStart, KeepsTellingChannelSixWhileTheFileLeavesTheChoice)
{
    Bench bench;
    bench.startHere();
    EXPECT_EQ(bench.said("SoftAP_startHostapd").front(),
              "ERROR HOSTAP :start hostapd at channel=6 SSID=MyTV\n hidden_ssid=0\n");
    EXPECT_NE(bench.set.read(kConfiguration).find("\nchannel=0\n"), std::string::npos);
}

TEST(SoftApStart, KeepsTellingOfDnsmasqForEitherSwitch)
{
    Bench bench;
    bench.startHere();
    EXPECT_EQ(bench.said("SoftAP_hostapd_setprop").front(), "INFO HOSTAP :run dnsmasq \n");
    EXPECT_EQ(bench.said("SoftAP_dnsmasq_setprop").front(), "INFO HOSTAP :run dnsmasq \n");
}

TEST(SoftApStart, ResetsWhatTheLastOneHasLeft)
{
    Bench bench;
    hotspot.mIsHidden = 1;
    hotspot.mIsInitialized = 1;
    (void)std::snprintf(hotspot.mInterface, sizeof(hotspot.mInterface), "other");
    bool looked = false;
    bench.set.onCommand(kGetName).prints("MyTV\n").does([&looked] {
        looked = true;
        EXPECT_EQ(std::string(hotspot.mBssid, hotspot.mBssid + 6), "000000");
        EXPECT_EQ(hotspot.mIsInitialized, 0);
        EXPECT_EQ(hotspot.mIsHidden, 0);
        EXPECT_STREQ(hotspot.mInterface, "bcm0");
        EXPECT_STREQ(hotspot.mStaInterface, "mlan0");
        EXPECT_EQ(hotspot.mState, HOTSPOT_STOPPED);
    });
    bench.startHere();
    EXPECT_TRUE(looked);
}

TEST(SoftApStart, TakesTheAddressOfTheInterfaceForBoth)
{
    Bench bench;
    bench.set.addIface("bcm0").setMac("42:00:00:0a:ff:01");
    bench.startHere();
    const std::string expected("\x42\0\0\x0a\xff\x01", 6);
    EXPECT_EQ(std::string(hotspot.mMacAddress, hotspot.mMacAddress + 6), expected);
    EXPECT_EQ(std::string(hotspot.mBssid, hotspot.mBssid + 6), expected);
}

TEST(SoftApStart, TakesAddressesAwayWhenTheNetworkIsHidden)
{
    Bench bench;
    bench.set.addIface("bcm0").setAddress("10.1.1.1");
    bench.set.onCommand("netcfg bcm0 up").does([] { movonet::store(hotspot.mIsHidden, 1); });
    bench.startHere();
    EXPECT_EQ(bench.set.iface("bcm0").address(), "0.0.0.0");
    EXPECT_EQ(bench.said("SoftAP_setIPAddress"), Lines{});
    EXPECT_EQ(bench.said("SoftAP_startHostapd").front(),
              "ERROR HOSTAP :start hostapd at channel=6 SSID=MyTV\n hidden_ssid=1\n");
    EXPECT_TRUE(bench.set.read(kConfiguration).ends_with("ignore_broadcast_ssid=1\n"));
    EXPECT_EQ(hotspot.mState, HOTSPOT_STARTED);
}

// --- The call ---

TEST(SoftApStartCall, ReturnsAtOnceAndStartsOnAThreadOfItsOwn)
{
    Bench bench;
    bench.start();
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), 1);
    for (const sim::Command& command : bench.set.commands()) {
        EXPECT_EQ(command.thread, sim::ThreadKind::Product) << command.text;
    }
    EXPECT_EQ(bench.said("SoftAP_Create_Thread"),
              (Lines{"INFO Created a Connection Testing thread\n", "INFO Created a Connection Testing thread\n"}));
}

TEST(SoftApStartCall, FailsWithoutAThread)
{
    Bench bench;
    bench.set.fail({.call = Call::ThreadCreate, .nth = 1, .error = EAGAIN});
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Start(0), 1);
    EXPECT_EQ(bench.said(), Lines{});
    EXPECT_EQ(bench.ran(), Lines{});
}

TEST(SoftApStartCall, DoesNothingWhenItIsUp)
{
    Bench bench;
    bench.startAndForget();
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Start(0), 0);
    bench.set.settle();
    EXPECT_EQ(bench.said(), Lines{});
    EXPECT_EQ(bench.ran(), Lines{});
}

class SoftApStartFrom : public testing::TestWithParam<MovoHotspotState_e> {};

TEST_P(SoftApStartFrom, BeginsInEveryOtherState)
{
    Bench bench;
    hotspot.mState = GetParam();
    bench.start();
    EXPECT_EQ(bench.ran()[0], kGetName);
    EXPECT_EQ(hotspot.mState, HOTSPOT_STARTED);
}
INSTANTIATE_TEST_SUITE_P(States, SoftApStartFrom, testing::Values(HOTSPOT_STOPPED, HOTSPOT_STOPPING, HOTSPOT_STARTING));
} // namespace
