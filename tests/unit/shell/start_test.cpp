/** Starting and stopping: the callback is there for the first look, and every start gets its stop. */
#include "fake_net.h"
#include "play.h"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>

namespace {
long count(const std::string& function)
{
    const std::vector<std::string> calls = fake::calls();
    return std::ranges::count(calls, function);
}
} // namespace

TEST(ShellStart, SeesWhatTheFirstLookFinds)
{
    const Played played = playWithStart("expect IFFOUND eth0 0\n");
    EXPECT_EQ(played.status, 0) << played.errors;
    EXPECT_EQ(count("Movo_NET_Glue_Init"), 1);
    EXPECT_EQ(count("Movo_NET_InstallCallback"), 1);
    EXPECT_EQ(count("Movo_NET_Glue_Exit"), 1);
}

TEST(ShellStart, IsACommandToo)
{
    fake::setRunning(false);
    const Played played = playWithStart("stop\n");
    EXPECT_EQ(played.status, 0);
    EXPECT_TRUE(played.output.ends_with("0 success\n")) << played.output;
    EXPECT_EQ(count("Movo_NET_Glue_Exit"), 1);
}

TEST(ShellStart, OfARunningGlueCountsOneMoreUser)
{
    const Played played = play("start\nstart\nstop\n");
    EXPECT_EQ(played.output, "0 success\n0 success\n0 success\n");
    EXPECT_EQ(count("Movo_NET_Glue_Init"), 2);
    EXPECT_EQ(count("Movo_NET_Glue_Exit"), 2);
}

TEST(ShellStart, ThatFailsInstallsTheCallbackAndCountsAUser)
{
    fake::returns("Movo_NET_Glue_Init", 1);
    const Played played = play("stop\nstart\n");
    EXPECT_EQ(played.output,
              "0 success\n1 failure\n  the log names the step that failed, or who hosts the glue already\n");
    EXPECT_EQ(count("Movo_NET_InstallCallback"), 1);
    EXPECT_EQ(count("Movo_NET_Glue_Exit"), 2);
}

TEST(ShellStart, ThatFailsEndsAScript)
{
    fake::returns("Movo_NET_Glue_Init", 1);
    const Played played = playWithStart("echo never\n");
    EXPECT_EQ(played.status, 1);
    EXPECT_EQ(played.output, "");
    EXPECT_EQ(played.errors, "the glue did not start\n");
}

TEST(ShellStart, IsFollowedByAStopHoweverTheScriptEnds)
{
    EXPECT_EQ(playWithStart("frobnicate\n").status, 2);
    EXPECT_EQ(count("Movo_NET_Glue_Exit"), 1);
}

TEST(ShellStop, WithoutAStartIsTheCallAlone)
{
    fake::returns("Movo_NET_Glue_Exit", 1);
    EXPECT_EQ(play("stop\n").output, "1 failure\n  it was stopped before\n");
    EXPECT_EQ(count("Movo_NET_Glue_Exit"), 1);
}

TEST(ShellJoin, TellsThatTheThreadHasEnded)
{
    EXPECT_EQ(play("stop\njoin\n").output, "0 success\nthe event thread has ended\n");
}

TEST(ShellJoin, GivesUpAfterItsTime)
{
    EXPECT_EQ(play("join 0.01\n").output, "the event thread still runs\n");
}

TEST(ShellJoin, CanBeInterrupted)
{
    fake::onCall([](const std::string& call) {
        if (call == "WaitForChild2Exit") {
            (void)kill(getpid(), SIGINT);
        }
    });
    EXPECT_EQ(play("join\necho never\n").status, 130);
}
