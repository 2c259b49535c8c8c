#include "bench.h"
#include "sim/plants.h"

#include <sys/stat.h>

using namespace dhcp;
using sim::Plant;

// What a local user may put in the place of the client's pid file counts as no file.

namespace {

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

class PlantedPipe : public testing::TestWithParam<Plant> {};

/** Planted after whatever was there has been removed, so that mkfifo finds it. */
TEST_P(PlantedPipe, IsNotOpened)
{
    Bench bench;
    bench.set.fail({.call = sim::Call::Mkfifo, .on = kPipe, .nth = 1, .does = [&bench] {
                        sim::plant(bench.set, kPipe, GetParam(), "secret");
                    }});
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 1);
    EXPECT_EQ(only(said(bench.set), {"ERROR ConfigIP: can not open file: /tmp/dhcpnotify.pipe.eth0 error is "}).size(),
              1U);
    EXPECT_EQ(ran(bench.set), Lines{"ifconfig eth0 0.0.0.0"}) << "no chmod";
    EXPECT_EQ(bench.iface.dhcpcfd, -1);
    EXPECT_EQ(openFiles(bench.set), Lines{});
    EXPECT_EQ(bench.set.exists(sim::kVictim), GetParam() == Plant::Link || GetParam() == Plant::HardLink);
}

INSTANTIATE_TEST_SUITE_P(Kinds, PlantedPipe,
                         testing::Values(Plant::Link, Plant::DanglingLink, Plant::HardLink, Plant::ForeignFifo,
                                         Plant::ForeignFile),
                         [](const auto& test) { return sim::nameOf(test.param); });

TEST(Pipe, IsLookedAtOnceMoreBeforeItsModeChanges)
{
    Bench bench;
    const int looks = bench.set.fail({.call = sim::Call::Stat,
                                      .on = kPipe,
                                      .nth = 2,
                                      .does = [&bench] { sim::plant(bench.set, kPipe, Plant::Link, "secret"); },
                                      .mayMiss = true});
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 1);
    EXPECT_EQ(bench.set.hits(looks), 1);
    EXPECT_EQ(ran(bench.set), Lines{"ifconfig eth0 0.0.0.0"}) << "no chmod";
    EXPECT_EQ(said(bench.set).back(), "ERROR ConfigIP: :chmod failed \n");
    EXPECT_EQ(ShutdownDhcpcd(&bench.iface, movonet::kRelease), 1);
    EXPECT_EQ(openFiles(bench.set), Lines{});
}

class LinkedTimeMark : public testing::TestWithParam<Plant> {};

TEST_P(LinkedTimeMark, GivesWayToTheMark)
{
    sim::Set set;
    sim::plant(set, kMarker, GetParam(), "secret");
    NotifyNtpclient();
    struct stat status {};
    ASSERT_EQ(lstat(set.real(kMarker).c_str(), &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_EQ(set.read(kMarker), "");
    EXPECT_EQ(set.exists(sim::kVictim), GetParam() == Plant::Link);
    EXPECT_EQ(set.openDescriptors(), Lines{});
}

INSTANTIATE_TEST_SUITE_P(Kinds, LinkedTimeMark, testing::Values(Plant::Link, Plant::DanglingLink),
                         [](const auto& test) { return sim::nameOf(test.param); });

TEST(TimeMark, FollowsNoLinkThatComesAtTheLastMoment)
{
    sim::Set set;
    set.write("/tmp/.keep", "");
    set.fail({.call = sim::Call::Open, .on = kMarker, .nth = 1, .does = [&set] {
                  sim::plant(set, kMarker, Plant::DanglingLink);
              }});
    NotifyNtpclient();
    EXPECT_FALSE(set.exists(sim::kVictim));
}
} // namespace
