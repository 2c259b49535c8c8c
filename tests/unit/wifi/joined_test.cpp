#include "television.h"

#include <gtest/gtest.h>
#include <movo_net.h>

// IFCONNECTED, and what the application does from inside it: a network that it has left or replaced is neither
// configured nor marked nor remembered.

using namespace wifi;
using namespace movonet;

namespace {
struct Reaction {
    const char* name;
    void (*reacts)();
    WpactrlConnectStatus_e status;
    const char* network; ///< The current one afterwards.
    kest_bool wps;
};
void PrintTo(const Reaction& row, std::ostream* out)
{
    *out << row.name;
}

void leave()
{
    EXPECT_EQ(Movo_NET_WifiDisConnect(0, "mlan0"), 0);
}

void joinOther()
{
    EXPECT_EQ(Movo_NET_WifiConnectEss(0, "mlan0", "Other"), 0);
}

void makePin()
{
    char pin[9];
    EXPECT_EQ(Movo_NET_WifiGenerateWpsPin(0, "mlan0", pin, sizeof(pin)), 0);
}

void expectNothingLeft(Television& television)
{
    EXPECT_EQ(television.link().isWpsEssSaved, 0);
    EXPECT_EQ(wifi_iface(&television.mlan0())->curOperatingEsss.isConnected, 0);
    EXPECT_EQ(int_Movo_Net_GetSavedConnectedEss(), nullptr) << "nothing is remembered";
    EXPECT_EQ(television.mlan0().isConnected, 0);
    EXPECT_FALSE(television.set.dhcp("mlan0").running());
    EXPECT_NOT_RAN(television.set, "netcfg mlan0 up");
    EXPECT_EQ(television.set.heldLocks(), 0);
}

class JoinedCallback : public testing::TestWithParam<Reaction> {
protected:
    /** The application reacts to the next callback of that reason. */
    void reactTo(MovoNetCBReason_e reason, void (*reacts)())
    {
        television.set.onCallback([this, reason, reacts, left = 1](MovoNetCBReason_e seen, void*) mutable {
            if (seen == reason && left-- == 1) {
                television.set.forget();
                reacts();
            }
        });
    }

    Television television;
};

const Reaction kReactions[] = {
    {"Leaves", leave, WPACTRL_STATUS_NONE, "Net", 0},
    {"JoinsAnother", joinOther, WPACTRL_STATUS_CONNECTING, "Other", 0},
    {"StartsWps", [] { EXPECT_EQ(Movo_NET_WifiStartWpsConnection(0, "mlan0", _MOVO_NET_WIFI_WPS_PBC_, nullptr), 0); },
     WPACTRL_STATUS_CONNECTING, "Net", 1},
    {"SearchesAHiddenOne", [] { EXPECT_EQ(Movo_NET_WifiSearchHideEss(0, "mlan0", "Hidden"), 0); }, WPACTRL_STATUS_NONE,
     "Net", 0},
    {"MakesAPin", makePin, WPACTRL_STATUS_NONE, "Net", 0},
};
} // namespace

TEST_P(JoinedCallback, MayEndTheConnection)
{
    television.startWith({{"Net", "[ESS]"}, {"Other", "[ESS]"}});
    ASSERT_EQ(Movo_NET_WifiConnectEss(0, "mlan0", "Net"), 0);
    reactTo(sim::IFCONNECTED, GetParam().reacts);
    television.hears({kConnected});
    const Wpactrl_t& link = television.link();
    EXPECT_EQ(link.connectStatus, GetParam().status);
    EXPECT_EQ(link.connectTimerEventHandle != 0, GetParam().status == WPACTRL_STATUS_CONNECTING);
    EXPECT_EQ(link.isWpsMode, GetParam().wps);
    EXPECT_STREQ(wifi_iface(&television.mlan0())->curOperatingEsss.essid, GetParam().network);
    expectNothingLeft(television);
}
INSTANTIATE_TEST_SUITE_P(Reactions, JoinedCallback, testing::ValuesIn(kReactions),
                         [](const auto& row) { return row.param.name; });

TEST_F(JoinedCallback, OfAnAddressMayEndTheConnection)
{
    television.startWith({{"Net", "[ESS]"}});
    television.mlan0().ipMode = _MOVO_NET_IPMODE_STATIC_;
    ASSERT_EQ(Movo_NET_WifiConnectEss(0, "mlan0", "Net"), 0);
    reactTo(sim::IPCHANGED, leave);
    television.hears({kConnected});
    EXPECT_EQ(television.link().connectStatus, WPACTRL_STATUS_NONE);
    EXPECT_EQ(wifi_iface(&television.mlan0())->curOperatingEsss.isConnected, 0);
    EXPECT_EQ(int_Movo_Net_GetSavedConnectedEss(), nullptr) << "nothing is remembered";
}

TEST_F(JoinedCallback, WithAWrongKeyForAnotherNetworkRemembersNeither)
{
    television.startWith({{"Net", "[ESS]"}, {"Other", "[WPA2-PSK-CCMP][ESS]"}});
    ASSERT_EQ(Movo_NET_WifiConnectEss(0, "mlan0", "Net"), 0);
    reactTo(sim::IFCONNECTED, joinOther);
    television.hears({kConnected, kHandshake, kResults});
    EXPECT_CALLBACKS(television.set, {{sim::WIFIBADKEY, "mlan0"}});
    EXPECT_EQ(television.link().connectStatus, WPACTRL_STATUS_NONE);
    EXPECT_TRUE(television.supplicant.events.empty()) << "what follows is read";
    expectNothingLeft(television);
}

TEST_F(JoinedCallback, StillHearsOfAScanInTheSameMessage)
{
    television.startWith({{"Net", "[ESS]"}});
    ASSERT_EQ(Movo_NET_WifiConnectEss(0, "mlan0", "Net"), 0);
    ASSERT_EQ(Movo_NET_WifiScanEsss(0, "mlan0"), 0);
    reactTo(sim::IFCONNECTED, leave);
    television.hears({std::string(kConnected) + kResults});
    EXPECT_CALLBACKS(television.set, {{sim::IFDISCONNECTED, "mlan0"}, {sim::WIFISCANDONE, "mlan0"}});
}

namespace {
/** The connection of an activation, with its own time-out. */
class FirstJoinedCallback : public JoinedCallback {
protected:
    void join(void (*reacts)())
    {
        television.startWith({{"Net", "[ESS]"}, {"Other", "[ESS]"}});
        MovNetWifiEssItem_t ess{};
        ASSERT_TRUE(findScannedEss(*wifi_iface(&television.mlan0()), "Net", ess));
        s_bFirstConnect = 1;
        ASSERT_EQ(int_Movo_Net_Wpactrl_Connect(&television.mlan0(), &ess), 0);
        ASSERT_NE(television.link().firstConnectHandle, 0);
        reactTo(sim::IFCONNECTED, reacts);
        television.hears({kConnected});
        EXPECT_EQ(television.link().firstConnectHandle, 0);
        expectNothingLeft(television);
    }
};
} // namespace

TEST_F(FirstJoinedCallback, ThatLeavesIsNotFollowedByAnotherJoin)
{
    join(leave);
    EXPECT_EQ(television.link().connectTimerEventHandle, 0);
}

TEST_F(FirstJoinedCallback, ThatJoinsAnotherHasTheTimeOutOfThatOne)
{
    join(joinOther);
    EXPECT_NE(television.link().connectTimerEventHandle, 0);
}
