/** The shell as a person has it: editing, history, completion, callbacks and interrupts at a terminal. */
#include "fake_locale.h"
#include "fake_net.h"
#include "terminal.h"

#include <cstdlib>
#include <filesystem>

TEST(ShellTerminal, RunsALineAndPromptsAgain)
{
    Terminal terminal;
    terminal.type("running\r");
    EXPECT_TRUE(terminal.sees("1 yes\r\n"));
    EXPECT_TRUE(terminal.prompts());
    terminal.type("quit\r");
    EXPECT_TRUE(terminal.endsWith(0));
}

TEST(ShellTerminal, EndsAtTheEndOfInput)
{
    Terminal terminal;
    terminal.type("\004");
    EXPECT_TRUE(terminal.endsWith(0));
}

TEST(ShellTerminal, GoesOnAfterWhatEndsAScript)
{
    Terminal terminal;
    terminal.type("frobnicate\r");
    EXPECT_TRUE(terminal.sees("unknown command: frobnicate; help lists them\r\n"));
    EXPECT_TRUE(terminal.prompts());
    terminal.type("expect IFFOUND 0\r");
    EXPECT_TRUE(terminal.sees("expected IFFOUND, not called back within 0 s\r\n"));
    EXPECT_TRUE(terminal.prompts());
    terminal.type("quit\r");
    EXPECT_TRUE(terminal.endsWith(0));
}

TEST(ShellTerminal, EditsTheLine)
{
    Terminal terminal;
    terminal.type("echo ac\002b\005d\r"); // one back, b, to the end, d
    EXPECT_TRUE(terminal.sees("\nabcd\r\n"));
}

TEST(ShellTerminal, TakesLettersOfEveryLanguage)
{
    Terminal terminal;
    terminal.type("echo \u00e4\u20ac\r");
    EXPECT_TRUE(terminal.sees("\n\u00e4\u20ac\r\n"));
    terminal.type("echo \u6211\u5bb6 \xe6\u00ff\U0001F3E0\r"); // the piece of a letter takes no other one with it
    EXPECT_TRUE(terminal.sees("\n\u6211\u5bb6 \u00ff\U0001F3E0\r\n"));
    EXPECT_TRUE(terminal.prompts());
    terminal.type("\020\r"); // the line before
    EXPECT_TRUE(terminal.sees("\n\u6211\u5bb6 \u00ff\U0001F3E0\r\n"));
}

TEST(ShellTerminal, TakesThemOnASystemWithoutLocales)
{
    fake::removeLocales();
    Terminal terminal;
    terminal.type("echo caf\u00e9 \u00a0\u00ff\u20ac \u6211\U0001F3E0\r");
    EXPECT_TRUE(terminal.sees("\ncaf\u00e9 \u00a0\u00ff\u20ac \u6211\U0001F3E0\r\n"));
    EXPECT_TRUE(terminal.prompts());
    terminal.type("wifi info caf\t\r");
    EXPECT_TRUE(terminal.sees("  name        caf\u00e9\r\n"));
    EXPECT_TRUE(terminal.prompts());
    terminal.type("\020\r"); // the line before
    EXPECT_TRUE(terminal.sees("  name        caf\u00e9\r\n"));
}

TEST(ShellTerminal, CompletesANetworksName)
{
    fake::setNetworks({"\u6211\u5bb6 \"\\\U0001F3E0", "\u6211\u5bc6", "evil \u009b2J\x9b", "latin\xe9"});
    Terminal terminal;
    terminal.type("wifi info \t\t");
    EXPECT_TRUE(terminal.sees("evil \\xc2\\x9b2J\\x9b  latin\\xe9  \u6211\u5bb6 \"\\\U0001F3E0  \u6211\u5bc6  \r\n"));
    terminal.type("\u6211\u5bb6\t\r");
    EXPECT_TRUE(terminal.sees("  name        \u6211\u5bb6 \"\\\U0001F3E0\r\n"));
    EXPECT_TRUE(terminal.prompts());
    terminal.type("wifi info lat\t\r");
    EXPECT_TRUE(terminal.sees("  name        latin\\xe9\r\n"));
}

TEST(ShellTerminal, RemembersLines)
{
    Terminal terminal;
    terminal.type("echo once\r");
    EXPECT_TRUE(terminal.sees("\nonce\r\n"));
    EXPECT_TRUE(terminal.prompts());
    terminal.type("\020\r"); // the line before
    EXPECT_TRUE(terminal.sees("\nonce\r\n"));
}

TEST(ShellTerminal, CompletesAWord)
{
    Terminal terminal;
    terminal.type("ru\t\r");
    EXPECT_TRUE(terminal.sees("1 yes\r\n"));
}

TEST(ShellTerminal, ListsWhatAWordMayBecome)
{
    Terminal terminal;
    terminal.type("mode \t\t");
    EXPECT_TRUE(terminal.sees("eth0  lo  \r\n"));
    EXPECT_TRUE(terminal.sees("mode "));
}

TEST(ShellTerminal, ShowsACallbackAboveTheLineBeingEdited)
{
    Terminal terminal;
    terminal.type("callback on\r");
    EXPECT_TRUE(terminal.sees("0 success\r\n"));
    EXPECT_TRUE(terminal.prompts());
    terminal.type("echo kept");
    EXPECT_TRUE(terminal.sees("kept"));
    terminal.callBack();
    EXPECT_TRUE(terminal.sees("\r\033[Kcallback "));
    EXPECT_TRUE(terminal.sees(" IPCHANGED eth0\r\n"));
    EXPECT_TRUE(terminal.sees("movo> echo kept"));
    terminal.type("\r");
    EXPECT_TRUE(terminal.sees("\nkept\r\n"));
}

TEST(ShellTerminal, AnInterruptDropsTheLine)
{
    Terminal terminal;
    terminal.type("echo dropped");
    EXPECT_TRUE(terminal.sees("dropped"));
    terminal.type("\003");
    EXPECT_TRUE(terminal.prompts());
    terminal.type("echo on\r");
    EXPECT_TRUE(terminal.sees("\non\r\n"));
    terminal.type("quit\r");
    EXPECT_TRUE(terminal.endsWith(0));
}

TEST(ShellTerminal, AnInterruptEndsAWait)
{
    Terminal terminal;
    terminal.type("callback on\r");
    EXPECT_TRUE(terminal.sees("0 success\r\n"));
    EXPECT_TRUE(terminal.prompts());
    terminal.type("watch\r");
    EXPECT_TRUE(terminal.sees("watch\r\n"));
    terminal.callBack();
    EXPECT_TRUE(terminal.sees(" IPCHANGED eth0\r\n"));
    terminal.type("\003");
    EXPECT_TRUE(terminal.prompts());
    terminal.type("quit\r");
    EXPECT_TRUE(terminal.endsWith(0));
}

TEST(ShellTerminal, AnOverlongLineIsRefused)
{
    Terminal terminal;
    terminal.type("echo " + std::string(1500, 'x') + "\r");
    EXPECT_TRUE(terminal.sees("longer than 1023 characters\r\n"));
    EXPECT_TRUE(terminal.prompts());
}

TEST(ShellTerminal, FollowsWhatIsPlayed)
{
    Terminal terminal("echo one\n");
    EXPECT_TRUE(terminal.sees("echo one\r\none\r\n"));
    EXPECT_TRUE(terminal.prompts());
    terminal.type("echo two\r");
    EXPECT_TRUE(terminal.sees("\ntwo\r\n"));
}

TEST(ShellTerminal, EndsPlayingWhereALineFails)
{
    Terminal terminal("expect IFFOUND 0\necho one\n");
    EXPECT_TRUE(terminal.sees("not called back within 0 s\r\n"));
    EXPECT_TRUE(terminal.prompts());
    terminal.type("echo two\r");
    EXPECT_TRUE(terminal.sees("echo two\r\ntwo\r\n"));
}

TEST(ShellTerminal, AnInterruptEndsPlaying)
{
    Terminal terminal("watch\necho one\n");
    EXPECT_TRUE(terminal.sees("watch\r\n"));
    terminal.type("\003");
    EXPECT_TRUE(terminal.prompts());
    terminal.type("echo two\r");
    EXPECT_TRUE(terminal.sees("echo two\r\ntwo\r\n"));
}

TEST(ShellTerminal, RemembersLinesOfEarlierSessions)
{
    char folder[] = "/tmp/shell_sessions_XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    (void)setenv("XDG_STATE_HOME", folder, 1);
    {
        Terminal first;
        (void)first.answerTo("echo caf\u00e9");
        (void)first.answerTo("wifi join Home \"correct horse\"");
        first.type("quit\r");
        EXPECT_TRUE(first.endsWith(0));
    }
    Terminal second;
    second.type("\020\020\r"); // two lines before: quit, echo
    EXPECT_TRUE(second.sees("\ncaf\u00e9\r\n"));
    std::filesystem::remove_all(folder);
}
