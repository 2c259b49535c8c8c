#include "fg_test.h"

#include <csignal>

int recoveryMain(); // the daemon's main, renamed for this test

namespace {
/** What the platform's logger was told. */
struct Told {
    std::string program = {};
    std::string category = {};
    int colour = -1;
    std::string description = {};
} s_told;
} // namespace

extern "C" {
void __real_kest_debug_init(const char* name);
kest_debug_category* __real_kest_debug_category_new(const char* name, int colour, const char* description);

void __wrap_kest_debug_init(const char* name)
{
    s_told.program = name;
    __real_kest_debug_init(name);
}

kest_debug_category* __wrap_kest_debug_category_new(const char* name, int colour, const char* description)
{
    s_told = {s_told.program, name, colour, description};
    return __real_kest_debug_category_new(name, colour, description);
}
}

namespace {
/** The daemon runs on a thread of its own until the glue is stopped. */
class Recovery : public testing::Test {
protected:
    sim::Set set;
    int status = -1;

    Recovery() { set.cable("eth0").plug(); }

    void run()
    {
        set.background([this] { status = recoveryMain(); });
        set.settle();
    }
    void end()
    {
        EXPECT_EQ(status, -1) << "it runs as long as the glue";
        EXPECT_EQ(set.stop(), 0);
        set.joinBackground();
        EXPECT_EQ(status, 0);
    }
};

TEST_F(Recovery, BringsTheNetworkUpAndStays)
{
    run();
    set.dhcp("eth0").leases();
    set.grantTicks(100);
    EXPECT_EQ(FindInterface("eth0")->isConnected, 1);
    end();
}

TEST_F(Recovery, TellsThatItBeginsUnderTheDefaultCategory)
{
    run();
    const auto log = set.log();
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log[0].level, KEST_LEVEL_INFO);
    EXPECT_EQ(log[0].category, kest_debug_category_name(nullptr));
    EXPECT_EQ(log[0].module, "recovery_net");
    EXPECT_EQ(log[0].function, "main");
    EXPECT_EQ(log[0].text, "Enter recovery network\n");
    end();
}

TEST_F(Recovery, MakesTheGluesCategory)
{
    run();
    const auto log = set.log();
    ASSERT_GT(log.size(), 1U);
    for (std::size_t line = 1; line < log.size(); ++line) {
        EXPECT_EQ(log[line].category, "RECOVERY_NET_CONNECTION") << log[line];
    }
    end();
}

TEST_F(Recovery, TellsThePlatformsLoggerItsNames)
{
    run();
    EXPECT_EQ(s_told.program, "MOVOAPP_TEST");
    EXPECT_EQ(s_told.category, "RECOVERY_NET_CONNECTION");
    EXPECT_EQ(s_told.colour, 0);
    EXPECT_EQ(s_told.description, "Platform Glue Net");
    end();
}

TEST_F(Recovery, TakesACategoryThatIsThere)
{
    kest_debug_category* own = kest_debug_category_new("OWN", 0, "");
    movoglue_net_debug = own;
    run();
    EXPECT_EQ(movoglue_net_debug, own);
    end();
}

TEST_F(Recovery, EndsWhenTheGlueCannotStart)
{
    set.fail({.call = sim::Call::ThreadCreate, .nth = 1, .error = EAGAIN});
    run();
    set.joinBackground();
    EXPECT_EQ(status, 0);
}

TEST_F(Recovery, SaysNothingBelowItsLevel)
{
    __atomic_store_n(&__kest_debug_min, static_cast<int>(KEST_LEVEL_ERROR), __ATOMIC_RELAXED);
    run();
    EXPECT_EQ(timesLogged(set, "Enter recovery network\n"), 0);
    end();
}

TEST_F(Recovery, RunsCommandsAlsoWhenItsStarterIgnoredDeadChildren)
{
    (void)std::signal(SIGCHLD, SIG_IGN);
    run();
    EXPECT_EQ(std::signal(SIGCHLD, SIG_DFL), SIG_DFL);
    end();
}
} // namespace
