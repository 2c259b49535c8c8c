#include "bench.h"

#include <arpa/inet.h>
#include <linux/sockios.h>
#include <net/if.h>

using namespace hostap;
using sim::Call;

// Operations on an interface over the shared socket.

namespace {
const Lines kOpen = {"socket(\"inet\")"};

in_addr_t addressOf(const char* ifname)
{
    in_addr_t address = 0x55555555;
    EXPECT_EQ(ifc_get_addr(ifname, &address), 0);
    return address;
}

/** A set with bcm0 and the shared socket open. */
struct Opened : Bench {
    Opened()
    {
        set.addIface("bcm0").setUp(true);
        EXPECT_EQ(ifc_init(), 0);
        set.forget();
    }
};

TEST(Ifc, SocketIsClosedAtFirst)
{
    EXPECT_EQ(ifc_ctl_sock, -1);
}

TEST(Ifc, InitOpensTheSocketOnce)
{
    Bench bench;
    EXPECT_EQ(ifc_init(), 0);
    const int first = ifc_ctl_sock;
    EXPECT_EQ(ifc_init(), 0);
    EXPECT_EQ(ifc_ctl_sock, first);
    EXPECT_EQ(bench.set.openDescriptors(), kOpen);
    EXPECT_EQ(bench.said(), Lines(2, "INFO ifc_init: ifc_init_returning 0"));
}

TEST(Ifc, InitFailsWithoutASocket)
{
    Bench bench;
    (void)bench.set.fail({.call = Call::Socket, .nth = 1, .error = EMFILE});
    EXPECT_EQ(ifc_init(), -1);
    EXPECT_EQ(ifc_ctl_sock, -1);
    EXPECT_EQ(bench.said(), (Lines{"ERROR ifc_init: socket() failed: Too many open files\n",
                                   "INFO ifc_init: ifc_init_returning -1"}));
    EXPECT_EQ(ifc_init(), 0);
}

TEST(Ifc, CloseClosesItOnce)
{
    Bench bench;
    ifc_close();
    EXPECT_EQ(ifc_init(), 0);
    ifc_close();
    EXPECT_EQ(ifc_ctl_sock, -1);
    EXPECT_EQ(bench.set.openDescriptors(), Lines{});
    ifc_close();
}

TEST(Ifc, DownClearsTheUpFlag)
{
    Opened bench;
    EXPECT_EQ(ifc_down("bcm0"), 0);
    EXPECT_FALSE(bench.set.iface("bcm0").up());
    EXPECT_EQ(bench.said(), Lines{"INFO ifc_down: ifc_down(bcm0) = 0"});
    EXPECT_EQ(bench.set.openDescriptors(), kOpen);
}

TEST(Ifc, DownFailsWithItsIoctls)
{
    for (const unsigned long code : {0UL + SIOCGIFFLAGS, 0UL + SIOCSIFFLAGS}) {
        EXPECT_EQ(sim::forkedRun([code] {
                      Opened bench;
                      (void)bench.set.fail({.call = Call::Ioctl, .code = code, .nth = 1});
                      EXPECT_EQ(ifc_down("bcm0"), -1);
                      EXPECT_TRUE(bench.set.iface("bcm0").up());
                      EXPECT_EQ(bench.said(), Lines{"INFO ifc_down: ifc_down(bcm0) = -1"});
                  }),
                  0);
    }
}

TEST(Ifc, OperationsFailWithoutASocket)
{
    Bench bench;
    in_addr_t address = 5;
    EXPECT_EQ(ifc_down("lo"), -1);
    EXPECT_EQ(ifc_get_addr("lo", &address), -1);
    EXPECT_EQ(address, 0U);
    EXPECT_EQ(ifc_set_addr("lo", 7), -1);
    EXPECT_EQ(bench.said(),
              (Lines{"INFO ifc_down: ifc_down(lo) = -1", "INFO ifc_set_addr: ifc_set_addr(lo, xx) = -1"}));
}

TEST(Ifc, GetAddrReadsTheAddress)
{
    Opened bench;
    bench.set.iface("bcm0").setAddress("192.168.255.249");
    EXPECT_EQ(addressOf("bcm0"), inet_addr("192.168.255.249"));
    EXPECT_EQ(bench.said(), Lines{});
}

TEST(Ifc, GetAddrGivesZeroWhenThereIsNone)
{
    Opened bench;
    in_addr_t address = 5;
    EXPECT_LT(ifc_get_addr("bcm0", &address), 0);
    EXPECT_EQ(address, 0U);
}

TEST(Ifc, GetAddrAsksNothingWithoutAPlaceForIt)
{
    Opened bench;
    const int asked = bench.set.fail({.call = Call::Ioctl, .mayMiss = true});
    EXPECT_EQ(ifc_get_addr("bcm0", nullptr), 0);
    EXPECT_EQ(bench.set.hits(asked), 0);
}

TEST(Ifc, SetAddrSetsItWithoutTellingWhich)
{
    Opened bench;
    EXPECT_EQ(ifc_set_addr("bcm0", inet_addr("10.1.2.3")), 0);
    EXPECT_EQ(bench.set.iface("bcm0").address(), "10.1.2.3");
    EXPECT_EQ(bench.said(), Lines{"INFO ifc_set_addr: ifc_set_addr(bcm0, xx) = 0"});
}

TEST(Ifc, SetAddrFails)
{
    Opened bench;
    (void)bench.set.fail({.call = Call::Ioctl, .code = SIOCSIFADDR, .error = EPERM});
    EXPECT_EQ(ifc_set_addr("bcm0", inet_addr("10.1.2.3")), -1);
    EXPECT_EQ(bench.said(), Lines{"INFO ifc_set_addr: ifc_set_addr(bcm0, xx) = -1"});
}

TEST(Ifc, NamesAreCutToWhatTheKernelTakes)
{
    Opened bench;
    bench.set.addIface("abcdefghijklmno").setUp(true);
    EXPECT_EQ(ifc_down("abcdefghijklmnopqrstuvwxyz"), 0);
    EXPECT_FALSE(bench.set.iface("abcdefghijklmno").up());
}

TEST(IfcClear, TakesTheAddressAndClosesTheSocket)
{
    Bench bench;
    bench.set.addIface("bcm0").setAddress("192.168.255.249");
    EXPECT_EQ(ifc_clear_ipv4_addresses("bcm0"), 0);
    EXPECT_EQ(bench.set.iface("bcm0").address(), "0.0.0.0");
    EXPECT_EQ(bench.said(),
              (Lines{"INFO ifc_init: ifc_init_returning 0", "INFO ifc_set_addr: ifc_set_addr(bcm0, xx) = 0"}));
    EXPECT_EQ(bench.set.openDescriptors(), Lines{});
}

TEST(IfcClear, ReadsOnceWhenThereIsNoAddress)
{
    Bench bench;
    bench.set.addIface("bcm0");
    const int second = bench.set.fail({.call = Call::Ioctl, .nth = 2, .mayMiss = true});
    EXPECT_EQ(ifc_clear_ipv4_addresses("bcm0"), 0);
    EXPECT_EQ(bench.set.hits(second), 0);
    EXPECT_EQ(bench.said(), Lines{"INFO ifc_init: ifc_init_returning 0"});
}

TEST(IfcClear, GivesUpAfter255Rounds)
{
    Bench bench;
    bench.set.addIface("bcm0").setAddress("192.168.255.249");
    const int refused = bench.set.fail({.call = Call::Ioctl, .code = SIOCSIFADDR, .error = EPERM});
    EXPECT_EQ(ifc_clear_ipv4_addresses("bcm0"), 0);
    EXPECT_EQ(bench.set.hits(refused), 255);
    EXPECT_EQ(bench.set.openDescriptors(), Lines{});
}

TEST(IfcClear, DoesNothingWithoutASocket)
{
    Bench bench;
    bench.set.addIface("bcm0").setAddress("192.168.255.249");
    (void)bench.set.fail({.call = Call::Socket, .error = EMFILE});
    EXPECT_EQ(ifc_clear_ipv4_addresses("bcm0"), 0);
    EXPECT_EQ(bench.set.iface("bcm0").address(), "192.168.255.249");
}
} // namespace
