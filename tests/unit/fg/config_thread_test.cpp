#include "movo_net_fg/fg.h"
#include "unit/ip/tools.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <sched.h>
#include <unistd.h>

using ip::Lines;
using ip::record;
using ip::told;

// The thread that configures an interface anew. Without the event loop no DHCP client can be watched, so that
// configuring by DHCP fails; configuring a static address never does.

namespace {
class ConfigThread : public testing::Test {
protected:
    ConfigThread()
    {
        set.recordCallbacks();
        set.forget();
    }

    int configure()
    {
        const int result = CreateConfigIPThread(&eth0);
        set.settle();
        return result;
    }

    sim::Set set;
    MovoNetIface_t eth0 = record("eth0");
};

TEST_F(ConfigThread, IsToldOf)
{
    EXPECT_EQ(configure(), 0);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, "movo_net_fg", "CreateConfigIPThread", "create ConfigIP thread\n");
    EXPECT_EQ(set.liveThreads(), 0);
}

TEST_F(ConfigThread, DoesItsWorkOnItsOwn)
{
    ASSERT_EQ(configure(), 0);
    ASSERT_FALSE(set.commands().empty());
    EXPECT_EQ(set.commands()[0].text, "ifconfig eth0 0.0.0.0");
    EXPECT_EQ(set.commands()[0].thread, sim::ThreadKind::Product);
}

TEST_F(ConfigThread, SavesTheSettingsFirst)
{
    MovoNetIface_t& iface = ip::listed(eth0, 0);
    bool saved = false;
    set.onCommand("ifconfig").does([&] { saved = set.exists("/data/tv/save/netconfig"); });
    EXPECT_EQ(CreateConfigIPThread(&iface), 0);
    set.settle();
    EXPECT_TRUE(saved);
}

TEST_F(ConfigThread, SavesTheSettingsOfWhatIsNotActiveToo)
{
    eth0.isActived = 0;
    EXPECT_EQ(CreateConfigIPThread(&ip::listed(eth0, 0)), 0);
    set.settle();
    EXPECT_TRUE(set.exists("/data/tv/save/netconfig"));
}

TEST_F(ConfigThread, ReportsDhcpThatDoesNotStart)
{
    EXPECT_EQ(configure(), 0);
    EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fl_common", "ConfigIP", "can not addevent\n");
    ASSERT_EQ(set.callbacks().size(), 1U);
    EXPECT_EQ(set.callbacks()[0].thread, sim::ThreadKind::Product);
    EXPECT_CALLBACKS(set, {{sim::DHCP_FAILED, "eth0"}});
}

TEST_F(ConfigThread, ReportsNoDhcpFailureForAStaticAddress)
{
    eth0.ipMode = _MOVO_NET_IPMODE_STATIC_;
    EXPECT_EQ(configure(), 0);
    EXPECT_CALLBACKS(set, {{sim::IPCHANGED, "eth0"}, {sim::STATICIP_FAILED, "eth0"}});
}

TEST_F(ConfigThread, ConfiguresOnlyWhatIsActive)
{
    eth0.isActived = 0;
    EXPECT_EQ(configure(), 0);
    EXPECT_CALLBACKS(set, {});
    EXPECT_EQ(ip::ran(set), Lines{});
}

TEST_F(ConfigThread, LeavesAClientAloneThatRuns)
{
    set.startLoop();
    EXPECT_EQ(configure(), 0);
    ASSERT_EQ(set.dhcp("eth0").launches(), 1);
    EXPECT_EQ(configure(), 0);
    EXPECT_EQ(set.dhcp("eth0").launches(), 1);
    EXPECT_CALLBACKS(set, {{sim::IPCHANGED, "eth0"}});
}

TEST_F(ConfigThread, ThatCannotBeMadeIsTold)
{
    set.fail({.call = sim::Call::ThreadCreate, .error = EAGAIN});
    EXPECT_EQ(configure(), 1);
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fg CreateConfigIPThread: create ConfigIP thread failed\n"});
    EXPECT_CALLBACKS(set, {});
}

/** Does a thread of this process wait for something? */
bool waits(pid_t thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string status;
    std::getline(file, status);
    return status.find(") S ") != std::string::npos;
}

TEST_F(ConfigThread, WaitsForTheOneBefore)
{
    constexpr int kLooks = 100; // a thread waits in the set too, but not for long
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    std::atomic<bool> leave{false};
    set.onCommand("ifconfig").does([&] {
        most = std::max<int>(most, ++inside);
        while (!leave) {
            (void)sched_yield();
        }
        --inside;
    });
    EXPECT_EQ(CreateConfigIPThread(&eth0), 0);
    while (inside == 0) {
        (void)sched_yield();
    }
    std::atomic<pid_t> second{0};
    set.background([&] {
        second = gettid();
        (void)ConfigIPThread(&eth0);
    });
    for (int looks = 0; looks < kLooks && inside < 2; looks = second != 0 && waits(second) ? looks + 1 : 0) {
        (void)sched_yield();
    }
    leave = true;
    set.joinBackground();
    set.settle();
    EXPECT_EQ(most, 1);
    EXPECT_CALLBACKS(set, {{sim::DHCP_FAILED, "eth0"}, {sim::DHCP_FAILED, "eth0"}});
}

TEST_F(ConfigThread, WithoutARecordReportsAndEnds)
{
    const sim::CapturedOutput output;
    testing::internal::CaptureStderr();
    EXPECT_EQ(ConfigIPThread(nullptr), nullptr);
    const std::string backtrace = testing::internal::GetCapturedStderr();
    EXPECT_NE(backtrace, "");
    EXPECT_EQ(output.text().find("\n\e[0;34;41m ASSERT, Pid:" + std::to_string(getpid()) + " File:movo_net_fg Line:"),
              0U);
    EXPECT_NE(output.text().find(" Routine:ConfigIPThread, arg != ((void *)0) failed \e[0m \n"), std::string::npos);
    EXPECT_EQ(ip::ran(set), Lines{});
}
} // namespace
