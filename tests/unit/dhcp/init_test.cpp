#include "bench.h"

#include "movo_net_fl_ether/ether.h"

#include <cstdlib>
#include <cstring>

using namespace dhcp;

namespace {
MovoNetIface_t named(const char* name, MovoNetIfaceType_e type)
{
    MovoNetIface_t iface{};
    std::strcpy(iface.name, name);
    iface.type = type;
    return iface;
}

void expectReset(const MovoNetIface_t& iface)
{
    EXPECT_EQ(iface.isEnabled, 0);
    EXPECT_EQ(iface.isAvailable, 0);
    EXPECT_EQ(iface.isActived, 0);
    EXPECT_EQ(iface.isConnected, 0);
    EXPECT_EQ(iface.ipStatus, _MOVO_NET_IPSTATUS_NONE_);
    EXPECT_EQ(iface.priority, 0);
    EXPECT_EQ(iface.macaddr, 0);
    EXPECT_EQ(iface.ipv4, 0U);
    EXPECT_EQ(iface.maskv4, 0U);
    EXPECT_EQ(iface.gwv4, 0U);
    EXPECT_EQ(iface.dns1v4, 0U);
    EXPECT_EQ(iface.dns2v4, 0U);
    EXPECT_EQ(iface.thoughput, 0U);
    EXPECT_EQ(iface.priv, nullptr);
    EXPECT_EQ(iface.dhcpcfd, -1);
    EXPECT_EQ(iface.dhcpcEventHandle, 0);
}

void expectCommonOps(const MovoNetIfaceFunc_t& funcs)
{
    EXPECT_EQ(funcs.Active, int_Movo_Net_Active);
    EXPECT_EQ(funcs.IsConnected, int_Movo_Net_IsConnected);
    EXPECT_EQ(funcs.GetIpv4, int_Movo_Net_GetIpv4);
    EXPECT_EQ(funcs.SetIpv4, int_Movo_Net_SetIpv4);
    EXPECT_EQ(funcs.GetMaskv4, int_Movo_Net_GetMaskv4);
    EXPECT_EQ(funcs.SetMaskv4, int_Movo_Net_SetMaskv4);
    EXPECT_EQ(funcs.GetGwv4, int_Movo_Net_GetGwv4);
    EXPECT_EQ(funcs.SetGwv4, int_Movo_Net_SetGwv4);
    EXPECT_EQ(funcs.Getdnsv4, int_Movo_Net_Getdnsv4);
    EXPECT_EQ(funcs.Setdnsv4, int_Movo_Net_Setdnsv4);
    EXPECT_EQ(funcs.GetMacAddr, int_Movo_Net_GetMacAddr);
    EXPECT_EQ(funcs.GetIfaceThroughput, int_Movo_Net_GetThroughput);
}

TEST(Init, ResetsWhatBelongsToOneRun)
{
    sim::Set set;
    int something = 0;
    MovoNetIface_t iface;
    std::memset(&iface, 0x5a, sizeof(iface));
    std::strcpy(iface.name, "eth1");
    iface.type = _MOVO_NET_IFACE_ETHER_;
    iface.priv = &something;
    EXPECT_EQ(int_Movo_Net_Init(&iface), 0);
    expectReset(iface);
}

TEST(Init, KeepsWhatTheConfigurationFileBroughtBack)
{
    sim::Set set;
    MovoNetIface_t iface = named("eth1", _MOVO_NET_IFACE_ETHER_);
    iface.ipMode = _MOVO_NET_IPMODE_DNSONLY_;
    iface.sipv4 = 1;
    iface.smaskv4 = 2;
    iface.sgwv4 = 3;
    iface.sdns1v4 = 4;
    iface.sdns2v4 = 5;
    iface.dhcpDownCount = 6;
    iface.dhcpDownHandle = 7;
    EXPECT_EQ(int_Movo_Net_Init(&iface), 0);
    EXPECT_EQ(iface.ipMode, _MOVO_NET_IPMODE_DNSONLY_);
    EXPECT_EQ(iface.sipv4, 1U);
    EXPECT_EQ(iface.smaskv4, 2U);
    EXPECT_EQ(iface.sgwv4, 3U);
    EXPECT_EQ(iface.sdns1v4, 4U);
    EXPECT_EQ(iface.sdns2v4, 5U);
    EXPECT_EQ(iface.dhcpDownCount, 6);
    EXPECT_EQ(iface.dhcpDownHandle, 7);
    EXPECT_EQ(set.log().size(), 0U);
}

class InitWired : public testing::TestWithParam<MovoNetIfaceType_e> {};

TEST_P(InitWired, GetsTheCommonOperationsAndTheWiredOnes)
{
    sim::Set set;
    MovoNetIface_t iface = named("if7", GetParam());
    std::memset(&iface.funcs, 0x5a, sizeof(iface.funcs));
    EXPECT_EQ(int_Movo_Net_Init(&iface), 0);
    expectCommonOps(iface.funcs);
    EXPECT_EQ(iface.funcs.Init, int_Movo_Net_InitEther);
    EXPECT_EQ(iface.funcs.DeInit, int_Movo_Net_DeInitEther);
    EXPECT_EQ(iface.funcs.CanActive, int_Movo_Net_CanActiveEther);
    EXPECT_EQ(iface.funcs.WifiScanEsss, nullptr);
    EXPECT_EQ(iface.funcs.WifiDisConnect, nullptr);
    EXPECT_EQ(iface.funcs.WifiIsReconnecting, nullptr);
    EXPECT_EQ(wifiFake.initialised, 0);
}

INSTANTIATE_TEST_SUITE_P(Types, InitWired, testing::Values(_MOVO_NET_IFACE_LO_, _MOVO_NET_IFACE_ETHER_));

TEST(Init, GivesAWirelessRecordToItsBackEnd)
{
    sim::Set set;
    MovoNetIface_t iface = named("wlan0", _MOVO_NET_IFACE_WIFI_);
    EXPECT_EQ(int_Movo_Net_Init(&iface), 0);
    expectCommonOps(iface.funcs);
    EXPECT_EQ(iface.funcs.CanActive, int_Movo_Net_CanActive);
    EXPECT_EQ(iface.funcs.Init, nullptr);
    EXPECT_EQ(iface.funcs.DeInit, nullptr);
    EXPECT_EQ(wifiFake.asked, &iface);
    EXPECT_EQ(set.log().size(), 0U);
}

TEST(Init, FailsWithTheWirelessBackEnd)
{
    sim::Set set;
    wifiFake.initResult = 4;
    MovoNetIface_t iface = named("wlan0", _MOVO_NET_IFACE_WIFI_);
    EXPECT_EQ(int_Movo_Net_Init(&iface), 1);
    EXPECT_EQ(said(set), Lines{"ERROR int_Movo_Net_Init: int_Movo_Net_Init, int_Movo_Net_InitWifi failed\n"});
}

TEST(Init, FailsWithTheWiredBackEnd)
{
    sim::Set set;
    set.fail({.call = sim::Call::MutexInit, .error = ENOMEM});
    MovoNetIface_t iface = named("eth1", _MOVO_NET_IFACE_ETHER_);
    EXPECT_EQ(int_Movo_Net_Init(&iface), 1);
    EXPECT_EQ(said(set), Lines{"ERROR int_Movo_Net_Init: int_Movo_Net_Init, int_Movo_Net_InitEther failed\n"});
}

TEST(Init, RefusesUnknownTypesAfterTheReset)
{
    sim::Set set;
    for (const int type : {3, -1, 2147483647}) {
        set.forget();
        MovoNetIface_t iface = named("eth1", static_cast<MovoNetIfaceType_e>(type));
        iface.isActived = 1;
        EXPECT_EQ(int_Movo_Net_Init(&iface), 1);
        expectReset(iface);
        expectCommonOps(iface.funcs);
        EXPECT_EQ(said(set), Lines{"ERROR int_Movo_Net_Init: int_Movo_Net_Init, unknown interface type: " +
                                   std::to_string(type) + "\n"});
    }
}

/** Base path of the notify pipes after the first record was initialised with that environment. */
std::string pipeBase(sim::Set& set, const char* environment)
{
    EXPECT_EQ(
        environment != nullptr ? setenv("DHCP_NOTIFY_PIPE_DIR", environment, 1) : unsetenv("DHCP_NOTIFY_PIPE_DIR"), 0);
    MovoNetIface_t iface = named("eth1", _MOVO_NET_IFACE_ETHER_);
    EXPECT_EQ(int_Movo_Net_Init(&iface), 0);
    EXPECT_EQ(set.log().size(), 0U);
    return movonet::s_sDhcpcdPipeName;
}

TEST(PipeName, IsTheDefaultWithoutTheEnvironment)
{
    sim::Set set;
    EXPECT_EQ(pipeBase(set, nullptr), "/tmp/dhcpnotify.pipe");
}

TEST(PipeName, ComesFromTheEnvironment)
{
    sim::Set set;
    EXPECT_EQ(pipeBase(set, "/run/pipe"), "/run/pipe");
}

TEST(PipeName, MayHave255Characters)
{
    sim::Set set;
    const std::string longest(255, 'p');
    EXPECT_EQ(pipeBase(set, longest.c_str()), longest);
}

TEST(PipeName, KeepsAnEmptyOne)
{
    sim::Set set;
    EXPECT_EQ(pipeBase(set, ""), "");
}

TEST(PipeName, IsReadOnceAndIsACopy)
{
    sim::Set set;
    static char entry[] = "DHCP_NOTIFY_PIPE_DIR=/run/first";
    ASSERT_EQ(putenv(entry), 0);
    MovoNetIface_t iface = named("eth1", _MOVO_NET_IFACE_ETHER_);
    EXPECT_EQ(int_Movo_Net_Init(&iface), 0);
    std::memset(std::strchr(entry, '=') + 1, 'x', 3);
    EXPECT_STREQ(movonet::s_sDhcpcdPipeName, "/run/first");
    EXPECT_EQ(pipeBase(set, "/run/second"), "/run/first");
}

TEST(PipeName, KeepsOneThatIsTooLongForTheSecondCall)
{
    sim::Set set;
    const std::string tooLong(256, 'p');
    ASSERT_EQ(setenv("DHCP_NOTIFY_PIPE_DIR", tooLong.c_str(), 1), 0);
    MovoNetIface_t iface = named("eth1", _MOVO_NET_IFACE_ETHER_);
    iface.isActived = 1;
    EXPECT_EQ(int_Movo_Net_Init(&iface), 1);
    EXPECT_EQ(said(set), Lines{"ERROR int_Movo_Net_Init: int_Movo_Net_Init, pipe name too long\n"});
    EXPECT_EQ(iface.isActived, 1);
    EXPECT_EQ(iface.funcs.Active, nullptr);

    set.forget();
    EXPECT_EQ(pipeBase(set, tooLong.c_str()), tooLong);
}

TEST(PipeName, WithoutMemoryIsReadAtTheNextCall)
{
    sim::Set set;
    ASSERT_EQ(setenv("DHCP_NOTIFY_PIPE_DIR", "/run/pipe", 1), 0);
    set.fail({.call = sim::Call::Strdup, .nth = 1, .error = ENOMEM});
    MovoNetIface_t iface = named("eth1", _MOVO_NET_IFACE_ETHER_);
    EXPECT_EQ(int_Movo_Net_Init(&iface), 1);
    EXPECT_EQ(movonet::s_sDhcpcdPipeName, nullptr);
    EXPECT_EQ(pipeBase(set, "/run/pipe"), "/run/pipe");
}

TEST(CanActive, IsForLoopbackOnlyUnlessABackEndSaysMore)
{
    MovoNetIface_t iface{};
    iface.type = _MOVO_NET_IFACE_LO_;
    EXPECT_EQ(int_Movo_Net_CanActive(&iface), 1);
    iface.type = _MOVO_NET_IFACE_ETHER_;
    EXPECT_EQ(int_Movo_Net_CanActive(&iface), 0);
    iface.type = _MOVO_NET_IFACE_WIFI_;
    EXPECT_EQ(int_Movo_Net_CanActive(&iface), 0);
}
} // namespace
