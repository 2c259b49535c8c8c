/** The soft access point's device as the shell shows it. */
#include "fake_net.h"
#include "play.h"
#include "tools/movo_net_shell/ap_commands.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {
/** A device that is told of while the shell sleeps. */
void tellOf(const Softap_Connection_info_t& device)
{
    softap_connectinfo = device;
    fake::callBack(_MOVO_NET_CALLBACK_SOFTAPCONNECTED_, "bcm0");
}

constexpr Softap_Connection_info_t kPhone = {.timestamp = "1795206803",
                                             .macaddr = "02:00:00:00:02:00",
                                             .ipaddr = "192.168.255.182",
                                             .devicename = "phone1",
                                             .packetmac = "*"};
} // namespace

TEST(ShellAccessPoint, ShowsTheDeviceThatWasToldOf)
{
    fake::onCall([](const std::string& call) {
        if (call == "Movo_Net_WiFi_HostAP_Start") {
            tellOf(kPhone);
        }
    });
    const Played played = play("callback on\nap start\nexpect SOFTAPCONNECTED bcm0 5\nap clients\n");
    EXPECT_EQ(played.status, 0);
    EXPECT_TRUE(played.output.ends_with("  mac      02:00:00:00:02:00\n"
                                        "  address  192.168.255.182\n"
                                        "  name     phone1\n"
                                        "  client   *\n"
                                        "  until    1795206803\n"))
        << played.output;
}

TEST(ShellAccessPoint, ShowsTheDeviceAsItWasWhenToldOf)
{
    fake::onCall([](const std::string& call) {
        if (call == "Movo_Net_WiFi_HostAP_Start") {
            tellOf(kPhone);
            softap_connectinfo = {};
        }
    });
    const Played played = play("callback on\nap start\nap clients\n");
    EXPECT_NE(played.output.find("  name     phone1\n"), std::string::npos) << played.output;
}

TEST(ShellAccessPoint, HasNoDeviceAfterAnEmptyList)
{
    fake::onCall([](const std::string& call) {
        if (call.starts_with("Movo_Net_WiFi_HostAP_St")) {
            tellOf(call.ends_with("Start") ? kPhone : Softap_Connection_info_t{});
        }
    });
    const Played played = play("callback on\nap start\nap stop\nap clients\n");
    EXPECT_TRUE(played.output.ends_with("no device\n")) << played.output;
}

TEST(ShellAccessPoint, NamesFromTheAirDoNotReachTheTerminalAsTheyAre)
{
    fake::onCall([](const std::string& call) {
        if (call == "Movo_Net_WiFi_HostAP_Start") {
            Softap_Connection_info_t evil = kPhone;
            std::strcpy(evil.devicename, "\x1b[2Jphone");
            tellOf(evil);
        }
    });
    const Played played = play("callback on\nap start\nap clients\n");
    EXPECT_NE(played.output.find("  name     \\x1b[2Jphone\n"), std::string::npos) << played.output;
}

TEST(ShellAccessPoint, StatusTellsThatItIsUp)
{
    fake::returns("Movo_Net_WiFi_HostAP_Status", 1);
    EXPECT_TRUE(play("ap status\n").output.starts_with("1 yes\n  network  "));
}

TEST(ShellAccessPoint, SaysHowLongAStartHasBeenWithoutEffect)
{
    using namespace std::chrono_literals;
    EXPECT_EQ(shell::notUp(29s), "started 29 s ago and not up yet: it may take half a minute");
    EXPECT_EQ(shell::notUp(30s),
              "started 30 s ago and not up: it failed; the log names the step and what its program said");
    fake::returns("Movo_Net_WiFi_HostAP_Status", 0);
    EXPECT_NE(play("ap start\nap status\n").output.find(" s ago and not up yet"), std::string::npos);
    EXPECT_EQ(play("ap start\nap stop\nap status\n").output.find("not up"), std::string::npos);
    EXPECT_EQ(play("ap status\n").output.find("not up"), std::string::npos) << "nobody has started it";
}
