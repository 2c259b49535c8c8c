#include "bench.h"

#include <csignal>
#include <unistd.h>

using namespace dhcp;

namespace {
using Signals = std::vector<sim::Signal>;

const std::string kStart = "INFO ShutdownDhcpcd: ShutdownDhcpcd, pIface->dhcpcfd=-1, pIface->dhcpcEventHandle=0x0\n";
const std::string kChecking = "INFO ShutdownDhcpcd: ShutdownDhcpcd, checking file /tmp/dhcp/dhcpcd-eth0.pid\n";
const std::string kPidLine = "INFO ShutdownDhcpcd: ShutdownDhcpcd, dhcpcd pid=4711\n";
const std::string kRunning = "INFO ShutdownDhcpcd: ShutdownDhcpcd, dhcpcd running, pid=4711\n";

/** A record without a pipe, whose client has process 4711. */
class Shutdown : public testing::Test {
protected:
    Shutdown() { bench.set.write(kPidFile, "4711\n"); }

    kest_bool shutDown(kest_bool keepIfconfig)
    {
        started = bench.set.clock();
        return ShutdownDhcpcd(&bench.iface, keepIfconfig);
    }
    std::int64_t took() const { return bench.set.clock() - started; }
    /** How often the process was looked for. */
    int probes() const
    {
        const Signals signals = bench.set.signals();
        return static_cast<int>(signals.size() - sent(bench.set).size());
    }

    Bench bench;
    std::int64_t started = 0;
};

TEST_F(Shutdown, WithoutAPidFileHasNothingToStop)
{
    bench.set.remove(kPidFile);
    EXPECT_EQ(shutDown(movonet::kRelease), 1);
    EXPECT_EQ(said(bench.set), (Lines{kStart, kChecking, "INFO ShutdownDhcpcd: ShutdownDhcpcd, Q310 don't support\n"}));
    EXPECT_EQ(bench.set.signals(), Signals{});
}

TEST_F(Shutdown, RemovesAnEmptyPidFile)
{
    bench.set.write(kPidFile, "");
    EXPECT_EQ(shutDown(movonet::kRelease), 1);
    EXPECT_EQ(said(bench.set), (Lines{kStart, kChecking}));
    EXPECT_FALSE(bench.set.exists(kPidFile));
    EXPECT_EQ(bench.set.signals(), Signals{});
}

TEST_F(Shutdown, TakesAFolderInPlaceOfThePidFileAsNoFile)
{
    bench.set.remove(kPidFile);
    bench.set.write(std::string(kPidFile) + "/file", "");
    EXPECT_EQ(shutDown(movonet::kRelease), 1);
    EXPECT_EQ(said(bench.set), (Lines{kStart, kChecking, "INFO ShutdownDhcpcd: ShutdownDhcpcd, Q310 don't support\n"}));
}

TEST_F(Shutdown, RemovesThePidFileOfADeadClient)
{
    EXPECT_EQ(shutDown(movonet::kRelease), 1);
    EXPECT_EQ(said(bench.set), (Lines{kStart, kChecking, kPidLine}));
    EXPECT_EQ(bench.set.signals(), (Signals{{kPid, 0, ESRCH}}));
    EXPECT_FALSE(bench.set.exists(kPidFile));
    EXPECT_EQ(openFiles(bench.set), Lines{});
}

TEST_F(Shutdown, ThatKeepsTheAddressSendsTheUserSignalAndDoesNotWait)
{
    bench.set.process(kPid);
    EXPECT_EQ(shutDown(movonet::kKeepIfconfig), 1);
    EXPECT_EQ(said(bench.set), (Lines{kStart, kChecking, kPidLine, kRunning}));
    EXPECT_EQ(bench.set.signals(), (Signals{{kPid, 0, 0}, {kPid, SIGUSR1, 0}}));
    EXPECT_EQ(took(), 0);
    EXPECT_FALSE(bench.set.exists(kPidFile));
    EXPECT_EQ(ran(bench.set), Lines{});
}

TEST_F(Shutdown, ThatReleasesHangsUpAndLooksAfterTenMilliseconds)
{
    bench.set.process(kPid);
    EXPECT_EQ(shutDown(movonet::kRelease), 1);
    EXPECT_EQ(said(bench.set), (Lines{kStart, kChecking, kPidLine, kRunning}));
    EXPECT_EQ(bench.set.signals(), (Signals{{kPid, 0, 0}, {kPid, SIGHUP, 0}, {kPid, 0, ESRCH}}));
    EXPECT_EQ(took(), 10);
    EXPECT_FALSE(bench.set.exists(kPidFile));
    EXPECT_EQ(ran(bench.set), Lines{});
}

TEST_F(Shutdown, LooksAgainEveryTenMilliseconds)
{
    bench.set.process(kPid).diesAfterProbes(3);
    EXPECT_EQ(shutDown(movonet::kRelease), 1);
    EXPECT_EQ(took(), 40);
    EXPECT_EQ(probes(), 1 + 3 + 1);
    EXPECT_EQ(ran(bench.set), Lines{});
}

TEST_F(Shutdown, LooksTwoHundredTimes)
{
    bench.set.process(kPid).diesAfterProbes(199);
    EXPECT_EQ(shutDown(movonet::kRelease), 1);
    EXPECT_EQ(took(), 2000);
    EXPECT_EQ(probes(), 1 + 200);
    EXPECT_EQ(ran(bench.set), Lines{});
    EXPECT_EQ(said(bench.set), (Lines{kStart, kChecking, kPidLine, kRunning}));
}

TEST_F(Shutdown, KillsAClientThatIsSeenTwoHundredTimes)
{
    bench.set.process(kPid).diesAfterProbes(200); // it ends while the last wait runs
    EXPECT_EQ(shutDown(movonet::kRelease), 1);
    EXPECT_EQ(probes(), 1 + 200);
    EXPECT_EQ(took(), 2010);
    EXPECT_RAN(bench.set, "kill -9 4711");
}

const Lines kKillCommands{"kill -9 4711",
                          "rm /tmp/dhcp/dhcpcd-eth0.cache /tmp/dhcp/dhcpcd-eth0.info /tmp/dhcp/dhcpcd-eth0.pid"};

TEST_F(Shutdown, KillsAClientThatIgnoresTheHangUp)
{
    bench.set.process(kPid).ignoresHangup();
    bench.set.write("/tmp/dhcp/dhcpcd-eth0.cache", "");
    bench.set.write("/tmp/dhcp/dhcpcd-eth0.info", "");
    EXPECT_EQ(shutDown(movonet::kRelease), 1);
    EXPECT_EQ(ran(bench.set), kKillCommands);
    for (const sim::Command& command : bench.set.commands()) {
        EXPECT_EQ(command.at - started, 2010);
        EXPECT_EQ(command.status, 0);
    }
    EXPECT_EQ(sent(bench.set), (Signals{{kPid, SIGHUP, 0}, {kPid, SIGKILL, 0}}));
    EXPECT_FALSE(bench.set.process(kPid).alive());
    EXPECT_FALSE(bench.set.exists("/tmp/dhcp/dhcpcd-eth0.cache"));
    EXPECT_FALSE(bench.set.exists("/tmp/dhcp/dhcpcd-eth0.info"));
    EXPECT_FALSE(bench.set.exists(kPidFile));
}

TEST_F(Shutdown, KeepsTheConstantInItsMessage)
{
    bench.set.process(kPid).ignoresHangup();
    EXPECT_EQ(shutDown(movonet::kRelease), 1);
    EXPECT_EQ(said(bench.set),
              (Lines{kStart, kChecking, kPidLine, kRunning,
                     "ERROR ShutdownDhcpcd: ShutdownDhcpcd, kill dhcp process, time out count = 201\n"}));
}

TEST_F(Shutdown, RemovesThePidFileThoughNoCommandWorks)
{
    bench.set.process(kPid).ignoresHangup();
    bench.set.fail({.call = sim::Call::System, .error = ENOMEM});
    EXPECT_EQ(shutDown(movonet::kRelease), 1);
    EXPECT_EQ(ran(bench.set), kKillCommands);
    EXPECT_FALSE(bench.set.exists(kPidFile));
}

class ShutdownRefused : public Shutdown, public testing::WithParamInterface<kest_bool> {};

TEST_P(ShutdownRefused, KeepsTheWordsAndThePidFile)
{
    bench.set.process(kPid).foreign();
    EXPECT_EQ(shutDown(GetParam()), 0);
    EXPECT_EQ(said(bench.set),
              (Lines{kStart, kChecking, kPidLine, kRunning, "ERROR ShutdownDhcpcd: command kill SIGUSR1 failed.\n"}));
    EXPECT_EQ(sent(bench.set), (Signals{{kPid, GetParam() != 0 ? SIGUSR1 : SIGHUP, EPERM}}));
    EXPECT_EQ(bench.set.read(kPidFile), "4711\n");
    EXPECT_EQ(openFiles(bench.set), Lines{});
    EXPECT_EQ(took(), 0);
}

INSTANTIATE_TEST_SUITE_P(Signals, ShutdownRefused, testing::Values(movonet::kRelease, movonet::kKeepIfconfig));

struct PidText {
    const char* name;
    std::string text;
    int pid;
};

void PrintTo(const PidText& row, std::ostream* out)
{
    *out << row.name;
}

/** Texts that name no process; a signal for one of the numbers would reach groups of processes, or all. */
class PidOfNobody : public testing::TestWithParam<PidText> {};

TEST_P(PidOfNobody, IsNeverSignalled)
{
    Bench bench;
    for (const kest_bool keepIfconfig : {movonet::kRelease, movonet::kKeepIfconfig}) {
        bench.set.write(kPidFile, GetParam().text);
        bench.set.forget();
        EXPECT_EQ(ShutdownDhcpcd(&bench.iface, keepIfconfig), 1);
        EXPECT_EQ(said(bench.set),
                  (Lines{kStart, kChecking,
                         "INFO ShutdownDhcpcd: ShutdownDhcpcd, dhcpcd pid=" + std::to_string(GetParam().pid) + "\n"}));
        EXPECT_EQ(sent(bench.set), Signals{});
        EXPECT_FALSE(bench.set.exists(kPidFile));
        EXPECT_EQ(ran(bench.set), Lines{});
    }
}

TEST_P(PidOfNobody, IsNoRunningClient)
{
    Bench bench;
    bench.set.write(kPidFile, GetParam().text);
    EXPECT_EQ(IsDhcpcdRunning(&bench.iface), 0);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fl_common", "IsDhcpcdRunning",
                  "IsDhcpcdRunning, dhcpcd pid=" + std::to_string(GetParam().pid) + "\n");
    EXPECT_EQ(sent(bench.set), Signals{});
    EXPECT_FALSE(bench.set.exists(kPidFile));
}

INSTANTIATE_TEST_SUITE_P(Texts, PidOfNobody,
                         testing::Values(PidText{"Zero", "0\n", 0}, PidText{"MinusOne", "-1\n", -1},
                                         PidText{"Negative", "-4711", -4711}, PidText{"Rubbish", "dhcpcd\n", 0},
                                         PidText{"Blanks", "  \n", 0}, PidText{"Sign", "-", 0},
                                         PidText{"Binary", std::string("\0\xff\x01", 3), 0},
                                         PidText{"AboveInt", "2147483648\n", 2147483647},
                                         PidText{"OnePastAWrap", "4294967297\n", 2147483647},
                                         PidText{"MinusAWrap", "-4294967295\n", -2147483647 - 1},
                                         PidText{"Huge", "99999999999999999999999\n", 2147483647},
                                         PidText{"HugeNegative", "-99999999999999999999999\n", -2147483647 - 1}),
                         [](const auto& test) { return test.param.name; });

/** Processes that live and are no client of ours. */
class PidOfNoClient : public testing::TestWithParam<bool> {
protected:
    PidOfNoClient()
    {
        bench.set.process(pid);
        bench.set.write(kPidFile, std::to_string(pid) + "\n");
    }
    ~PidOfNoClient() override
    {
        EXPECT_EQ(bench.set.signals(), Signals{});
        EXPECT_TRUE(bench.set.process(pid).alive());
        EXPECT_FALSE(bench.set.exists(kPidFile));
        EXPECT_EQ(ran(bench.set), Lines{});
    }

    const int pid = GetParam() ? getpid() : 1;
    Bench bench;
};

TEST_P(PidOfNoClient, IsNeverSignalled)
{
    EXPECT_EQ(ShutdownDhcpcd(&bench.iface, movonet::kRelease), 1);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fl_common", "ShutdownDhcpcd",
                  "ShutdownDhcpcd, dhcpcd pid=" + std::to_string(pid) + "\n");
}

TEST_P(PidOfNoClient, IsNeverSignalledToKeepTheAddress)
{
    EXPECT_EQ(ShutdownDhcpcd(&bench.iface, movonet::kKeepIfconfig), 1);
}

TEST_P(PidOfNoClient, IsNoRunningClient)
{
    EXPECT_EQ(IsDhcpcdRunning(&bench.iface), 0);
}

INSTANTIATE_TEST_SUITE_P(Processes, PidOfNoClient, testing::Bool(),
                         [](const auto& test) { return test.param ? "Ourselves" : "TheSystem"; });

/** Only the first 31 characters count. */
class PidText4711 : public testing::TestWithParam<const char*> {};

TEST_P(PidText4711, NamesTheProcess)
{
    Bench bench;
    bench.set.process(kPid);
    bench.set.write(kPidFile, GetParam());
    EXPECT_EQ(ShutdownDhcpcd(&bench.iface, movonet::kKeepIfconfig), 1);
    EXPECT_EQ(sent(bench.set), (Signals{{kPid, SIGUSR1, 0}}));
}

INSTANTIATE_TEST_SUITE_P(Texts, PidText4711,
                         testing::Values("4711", "4711\n", " 4711", "\n4711", "+4711", "004711", "4711 started",
                                         "4711\n4712\n",
                                         "000000000000000000000000000"
                                         "4711"
                                         "99"));
} // namespace
