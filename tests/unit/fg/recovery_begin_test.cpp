/** Before the daemon begins: options, and the lock of the one host. */
#include "recovery.h"

#include <cerrno>
#include <csignal>
#include <sys/stat.h>

namespace {
TEST_F(Recovery, IsTheHostBeforeItTouchesAnything)
{
    run();
    EXPECT_EQ(g_hostLock.times, 1);
    EXPECT_EQ(g_hostLock.name, "recovery_net");
    EXPECT_TRUE(g_hostLock.usualFile);
    EXPECT_TRUE(g_hostLock.beforeTheGlue);
    end();
}

void expectNothingBegun(const sim::Set& set)
{
    EXPECT_EQ(set.log().size(), 0U);
    EXPECT_EQ(g_told.program, "");
    EXPECT_EQ(movoglue_net_debug, nullptr);
}

TEST_F(Recovery, LeavesTheNetworkToAnotherHost)
{
    g_hostLock = {.answer = 1, .holder = {"movo_net_shell", 812}};
    const Ended ended = endsWith({});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors, "recovery_net: the network glue runs already: movo_net_shell, pid 812\n");
    expectNothingBegun(set);
}

TEST_F(Recovery, LeavesItToAHostWithoutName)
{
    g_hostLock = {.answer = 1, .holder = {"", 0}};
    EXPECT_EQ(endsWith({}).errors, "recovery_net: the network glue runs already: an unknown program, pid 0\n");
}

TEST_F(Recovery, WarnsAndGoesOnWhereNoLockCanBe)
{
    g_hostLock = {.answer = 6, .error = EROFS};
    testing::internal::CaptureStderr();
    run();
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(errors.starts_with("recovery_net: another host of the network glue would not be noticed: "
                                   "/run/movo_net.lock: Read-only file system\n"))
        << errors;
    EXPECT_EQ(timesLogged(set, "Enter recovery network\n"), 1);
    end();
}

constexpr char kUsage[] = "usage: recovery_net [--help | --version]\n"
                          "\n"
                          "Brings the network up and stays. Words that are no options are ignored.\n";

/** Neither the lock nor the mask of files nor a signal's disposition. */
class RecoveryOption : public Recovery {
protected:
    RecoveryOption()
    {
        (void)umask(0);
        (void)std::signal(SIGPIPE, SIG_DFL);
    }
    void expectNothingTouched() const
    {
        expectNothingBegun(set);
        EXPECT_EQ(g_hostLock.times, 0);
        EXPECT_EQ(umask(022), 0U);
        EXPECT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL);
    }
};

TEST_F(RecoveryOption, HelpIsPrinted)
{
    const Ended ended = endsWith({"word", "--help", "--frobnicate"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, kUsage);
    EXPECT_EQ(ended.errors, "");
    expectNothingTouched();
}

TEST_F(RecoveryOption, VersionIsPrinted)
{
    const Ended ended = endsWith({"--version"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "recovery_net " MOVO_NET_VERSION "\n");
    EXPECT_EQ(ended.errors, "");
    expectNothingTouched();
}

TEST_F(RecoveryOption, ThatIsUnknownIsRefused)
{
    for (const std::string option : {"--frobnicate", "-h", "-", "--help=1"}) {
        const Ended ended = endsWith({"word", option, "--version"});
        EXPECT_EQ(ended.status, 2);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors, "recovery_net: unknown option " + option + "\n" + kUsage);
    }
    expectNothingTouched();
}

TEST_F(Recovery, KeepsIgnoringOtherWords)
{
    run({"word", "", "help"});
    EXPECT_EQ(timesLogged(set, "Enter recovery network\n"), 1);
    end();
}
} // namespace
