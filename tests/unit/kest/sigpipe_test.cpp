#include "kest_libc.h"

#include "kest.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

volatile std::sig_atomic_t s_signals;

/** Standard error is a pipe whose reader has gone, and every SIGPIPE that arrives is counted. */
class LostReader : public KestTest {
protected:
    LostReader()
    {
        s_signals = 0;
        m_before = std::signal(SIGPIPE, [](int) { s_signals = s_signals + 1; });
        (void)pipe2(m_ends.data(), O_CLOEXEC);
        close(m_ends[0]);
    }
    ~LostReader() override
    {
        close(m_ends[1]);
        (void)std::signal(SIGPIPE, m_before);
    }
    static void log() { kest_debug_log(nullptr, KEST_LEVEL_ERROR, "m", "f", 1, "nobody reads this\n"); }
    static bool isPending()
    {
        sigset_t pending;
        return sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1;
    }
    static bool isBlocked()
    {
        sigset_t mask;
        return pthread_sigmask(SIG_BLOCK, nullptr, &mask) == 0 && sigismember(&mask, SIGPIPE) == 1;
    }

    std::array<int, 2> m_ends{};

private:
    void (*m_before)(int);
};

TEST_F(LostReader, LosesTheLineAndNoMore)
{
    const StderrTo lost(m_ends[1]);
    errno = ENOENT;
    log();
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(libc.linesWritten, 1);
    EXPECT_EQ(s_signals, 0);
    EXPECT_FALSE(isPending());
    EXPECT_FALSE(isBlocked());
}

TEST_F(LostReader, DoesNotEndTheProcess)
{
    (void)std::signal(SIGPIPE, SIG_DFL);
    EXPECT_EXIT(
        {
            (void)dup2(m_ends[1], STDERR_FILENO);
            log();
            Kest_Util_BT(3);
            _exit(7);
        },
        testing::ExitedWithCode(7), "");
}

TEST_F(LostReader, LosesABacktraceAndNoMore)
{
    const StderrTo lost(m_ends[1]);
    Kest_Util_BT(3);
    EXPECT_EQ(s_signals, 0);
    EXPECT_FALSE(isPending());
    EXPECT_FALSE(isBlocked());
}

TEST_F(LostReader, LeavesTheHostItsOwnSignal)
{
    sigset_t sigpipe;
    sigemptyset(&sigpipe);
    sigaddset(&sigpipe, SIGPIPE);
    ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &sigpipe, nullptr), 0);
    ASSERT_EQ(raise(SIGPIPE), 0);
    {
        const StderrTo lost(m_ends[1]);
        log();
    }
    EXPECT_TRUE(isPending());
    EXPECT_TRUE(isBlocked());
    ASSERT_EQ(pthread_sigmask(SIG_UNBLOCK, &sigpipe, nullptr), 0);
    EXPECT_EQ(s_signals, 1);
}

TEST_F(LostReader, IsForgottenByTheNextLine)
{
    {
        const StderrTo lost(m_ends[1]);
        log();
    }
    EXPECT_EQ(linesOf(stderrOf(log)).size(), 1U);
}

} // namespace
