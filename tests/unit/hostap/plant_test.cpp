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
} // namespace
