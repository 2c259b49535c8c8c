#include "bench.h"

#include "movo_net_fl_eventloop/eventloop.h"
#include "support/atomic.h"

#include <csignal>
#include <sched.h>
#include <thread>

using namespace dhcp;

namespace {
using Signals = std::vector<sim::Signal>;

struct Row {
    const char* name;
    bool alive;
    bool open;
    bool watched;
    kest_bool running;
    bool stopped; ///< ShutdownDhcpcd was called.
    bool pidFileStays;
};

void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.name;
}

/** A launched client, with as much of its pipe as the row says; 4711 is its pid. */
class Running : public testing::TestWithParam<Row> {
protected:
    Running()
    {
        bench.launch();
        event = bench.iface.dhcpcEventHandle;
        if (!GetParam().open) {
            EXPECT_EQ(ShutdownDhcpcd(&bench.iface, movonet::kRelease), 1);
        }
        bench.iface.dhcpcEventHandle = GetParam().watched ? event : 0;
        bench.set.process(kPid);
        if (!GetParam().alive) {
            bench.set.process(kPid).dies();
        }
        bench.set.write(kPidFile, "4711\n");
        bench.set.forget();
    }

    Bench bench;
    int event = 0;
};

TEST_P(Running, NeedsProcessPipeAndEvent)
{
    const Row& row = GetParam();
    EXPECT_EQ(IsDhcpcdRunning(&bench.iface), row.running);
    const std::string fd = std::to_string(bench.iface.dhcpcfd);
    const Lines lines = only(said(bench.set), {"INFO IsDhcpcdRunning"});
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[1], "INFO IsDhcpcdRunning: IsDhcpcdRunning, checking file /tmp/dhcp/dhcpcd-eth0.pid\n");
    EXPECT_EQ(lines[2], "INFO IsDhcpcdRunning: IsDhcpcdRunning, dhcpcd pid=4711\n");
    EXPECT_EQ(lines[3],
              row.running != 0 ? "INFO IsDhcpcdRunning: Dhcp running=1\n" : "INFO IsDhcpcdRunning: Dhcp running=0\n");
    EXPECT_EQ(!only(said(bench.set), {"INFO ShutdownDhcpcd"}).empty(), row.stopped);
    EXPECT_EQ(bench.set.exists(kPidFile), row.pidFileStays);
    EXPECT_EQ(sent(bench.set), row.alive && row.stopped ? (Signals{{kPid, SIGHUP, 0}}) : Signals{});
    EXPECT_EQ(bench.iface.dhcpcfd != -1, row.running != 0);
}

INSTANTIATE_TEST_SUITE_P(Rows, Running,
                         testing::Values(Row{"AliveOpenWatched", true, true, true, 1, false, true},
                                         Row{"AliveOpenNotWatched", true, true, false, 0, true, false},
                                         Row{"AliveClosedWatched", true, false, true, 0, true, false},
                                         Row{"AliveClosed", true, false, false, 0, true, false},
                                         Row{"DeadOpenWatched", false, true, true, 0, true, false},
                                         Row{"DeadOpenNotWatched", false, true, false, 0, true, false},
                                         Row{"DeadClosedWatched", false, false, true, 0, true, false},
                                         Row{"DeadClosed", false, false, false, 0, false, false}),
                         [](const auto& test) { return test.param.name; });

TEST(NotRunning, WithoutAPidFileAndCleansUp)
{
    Bench bench;
    bench.launch();
    const std::string pipe = "pIface->dhcpcfd=" + std::to_string(bench.iface.dhcpcfd) +
                             ", pIface->dhcpcEventHandle=0x" + std::to_string(bench.iface.dhcpcEventHandle) + "\n";
    bench.set.remove(kPidFile);
    EXPECT_EQ(IsDhcpcdRunning(&bench.iface), 0);
    EXPECT_EQ(
        said(bench.set),
        (Lines{"INFO IsDhcpcdRunning: IsDhcpcdRunning, " + pipe,
               "INFO IsDhcpcdRunning: IsDhcpcdRunning, checking file /tmp/dhcp/dhcpcd-eth0.pid\n",
               "INFO ShutdownDhcpcd: ShutdownDhcpcd, " + pipe,
               "INFO ShutdownDhcpcd: removing dhcpcd pipe: /tmp/dhcpnotify.pipe.eth0, return=0\n",
               "INFO ShutdownDhcpcd: ShutdownDhcpcd, checking file /tmp/dhcp/dhcpcd-eth0.pid\n",
               "INFO ShutdownDhcpcd: ShutdownDhcpcd, Q310 don't support\n", "INFO IsDhcpcdRunning: Dhcp running=0\n"}));
    EXPECT_EQ(bench.iface.dhcpcfd, -1);
    EXPECT_EQ(bench.iface.dhcpcEventHandle, 0);
    EXPECT_EQ(openFiles(bench.set), Lines{});
}

TEST(NotRunning, WithAnEmptyPidFileAndCleansNothingUp)
{
    Bench bench;
    bench.launch();
    bench.set.write(kPidFile, "");
    EXPECT_EQ(IsDhcpcdRunning(&bench.iface), 0);
    EXPECT_EQ(only(said(bench.set), {"INFO ShutdownDhcpcd", "INFO IsDhcpcdRunning: Dhcp"}),
              Lines{"INFO IsDhcpcdRunning: Dhcp running=0\n"});
    EXPECT_TRUE(bench.set.exists(kPidFile));
    EXPECT_NE(bench.iface.dhcpcfd, -1);
    EXPECT_NE(bench.iface.dhcpcEventHandle, 0);
}

TEST(NotRunning, WhenThePidFileCannotBeOpened)
{
    Bench bench;
    bench.launch();
    bench.set.fail({.call = sim::Call::Open, .on = kPidFile, .error = EACCES});
    EXPECT_EQ(IsDhcpcdRunning(&bench.iface), 0);
    EXPECT_EQ(bench.iface.dhcpcfd, -1);
    EXPECT_TRUE(bench.set.dhcp("eth0").running());
}

/** The client of another user does not count as gone: looking for it succeeds. */
TEST(NotRunning, OnceTheClientCannotBeLookedFor)
{
    Bench bench;
    bench.launch();
    bench.set.fail({.call = sim::Call::Kill, .error = EPERM});
    EXPECT_EQ(IsDhcpcdRunning(&bench.iface), 0);
    EXPECT_EQ(bench.iface.dhcpcfd, -1);
    EXPECT_FALSE(bench.set.exists(kPidFile));
}

TEST(ClosePipe, RemovesTheEventFirst)
{
    Bench bench;
    bench.launch();
    const std::string event = std::to_string(bench.iface.dhcpcEventHandle);
    const int closing = bench.set.fail({.call = sim::Call::Close, .on = kPipe, .error = EIO, .mayMiss = true});
    EXPECT_EQ(ShutdownDhcpcd(&bench.iface, movonet::kKeepIfconfig), 1);
    EXPECT_EQ(bench.set.hits(closing), 1);
    EXPECT_EQ(told(bench.set)[1], "INFO movo_net_fl_eventloop int_removeEvent: handle = " + event + "\n");
    EXPECT_EQ(told(bench.set)[2],
              "INFO movo_net_fl_common ShutdownDhcpcd: removing dhcpcd pipe: /tmp/dhcpnotify.pipe.eth0, return=0\n");
    EXPECT_FALSE(bench.set.exists(kPipe));
    EXPECT_EQ(openFiles(bench.set), Lines{});
    bench.set.grantTicks(1); // a descriptor that is closed and still watched would fail the wait
    EXPECT_NOT_LOGGED(bench.set, KEST_LEVEL_ERROR, "movo_net_fl_eventloop", "int_eventLoopThread", "select failed\n");
}

TEST(ClosePipe, TellsOfAPipeThatIsGone)
{
    Bench bench;
    bench.launch();
    bench.set.remove(kPipe);
    EXPECT_EQ(ShutdownDhcpcd(&bench.iface, movonet::kRelease), 1);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_INFO, "movo_net_fl_common", "ShutdownDhcpcd",
                  "removing dhcpcd pipe: /tmp/dhcpnotify.pipe.eth0, return=-1\n");
}

TEST(ClosePipe, KeepsTheAttemptToRemoveNoEvent)
{
    Bench bench;
    bench.launch();
    EXPECT_EQ(int_removeEvent(bench.iface.dhcpcEventHandle), 0);
    bench.iface.dhcpcEventHandle = 0;
    EXPECT_EQ(ShutdownDhcpcd(&bench.iface, movonet::kRelease), 1);
    EXPECT_LOGGED(bench.set, KEST_LEVEL_ERROR, "movo_net_fl_eventloop", "int_removeEvent", "handle = 0\n");
    EXPECT_EQ(openFiles(bench.set), Lines{});
}

/** The set fails the test when the second one closes a descriptor that is not the product's any more. */
TEST(ClosePipe, OfTwoThreadsThatStopTheClientOneCloses)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        EXPECT_EQ(sim::forkedRun([seed] {
                      Bench bench(_MOVO_NET_IFACE_ETHER_, seed);
                      bench.launch();
                      for (int i = 0; i < 2; ++i) {
                          bench.set.background([&bench] { (void)ShutdownDhcpcd(&bench.iface, movonet::kRelease); });
                      }
                      bench.set.joinBackground();
                      EXPECT_EQ(only(said(bench.set), {"INFO ShutdownDhcpcd: removing"}).size(), 1U);
                      EXPECT_EQ(bench.iface.dhcpcfd, -1);
                      EXPECT_EQ(openFiles(bench.set), Lines{});
                  }),
                  0)
            << "seed " << seed;
    }
}

/** A closed descriptor that stays watched fails each wait of the loop, and no timer runs any more. */
TEST(ClosePipe, WhileOthersOpenItLeavesNothingWatched)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        EXPECT_EQ(sim::forkedRun([seed] {
                      Bench bench(_MOVO_NET_IFACE_ETHER_, seed);
                      for (int i = 0; i < 2; ++i) {
                          bench.set.background([&bench] { (void)ConfigIP(&bench.iface, movonet::kForce); });
                          bench.set.background([&bench] { (void)ShutdownDhcpcd(&bench.iface, movonet::kRelease); });
                      }
                      bench.set.joinBackground();
                      (void)ShutdownDhcpcd(&bench.iface, movonet::kRelease);
                      EXPECT_EQ(openFiles(bench.set), Lines{});
                      const auto before = bench.set.clock();
                      bench.set.grantTicks(3);
                      EXPECT_EQ(bench.set.clock() - before, 300) << "no wait failed";
                  }),
                  0)
            << "seed " << seed;
    }
}

/** Does whatever another thread has leave to do at this moment: while the loop is held off, nothing. */
void letOthersConfigure(MovoNetIface_t& iface)
{
    std::thread([&iface] {
        if (movonet::eventListLock.tryLock()) {
            movonet::eventListLock.unlock();
            EXPECT_EQ(ConfigIP(&iface, movonet::kForce), 0);
        }
    }).join();
}

/** Otherwise the client of the other thread has nothing to report to. */
TEST(ClosePipe, WhileAnotherOpensItLeavesTheNewOne)
{
    Bench bench;
    bench.launch();
    bench.set.fail(
        {.call = sim::Call::Unlink, .on = kPipe, .nth = 1, .does = [&bench] { letOthersConfigure(bench.iface); }});
    EXPECT_EQ(ShutdownDhcpcd(&bench.iface, movonet::kRelease), 1);
    EXPECT_EQ(bench.set.exists(kPipe), bench.iface.dhcpcfd != -1);
}

TEST(OpenPipe, KeepsOthersOffWhileItReplacesTheFile)
{
    Bench bench;
    bench.set.fail(
        {.call = sim::Call::Unlink, .on = kPipe, .nth = 1, .does = [&bench] { letOthersConfigure(bench.iface); }});
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 1);
    bench.nextPass();
    bench.set.dhcp("eth0").leases();
    EXPECT_EQ(bench.iface.isConnected, 1);
}
} // namespace
