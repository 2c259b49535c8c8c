#include "names.h"
#include "television.h"

#include <gtest/gtest.h>
#include <movo_net.h>
#include <random>

using namespace wifi;
using namespace movonet;

// Bytes from the air, the supplicant and the application that are absurd or evil; the same ones in every run.

namespace {
constexpr std::size_t kMostEsss = 50;

/** Bytes at random, mixed with pieces of what the glue looks for. */
std::string bytes(std::mt19937& random, std::size_t most)
{
    static constexpr const char* kPieces[] = {"CTRL-EVENT-CONNECTED ",
                                              "CTRL-EVENT-DISCONNECTED ",
                                              "Handshake failed",
                                              "CTRL-EVENT-SCAN-RESULTS ",
                                              "Trying to associate with",
                                              "SSID='",
                                              "' freq",
                                              "'",
                                              "OK",
                                              "FAIL",
                                              "FAIL-BUSY",
                                              "\n",
                                              "\t",
                                              "[WPA2-PSK-",
                                              "[WPA-EAP",
                                              "]",
                                              "TKIP+CCMP",
                                              "\\x0",
                                              "\\xe6\\x88",
                                              "\\\\",
                                              "bssid / frequency / signal level / flags / ssid\n",
                                              "%s%n"};
    std::string text;
    const std::size_t wanted = random() % (most + 1);
    while (text.size() < wanted) {
        if (random() % 3 == 0) {
            text += kPieces[random() % std::size(kPieces)];
        } else {
            text += static_cast<char>(random());
        }
    }
    return text;
}

void expectSound(Television& television)
{
    const MovoNetWifi_t& wifi = *wifi_iface(&television.mlan0());
    ASSERT_GE(wifi.esss_num, 0);
    ASSERT_LE(wifi.esss_num, static_cast<int>(kMostEsss));
    for (int index = 0; index < wifi.esss_num; ++index) {
        ASSERT_EQ(wifi.esss[index].essid[MOVO_NET_ESSID_LENGTH], '\0');
        ASSERT_EQ(wifi.esss[index].Key[MOVO_NET_KEY_LENGTH], '\0');
    }
    ASSERT_EQ(wifi.curOperatingEsss.essid[MOVO_NET_ESSID_LENGTH], '\0');
    ASSERT_EQ(television.set.heldLocks(), 0);
    ASSERT_EQ(television.set.problems(), Lines{});
}

/** What the supplicant is in the middle of. */
const std::vector<std::pair<const char*, std::function<void(Television&)>>> kSituations{
    {"Nothing", [](Television&) {}},
    {"Joining", [](Television&) { (void)Movo_NET_WifiConnectEss(0, kIf, "Open"); }},
    {"Joined",
     [](Television& television) {
         (void)Movo_NET_WifiConnectEss(0, kIf, "Open");
         television.hears({kConnected});
     }},
    {"Wps", [](Television&) { (void)Movo_NET_WifiStartWpsConnection(0, kIf, _MOVO_NET_WIFI_WPS_PBC_, ""); }},
    {"Hidden", [](Television&) { (void)Movo_NET_WifiSearchHideEss(0, kIf, "Hidden"); }},
    {"Scan", [](Television&) { (void)Movo_NET_WifiScanEsss(0, kIf); }},
};

class Situation : public testing::TestWithParam<std::size_t> {};
} // namespace

TEST_P(Situation, SurvivesEventsOfAnyBytes)
{
    std::mt19937 random(static_cast<unsigned>(GetParam()) + 1);
    Television television;
    television.startWith({{"Open", "[ESS]"}});
    for (int round = 0; round < 300; ++round) {
        kSituations[GetParam()].second(television);
        television.set.write("/etc/wpa_supplicant.conf", "network={\n\tssid=\"" + bytes(random, 200));
        television.hears({bytes(random, 300), bytes(random, 300), bytes(random, 40)});
        expectSound(television);
        if (HasFatalFailure()) {
            return;
        }
        television.set.forget();
    }
}

TEST_P(Situation, SurvivesRepliesOfAnyBytes)
{
    std::mt19937 random(static_cast<unsigned>(GetParam()) + 100);
    Television television;
    television.startWith({{"Open", "[ESS]"}});
    for (int round = 0; round < 200; ++round) {
        Supplicant& supplicant = television.supplicant;
        for (int reply = 0; reply < 4; ++reply) {
            supplicant.nextReplies.push_back(bytes(random, 6000));
        }
        kSituations[GetParam()].second(television);
        supplicant.nextReplies = {"bssid / frequency / signal level / flags / ssid\n" + bytes(random, 6000)};
        (void)Movo_NET_WifiUpdateEsss(0, kIf);
        char pin[9] = "";
        supplicant.nextReplies = {"OK\n", bytes(random, 20)};
        (void)Movo_NET_WifiGenerateWpsPin(0, kIf, pin, sizeof(pin));
        EXPECT_EQ(pin[8], '\0');
        supplicant.nextReplies = {};
        expectSound(television);
        if (HasFatalFailure()) {
            return;
        }
        television.set.forget();
        television.tells({{"Open", "[ESS]"}});
        (void)Movo_NET_WifiUpdateEsss(0, kIf);
    }
}
INSTANTIATE_TEST_SUITE_P(Hostile, Situation, testing::Range(std::size_t{0}, kSituations.size()),
                         [](const auto& each) { return kSituations[each.param].first; });

TEST(HostileRequest, NamesKeysAndPinsOfAnyBytesStayWithinACommand)
{
    std::mt19937 random(7);
    Television television;
    television.startWith({{"Open", "[ESS]"}, {"Wpa", "[WPA2-PSK-CCMP][ESS]"}});
    for (int round = 0; round < 300; ++round) {
        const std::string text = bytes(random, 200);
        const auto length = static_cast<int>(random() % 80) - 5;
        (void)Movo_NET_WifiSetKey(0, kIf, "Wpa", (text + std::string(80, 'k')).c_str(), length);
        (void)Movo_NET_WifiConnectEss(0, kIf, "Wpa");
        (void)Movo_NET_WifiConnectEss(0, kIf, text.c_str());
        (void)Movo_NET_WifiSearchHideEss(0, kIf, text.c_str());
        (void)Movo_NET_WifiStartWpsConnection(0, kIf, _MOVO_NET_WIFI_WPS_PIN, text.c_str());
        char buffer[65] = "";
        int value = 0;
        (void)Movo_NET_WifiGetKey(0, kIf, text.c_str(), buffer, &value);
        (void)Movo_NET_WifiGetSignalEss(0, kIf, text.c_str(), &value);
        (void)Movo_NET_WifiSetPriorityEss(0, kIf, text.c_str(), length);
        for (const std::string& command : sent(television.supplicant)) {
            EXPECT_LE(command.size(), 99U);
        }
        expectSound(television);
        if (HasFatalFailure()) {
            return;
        }
        television.set.forget();
    }
}

TEST(MissingArgument, IsTheCallersMistakeAndNothingIsSaid)
{
    Television television;
    television.startWith({{"Open", "[ESS]"}});
    char text[65] = "";
    int value = 0;
    EXPECT_EQ(Movo_NET_GetNumOfWifiEsss(0, kIf, nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiGetSsidEss(0, kIf, 0, nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiGetSsidEss(0, kIf, 99, nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiGetSignalEss(0, kIf, nullptr, &value), 5);
    EXPECT_EQ(Movo_NET_WifiGetSignalEss(0, kIf, "Open", nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiGetSignalEss(0, kIf, "Nowhere", nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiIsWPS(0, kIf, "Open", nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiGetEncryptionEss(0, kIf, "Open", nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiGetSecurityEss(0, kIf, "Open", nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiGetFrequencyEss(0, kIf, "Open", nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiGetChannelEss(0, kIf, "Open", nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiGetPriorityEss(0, kIf, "Open", nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiGetBssidEss(0, kIf, "Open", nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiSetPriorityEss(0, kIf, nullptr, 1), 5);
    EXPECT_EQ(Movo_NET_WifiSetKey(0, kIf, nullptr, "key", 3), 5);
    EXPECT_EQ(Movo_NET_WifiSetKey(0, kIf, "Open", nullptr, 3), 5);
    EXPECT_EQ(Movo_NET_WifiGetKey(0, kIf, nullptr, text, &value), 5);
    EXPECT_EQ(Movo_NET_WifiGetKey(0, kIf, "Open", nullptr, &value), 5);
    EXPECT_EQ(Movo_NET_WifiGetKey(0, kIf, "Open", text, nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, kIf, nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiGetConnectedEss(0, kIf, nullptr, 33), 5);
    EXPECT_EQ(Movo_NET_WifiGetConnectedEss(0, kIf, text, 0), 5);
    EXPECT_EQ(Movo_NET_WifiGetConnectedEss(0, kIf, text, -1), 5);
    EXPECT_EQ(Movo_NET_WifiGetWpsModeEss(0, kIf, nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiGenerateWpsPin(0, kIf, nullptr, 9), 5);
    EXPECT_EQ(Movo_NET_WifiGetDevType(0, kIf, nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiIsReconnecting(0, kIf, nullptr), 5);
    EXPECT_TRUE(television.set.log().empty());
    EXPECT_EQ(television.supplicant.commands, Lines{});

    EXPECT_EQ(Movo_NET_WifiSearchHideEss(0, kIf, nullptr), 5);
    EXPECT_EQ(Movo_NET_WifiSearchHideEss(0, kIf, ""), 5);
    EXPECT_EQ(told(television.set, KEST_LEVEL_ERROR), Lines(2, "int_Movo_Net_Wpactrl_SearchHideEss: invalid ssid\n"));
    EXPECT_EQ(television.supplicant.commands, Lines{});
}
