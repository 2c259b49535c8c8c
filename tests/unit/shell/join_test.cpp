/** A slip in a key does not take the joined network away, and there is a way back. */
#include "fake_net.h"
#include "play.h"
#include "tools/movo_net_shell/join.h"
#include "tools/movo_net_shell/keys.h"

#include <algorithm>
#include <gtest/gtest.h>

using shell::faultOf;
using shell::KeyKind;

namespace {
class ShellWifiJoin : public testing::Test {
protected:
    ShellWifiJoin()
    {
        fake::addWireless("wlan0");
        fake::returns("Movo_NET_IsEnabledIface", 1);
        fake::returns("Movo_NET_IsActivedIface", 1);
    }
    bool wasCalled(const std::string& call)
    {
        return std::ranges::any_of(fake::calls(), [&](const std::string& each) { return each.starts_with(call); });
    }
    /** The first step of a join takes the joined network away. */
    void joinLosesTheNetwork(RETURN_TYPE result)
    {
        fake::returns("Movo_NET_WifiConnectEss", result);
        fake::onCall([](const std::string& call) {
            if (call.starts_with("Movo_NET_WifiConnectEss")) {
                fake::setJoined(false);
            }
        });
    }
};
} // namespace

TEST_F(ShellWifiJoin, AKeyOfAWrongLengthIsRefusedBeforeTheCall)
{
    EXPECT_EQ(play("wifi join \"My Home Net\" short\n").output,
              "not joined: a WPA key has 8 to 63 characters, this one has 5\n");
    EXPECT_EQ(play("wifi join \"My Home Net\" \"\"\n").output,
              "not joined: a WPA key has 8 to 63 characters, this one has 0\n");
    EXPECT_FALSE(wasCalled("Movo_NET_WifiSetKey"));
    EXPECT_FALSE(wasCalled("Movo_NET_WifiConnectEss"));
}

TEST_F(ShellWifiJoin, AKeyThatWasSetIsLookedAtToo)
{
    EXPECT_EQ(play("wifi key \"My Home Net\" short\nwifi join \"My Home Net\"\n").output,
              "0 success\nnot joined: a WPA key has 8 to 63 characters, this one has 5\n");
    EXPECT_FALSE(wasCalled("Movo_NET_WifiConnectEss"));
}

TEST(ShellKeys, OfWpaHaveEightToSixtyThreeCharacters)
{
    EXPECT_NE(faultOf(KeyKind::Wpa, "1234567"), "");
    EXPECT_EQ(faultOf(KeyKind::Wpa, "12345678"), "");
    EXPECT_EQ(faultOf(KeyKind::Wpa, std::string(63, 'x')), "");
    EXPECT_EQ(faultOf(KeyKind::Wpa, std::string(64, 'x')), "a WPA key has 8 to 63 characters, this one has 64");
    EXPECT_EQ(faultOf(KeyKind::Wpa, std::string(64, 'a')), "64 hexadecimal digits are a WPA key, but the supplicant is "
                                                           "given pass phrases only, of 8 to 63 characters");
}

TEST(ShellKeys, OfWepHaveTheirLengths)
{
    for (std::size_t length = 0; length <= 64; length++) {
        const bool text = length == 5 || length == 13 || length == 16;
        const bool digits = length == 10 || length == 26 || length == 32;
        EXPECT_EQ(faultOf(KeyKind::Wep, std::string(length, 'x')).empty(), text) << length;
        EXPECT_EQ(faultOf(KeyKind::Wep, std::string(length, 'A')).empty(), text || digits) << length;
    }
    EXPECT_EQ(faultOf(KeyKind::Wep, "1234567"), "a WEP key has 5, 13 or 16 characters, or 10, 26 or 32 hexadecimal "
                                                "digits; this one has 7 digits");
    EXPECT_EQ(faultOf(KeyKind::None, "x") + faultOf(KeyKind::Unknown, "x"), "") << "it is not sent, or not known";
}

TEST_F(ShellWifiJoin, TheKindOfTheKeyIsThatOfTheTableOrOfThePersonsChoice)
{
    const auto kindAfter = [](const std::string& wish, MovoNetWifiEncryption_e cipher) {
        (void)play("wifi security " + wish + "\n");
        fake::setCipher(cipher);
        return shell::keyKindOf("wlan0", "My Home Net");
    };
    EXPECT_EQ(kindAfter("none", _MOVO_NET_WIFI_ENCRYP_AES_), KeyKind::None);
    EXPECT_EQ(kindAfter("wep", _MOVO_NET_WIFI_ENCRYP_NONE_), KeyKind::Wep);
    EXPECT_EQ(kindAfter("mix", _MOVO_NET_WIFI_ENCRYP_WEP_), KeyKind::Wpa);
    EXPECT_EQ(kindAfter("default", _MOVO_NET_WIFI_ENCRYP_NONE_), KeyKind::None);
    EXPECT_EQ(kindAfter("default", _MOVO_NET_WIFI_ENCRYP_WEP_), KeyKind::Wep);
    EXPECT_EQ(kindAfter("default", _MOVO_NET_WIFI_ENCRYP_TKIPAES_), KeyKind::Wpa);
    fake::returns("Movo_NET_WifiGetEncryptionEss", 1);
    EXPECT_EQ(shell::keyKindOf("wlan0", "Elsewhere"), KeyKind::Unknown);
}

TEST_F(ShellWifiJoin, TheRememberedKeyIsFilledIn)
{
    EXPECT_EQ(play("wifi update\nwifi join \"caf\u00e9\"\n").output, "0 success\n0 success\n");
    EXPECT_TRUE(wasCalled("Movo_NET_WifiSetKey wlan0 caf\u00e9 correct horse 13"));
}

TEST_F(ShellWifiJoin, AKeyThatWasSetCountsMoreUntilTheNextUpdate)
{
    (void)play("wifi key caf\u00e9 \"another one\"\nwifi join caf\u00e9\n");
    EXPECT_TRUE(wasCalled("Movo_NET_WifiSetKey wlan0 caf\u00e9 another one 11"));
    EXPECT_FALSE(wasCalled("Movo_NET_WifiSetKey wlan0 caf\u00e9 correct horse"));
    (void)play("wifi update\nwifi join caf\u00e9\n");
    EXPECT_TRUE(wasCalled("Movo_NET_WifiSetKey wlan0 caf\u00e9 correct horse 13"));
}

TEST_F(ShellWifiJoin, AnOpenNetworkGetsNoKeyAndAskedForNone)
{
    fake::setCipher(_MOVO_NET_WIFI_ENCRYP_NONE_);
    EXPECT_EQ(play("wifi join caf\u00e9\n").output, "0 success\n");
    EXPECT_FALSE(wasCalled("Movo_NET_WifiSetKey"));
}

TEST_F(ShellWifiJoin, AMissingKeyIsAskedForBeforeTheCall)
{
    fake::returns("Movo_NET_WifiGetKey", 1);
    EXPECT_EQ(play("wifi join \"My Home Net\"\n").output,
              "not joined: My Home Net wants a key: wifi connect \"My Home Net\" KEY\n");
    EXPECT_FALSE(wasCalled("Movo_NET_WifiConnectEss"));
}

TEST_F(ShellWifiJoin, ARefusedJoinShowsTheWayBack)
{
    joinLosesTheNetwork(1);
    EXPECT_EQ(play("wifi join caf\u00e9 \"wrong horse\"\n").output,
              "1 failure\n  the supplicant refused; the log names the command; wifi back joins My Home Net again\n");
}

TEST_F(ShellWifiJoin, BackJoinsTheLeftNetworkWithItsKey)
{
    joinLosesTheNetwork(0);
    EXPECT_EQ(play("wifi join caf\u00e9 \"wrong horse\"\nwifi back\n").output, "0 success\n0 success\n");
    EXPECT_TRUE(wasCalled("Movo_NET_WifiSetKey wlan0 My Home Net correct horse 13"));
    EXPECT_EQ(fake::calls().back(), "Movo_NET_WifiConnectEss wlan0 My Home Net");
}

TEST_F(ShellWifiJoin, BackIsTheNetworkBeforeSeveralWrongKeys)
{
    joinLosesTheNetwork(0);
    (void)play("wifi join caf\u00e9 \"wrong horse\"\nwifi join \"My Home Net\" \"wrong horse\"\nwifi back\n");
    EXPECT_TRUE(wasCalled("Movo_NET_WifiSetKey wlan0 My Home Net correct horse 13"));
}

TEST_F(ShellWifiJoin, BackSaysWhenThereIsNowhereToGo)
{
    EXPECT_EQ(play("wifi back\n").output, "no join has left a network\n");
    EXPECT_EQ(play("wifi join caf\u00e9\nwifi back\n").output, "0 success\na network is joined\n");
}

TEST_F(ShellWifiJoin, AWrongKeyThatIsReportedLaterShowsTheWayBack)
{
    const shell::Arrival badKey = {{}, 0, _MOVO_NET_CALLBACK_WIFIBADKEY_, "wlan0"};
    const shell::Arrival timeout = {{}, 0, _MOVO_NET_CALLBACK_WIFITIMEOUT_, "wlan0"};
    const shell::Arrival found = {{}, 0, _MOVO_NET_CALLBACK_IFFOUND_, "wlan0"};
    EXPECT_EQ(shell::remarkOn(badKey), "") << "nobody has joined anything";
    joinLosesTheNetwork(0);
    (void)play("wifi join caf\u00e9 \"wrong horse\"\n");
    EXPECT_EQ(shell::remarkOn(badKey), "the key of caf\u00e9 is wrong; wifi back joins My Home Net again");
    EXPECT_EQ(shell::remarkOn(timeout), "caf\u00e9 was not joined in time; wifi back joins My Home Net again");
    EXPECT_EQ(shell::remarkOn(found), "");
    fake::setJoined(true);
    EXPECT_EQ(shell::remarkOn(badKey), "the key of caf\u00e9 is wrong");
}
