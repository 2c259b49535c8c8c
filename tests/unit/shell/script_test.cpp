/** Scripts: expectations, time, callbacks, what ends a script with which status. */
#include "fake_net.h"
#include "play.h"

#include <csignal>
#include <gtest/gtest.h>
#include <kest.h>
#include <regex>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {
/** "filter IFACE" calls back with the reason, from inside the call. */
void filterCallsBack(MovoNetCBReason_e reason)
{
    fake::onCall([reason](const std::string& call) {
        if (call.starts_with("Movo_NET_FilterOutIF ")) {
            fake::callBack(reason, call.substr(call.find(' ') + 1).c_str());
        }
    });
}

/** The output without the times of the callbacks. */
std::string untimed(const std::string& output)
{
    return std::regex_replace(output, std::regex(R"(callback \d+\.\d{3} )"), "callback TIME ");
}
} // namespace

TEST(ShellScript, AnEmptyOneIsGood)
{
    const Played played = play("");
    EXPECT_EQ(played.status, 0);
    EXPECT_EQ(played.output + played.errors, "");
}

TEST(ShellScript, BlankLinesAndCommentsDoNothing)
{
    const Played played = play("\n   \t\n# a comment\n  # another\necho a#b # c\n\r\n");
    EXPECT_EQ(played.status, 0);
    EXPECT_EQ(played.output, "a#b\n");
}

TEST(ShellScript, TheLastLineNeedsNoEnd)
{
    EXPECT_EQ(play("echo a\necho b").output, "a\nb\n");
}

TEST(ShellScript, QuitEndsIt)
{
    const Played played = play("quit\necho never\n");
    EXPECT_EQ(played.status, 0);
    EXPECT_EQ(played.output, "");
}

TEST(ShellScript, ACallbackIsShownBeforeTheResultOfTheCallThatMadeIt)
{
    filterCallsBack(_MOVO_NET_CALLBACK_IPCHANGED_);
    EXPECT_EQ(untimed(play("callback on\nfilter eth0\n").output),
              "0 success\ncallback TIME IPCHANGED eth0\n0 success\n");
}

TEST(ShellScript, NoCallbackIsShownWhenItIsOff)
{
    filterCallsBack(_MOVO_NET_CALLBACK_IPCHANGED_);
    EXPECT_EQ(play("callback on\ncallback off\nfilter eth0\n").output, "0 success\n0 success\n0 success\n");
}

TEST(ShellScript, AReasonWithoutNameIsShownByItsNumber)
{
    filterCallsBack(static_cast<MovoNetCBReason_e>(99));
    EXPECT_EQ(untimed(play("callback on\nfilter eth0\n").output), "0 success\ncallback TIME 99 eth0\n0 success\n");
}

TEST(ShellScript, ControlCharactersOfANameAreShownByNumber)
{
    filterCallsBack(_MOVO_NET_CALLBACK_IFFOUND_);
    EXPECT_EQ(untimed(play("callback on\nfilter \033[2J\n").output),
              "0 success\ncallback TIME IFFOUND \\x1b[2J\n0 success\n");
}

TEST(ShellExpect, IsMetByACallbackThatCame)
{
    filterCallsBack(_MOVO_NET_CALLBACK_DHCP_SUCCESS_);
    const Played played = play("callback on\nfilter eth0\nexpect DHCP_SUCCESS eth0 0\necho on\n");
    EXPECT_EQ(played.status, 0) << played.errors;
    EXPECT_TRUE(played.output.ends_with("on\n")) << played.output;
}

TEST(ShellExpect, TakesSmallLetters)
{
    filterCallsBack(_MOVO_NET_CALLBACK_DHCP_SUCCESS_);
    EXPECT_EQ(play("callback on\nfilter eth0\nexpect dhcp_success 0\n").status, 0);
}

TEST(ShellExpect, WaitsForACallbackThatComesLater)
{
    std::thread other;
    fake::onCall([&other](const std::string& call) {
        if (call.starts_with("Movo_NET_FilterOutIF")) {
            other = std::thread([] { fake::callBack(_MOVO_NET_CALLBACK_IFREMOVED_, "eth0"); });
        }
    });
    const Played played = play("callback on\nfilter eth0\nexpect IFREMOVED\n");
    other.join();
    EXPECT_EQ(played.status, 0) << played.errors;
}

TEST(ShellExpect, EndsTheScriptWhenNothingComes)
{
    const Played played = play("echo before\nexpect IFFOUND eth0 0.01\necho after\n");
    EXPECT_EQ(played.status, 1);
    EXPECT_EQ(played.output, "before\n");
    EXPECT_EQ(played.errors, "expected IFFOUND eth0, not called back within 0.01 s\n"
                             "stopped at line 2: expect IFFOUND eth0 0.01\n");
}

TEST(ShellExpect, IsNotMetByAnotherInterface)
{
    filterCallsBack(_MOVO_NET_CALLBACK_IFFOUND_);
    EXPECT_EQ(play("callback on\nfilter eth1\nexpect IFFOUND eth0 0\n").status, 1);
}

TEST(ShellExpect, IsNotMetByAnotherReason)
{
    filterCallsBack(_MOVO_NET_CALLBACK_IFFOUND_);
    EXPECT_EQ(play("callback on\nfilter eth0\nexpect IFREMOVED 0\n").status, 1);
}

TEST(ShellExpect, IsNotMetTwiceByOneCallback)
{
    filterCallsBack(_MOVO_NET_CALLBACK_IFFOUND_);
    EXPECT_EQ(play("callback on\nfilter eth0\nexpect IFFOUND 0\nexpect IFFOUND 0\n").status, 1);
}

TEST(ShellExpect, IsNotMetByWhatCameBeforeTheLastExpected)
{
    filterCallsBack(_MOVO_NET_CALLBACK_IFFOUND_);
    const std::string script = "callback on\nfilter eth0\nfilter eth1\nexpect IFFOUND eth1 0\n";
    EXPECT_EQ(play(script).status, 0);
    EXPECT_EQ(play(script + "expect IFFOUND eth0 0\n").status, 1);
}

TEST(ShellExpect, PassesOverOthers)
{
    filterCallsBack(_MOVO_NET_CALLBACK_IFFOUND_);
    EXPECT_EQ(play("callback on\nfilter eth0\nfilter eth1\nfilter eth2\nexpect IFFOUND eth2 0\n").status, 0);
}

TEST(ShellExpect, AnInterfaceMayBeCalledByANumberWhenATimeFollows)
{
    filterCallsBack(_MOVO_NET_CALLBACK_IFFOUND_);
    EXPECT_EQ(play("callback on\nfilter 7\nexpect IFFOUND 7 0\n").status, 0);
}

TEST(ShellExpect, KeepsTheLastThousandCallbacks)
{
    filterCallsBack(_MOVO_NET_CALLBACK_IFFOUND_);
    std::string script = "callback on\nfilter first\n";
    for (int i = 1; i < 1000; i++) {
        script += "filter eth0\n";
    }
    EXPECT_EQ(play(script + "expect IFFOUND first 0\n").status, 0);
    EXPECT_EQ(play(script + "filter eth0\nexpect IFFOUND first 0\n").status, 1);
}

TEST(ShellSleep, ShowsCallbacksMeanwhile)
{
    filterCallsBack(_MOVO_NET_CALLBACK_IFFOUND_);
    EXPECT_EQ(untimed(play("callback on\nfilter eth0\nsleep 0\nwatch 0.001\necho on\n").output),
              "0 success\ncallback TIME IFFOUND eth0\n0 success\non\n");
}

TEST(ShellScript, ShowsCallbacksWhileItWaitsForALine)
{
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    std::thread writer([&] {
        (void)!write(ends[1], "callback on\nfilter eth0\n", 24);
        char byte = 0;
        (void)!read(ends[1], &byte, 1); // until the callback was made
        (void)!write(ends[1], "expect IFFOUND eth0\n", 20);
        (void)close(ends[1]);
    });
    std::thread other;
    fake::onCall([&](const std::string& call) {
        if (call.starts_with("Movo_NET_FilterOutIF")) {
            other = std::thread([&] {
                fake::callBack(_MOVO_NET_CALLBACK_IFFOUND_, "eth0");
                (void)!write(ends[0], "x", 1);
            });
        }
    });
    const Played played = playFrom(ends[0]);
    writer.join();
    other.join();
    (void)close(ends[0]);
    EXPECT_EQ(played.status, 0) << played.errors;
}

TEST(ShellInterrupt, EndsAScriptThatWaits)
{
    fake::onCall([](const std::string& call) {
        if (call.starts_with("Movo_NET_FilterOutIF")) {
            (void)std::raise(SIGINT);
        }
    });
    for (const char* wait : {"watch", "sleep 1000", "expect IFFOUND 1000"}) {
        const Played played = play(std::string("filter eth0\n") + wait + "\necho never\n");
        EXPECT_EQ(played.status, 130) << wait;
        EXPECT_EQ(played.output, "0 success\n") << wait;
    }
}

TEST(ShellInterrupt, EndsAScriptThatWaitsForALine)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    (void)!write(ends[1], "filter eth0\n", 12);
    fake::onCall([](const std::string&) { (void)std::raise(SIGINT); });
    EXPECT_EQ(playFrom(ends[0]).status, 130);
}

TEST(ShellInterruptDeathTest, ASecondOneEndsAShellThatHangs)
{
    const auto interruptTwice = [] {
        fake::onCall([](const std::string&) {
            (void)std::raise(SIGINT);
            (void)std::raise(SIGINT);
        });
        (void)play("filter eth0\n");
    };
    EXPECT_EXIT(interruptTwice(), testing::ExitedWithCode(130), "");
}

TEST(ShellLog, SetsTheLevel)
{
    const Played played = play("log none\nlog\nlog WARNING\nlog\nlog info\nlog\nlog debug\nlog\nlog log\nlog\n");
    EXPECT_EQ(played.output, "none\nwarning\ninfo\ndebug\nlog\n");
    EXPECT_EQ(__kest_debug_min, KEST_LEVEL_LOG);
    EXPECT_EQ(play("log error\n").status, 0);
    EXPECT_EQ(__kest_debug_min, KEST_LEVEL_ERROR);
}

TEST(ShellLinkType, IsTheLibrarysVariable)
{
    EXPECT_EQ(play("link-type 255\nlink-type\n").output, "255\n");
    EXPECT_EQ(g_NetworkLinkType, 255);
}

TEST(ShellScript, NoCallbackStandsInsideATable)
{
    fake::addWireless("wlan0");
    for (const char* line : {"wifi list\n", "wifi info caf\u00e9\n", "wifi status\n", "ap status\n", "help\n"}) {
        fake::onCall({});
        const std::string output = play(line).output;
        const std::string table = output.substr(output.starts_with('0') ? output.find('\n') + 1 : 0);
        fake::onCall([](const std::string&) { fake::callBack(_MOVO_NET_CALLBACK_IPCHANGED_, "eth0"); });
        const std::string disturbed = play(std::string("callback on\n") + line).output;
        EXPECT_NE(disturbed.find(table), std::string::npos) << line << disturbed;
        EXPECT_NE(disturbed.find(" IPCHANGED eth0\n"), std::string::npos) << line;
    }
}

TEST(ShellScript, TheLineThatItStopsAtIsShownWithoutAKey)
{
    EXPECT_EQ(play("\n  expect IFFOUND 0 # nothing\n").errors,
              "expected IFFOUND, not called back within 0 s\nstopped at line 2: expect IFFOUND 0 # nothing\n");
    const std::string errors = play("wifi connect \"My Home Net\" secret\n").errors;
    EXPECT_TRUE(errors.ends_with("stopped at line 1: wifi connect \"My Home Net\" KEY\n")) << errors;
}
