#include "tools.h"

#include <atomic>
#include <functional>
#include <thread>

using namespace api;

// Every public call on several threads while links come and go, modes change and the configuration is saved.

namespace {
void readAll(const char* ifname)
{
    int number = 0;
    long long mac = 0;
    char name[9] = {};
    kest_bool connected = 0;
    unsigned int words[5] = {};
    MovoNetIfaceType_e type{};
    MovoNetIPMode_e mode{};
    MovoNetIPStatus_e status{};
    (void)Movo_NET_GetNumOfIfaces(0, &number);
    (void)Movo_NET_GetIfaceName(0, number - 1, 8, name);
    (void)Movo_NET_GetIfaceType(0, ifname, &type);
    (void)Movo_NET_GetIfaceMacAddress(0, ifname, &mac);
    (void)Movo_NET_GetIfaceThroughput(0, ifname, &number);
    (void)Movo_NET_IsEnabledIface(0, ifname);
    (void)Movo_NET_IsActivedIface(0, ifname);
    (void)Movo_NET_GetActivedIface(0, &number);
    (void)Movo_NET_GetActivedIfaceType(0, &type);
    (void)Movo_NET_IsPhyConnected(0, ifname);
    (void)Movo_NET_GetIfacePriority(0, ifname, &number);
    (void)Movo_NET_FilterOutIF(0, ifname);
    (void)Movo_NET_GetIPMode(0, ifname, &mode);
    (void)Movo_NET_GetIPStatus(0, ifname, &status);
    (void)Movo_NET_GetIP(0, ifname, &words[0], &words[1], &words[2], &words[3], &words[4]);
    (void)Movo_NET_GetIPStatic(0, ifname, &words[0], &words[1], &words[2], &words[3], &words[4]);
    (void)Movo_NET_IsConnected(0, ifname, &connected);
    (void)Movo_NET_IsDNSOK(0, ifname);
    (void)Movo_NET_IsNetworkOK(0);
    (void)Movo_NET_WifiDisConnect(0, ifname);
    (void)Movo_NET_SetWol(0, ifname, 1);
    (void)Movo_NET_GetMaxNumOfIfacesSupported(0, &number);
    (void)Movo_NET_GetMaxNumOfWifiEssSupported(0, &number);
    (void)Movo_NET_IsNetworkModeVirgin(0);
    (void)Movo_NET_IsInitializationDone(0);
}

void changeConfiguration(const char* ifname, int round)
{
    const auto mode = round % 2 == 0 ? _MOVO_NET_IPMODE_STATIC_ : _MOVO_NET_IPMODE_DHCP_;
    (void)Movo_NET_ConfigIPMode(0, ifname, mode);
    (void)Movo_NET_ConfigIPStatic(0, ifname, address("10.9.8.7"), address("255.0.0.0"), address("10.0.0.1"),
                                  address("10.0.0.2"), 0);
    (void)Movo_NET_SetIfacePriority(0, ifname, round);
    (void)Movo_NET_SetNetworkToModeVirgin(0);
}

void changeUse(const char* ifname, int round)
{
    (void)Movo_NET_DisableIface(0, ifname);
    (void)Movo_NET_EnableIface(0, ifname);
    (void)Movo_NET_ClearIP(0, ifname);
    if (round % 4 == 0) {
        (void)Movo_NET_DisableAllIfaces(0);
    }
    (void)Movo_NET_EnableIface(0, ifname);
}

/** Applications that repeat their calls while links come and go. */
class Applications {
public:
    explicit Applications(sim::Set& set) : m_set(set) {}

    void repeat(const std::function<void(int)>& action)
    {
        constexpr int kRounds = 8;
        ++m_running;
        m_threads.emplace_back([this, action] {
            for (int round = 0; round < kRounds; ++round) {
                action(round);
            }
            --m_running;
        });
    }

    /** Goes on until those that `repeat` have done so. */
    void watch(const std::function<void()>& action)
    {
        m_threads.emplace_back([this, action] {
            do {
                action();
            } while (m_running > 0);
        });
    }

    /** Pulls and returns both cables until all have done what they wanted, and then until all is quiet. */
    void runWithLinksChanging()
    {
        for (int round = 0; round < 6 || m_running > 0; ++round) {
            for (const char* ifname : {"eth0", "eth1"}) {
                round % 3 == 0 ? m_set.cable(ifname).pull() : m_set.cable(ifname).plug();
            }
            m_set.grantTicks(10);
        }
        join();
        m_set.settle();
    }

    void join()
    {
        for (std::thread& thread : m_threads) {
            thread.join();
        }
    }

private:
    sim::Set& m_set;
    std::atomic<int> m_running{0};
    std::vector<std::thread> m_threads;
};

/** An inactive interface keeps nothing of what it had. */
void expectDownUnlessActive(sim::Set& set, const MovoNetIface_t& iface)
{
    if (iface.isActived != 0) {
        return;
    }
    EXPECT_EQ(iface.isConnected, 0);
    EXPECT_EQ(iface.ipv4, 0U);
    EXPECT_EQ(set.iface(iface.name).address(), "0.0.0.0");
    EXPECT_EQ(set.defaultRoutes(), std::vector<std::string>{});
    if (iface.ipMode == _MOVO_NET_IPMODE_DHCP_) {
        EXPECT_FALSE(set.dhcp(iface.name).running());
        EXPECT_FALSE(set.exists(std::string("/tmp/dhcpnotify.pipe.") + iface.name));
        EXPECT_EQ(iface.dhcpcfd, -1);
        EXPECT_EQ(iface.dhcpcEventHandle, 0);
    }
}

class Seed : public testing::TestWithParam<unsigned> {};

TEST_P(Seed, EveryCallAtOnce)
{
    sim::Set set(GetParam());
    set.addIface("eth1");
    set.cable("eth0").plug();
    set.cable("eth1").plug();
    ASSERT_EQ(set.start(), 0);
    Applications applications(set);
    applications.repeat([](int round) { changeConfiguration("eth0", round); });
    applications.repeat([](int round) { changeUse("eth1", round); });
    applications.watch([] { readAll("eth0"); });
    applications.watch([] { readAll("eth1"); });
    applications.runWithLinksChanging();
    EXPECT_EQ(LoadNetConfig(), 0) << "what was saved last is whole";
}

TEST_P(Seed, EveryCallOnOneInterface)
{
    sim::Set set(GetParam());
    set.addIface("eth1");
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    Applications applications(set);
    for (int count = 0; count < 2; ++count) {
        applications.repeat([](int round) { changeConfiguration("eth0", round); });
        applications.repeat([](int round) {
            changeUse("eth0", round);
            (void)Movo_NET_DisableIface(0, "eth0");
        });
        applications.watch([] { readAll("eth0"); });
    }
    applications.runWithLinksChanging();
    expectDownUnlessActive(set, *FindInterface("eth0"));
}

TEST_P(Seed, EveryCallWhileTheGlueIsStopped)
{
    sim::Set set(GetParam());
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    Applications applications(set);
    applications.repeat([](int round) { changeConfiguration("eth0", round); });
    applications.repeat([](int round) { changeUse("eth0", round); });
    applications.watch([] { readAll("eth0"); });
    EXPECT_EQ(set.stop(), 0);
    applications.join();
}

INSTANTIATE_TEST_SUITE_P(Seeds, Seed, testing::Range(1U, 9U));
} // namespace
