#include "sim/calls.h"
#include "sim/sim.h"

#include <arpa/inet.h>
#include <csignal>
#include <cstring>
#include <gtest/gtest-spi.h>
#include <linux/mii.h>
#include <linux/rtnetlink.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <net/route.h>

using namespace sim;

namespace {
/** Issues an interface request; 0 or the errno. */
int ask(const char* ifname, unsigned long code, ifreq& request)
{
    (void)std::strncpy(request.ifr_name, ifname, IFNAMSIZ - 1);
    const int fd = sim_socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int error = sim_ioctl(fd, code, &request) == 0 ? 0 : errno;
    (void)sim_close(fd);
    return error;
}

std::string addressIn(const ifreq& request)
{
    sockaddr_in address{};
    std::memcpy(&address, &request.ifr_addr, sizeof(address));
    char text[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, &address.sin_addr, text, sizeof(text));
}

int statusRegister(const char* ifname)
{
    ifreq request{};
    mii_ioctl_data data{};
    (void)ask(ifname, SIOCGMIIPHY, request);
    std::memcpy(&data, &request.ifr_data, sizeof(data));
    data.reg_num = MII_BMSR;
    std::memcpy(&request.ifr_data, &data, sizeof(data));
    const int error = ask(ifname, SIOCGMIIREG, request);
    std::memcpy(&data, &request.ifr_data, sizeof(data));
    return error == 0 ? data.val_out : -error;
}

int deleteDefaultRoute()
{
    rtentry entry{};
    const int fd = sim_socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int error = sim_ioctl(fd, SIOCDELRT, &entry) == 0 ? 0 : errno;
    (void)sim_close(fd);
    return error;
}

/** Sends the request for a dump and receives until the end; the datagrams as they came. */
std::vector<std::string> dump()
{
    struct {
        nlmsghdr header;
        rtmsg message;
    } request{};
    request.header.nlmsg_len = sizeof(request);
    request.header.nlmsg_type = RTM_GETROUTE;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    const int fd = sim_socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_ROUTE);
    EXPECT_EQ(sim_send(fd, &request, sizeof(request), 0), static_cast<ssize_t>(sizeof(request)));
    std::vector<std::string> datagrams;
    do {
        char buffer[8192];
        const ssize_t got = sim_recv(fd, buffer, sizeof(buffer), 0);
        datagrams.emplace_back(buffer, static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    } while (!datagrams.back().empty() && datagrams.back() != doneMessage());
    (void)sim_close(fd);
    return datagrams;
}
} // namespace

TEST(Kernel, AddressAndMask)
{
    Set set;
    ifreq request{};
    EXPECT_EQ(ask("eth0", SIOCGIFADDR, request), EADDRNOTAVAIL);
    EXPECT_EQ(ask("eth7", SIOCGIFADDR, request), ENODEV);
    set.iface("eth0").setAddress("10.1.2.3", "255.255.0.0");
    EXPECT_EQ(ask("eth0", SIOCGIFADDR, request), 0);
    EXPECT_EQ(addressIn(request), "10.1.2.3");
    EXPECT_EQ(ask("eth0", SIOCGIFNETMASK, request), 0);
    EXPECT_EQ(addressIn(request), "255.255.0.0");

    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = inet_addr("192.168.1.9");
    std::memcpy(&request.ifr_addr, &address, sizeof(address));
    EXPECT_EQ(ask("eth0", SIOCSIFADDR, request), 0);
    EXPECT_EQ(set.iface("eth0").address(), "192.168.1.9");
    EXPECT_EQ(set.iface("eth0").mask(), "255.255.255.0");
}

TEST(Kernel, CableAndPhy)
{
    Set set;
    EXPECT_EQ(statusRegister("eth0") & BMSR_LSTATUS, 0);
    set.cable("eth0").plug();
    EXPECT_EQ(statusRegister("eth0") & (BMSR_LSTATUS | BMSR_RFAULT | BMSR_JCD), BMSR_LSTATUS);
    set.cable("eth0").remoteFault().jabber();
    EXPECT_EQ(statusRegister("eth0") & (BMSR_LSTATUS | BMSR_RFAULT | BMSR_JCD), BMSR_LSTATUS | BMSR_RFAULT | BMSR_JCD);
    set.cable("eth0").statusRegister(0xffff);
    EXPECT_EQ(statusRegister("eth0"), 0xffff);
    set.cable("eth0").pull();
    EXPECT_EQ(statusRegister("eth0") & BMSR_LSTATUS, 0);
    EXPECT_EQ(statusRegister("lo"), -EOPNOTSUPP);
}

TEST(Kernel, TellsTheRegistersOfThePhyThatItNamed)
{
    Set set;
    set.cable("eth0").plug();
    ifreq request{};
    mii_ioctl_data data{};
    data.reg_num = MII_BMSR;
    std::memcpy(&request.ifr_data, &data, sizeof(data));
    EXPECT_EQ(ask("eth0", SIOCGMIIREG, request), 0);
    std::memcpy(&data, &request.ifr_data, sizeof(data));
    EXPECT_EQ(data.val_out, 0);
}

TEST(Kernel, DefaultRoutes)
{
    Set set;
    EXPECT_EQ(deleteDefaultRoute(), ESRCH);
    set.iface("eth0").setUp(true).setAddress("10.0.2.15");
    EXPECT_EQ(sim_system("route add default gw 10.0.2.2 dev eth0"), 0);
    EXPECT_NE(sim_system("route add default gw 10.0.2.2 dev eth0"), 0);
    EXPECT_NE(sim_system("route add default gw 10.9.9.9 dev eth0"), 0);
    EXPECT_EQ(sim_system("route add default gw 10.0.2.3 dev eth0"), 0);
    EXPECT_EQ(set.defaultRoutes(), (std::vector<std::string>{"10.0.2.3 dev eth0", "10.0.2.2 dev eth0"}));
    EXPECT_EQ(deleteDefaultRoute(), 0);
    EXPECT_EQ(set.defaultRoutes(), std::vector<std::string>{"10.0.2.2 dev eth0"});
    EXPECT_EQ(sim_system("netcfg eth0 down"), 0);
    EXPECT_TRUE(set.defaultRoutes().empty());
}

TEST(Kernel, ADumpEndsWithItsDoneMessage)
{
    Set set;
    set.addDefaultRoute("eth0", "10.0.2.2");
    const auto datagrams = dump();
    ASSERT_EQ(datagrams.size(), 2U);
    EXPECT_EQ(datagrams[0].find(routeMessage({.ifname = "eth0", .gateway = "10.0.2.2"})), 0U);
    EXPECT_EQ(datagrams[1], doneMessage());
}

TEST(Kernel, ALongDumpComesInPieces)
{
    Set set;
    for (int count = 0; count < 100; ++count) {
        set.addRoute({.ifname = "eth0", .destination = "10.1." + std::to_string(count) + ".0", .prefix = 24});
    }
    const auto datagrams = dump();
    EXPECT_EQ(datagrams.size(), 3U);
    for (const std::string& datagram : datagrams) {
        EXPECT_LE(datagram.size(), 3776U);
    }
}

TEST(Kernel, ADumpCanBeAnsweredWithAnything)
{
    Set set;
    set.answerDump({"rubbish", doneMessage()});
    EXPECT_EQ(dump(), (std::vector<std::string>{"rubbish", doneMessage()}));
}

TEST(Kernel, WaitingForADatagramThatCannotComeFailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(
        {
            Set set;
            set.answerDump({});
            (void)dump();
        },
        "waits for a datagram that cannot come");
}

TEST(Commands, ActOnTheMachine)
{
    Set set;
    EXPECT_EQ(sim_system("netcfg eth0 down; netcfg eth0 hwprefix 00:11:22:AA:BB:CC"), 0);
    EXPECT_EQ(set.iface("eth0").mac(), "00:11:22:aa:bb:cc");
    EXPECT_EQ(sim_system("netcfg eth0 up"), 0);
    EXPECT_TRUE(set.iface("eth0").up());
    EXPECT_NE(sim_system("netcfg eth9 up"), 0);
    set.iface("eth0").setAddress("10.0.0.1");
    EXPECT_EQ(sim_system("ifconfig eth0 0.0.0.0"), 0);
    EXPECT_EQ(set.iface("eth0").address(), "0.0.0.0");
    EXPECT_EQ(sim_system("nonsense"), 127 << 8);
    EXPECT_RAN_IN_ORDER(set, {"netcfg eth0 up", "ifconfig eth0 0.0.0.0"});
    EXPECT_NOT_RAN(set, "netcfg eth0 dow");
    EXPECT_FALSE(set.ranInOrder({"ifconfig eth0 0.0.0.0", "netcfg eth0 up"}));
}

TEST(Commands, CanBeScripted)
{
    Set set;
    set.onCommand("netcfg eth0 up").fails(256).times(1);
    EXPECT_EQ(sim_system("netcfg eth0 up"), 256);
    EXPECT_EQ(sim_system("netcfg eth0 up"), 0);

    int runs = 0;
    set.onCommand("sync").does([&runs] { ++runs; });
    EXPECT_EQ(sim_system("sync"), 0);
    EXPECT_EQ(runs, 1);

    set.onCommand("getprop").prints("on\n");
    FILE* stream = sim_popen("getprop hostapd", "re");
    char line[8] = {};
    EXPECT_STREQ(fgets(line, sizeof(line), stream), "on\n");
    EXPECT_EQ(sim_pclose(stream), 0);
}

TEST(Processes, DieOfTheirSignals)
{
    Set set;
    EXPECT_EQ(sim_kill(100, 0), -1);
    EXPECT_EQ(errno, ESRCH);
    Process process = set.process(100).diesAfterProbes(2);
    EXPECT_EQ(sim_kill(100, SIGHUP), 0);
    EXPECT_EQ(sim_kill(100, 0), 0);
    EXPECT_EQ(sim_kill(100, 0), 0);
    EXPECT_EQ(sim_kill(100, 0), -1);
    EXPECT_FALSE(process.alive());

    (void)set.process(101).ignoresHangup();
    EXPECT_EQ(sim_kill(101, SIGHUP), 0);
    EXPECT_EQ(sim_kill(101, 0), 0);
    EXPECT_EQ(sim_system("kill -9 101"), 0);
    EXPECT_EQ(sim_kill(101, 0), -1);

    (void)set.process(102).foreign();
    EXPECT_EQ(sim_kill(102, 0), 0);
    EXPECT_EQ(sim_kill(102, SIGHUP), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(set.signals().back(), (Signal{102, SIGHUP, EPERM}));
}

TEST(Processes, ASignalForManyFailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(
        {
            Set set;
            (void)sim_kill(0, SIGHUP);
        },
        "would reach many");
    EXPECT_TRUE(true) << "and this process is still there";
}
