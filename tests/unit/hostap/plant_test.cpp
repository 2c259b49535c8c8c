#include "bench.h"
#include "sim/plants.h"

using namespace hostap;
using sim::Call;
using sim::Plant;

// What a local user may put in the place of the soft access point's files in /tmp.

namespace {
class PlantedSoftApPipe : public testing::TestWithParam<Plant> {};

TEST_P(PlantedSoftApPipe, IsNotOpened)
{
    Bench bench;
    (void)bench.set.fail({.call = Call::Mkfifo, .on = kPipe, .nth = 1, .does = [&bench] {
                              sim::plant(bench.set, kPipe, GetParam(), "secret");
                          }});
    EXPECT_EQ(SoftAP_Gethostap_Pipe(), -1);
    const std::string beginning = "ERROR HOSTAP:can not open file: /tmp/softapnotify.pipe.bcm0 error is ";
    EXPECT_TRUE(bench.said("SoftAP_Gethostap_Pipe").back().starts_with(beginning));
    EXPECT_EQ(bench.ran(), Lines{}) << "no chmod";
    EXPECT_EQ(bench.set.openDescriptors(), Lines{});
}

INSTANTIATE_TEST_SUITE_P(Kinds, PlantedSoftApPipe,
                         testing::Values(Plant::Link, Plant::DanglingLink, Plant::HardLink, Plant::ForeignFifo,
                                         Plant::ForeignFile),
                         [](const auto& test) { return sim::nameOf(test.param); });

TEST(SoftApPipe, IsLookedAtOnceMoreBeforeItsModeChanges)
{
    Bench bench;
    const int looks = bench.set.fail({.call = Call::Stat,
                                      .on = kPipe,
                                      .nth = 2,
                                      .does = [&bench] { sim::plant(bench.set, kPipe, Plant::Link, "secret"); },
                                      .mayMiss = true});
    EXPECT_EQ(SoftAP_Gethostap_Pipe(), -1);
    EXPECT_EQ(bench.set.hits(looks), 1);
    EXPECT_EQ(bench.ran(), Lines{}) << "no chmod";
    EXPECT_EQ(bench.said("SoftAP_Gethostap_Pipe").back(), "ERROR HOSTAP:chmod failed \n");
}

class PlantedLeases : public testing::TestWithParam<Plant> {};

TEST_P(PlantedLeases, AreNotRead)
{
    Bench bench;
    sim::plant(bench.set, kLeases, GetParam(), "1 02:00:00:00:00:01 10.0.0.1 phone id\n");
    SoftAP_GetConnection();
    EXPECT_EQ(bench.said("SoftAP_GetConnection").size(), 20U) << "ten attempts";
    EXPECT_STREQ(softap_connectinfo.devicename, "");
    EXPECT_EQ(bench.set.openDescriptors(), Lines{});
    EXPECT_CALLBACKS(bench.set, {});
    bench.set.remove(kLeases); // the bench writes there in the end
}

TEST_P(PlantedLeases, AreNotWatchedUntilTheListIsThere)
{
    Bench bench;
    sim::plant(bench.set, kLeases, GetParam());
    bench.set.holdSleeps(5000);
    bench.start();
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 0);
    EXPECT_TRUE(bench.set.wake());
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 0);
    bench.set.remove(kLeases);
    bench.set.write(kLeases, "");
    EXPECT_TRUE(bench.set.wake());
    EXPECT_EQ(bench.set.watch(kLeases).watchers(), 1);
}

INSTANTIATE_TEST_SUITE_P(Kinds, PlantedLeases, testing::Values(Plant::Link, Plant::DanglingLink, Plant::Fifo),
                         [](const auto& test) { return sim::nameOf(test.param); });

TEST(Leases, MayBelongToAnotherUser)
{
    Bench bench;
    sim::plant(bench.set, kLeases, Plant::ForeignFile, "1 02:00:00:00:00:01 10.0.0.1 phone id\n");
    SoftAP_GetConnection();
    EXPECT_STREQ(softap_connectinfo.devicename, "phone");
    EXPECT_CALLBACKS(bench.set, {{sim::SOFTAPCONNECTED, "bcm0"}});
}
} // namespace
