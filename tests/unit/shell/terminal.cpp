#include "terminal.h"

#include "fake_net.h"
#include "tools/movo_net_shell/shell.h"

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {
constexpr auto kPatience = std::chrono::minutes(10); // only ends a test that hangs

[[noreturn]] void beShell(int callbacks, int played, bool colours)
{
    const char* const state = std::getenv("XDG_STATE_HOME");
    (void)setenv("TERM", "vt100", 1);
    (void)setenv("TZ", "UTC0", 1);
    (void)setenv("XDG_STATE_HOME", "/proc/nowhere", state == nullptr ? 1 : 0);
    (void)setenv("NO_COLOR", colours ? "" : "1", 1);
    fake::setRunning(true);
    std::thread([callbacks] {
        for (char byte = 0; read(callbacks, &byte, 1) == 1;) {
            fake::callBack(_MOVO_NET_CALLBACK_IPCHANGED_, "eth0");
        }
    }).detach();
    std::exit(shell::run({STDIN_FILENO, stdout, stderr, false, nullptr, nullptr, played}));
}
} // namespace

Terminal::Terminal(const std::string& played, unsigned short columns, bool colours)
{
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    int script[2];
    EXPECT_EQ(pipe(script), 0);
    EXPECT_EQ(write(script[1], played.data(), played.size()), static_cast<ssize_t>(played.size()));
    (void)close(script[1]);
    m_callbacks = ends[1];
    const winsize size = {.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
    m_shell = forkpty(&m_terminal, nullptr, nullptr, &size);
    if (m_shell == 0) {
        (void)close(ends[1]);
        beShell(ends[0], played.empty() ? -1 : script[0], colours);
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
    m_before = m_shown.substr(0, at);
    m_shown.erase(0, at + text.size());
    return testing::AssertionSuccess();
}

std::string Terminal::shownUntil(const std::string& text)
{
    EXPECT_TRUE(sees(text));
    return m_before;
}

std::string Terminal::answerTo(const std::string& line)
{
    type(line + "\r");
    EXPECT_TRUE(sees(line + "\r\n"));
    return shownUntil("movo> ");
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
