#include "bench.h"

#include <linux/sockios.h>

using namespace hostap;
using sim::Call;

// The soft access point's own interface: there, known, up and down.

namespace {
/** A set where a start has named the interface. */
struct Named : Bench {
    Named() { (void)std::snprintf(hotspot.mInterface, sizeof(hotspot.mInterface), "bcm0"); }
};

TEST(SoftApInterface, IsAvailableWhenItIsThere)
{
    Named bench;
    bench.set.addIface("bcm0");
    EXPECT_EQ(SoftAP_isInterfaceAvailable(), 0);
    EXPECT_EQ(bench.ran(), Lines{});
    EXPECT_EQ(bench.said(), Lines{"ERROR SoftAP_isInterfaceAvailable: HOSTAP :find bcm0\n"});
}

TEST(SoftApInterface, IsMadeWhenItIsNotThere)
{
    Named bench;
    EXPECT_EQ(SoftAP_isInterfaceAvailable(), 0);
    EXPECT_EQ(bench.ran(), Lines{kCreate});
    EXPECT_EQ(bench.said(), Lines{"ERROR SoftAP_isInterfaceAvailable: HOSTAP :create bcm0 ok \n"});
}

TEST(SoftApInterface, IsNotOneWhoseNameOnlyBeginsLikeIt)
{
    Named bench;
    bench.set.addIface("bcm");
    bench.set.addIface("bcm00");
    EXPECT_EQ(SoftAP_isInterfaceAvailable(), 0);
    EXPECT_EQ(bench.ran(), Lines{kCreate});
}

TEST(SoftApInterface, KeepsAnsweringTheReverseOfItsName)
{
    Named bench;
    bench.set.onCommand(kCreate).fails();
    EXPECT_EQ(SoftAP_isInterfaceAvailable(), 0xFF);
    EXPECT_EQ(bench.said(), Lines{"ERROR SoftAP_isInterfaceAvailable: HOSTAP :create bcm0  failed \n"});
}

TEST(SoftApInterface, IsNotAvailableWithoutAList)
{
    Named bench;
    (void)bench.set.fail({.call = Call::GetIfAddrs, .error = EMFILE});
    EXPECT_EQ(SoftAP_isInterfaceAvailable(), 0xFF);
    EXPECT_EQ(bench.said(), Lines{"ERROR SoftAP_isInterfaceAvailable: fatal error getifaddrs() Too many open files"});
    EXPECT_EQ(bench.ran(), Lines{});
}

TEST(SoftApInterface, IsInitialisedOnce)
{
    Named bench;
    EXPECT_EQ(SoftAP_initializeInterface(), 0);
    EXPECT_EQ(hotspot.mIsInitialized, 1);
    bench.set.forget();
    EXPECT_EQ(SoftAP_initializeInterface(), 0);
    EXPECT_EQ(bench.said(), Lines{});
    EXPECT_EQ(bench.ran(), Lines{});
    EXPECT_EQ(bench.set.openDescriptors(), Lines{});
}

TEST(SoftApInterface, IsNotInitialisedWhenItCannotBeMade)
{
    Named bench;
    bench.set.onCommand(kCreate).fails();
    EXPECT_EQ(SoftAP_initializeInterface(), -1);
    EXPECT_EQ(hotspot.mIsInitialized, 0);
    EXPECT_EQ(bench.said().back(), "ERROR SoftAP_initializeInterface: initialize interface: interface is unavailable");
}

TEST(SoftApInterface, IsInitialisedBeforeItIsBroughtUp)
{
    Named bench;
    EXPECT_EQ(SoftAP_enableInterface(1), 0);
    EXPECT_EQ(hotspot.mIsInitialized, 1);
    EXPECT_TRUE(bench.set.iface("bcm0").up());
    EXPECT_EQ(bench.ran(), (Lines{kCreate, "netcfg bcm0 up"}));
    EXPECT_EQ(bench.said("SoftAP_enableInterface"), Lines{"INFO HOSTAP :Command: netcfg bcm0 up\n"});
}

TEST(SoftApInterface, IsNotBroughtUpWhenItCannotBeInitialised)
{
    for (const int up : {0, 1}) {
        EXPECT_EQ(sim::forkedRun([up] {
                      Named bench;
                      (void)bench.set.fail({.call = Call::Ioctl, .code = SIOCGIFHWADDR, .error = ENODEV});
                      EXPECT_EQ(SoftAP_enableInterface(up), -1);
                      EXPECT_EQ(bench.said("SoftAP_enableInterface"),
                                Lines{"ERROR HOSTAP :initialize interface error -1 No such device"});
                      EXPECT_EQ(bench.ran(), Lines{kCreate});
                  }),
                  0);
    }
}

TEST(SoftApInterface, GoesDownWithoutACommand)
{
    Named bench;
    EXPECT_EQ(SoftAP_enableInterface(2), 0); // any number but 0 is up
    bench.set.forget();
    EXPECT_EQ(SoftAP_enableInterface(0), 0);
    EXPECT_FALSE(bench.set.iface("bcm0").up());
    EXPECT_EQ(bench.ran(), Lines{});
    EXPECT_EQ(bench.said(), (Lines{"INFO ifc_init: ifc_init_returning 0", "INFO ifc_down: ifc_down(bcm0) = 0"}));
}

TEST(SoftApInterface, DoesNotGetUpWhenTheToolFails)
{
    Named bench;
    bench.set.onCommand("netcfg").fails();
    EXPECT_EQ(SoftAP_enableInterface(1), -1);
}

TEST(SoftApInterface, ListsAreGivenBack)
{
    Named bench;
    for (int count = 0; count < 3; ++count) {
        (void)SoftAP_isInterfaceAvailable(); // what is not given back, the address sanitizer finds
    }
    EXPECT_EQ(bench.said().size(), 3U);
}
} // namespace
