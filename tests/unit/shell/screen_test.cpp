#include "tools/movo_net_shell/screen.h"
#include "tools/movo_net_shell/text.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

using shell::Screen;

namespace {
/** A terminal of that width. */
class ShellScreen : public testing::Test {
protected:
    ShellScreen()
    {
        (void)setenv("TERM", "xterm", 1);
        (void)unsetenv("NO_COLOR");
        (void)openpty(&m_near, &m_far, nullptr, nullptr, nullptr);
    }
    ~ShellScreen() override
    {
        (void)close(m_near);
        (void)close(m_far);
    }
    Screen screen(unsigned short columns)
    {
        const winsize size = {.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
        (void)ioctl(m_far, TIOCSWINSZ, &size);
        return Screen(m_far);
    }

private:
    int m_near = -1;
    int m_far = -1;
};
} // namespace

TEST_F(ShellScreen, IsAsWideAsTheTerminalIsNow)
{
    const Screen narrow = screen(40);
    EXPECT_EQ(narrow.columns(), 40U);
    (void)screen(120);
    EXPECT_EQ(narrow.columns(), 120U);
    EXPECT_EQ(screen(0).columns(), 80U) << "a serial line does not tell";
}

TEST_F(ShellScreen, BreaksLinesAtBlanks)
{
    EXPECT_EQ(screen(10).wrapped("one two three four", 2), "one two\n  three\n  four");
    EXPECT_EQ(screen(10).wrapped("0123456789abc d", 2), "0123456789abc\n  d");
    EXPECT_EQ(screen(9).wrapped("\u6211\u5bb6 \u6211", 2), "\u6211\u5bb6 \u6211") << "two places each";
    EXPECT_EQ(screen(8).wrapped("\u6211\u5bb6 \u6211", 2), "\u6211\u5bb6\n  \u6211");
    EXPECT_EQ(screen(80).wrapped("", 2), "");
}

TEST_F(ShellScreen, HasColoursAndBars)
{
    EXPECT_EQ(screen(80).styled(shell::Style::Good, "x"), "\033[1;32mx\033[0m");
    EXPECT_EQ(screen(80).bars(-40), "▂▄▆█ ");
    EXPECT_EQ(screen(80).bars(-60), "▂▄▆  ");
    EXPECT_EQ(screen(80).bars(-70), "▂▄   ");
    EXPECT_EQ(screen(80).bars(-80), "▂    ");
    EXPECT_EQ(screen(80).bars(-90), "     ");
}

TEST_F(ShellScreen, HasNoneWhereTheyAreNotWantedOrCannotBe)
{
    (void)setenv("NO_COLOR", "1", 1);
    EXPECT_EQ(screen(80).styled(shell::Style::Bad, "x") + screen(80).bars(-40), "x");
    (void)setenv("NO_COLOR", "", 1);
    EXPECT_TRUE(screen(80).hasColours()) << "an empty one counts as none";
    (void)setenv("TERM", "dumb", 1);
    EXPECT_FALSE(screen(80).hasColours());
    (void)unsetenv("TERM");
    EXPECT_FALSE(screen(80).hasColours());
}

TEST(ShellNoScreen, LeavesTextAsItIs)
{
    const Screen none;
    const std::string text = std::string(300, 'x') + " " + std::string(300, 'y');
    EXPECT_EQ(none.wrapped(text, 4), text);
    EXPECT_EQ(none.styled(shell::Style::Head, "x") + none.bars(-40), "x");
}

TEST(ShellText, IsShortenedByWholeCharacters)
{
    EXPECT_EQ(shell::shortened("abcdef", 6), "abcdef");
    EXPECT_EQ(shell::shortened("abcdef", 5), "abcd…");
    EXPECT_EQ(shell::shortened("\u6211\u5bb6\u7684", 4), "\u6211…");
}
