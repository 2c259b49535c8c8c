#include "bench.h"
#include "sim/plants.h"

using namespace dhcp;
using sim::Plant;

// What a local user may put in the place of the client's pid file counts as no file.

namespace {
constexpr int kPid = 4711;

class PlantedPidFile : public testing::TestWithParam<Plant> {
protected:
    PlantedPidFile()
    {
        bench.launch();
        bench.set.process(kPid);
        sim::plant(bench.set, kPidFile, GetParam(), "4711\n");
    }

    Bench bench;
};

TEST_P(PlantedPidFile, IsNoFileToStopAClientBy)
{
    EXPECT_EQ(ShutdownDhcpcd(&bench.iface, movonet::kRelease), 1);
    EXPECT_EQ(said(bench.set).back(), "INFO ShutdownDhcpcd: ShutdownDhcpcd, Q310 don't support\n");
    EXPECT_TRUE(bench.set.process(kPid).alive());
    EXPECT_EQ(bench.set.signals(), std::vector<sim::Signal>{});
    EXPECT_EQ(ran(bench.set), Lines{});
    EXPECT_EQ(openFiles(bench.set), Lines{});
}

TEST_P(PlantedPidFile, IsNoFileOfARunningClient)
{
    EXPECT_EQ(IsDhcpcdRunning(&bench.iface), 0);
    EXPECT_EQ(said(bench.set).back(), "INFO IsDhcpcdRunning: Dhcp running=0\n");
    EXPECT_EQ(bench.set.signals(), std::vector<sim::Signal>{});
    EXPECT_EQ(bench.iface.dhcpcfd, -1);
    EXPECT_EQ(openFiles(bench.set), Lines{});
}

INSTANTIATE_TEST_SUITE_P(Kinds, PlantedPidFile,
                         testing::Values(Plant::Link, Plant::DanglingLink, Plant::HardLink, Plant::Fifo,
                                         Plant::ForeignFile),
                         [](const auto& test) { return sim::nameOf(test.param); });
} // namespace
