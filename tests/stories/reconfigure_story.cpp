#include "sim/sim.h"

#include "movo_net_fg/fg.h"
#include "movo_net_internal.h"

#include <arpa/inet.h>
#include <atomic>
#include <csignal>
#include <fstream>
#include <iterator>
#include <movo_net.h>
#include <sched.h>

using namespace sim;

// Changes of the address mode, one after another and faster than the threads that carry them out.

namespace {
constexpr const char* kPipe = "open(\"/tmp/dhcpnotify.pipe.eth0\")";

/** Descriptors of the product, without the board's stream, which stays open. */
std::vector<std::string> openFiles(const Set& set)
{
    std::vector<std::string> files = set.openDescriptors();
    std::erase(files, "popen(\"bdconf -p\")");
    return files;
}

void boot(Set& set)
{
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    set.dhcp("eth0").leases();
    set.forget();
}

void change(MovoNetIPMode_e mode)
{
    EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", mode), 0);
}

/** The set carries out the static mode: the last lease, with no client behind it. */
void expectStatic(Set& set)
{
    EXPECT_FALSE(set.dhcp("eth0").running());
    EXPECT_EQ(openFiles(set), std::vector<std::string>{});
    EXPECT_EQ(set.iface("eth0").address(), "10.0.2.15");
    EXPECT_EQ(set.defaultRoutes(), std::vector<std::string>{"10.0.2.2 dev eth0"});
}

/** The set carries out the DHCP mode: one client, and its pipe. */
void expectDhcp(Set& set)
{
    EXPECT_TRUE(set.dhcp("eth0").running());
    EXPECT_EQ(openFiles(set), std::vector<std::string>{kPipe});
    EXPECT_EQ(set.iface("eth0").address(), "0.0.0.0");
    set.dhcp("eth0").leases();
    EXPECT_EQ(set.iface("eth0").address(), "10.0.2.15");
}

/** A command that holds the first thread that comes to it. */
class HeldCommand {
public:
    HeldCommand(Set& set, const char* command)
    {
        set.onCommand(command).does([this] { hold(); }).times(1);
    }
    void waitForThread() const
    {
        while (!m_reached) {
            (void)sched_yield();
        }
    }
    void letGo() { m_letGo = true; }

private:
    void hold()
    {
        m_reached = true;
        // After it was let go, still long enough for another thread to get ahead, were it not kept from it.
        for (int yields = 0; yields < 2000; yields += m_letGo ? 1 : 0) {
            (void)sched_yield();
        }
    }

    std::atomic<bool> m_reached{false};
    std::atomic<bool> m_letGo{false};
};

TEST(ModeChange, FromDhcpToStaticAndBack)
{
    Set set;
    boot(set);
    change(_MOVO_NET_IPMODE_STATIC_);
    set.settle();
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}, {IPCHANGED, "eth0"}, {STATICIP_SUCCESS, "eth0"}});
    expectStatic(set);

    change(_MOVO_NET_IPMODE_DHCP_);
    set.settle();
    EXPECT_CALLBACKS(set, {});
    expectDhcp(set);
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
}

TEST(ModeChange, FromDhcpToAutoIpKeepsTheClient)
{
    Set set;
    boot(set);
    change(_MOVO_NET_IPMODE_AUTOIP_);
    set.settle();
    EXPECT_EQ(set.dhcp("eth0").launches(), 1);
    EXPECT_EQ(set.iface("eth0").address(), "0.0.0.0");
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}});
}

TEST(TwoModeChanges, EndWithDhcpWhenItComesSecond)
{
    Set set;
    boot(set);
    HeldCommand route(set, "route add");
    change(_MOVO_NET_IPMODE_STATIC_);
    route.waitForThread();
    change(_MOVO_NET_IPMODE_DHCP_);
    route.letGo();
    set.settle();
    expectDhcp(set);
    EXPECT_EQ(set.dhcp("eth0").launches(), 2);
}

TEST(TwoModeChanges, EndWithTheStaticAddressWhenItComesSecond)
{
    Set set;
    boot(set);
    change(_MOVO_NET_IPMODE_STATIC_);
    set.settle();
    HeldCommand launch(set, "chmod");
    change(_MOVO_NET_IPMODE_DHCP_);
    launch.waitForThread();
    change(_MOVO_NET_IPMODE_STATIC_);
    launch.letGo();
    set.settle();
    EXPECT_EQ(set.dhcp("eth0").launches(), 2);
    expectStatic(set);
}

/** Whichever thread runs first, the mode that was set last is what both carry out. */
TEST(TwoModeChanges, EndTheSameInBothOrders)
{
    for (unsigned seed = 1; seed <= 60; ++seed) {
        const bool dhcpLast = seed % 2 == 0;
        EXPECT_EQ(forkedRun([seed, dhcpLast] {
                      Set set(seed);
                      boot(set);
                      change(_MOVO_NET_IPMODE_STATIC_);
                      change(_MOVO_NET_IPMODE_AUTOIP_);
                      change(dhcpLast ? _MOVO_NET_IPMODE_DHCP_ : _MOVO_NET_IPMODE_STATIC_);
                      set.settle();
                      dhcpLast ? expectDhcp(set) : expectStatic(set);
                  }),
                  0)
            << "seed " << seed;
    }
}

/** The addresses that an application reads when it hears of a static one. */
class StaticAddresses {
public:
    explicit StaticAddresses(Set& set)
    {
        set.onCallback([this](MovoNetCBReason_e reason, void*) {
            unsigned int ip = 0, mask = 0, gateway = 0, dns1 = 0, dns2 = 0;
            if (reason == STATICIP_SUCCESS && Movo_NET_GetIP(0, "eth0", &ip, &mask, &gateway, &dns1, &dns2) == 0) {
                m_heard.push_back(ip);
            }
        });
    }
    std::vector<unsigned int> heard() const { return m_heard; }

private:
    std::vector<unsigned int> m_heard; // configuration threads work one at a time
};

const unsigned int kLease = inet_addr("10.0.2.15");
const unsigned int kWanted = inet_addr("10.0.2.77");

void giveStaticAddress()
{
    EXPECT_EQ(Movo_NET_ConfigIPStatic(0, "eth0", kWanted, inet_addr("255.255.255.0"), inet_addr("10.0.2.2"),
                                      inet_addr("10.0.2.3"), 0),
              0);
}

TEST(StaticAddress, GivenRightBeforeItsModeIsReportedTwice)
{
    Set set;
    boot(set);
    const StaticAddresses addresses(set);
    {
        // The first thread saves first: it waits until the mode is set, however late that is.
        const movonet::ScopedLock held(movonet::ifaceListLock);
        giveStaticAddress();
        change(_MOVO_NET_IPMODE_STATIC_);
    }
    set.settle();
    EXPECT_EQ(addresses.heard(), (std::vector<unsigned int>{kWanted, kWanted}));
    EXPECT_EQ(set.iface("eth0").address(), "10.0.2.77");
}

TEST(StaticAddress, GivenLongBeforeItsModeIsReportedOnce)
{
    Set set;
    boot(set);
    const StaticAddresses addresses(set);
    giveStaticAddress();
    set.settle();
    EXPECT_CALLBACKS(set, {{IPCHANGED, "eth0"}});
    change(_MOVO_NET_IPMODE_STATIC_);
    set.settle();
    EXPECT_EQ(addresses.heard(), std::vector<unsigned int>{kWanted});
}

TEST(StaticAddress, GivenAfterItsModeMayComeAfterThatOfTheLease)
{
    Set set;
    boot(set);
    const StaticAddresses addresses(set);
    change(_MOVO_NET_IPMODE_STATIC_);
    set.settle();
    giveStaticAddress();
    set.settle();
    EXPECT_EQ(addresses.heard(), (std::vector<unsigned int>{kLease, kWanted}));
}

TEST(DisableAll, LeavesTheAddressInPlace)
{
    Set set;
    boot(set);
    const int pid = set.dhcp("eth0").pid();
    EXPECT_EQ(Movo_NET_DisableAllIfaces(0), 0);
    EXPECT_EQ(set.signals().back(), (Signal{pid, SIGUSR1, 0}));
    EXPECT_EQ(set.iface("eth0").address(), "10.0.2.15");
    EXPECT_EQ(set.defaultRoutes(), std::vector<std::string>{"10.0.2.2 dev eth0"});
    EXPECT_EQ(openFiles(set), std::vector<std::string>{});
}

/** Saves while a retry waits, and leaves the file to the next start. */
void saveWithARetryWaiting(const std::string& to)
{
    Set set;
    ASSERT_EQ(set.start(), 0);
    set.cable("eth0").plug();
    set.grantTicks(10);
    set.dhcp("eth0").loses();
    ASSERT_EQ(FindInterface("eth0")->dhcpDownHandle, 3); // after the pass and the pipe
    EXPECT_EQ(Movo_NET_SetNetworkToModeVirgin(0), 0);
    std::ofstream(to, std::ios::binary) << set.read("/data/tv/save/netconfig");
}

TEST(SavedRetry, DoesNotStopTheLinkPassOfTheNextStart)
{
    const std::string saved = testing::TempDir() + "netconfig." + std::to_string(getpid());
    ASSERT_EQ(forkedRun([&saved] { saveWithARetryWaiting(saved); }), 0);

    Set set;
    std::ifstream file(saved, std::ios::binary);
    set.write("/data/tv/save/netconfig", std::string(std::istreambuf_iterator<char>(file), {}));
    EXPECT_EQ(remove(saved.c_str()), 0);
    set.addIface("eth1");
    set.cable("eth0").plug();
    set.cable("eth1").plug();
    ASSERT_EQ(set.start(), 0); // the pipes are events 1 and 2, the pass is event 3
    ASSERT_EQ(FindInterface("eth0")->dhcpDownHandle, 3);
    set.dhcp("eth0").loses();
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_eventloop", "int_removeEvent", "event not found\n");
    set.forget();

    set.cable("eth1").pull();
    set.grantTicks(10);
    EXPECT_CALLBACKS(set, {{IFREMOVED, "eth1"}});
}
} // namespace
