/** What the shell warns of, because the glue takes it without a word. */
#include "fake_net.h"
#include "play.h"

#include <gtest/gtest.h>
#include <kest.h>

namespace {
constexpr const char* kPinWarning = "warning: a PIN has eight digits\n";

std::string typed(const std::string& script)
{
    return play("wifi use wlan0\n" + script).output;
}

/** Every network is scanned with WPA2 and remembered, until another scan. */
void scanAnew(MovoNetWifiSecurity_e security)
{
    fake::onCall([security](const std::string& call) {
        if (call.starts_with("Movo_NET_WifiUpdateEsss")) {
            fake::setSecurity(security);
        }
    });
}
} // namespace

TEST(ShellWarnings, APinHasEightDigits)
{
    for (const char* pin : {"1", "1234567", "123456789", "1234567a", "\"1234 567\"", "\"\"", "FAIL"}) {
        EXPECT_EQ(typed("wifi wps pin " + std::string(pin) + "\n"), kPinWarning + std::string("0 success\n")) << pin;
    }
    EXPECT_EQ(typed("wifi wps both 1\n"), kPinWarning + std::string("0 success\n"));
    EXPECT_EQ(fake::calls().back(), "Movo_NET_WifiStartWpsConnection wlan0 3 1") << "it is tried all the same";
}

TEST(ShellWarnings, APinOfEightDigitsAndNoPinAreFine)
{
    EXPECT_EQ(typed("wifi wps pin 00000000\nwifi wps pin\nwifi wps push\nwifi wps push 1\n"),
              "0 success\n0 success: 12345670\n0 success\n0 success\n0 success\n");
}

TEST(ShellWarnings, ARememberedNetworkIsOpenNow)
{
    scanAnew(_MOVO_NET_WIFI_SECURITY_OPEN_);
    EXPECT_EQ(typed("wifi update\n"), "0 success\n"
                                      "warning: My Home Net is remembered as secured, and is open or has WEP now\n"
                                      "warning: caf\xc3\xa9 is remembered as secured, and is open or has WEP now\n");
}

TEST(ShellWarnings, ARememberedNetworkHasASharedKeyNow)
{
    scanAnew(_MOVO_NET_WIFI_SECURITY_SHARED_);
    EXPECT_NE(typed("wifi update\n").find("warning: My Home Net"), std::string::npos);
}

/** An access point with another address is not the remembered one, and its key is not given. */
TEST(ShellWarnings, ANameIsKnownByTheTableBefore)
{
    fake::onCall([](const std::string& call) {
        if (call.starts_with("Movo_NET_WifiUpdateEsss")) {
            fake::setSecurity(_MOVO_NET_WIFI_SECURITY_OPEN_);
            fake::returns("Movo_NET_WifiGetKey", 1);
        }
    });
    EXPECT_NE(typed("wifi update\nwifi update\n").find("0 success\nwarning: My Home Net"), std::string::npos);
}

TEST(ShellWarnings, NothingIsSaidOfNetworksThatAreAsTheyWere)
{
    EXPECT_EQ(typed("wifi update\nwifi update\nwifi join \"My Home Net\"\n"), "0 success\n0 success\n0 success\n");
    scanAnew(_MOVO_NET_WIFI_SECURITY_WPA_PSK_);
    EXPECT_EQ(typed("wifi update\nwifi update\n"), "0 success\n0 success\n");
}

TEST(ShellWarnings, NothingIsSaidOfNetworksThatWereNotRememberedOrNeverSecured)
{
    fake::returns("Movo_NET_WifiGetKey", 1);
    scanAnew(_MOVO_NET_WIFI_SECURITY_OPEN_);
    EXPECT_EQ(typed("wifi update\n"), "0 success\n");
    fake::returns("Movo_NET_WifiGetKey", 0);
    EXPECT_EQ(typed("wifi update\nwifi join \"My Home Net\"\n"), "0 success\n0 success\n");
}

TEST(ShellWarnings, AnUpdateThatFailsSaysNothingMore)
{
    scanAnew(_MOVO_NET_WIFI_SECURITY_OPEN_);
    fake::returns("Movo_NET_WifiUpdateEsss", 1);
    EXPECT_TRUE(typed("wifi update\n").starts_with("1 failure\n  no interface \"wlan0\""));
}

TEST(ShellWarnings, LookingForRememberedNetworksLeavesTheLogAlone)
{
    __atomic_store_n(&__kest_debug_min, static_cast<int>(KEST_LEVEL_WARNING), __ATOMIC_RELAXED);
    int levelOfKeys = -1;
    fake::onCall([&](const std::string& call) {
        if (call.starts_with("Movo_NET_WifiGetKey")) {
            levelOfKeys = __kest_debug_min;
        }
    });
    (void)typed("wifi update\n");
    EXPECT_EQ(levelOfKeys, KEST_LEVEL_NONE);
    EXPECT_EQ(__kest_debug_min, KEST_LEVEL_WARNING);
}
