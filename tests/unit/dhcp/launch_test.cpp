#include "bench.h"

#include "movo_net_fl_eventloop/eventloop.h"

#include <csignal>
#include <sys/select.h>
#include <sys/stat.h>

using namespace dhcp;
using sim::IPCHANGED;

namespace {
const Lines kNotRunning{"INFO IsDhcpcdRunning: IsDhcpcdRunning, pIface->dhcpcfd=-1, pIface->dhcpcEventHandle=0x0\n",
                        "INFO IsDhcpcdRunning: IsDhcpcdRunning, checking file /tmp/dhcp/dhcpcd-eth0.pid\n",
                        "INFO ShutdownDhcpcd: ShutdownDhcpcd, pIface->dhcpcfd=-1, pIface->dhcpcEventHandle=0x0\n",
                        "INFO ShutdownDhcpcd: ShutdownDhcpcd, checking file /tmp/dhcp/dhcpcd-eth0.pid\n",
                        "INFO ShutdownDhcpcd: ShutdownDhcpcd, Q310 don't support\n",
                        "INFO IsDhcpcdRunning: Dhcp running=0\n"};

/** Everything a start says that gets as far as the pipe, and then `last`. */
Lines saidAtStart(std::initializer_list<std::string> last, int removed = -1)
{
    Lines lines{"INFO ConfigIP: if=eth0\n", "INFO ConfigIP: Set IP mode to  dhcp, should set IP address to 0.0.0.0\n"};
    lines.insert(lines.end(), kNotRunning.begin(), kNotRunning.end());
    lines.push_back(
        "INFO ConfigIP: removing dhcpcd pipe: /tmp/dhcpnotify.pipe.eth0, return=" + std::to_string(removed) + "\n");
    lines.push_back("INFO ConfigIP: opening dhcpcd pipe: /tmp/dhcpnotify.pipe.eth0\n");
    lines.insert(lines.end(), last);
    return lines;
}

mode_t modeOf(const sim::Set& set, const char* path)
{
    struct stat status {};
    EXPECT_EQ(stat(set.real(path).c_str(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
    return status.st_mode & 07777;
}

TEST(Launch, StartsTheClientWithItsPipe)
{
    Bench bench;
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(ran(bench.set), (Lines{"ifconfig eth0 0.0.0.0", "chmod 777 /tmp/dhcpnotify.pipe.eth0", kLaunch}));
    EXPECT_EQ(said(bench.set), saidAtStart({}));
    EXPECT_TRUE(bench.set.dhcp("eth0").running());
    EXPECT_EQ(openFiles(bench.set), Lines{"open(\"/tmp/dhcpnotify.pipe.eth0\")"});
    EXPECT_NE(bench.iface.dhcpcfd, -1);
    EXPECT_NE(bench.iface.dhcpcEventHandle, 0);
    EXPECT_EQ(bench.iface.ipStatus, _MOVO_NET_IPSTATUS_DHCP_ACQUIRING_);
    EXPECT_EQ(bench.iface.isConnected, 0);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(Launch, MakesThePipeAndOpensItToEveryone)
{
    Bench bench;
    const mode_t mask = umask(0);
    mode_t created = 0;
    bench.set.onCommand("chmod").does([&] { created = modeOf(bench.set, kPipe); });
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(created, 02702U);
    EXPECT_EQ(modeOf(bench.set, kPipe), 0777U);
    (void)umask(mask);
}

struct Command {
    MovoNetIPMode_e mode;
    const char* text;
};

class LaunchCommand : public testing::TestWithParam<Command> {};

TEST_P(LaunchCommand, IsExactlyThis)
{
    Bench bench;
    bench.iface.ipMode = GetParam().mode;
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(ran(bench.set).back(), GetParam().text);
}

constexpr const char* kAutoIpLaunch =
    "export DHCP_NOTIFY_PIPE_DIR=\"/tmp/dhcpnotify.pipe.eth0\"; /system/bin/dhcpcd -B  "
    "--noarp -h movo-tv -t 90 eth0 &";

INSTANTIATE_TEST_SUITE_P(Modes, LaunchCommand,
                         testing::Values(Command{_MOVO_NET_IPMODE_DHCP_, kLaunch},
                                         Command{_MOVO_NET_IPMODE_AUTOIP_, kAutoIpLaunch},
                                         Command{static_cast<MovoNetIPMode_e>(4), kLaunch},
                                         Command{static_cast<MovoNetIPMode_e>(-1), kLaunch}));

TEST(Launch, RemovesAnOldPipe)
{
    Bench bench;
    bench.set.write(kPipe, "no pipe at all");
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(said(bench.set), saidAtStart({}, 0));
    EXPECT_EQ(modeOf(bench.set, kPipe), 0777U);
}

TEST(Launch, TakesAPipeThatCannotBeRemoved)
{
    Bench bench;
    bench.set.write("/tmp/.keep", "");
    ASSERT_EQ(mkfifo(bench.set.real(kPipe).c_str(), 0600), 0);
    bench.set.fail({.call = sim::Call::Unlink, .on = kPipe, .error = EPERM});
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(said(bench.set), saidAtStart({}));
    EXPECT_TRUE(bench.set.dhcp("eth0").running());
}

TEST(Launch, GoesOnWhenTheAddressCannotBeCleared)
{
    Bench bench;
    bench.set.onCommand("ifconfig").fails();
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_TRUE(bench.set.dhcp("eth0").running());
}

TEST(Launch, FailsWithoutAPipe)
{
    Bench bench;
    bench.set.fail({.call = sim::Call::Mkfifo, .on = kPipe, .error = EROFS});
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 1);
    EXPECT_EQ(said(bench.set), saidAtStart({"ERROR ConfigIP: can't create fifo : Read-only file system\n"}));
    EXPECT_EQ(ran(bench.set), Lines{"ifconfig eth0 0.0.0.0"});
    EXPECT_EQ(bench.iface.dhcpcfd, -1);
    EXPECT_EQ(bench.iface.ipStatus, _MOVO_NET_IPSTATUS_NONE_);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(Launch, FailsWithoutADescriptor)
{
    Bench bench;
    bench.set.fail({.call = sim::Call::Open, .on = kPipe, .error = EMFILE});
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 1);
    EXPECT_EQ(said(bench.set), saidAtStart({"ERROR ConfigIP: can not open file: /tmp/dhcpnotify.pipe.eth0 error is Too "
                                            "many open files\n"}));
    EXPECT_EQ(bench.iface.dhcpcfd, -1);
    EXPECT_EQ(bench.iface.dhcpcEventHandle, 0);
}

TEST(Launch, FailsWithoutAnEventAndKeepsThePipeOpen)
{
    Bench bench;
    bench.set.fail({.call = sim::Call::Malloc, .nth = 1, .error = ENOMEM});
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 1);
    EXPECT_EQ(said(bench.set), saidAtStart({"ERROR ConfigIP: can not addevent\n"}));
    EXPECT_EQ(ran(bench.set), Lines{"ifconfig eth0 0.0.0.0"});
    EXPECT_NE(bench.iface.dhcpcfd, -1);
    EXPECT_EQ(bench.iface.dhcpcEventHandle, 0);
    EXPECT_EQ(openFiles(bench.set).size(), 1U);

    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0); // the next start closes it
    EXPECT_EQ(openFiles(bench.set).size(), 1U);
    EXPECT_TRUE(bench.set.dhcp("eth0").running());
}

TEST(Launch, FailsWithADescriptorTooHighForTheLoop)
{
    Bench bench;
    {
        const sim::HighDescriptors high;
        if (!high) {
            GTEST_SKIP() << "this process may not open so many files";
        }
        EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 1);
    }
    EXPECT_EQ(said(bench.set), saidAtStart({"ERROR ConfigIP: can not addevent\n"}));
    EXPECT_GE(bench.iface.dhcpcfd, FD_SETSIZE);
    bench.nextPass();
    EXPECT_NOT_LOGGED(bench.set, KEST_LEVEL_ERROR, "movo_net_fl_eventloop", "int_eventLoopThread",
                      "evt->event.fd >= FD_SETSIZE\n");

    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_TRUE(bench.set.dhcp("eth0").running());
}

class LaunchWithoutMode : public testing::TestWithParam<sim::Fault> {};

TEST_P(LaunchWithoutMode, FailsAndKeepsThePipeWatched)
{
    Bench bench;
    bench.set.fail(GetParam());
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 1);
    EXPECT_EQ(said(bench.set), saidAtStart({"ERROR ConfigIP: :chmod failed \n"}));
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 0);
    EXPECT_NE(bench.iface.dhcpcfd, -1);
    EXPECT_NE(bench.iface.dhcpcEventHandle, 0);
    EXPECT_EQ(bench.iface.ipStatus, _MOVO_NET_IPSTATUS_NONE_);
}

INSTANTIATE_TEST_SUITE_P(Reasons, LaunchWithoutMode,
                         testing::Values(sim::Fault{.call = sim::Call::System, .on = "chmod", .nth = 1},
                                         sim::Fault{.call = sim::Call::Vasprintf, .nth = 2, .error = ENOMEM}));

TEST(Launch, FailsWithTheCommandForChangingTheMode)
{
    Bench bench;
    bench.set.onCommand("chmod").fails(256);
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 1);
    EXPECT_EQ(said(bench.set), saidAtStart({"ERROR ConfigIP: :chmod failed \n"}));
}

class LaunchWithoutShell : public testing::TestWithParam<sim::Fault> {};

TEST_P(LaunchWithoutShell, FailsInTheStateOfAcquiring)
{
    Bench bench;
    bench.set.fail(GetParam());
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 1);
    EXPECT_EQ(said(bench.set), saidAtStart({"ERROR ConfigIP: launch dhcpcd faild\n"}));
    EXPECT_EQ(bench.iface.ipStatus, _MOVO_NET_IPSTATUS_DHCP_ACQUIRING_);
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 0);
}

INSTANTIATE_TEST_SUITE_P(Reasons, LaunchWithoutShell,
                         testing::Values(sim::Fault{.call = sim::Call::System, .on = "export", .nth = 1},
                                         sim::Fault{.call = sim::Call::Vasprintf, .nth = 3, .error = ENOMEM}));

TEST(Launch, KeepsAnyOtherStatusOfTheShellAsSuccess)
{
    Bench bench;
    bench.set.onCommand("export").fails(127 * 256);
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
}

TEST(Launch, FailsWithoutMemoryForThePath)
{
    Bench bench;
    bench.set.fail({.call = sim::Call::Vasprintf, .nth = 1, .error = ENOMEM});
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 1);
    EXPECT_EQ(ran(bench.set), Lines{"ifconfig eth0 0.0.0.0"});
    EXPECT_EQ(bench.iface.dhcpcfd, -1);
}

TEST(LaunchAgain, LeavesARunningClientAlone)
{
    Bench bench;
    bench.lease();
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kNoForce), 0);
    EXPECT_EQ(ran(bench.set), Lines{"ifconfig eth0 0.0.0.0"});
    EXPECT_EQ(sent(bench.set), (std::vector<sim::Signal>{}));
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 1);
    EXPECT_EQ(bench.set.iface("eth0").address(), "0.0.0.0");
    EXPECT_CALLBACKS(bench.set, {{IPCHANGED, "eth0"}});
}

TEST(LaunchAgain, RestartsARunningClientByForce)
{
    Bench bench;
    bench.lease();
    const int pid = bench.set.dhcp("eth0").pid();
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
    EXPECT_EQ(sent(bench.set), (std::vector<sim::Signal>{{pid, SIGHUP, 0}}));
    EXPECT_EQ(ran(bench.set), (Lines{"ifconfig eth0 0.0.0.0", "chmod 777 /tmp/dhcpnotify.pipe.eth0", kLaunch}));
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 2);
    EXPECT_EQ(openFiles(bench.set).size(), 1U);
    EXPECT_CALLBACKS(bench.set, {});
}

TEST(LaunchAgain, StartsADeadClientWithoutForce)
{
    Bench bench;
    bench.launch();
    bench.set.dhcp("eth0").process().dies();
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kNoForce), 0);
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 2);
    EXPECT_EQ(openFiles(bench.set).size(), 1U);
    EXPECT_CALLBACKS(bench.set, {});
}
/** As long as a client has not written its pid file, it counts as one that does not run. */
TEST(LaunchAgain, KeepsStartingASecondClientBesideOneWithoutAPidFile)
{
    Bench bench;
    bench.set.dhcp("eth0").withoutPidFile();
    bench.launch();
    const int first = bench.set.dhcp("eth0").pid();
    EXPECT_EQ(ConfigIP(&bench.iface, movonet::kNoForce), 0);
    EXPECT_EQ(bench.set.dhcp("eth0").launches(), 2);
    EXPECT_TRUE(bench.set.process(first).alive());
    EXPECT_EQ(sent(bench.set), (std::vector<sim::Signal>{}));
    EXPECT_EQ(openFiles(bench.set).size(), 1U);
}
} // namespace
