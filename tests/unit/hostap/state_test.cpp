#include "bench.h"

#include <cstring>

using namespace hostap;

// What applications may ask.

namespace {
MovoHotspotconfig_t config()
{
    MovoHotspotconfig_t config;
    std::memset(&config, 'x', sizeof(config));
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Config(0, &config), 0);
    return config;
}

std::string bytes(const void* from, std::size_t size)
{
    return std::string(static_cast<const char*>(from), size);
}

TEST(SoftApConfig, IsTheDefaultBeforeAStart)
{
    Bench bench;
    const MovoHotspotconfig_t expected = {.Ssid = "Lumenpoint", .Bssid = {}, .Hidden = 0};
    EXPECT_EQ(std::memcmp(config().Ssid, expected.Ssid, sizeof(expected.Ssid)), 0);
    EXPECT_EQ(bytes(config().Bssid, 6), std::string(6, '\0'));
    EXPECT_EQ(config().Hidden, 0);
}

TEST(SoftApConfig, IsTheNetworksAfterAStart)
{
    Bench bench;
    bench.set.addIface("bcm0").setMac("42:00:00:0a:ff:01");
    bench.startHere();
    EXPECT_STREQ(config().Ssid, "MyTV\n");
    EXPECT_EQ(bytes(config().Bssid, 6), std::string("\x42\0\0\x0a\xff\x01", 6));
    EXPECT_EQ(config().Hidden, 0);
}

TEST(SoftApConfig, TellsThatTheNetworkIsHidden)
{
    Bench bench;
    bench.startHere();
    hotspot.mIsHidden = 1;
    EXPECT_EQ(config().Hidden, 1);
}

TEST(SoftApConfig, IsTheDefaultInEveryOtherState)
{
    Bench bench;
    bench.startHere();
    for (const auto state : {HOTSPOT_STOPPED, HOTSPOT_STOPPING, HOTSPOT_STARTING}) {
        hotspot.mState = state;
        EXPECT_STREQ(config().Ssid, "Lumenpoint");
        EXPECT_EQ(bytes(config().Bssid, 6), std::string(6, '\0'));
    }
}

TEST(SoftApConfig, OfNobodyIsWrittenNowhere)
{
    Bench bench;
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Config(0, nullptr), 0);
    bench.startHere();
    EXPECT_EQ(Movo_Net_WiFi_HostAP_Config(0, nullptr), 0);
}

TEST(SoftApStatus, IsYesOnlyWhenItIsUp)
{
    Bench bench;
    for (const auto state : {HOTSPOT_STOPPED, HOTSPOT_STOPPING, HOTSPOT_STARTING, HOTSPOT_STARTED}) {
        hotspot.mState = state;
        EXPECT_EQ(Movo_Net_WiFi_HostAP_Status(0), state == HOTSPOT_STARTED ? 1 : 0);
    }
}

TEST(SoftApThread, IsDetachedAndGetsNoArgument)
{
    Bench bench;
    static void* given = &bench;
    EXPECT_EQ(SoftAP_Create_Thread([](void* argument) -> void* {
                  given = argument;
                  int state = -1;
                  pthread_attr_t attributes;
                  EXPECT_EQ(pthread_getattr_np(pthread_self(), &attributes), 0);
                  EXPECT_EQ(pthread_attr_getdetachstate(&attributes, &state), 0);
                  EXPECT_EQ(state, PTHREAD_CREATE_DETACHED);
                  (void)pthread_attr_destroy(&attributes);
                  return nullptr;
              }),
              0);
    bench.set.settle();
    EXPECT_EQ(given, nullptr);
    EXPECT_EQ(bench.said(), Lines{"INFO SoftAP_Create_Thread: Created a Connection Testing thread\n"});
}

TEST(SoftApThread, CannotBeMade)
{
    Bench bench;
    (void)bench.set.fail({.call = sim::Call::ThreadCreate, .error = EAGAIN});
    EXPECT_EQ(SoftAP_Create_Thread([](void* argument) { return argument; }), 1);
    EXPECT_EQ(bench.said(), Lines{});
}

// --- Wake-up ---

int wakeUp(kest_bool wanted = 1)
{
    char ifname[] = "mlan0";
    return Movo_Net_WiFi_Wakeup(0, ifname, wanted);
}

TEST(WakeUp, IsByTheNetworkAlone)
{
    Bench bench;
    EXPECT_EQ(wakeUp(), 0);
    EXPECT_EQ(bench.ran(), Lines{"wl wowl 1&&wl wowl_activate "});
    EXPECT_EQ(bench.said(), (Lines{"ERROR Movo_Net_WiFi_Wakeup: wifi_wake : Access /data/wakeoncast failed ,no such "
                                   "file!disable wake-on-cast \n",
                                   "INFO Movo_Net_WiFi_Wakeup: wifi_wake: WiFi enter power save mode successfully\n"}));
}

TEST(WakeUp, KeepsThePathInsideTheWordWhenCastRequestsMayWake)
{
    Bench bench;
    bench.set.write("/data/wakeoncast", "");
    EXPECT_EQ(wakeUp(), 0);
    EXPECT_EQ(bench.ran(), Lines{"wl wowl 0x80001&&wl wowl_activate "});
    EXPECT_EQ(bench.said(), (Lines{"ERROR Movo_Net_WiFi_Wakeup: wifi_wake : Access /data/wakeoncastuccess , enable "
                                   "wake-on-cast \n",
                                   "INFO Movo_Net_WiFi_Wakeup: wifi_wake: WiFi enter power save mode successfully\n"}));
}

TEST(WakeUp, LooksForTheMarkerEachTime)
{
    Bench bench;
    (void)wakeUp();
    bench.set.write("/data/wakeoncast", "");
    (void)wakeUp();
    bench.set.remove("/data/wakeoncast");
    (void)wakeUp();
    EXPECT_EQ(bench.ran(), (Lines{"wl wowl 1&&wl wowl_activate ", "wl wowl 0x80001&&wl wowl_activate ",
                                  "wl wowl 1&&wl wowl_activate "}));
}

TEST(WakeUp, FailsWithTheTool)
{
    Bench bench;
    bench.set.onCommand("wl ").fails();
    EXPECT_EQ(wakeUp(), 1);
    EXPECT_EQ(bench.said().back(), "ERROR Movo_Net_WiFi_Wakeup: wifi_wake: WiFi enter power save mode failed\n");
}

TEST(WakeUp, FailsWithoutAShell)
{
    Bench bench;
    (void)bench.set.fail({.call = sim::Call::System, .error = ENOMEM});
    EXPECT_EQ(wakeUp(), 1);
}

TEST(WakeUp, KeepsArmingWhateverIsWanted)
{
    Bench bench;
    EXPECT_EQ(wakeUp(0), 0);
    EXPECT_EQ(Movo_Net_WiFi_Wakeup(0, nullptr, 0), 0);
    EXPECT_EQ(bench.ran(), Lines(2, "wl wowl 1&&wl wowl_activate "));
}
} // namespace
