#include "tools.h"

#include <algorithm>
#include <climits>

using namespace api;
using sim::Call;

// Changes of the address configuration.

namespace {
constexpr std::size_t kModeAt = 16; // of a record in the configuration file

std::ptrdiff_t saves(const sim::Set& set)
{
    return std::ranges::count_if(said(set, "SaveNetConfig"),
                                 [](const std::string& line) { return line.starts_with("INFO saved crc is "); });
}

int configureStatic(const char* ip = "192.168.1.20")
{
    return Movo_NET_ConfigIPStatic(0, "eth0", address(ip), address("255.255.255.0"), address("192.168.1.1"),
                                   address("192.168.1.2"), address("192.168.1.3"));
}

TEST(ConfigIPMode, KeepsDoingNothingWhenTheModeIsSetAlready)
{
    Television television;
    EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", _MOVO_NET_IPMODE_DHCP_), 0);
    television.set.settle();
    EXPECT_EQ(said(television.set), Lines{});
    EXPECT_TRUE(television.set.commands().empty());
    EXPECT_FALSE(television.set.exists(kConfiguration));
}

TEST(ConfigIPMode, SavesTwiceAndConfiguresOnAThreadOfItsOwn)
{
    Television television;
    sim::Set& set = television.set;
    EXPECT_EQ(configureStatic(), 0);
    set.settle();
    set.forget();
    EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", _MOVO_NET_IPMODE_STATIC_), 0);
    set.settle();
    EXPECT_EQ(said(set, "Movo_NET_ConfigIPMode"), Lines{"INFO set eth0 to 2\n"});
    EXPECT_EQ(said(set, "CreateConfigIPThread"), Lines{"INFO create ConfigIP thread\n"});
    EXPECT_EQ(saves(set), 2);
    EXPECT_EQ(set.read(kConfiguration).at(4 + 264 + kModeAt), 2);
    EXPECT_CALLBACKS(set, {{sim::IPCHANGED, "eth0"}, {sim::IPCHANGED, "eth0"}, {sim::STATICIP_SUCCESS, "eth0"}});
    EXPECT_EQ(set.callbacks().front().thread, sim::ThreadKind::Product);
    EXPECT_EQ(set.iface("eth0").address(), "192.168.1.20");
    EXPECT_FALSE(set.dhcp("eth0").running());

    EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", _MOVO_NET_IPMODE_DHCP_), 0);
    set.settle();
    EXPECT_TRUE(set.dhcp("eth0").running());
    EXPECT_EQ(set.iface("eth0").address(), "0.0.0.0");
    set.dhcp("eth0").leases();
    EXPECT_CALLBACKS(set, {{sim::IPCHANGED, "eth0"}, {sim::DHCP_SUCCESS, "eth0"}});
}

TEST(ConfigIPMode, OfAnInterfaceThatIsDownIsSavedAndLeftAtThat)
{
    sim::Set set;
    ASSERT_EQ(set.start(), 0); // no cable
    set.forget();
    EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", _MOVO_NET_IPMODE_AUTOIP_), 0);
    set.settle();
    EXPECT_EQ(set.read(kConfiguration).at(4 + 264 + kModeAt), 1);
    EXPECT_TRUE(set.commands().empty());
    EXPECT_CALLBACKS(set, {});
}

TEST(ConfigIPMode, WithoutAThreadIsStoredAndSaved)
{
    Television television;
    television.set.fail({.call = Call::ThreadCreate, .error = EAGAIN});
    EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", _MOVO_NET_IPMODE_STATIC_), 1);
    EXPECT_EQ(said(television.set, "CreateConfigIPThread"), Lines{"ERROR create ConfigIP thread failed\n"});
    EXPECT_EQ(television.eth0().ipMode, _MOVO_NET_IPMODE_STATIC_);
    EXPECT_EQ(saves(television.set), 1);
    EXPECT_TRUE(television.set.commands().empty());
}

TEST(ConfigIPMode, DhcpThatCannotBeStartedIsReported)
{
    Television television;
    sim::Set& set = television.set;
    EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", _MOVO_NET_IPMODE_DNSONLY_), 0);
    set.settle();
    EXPECT_CALLBACKS(set, {{sim::IPCHANGED, "eth0"}, {sim::IPCHANGED, "eth0"}, {sim::STATICIP_SUCCESS, "eth0"}});
    set.onCommand("chmod").fails();
    EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", _MOVO_NET_IPMODE_DHCP_), 0);
    set.settle();
    EXPECT_CALLBACKS(set, {{sim::DHCP_FAILED, "eth0"}});
}

class OddMode : public testing::TestWithParam<int> {};

TEST_P(OddMode, KeepsConfiguringAsDhcp)
{
    Television television;
    sim::Set& set = television.set;
    set.process(set.dhcp("eth0").pid()).dies();
    EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", static_cast<MovoNetIPMode_e>(GetParam())), 0);
    set.settle();
    EXPECT_EQ(said(set, "Movo_NET_ConfigIPMode"), Lines{"INFO set eth0 to " + std::to_string(GetParam()) + "\n"});
    EXPECT_TRUE(set.dhcp("eth0").running());
    MovoNetIPMode_e mode = _MOVO_NET_IPMODE_DHCP_;
    EXPECT_EQ(Movo_NET_GetIPMode(0, "eth0", &mode), 0);
    EXPECT_EQ(mode, GetParam());
    EXPECT_EQ(LoadNetConfig(), 0);
    EXPECT_EQ(television.eth0().ipMode, GetParam()) << "and outlasts a restart";
}

INSTANTIATE_TEST_SUITE_P(Modes, OddMode, testing::Values(4, -1, INT_MAX, INT_MIN));

TEST(ConfigIPStatic, StoresAndSavesWithoutChangingTheMode)
{
    sim::Set set;
    ASSERT_EQ(set.start(), 0);
    set.forget();
    EXPECT_EQ(configureStatic(), 0);
    set.settle();
    const MovoNetIface_t& eth0 = *FindInterface("eth0");
    EXPECT_EQ(eth0.sipv4, address("192.168.1.20"));
    EXPECT_EQ(eth0.smaskv4, address("255.255.255.0"));
    EXPECT_EQ(eth0.sgwv4, address("192.168.1.1"));
    EXPECT_EQ(eth0.sdns1v4, address("192.168.1.2"));
    EXPECT_EQ(eth0.sdns2v4, address("192.168.1.3"));
    EXPECT_EQ(eth0.ipMode, _MOVO_NET_IPMODE_DHCP_);
    EXPECT_EQ(saves(set), 1) << "by the thread";
    EXPECT_EQ(said(set, "Movo_NET_ConfigIPStatic"),
              Lines{"INFO if=eth0, ip=1401a8c0, mask=00ffffff, gw=0101a8c0, dns1=0201a8c0, dns2=0301a8c0\n"});
}

TEST(ConfigIPStatic, AppliesAnotherAddressAtOnceInTheStaticMode)
{
    Television television;
    sim::Set& set = television.set;
    EXPECT_EQ(configureStatic(), 0);
    EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", _MOVO_NET_IPMODE_STATIC_), 0);
    set.settle();
    EXPECT_EQ(configureStatic("192.168.1.21"), 0);
    set.settle();
    EXPECT_EQ(set.iface("eth0").address(), "192.168.1.21");
}

TEST(ConfigIPStatic, KeepsClearingTheAddressUnderAClientThatRuns)
{
    Television television;
    sim::Set& set = television.set;
    EXPECT_EQ(configureStatic(), 0);
    set.settle();
    EXPECT_TRUE(set.dhcp("eth0").running());
    EXPECT_EQ(set.iface("eth0").address(), "0.0.0.0");
    EXPECT_CALLBACKS(set, {{sim::IPCHANGED, "eth0"}});
}

TEST(ConfigIPStatic, WithoutAThreadIsStoredAndNotSaved)
{
    Television television;
    television.set.fail({.call = Call::ThreadCreate, .error = EAGAIN});
    EXPECT_EQ(configureStatic(), 1);
    EXPECT_EQ(television.eth0().sipv4, address("192.168.1.20"));
    EXPECT_FALSE(television.set.exists(kConfiguration));
}

TEST(ConfigIPStatic, RefusedAddressesAreStoredAllTheSame)
{
    Television television;
    sim::Set& set = television.set;
    EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", _MOVO_NET_IPMODE_STATIC_), 0);
    set.settle();
    set.forget();
    EXPECT_EQ(Movo_NET_ConfigIPStatic(0, "eth0", 0, 0, 0, 0, 0), 0);
    set.settle();
    EXPECT_CALLBACKS(set, {{sim::IPCHANGED, "eth0"}, {sim::STATICIP_FAILED, "eth0"}});
    unsigned int ip = 1;
    EXPECT_EQ(Movo_NET_GetIPStatic(0, "eth0", &ip, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(ip, 0U);
}
} // namespace
