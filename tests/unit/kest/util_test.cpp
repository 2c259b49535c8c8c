#include "kest_libc.h"

#include "kest.h"

// Visible to the linker, so that a backtrace can tell its name.
extern "C" void kestTestCaller(int frames, int depth);
__attribute__((noinline)) void kestTestCaller(int frames, int depth)
{
    if (depth == 0) {
        Kest_Util_BT(frames);
    } else {
        kestTestCaller(frames, depth - 1);
    }
    asm volatile(""); // keeps the calls above from becoming jumps, which leave no frame
}

namespace {

// Called through a pointer that may change, so that no compiler makes a copy of it under another name.
void (*volatile call)(int frames, int depth) = kestTestCaller;

class Delay : public KestTest {
protected:
    static void expectSleeps(const std::vector<timespec>& expected)
    {
        ASSERT_EQ(libc.sleeps.size(), expected.size());
        for (size_t i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(libc.sleeps[i].tv_sec, expected[i].tv_sec);
            EXPECT_EQ(libc.sleeps[i].tv_nsec, expected[i].tv_nsec);
        }
    }
};

TEST_F(Delay, SleepsOnceForTheWholeTime)
{
    Kest_Util_Delay(500);
    Kest_Util_Delay(2010);
    Kest_Util_Delay(2'147'483'647);
    expectSleeps({{0, 500'000'000}, {2, 10'000'000}, {2'147'483, 647'000'000}});
}

TEST_F(Delay, GoesOnWithTheRemainderAfterASignal)
{
    libc.interruptions = {{1, 200'000'000}, {0, 7}};
    Kest_Util_Delay(2000);
    expectSleeps({{2, 0}, {1, 200'000'000}, {0, 7}});
}

TEST_F(Delay, OfNothingOrLessReturnsAtOnce)
{
    Kest_Util_Delay(0);
    Kest_Util_Delay(-1);
    expectSleeps({});
}

// --- Backtrace

class Backtrace : public KestTest {};

TEST_F(Backtrace, BeginsWithTheCaller)
{
    const std::vector<std::string> lines = linesOf(stderrOf([] { call(3, 0); }));
    ASSERT_EQ(lines.size(), 3U);
    // The address sanitizer puts a frame of its own before those of the program.
    EXPECT_NE((lines[0] + lines[1]).find("kestTestCaller"), std::string::npos) << lines[0] << '\n' << lines[1];
}

TEST_F(Backtrace, PrintsAsManyFramesAsAskedFor)
{
    EXPECT_EQ(linesOf(stderrOf([] { call(1, 20); })).size(), 1U);
    EXPECT_EQ(linesOf(stderrOf([] { call(10, 20); })).size(), 10U);
}

TEST_F(Backtrace, PrintsAtMost64Frames)
{
    EXPECT_EQ(linesOf(stderrOf([] { call(1000, 200); })).size(), 64U);
}

TEST_F(Backtrace, OfNoFramesPrintsNothing)
{
    EXPECT_EQ(stderrOf([] { call(0, 0); }), "");
    EXPECT_EQ(stderrOf([] { call(-5, 0); }), "");
}

} // namespace
