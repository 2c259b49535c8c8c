/** The shell as a person has it: editing, history, completion, callbacks and interrupts at a terminal. */
#include "fake_locale.h"
#include "fake_net.h"
#include "tools/movo_net_shell/shell.h"

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {
constexpr auto kPatience = std::chrono::minutes(10); // only ends a test that hangs

/** A shell in a child process, at the far end of a terminal; each byte sent to `callBack` becomes a callback. */
class Terminal {
public:
    /** The shell plays the lines first. */
    explicit Terminal(const std::string& played = "");
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    void type(const std::string& keys) { (void)!write(m_terminal, keys.data(), keys.size()); }
    void callBack() { (void)!write(m_callbacks, "x", 1); }

    /** Waits until the text has been shown, after what was seen before. */
    testing::AssertionResult sees(const std::string& text);
    testing::AssertionResult prompts() { return sees("movo> "); }
    /** Waits until the shell has ended by itself. */
    testing::AssertionResult endsWith(int status);

private:
    bool readMore(std::chrono::steady_clock::time_point deadline);

    int m_terminal = -1;
    int m_callbacks = -1;
    pid_t m_shell = -1;
    std::string m_shown;
};

[[noreturn]] void beShell(int callbacks, int played)
{
    (void)setenv("TERM", "vt100", 1);
    fake::setRunning(true);
    std::thread([callbacks] {
        for (char byte = 0; read(callbacks, &byte, 1) == 1;) {
            fake::callBack(_MOVO_NET_CALLBACK_IPCHANGED_, "eth0");
        }
    }).detach();
    std::exit(shell::run({STDIN_FILENO, stdout, stderr, false, nullptr, played}));
}

Terminal::Terminal(const std::string& played)
{
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    int script[2];
    EXPECT_EQ(pipe(script), 0);
    EXPECT_EQ(write(script[1], played.data(), played.size()), static_cast<ssize_t>(played.size()));
    (void)close(script[1]);
    m_callbacks = ends[1];
    const winsize size = {.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
    m_shell = forkpty(&m_terminal, nullptr, nullptr, &size);
    if (m_shell == 0) {
        (void)close(ends[1]);
        beShell(ends[0], played.empty() ? -1 : script[0]);
    }
    (void)close(ends[0]);
    (void)close(script[0]);
    EXPECT_TRUE(prompts());
}

Terminal::~Terminal()
{
    (void)close(m_callbacks);
    (void)close(m_terminal);
    if (m_shell > 0) {
        (void)kill(m_shell, SIGKILL);
        (void)waitpid(m_shell, nullptr, 0);
    }
}

bool Terminal::readMore(std::chrono::steady_clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd wait = {m_terminal, POLLIN, 0};
    char bytes[512];
    if (left.count() <= 0 || poll(&wait, 1, static_cast<int>(left.count())) <= 0) {
        return false;
    }
    const ssize_t count = read(m_terminal, bytes, sizeof(bytes));
    m_shown.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return count > 0;
}

testing::AssertionResult Terminal::sees(const std::string& text)
{
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    std::size_t at = m_shown.find(text);
    while (at == std::string::npos && readMore(deadline)) {
        at = m_shown.find(text);
    }
    if (at == std::string::npos) {
        return testing::AssertionFailure() << "no \"" << text << "\" in \"" << testing::PrintToString(m_shown) << "\"";
    }
    m_shown.erase(0, at + text.size());
    return testing::AssertionSuccess();
}

testing::AssertionResult Terminal::endsWith(int expected)
{
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (readMore(deadline)) {
    }
    int status = -1;
    pollfd end = {static_cast<int>(syscall(SYS_pidfd_open, m_shell, 0)), POLLIN, 0};
    const int ended = poll(&end, 1, static_cast<int>(std::chrono::milliseconds(kPatience).count()));
    (void)close(end.fd);
    if (ended == 1 && waitpid(m_shell, &status, 0) == m_shell) {
        m_shell = -1;
        if (WIFEXITED(status) && WEXITSTATUS(status) == expected) {
            return testing::AssertionSuccess();
        }
    }
    return testing::AssertionFailure() << "wait status " << status << " after " << testing::PrintToString(m_shown);
}
} // namespace

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
