#include "recovery.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {
TEST_F(Recovery, BringsTheNetworkUpAndStays)
{
    run();
    set.dhcp("eth0").leases();
    set.grantTicks(100);
    EXPECT_EQ(FindInterface("eth0")->isConnected, 1);
    end();
}

TEST_F(Recovery, MakesFilesThatOthersReadAndNobodyElseWrites)
{
    (void)umask(0); // as some starters leave it
    run();
    EXPECT_EQ(umask(0), 022U);
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
    EXPECT_EQ(g_told.program, "MOVOAPP_TEST");
    EXPECT_EQ(g_told.category, "RECOVERY_NET_CONNECTION");
    EXPECT_EQ(g_told.colour, 0);
    EXPECT_EQ(g_told.description, "Platform Glue Net");
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

/** A handler of its own: an ignored signal would be inherited by every command. */
TEST_F(Recovery, OutlivesAPipeThatNobodyReads)
{
    for (void (*starters)(int) : {SIG_DFL, SIG_IGN}) {
        (void)std::signal(SIGPIPE, starters);
        set.background([] { (void)daemonWith({}); });
        set.settle();
        struct sigaction now {};
        ASSERT_EQ(sigaction(SIGPIPE, nullptr, &now), 0);
        EXPECT_NE(now.sa_handler, SIG_DFL);
        EXPECT_NE(now.sa_handler, SIG_IGN);
        EXPECT_EQ(now.sa_flags & SA_RESTART, SA_RESTART);
    }
    EXPECT_EQ(raise(SIGPIPE), 0);
    EXPECT_EQ(set.stop(), 0);
    EXPECT_EQ(set.stop(), 0);
    set.joinBackground();
}

bool isNullDevice(int fd)
{
    struct stat status {};
    return fstat(fd, &status) == 0 && S_ISCHR(status.st_mode) && status.st_rdev == makedev(1, 3);
}

TEST_F(Recovery, FillsClosedStandardDescriptors)
{
    std::array<int, 3> saved{};
    for (int fd = 0; fd < 3; ++fd) {
        saved[static_cast<std::size_t>(fd)] = fcntl(fd, F_DUPFD_CLOEXEC, 10);
    }
    set.background([this] {
        for (int fd = 0; fd < 3; ++fd) {
            (void)close(fd);
        }
        status = daemonWith({});
    });
    set.settle();
    std::array<bool, 3> filled{};
    std::array<int, 3> flags{};
    for (int fd = 0; fd < 3; ++fd) {
        filled[static_cast<std::size_t>(fd)] = isNullDevice(fd);
        flags[static_cast<std::size_t>(fd)] = fcntl(fd, F_GETFD);
        (void)dup2(saved[static_cast<std::size_t>(fd)], fd);
        (void)close(saved[static_cast<std::size_t>(fd)]);
    }
    EXPECT_EQ(filled, (std::array<bool, 3>{true, true, true}));
    EXPECT_EQ(flags, (std::array<int, 3>{0, 0, 0})) << "commands have them, too";
    end();
}

TEST_F(Recovery, LeavesOpenStandardDescriptorsAlone)
{
    std::array<struct stat, 3> before{};
    for (int fd = 0; fd < 3; ++fd) {
        ASSERT_EQ(fstat(fd, &before[static_cast<std::size_t>(fd)]), 0);
    }
    run();
    for (int fd = 0; fd < 3; ++fd) {
        struct stat now {};
        EXPECT_EQ(fstat(fd, &now), 0);
        EXPECT_EQ(now.st_ino, before[static_cast<std::size_t>(fd)].st_ino);
    }
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
