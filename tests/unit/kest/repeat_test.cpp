#include "kest_libc.h"

#include "kest.h"

#include <cerrno>
#include <cstdlib>
#include <regex>
#include <thread>

namespace {

/** The logger as a program has it that started it. */
class Repeats : public KestTest {
protected:
    Repeats()
    {
        unsetenv("KEST_DEBUG");
        kest_debug_init("kest_tests");
        at(12);
        (void)stderrOf([] { log("the test begins"); });
    }

    static void at(time_t second) { libc.now = timespec{.tv_sec = second, .tv_nsec = 0}; }
    static void log(const char* text, const char* function = "fn", int level = KEST_LEVEL_INFO)
    {
        kest_debug_log(nullptr, level, "mod", function, 1, "%s\n", text);
    }
};

TEST_F(Repeats, AreCountedWhenAnotherLineComes)
{
    EXPECT_EQ(stderrOf([] {
                  for (int second = 12; second < 18; ++second) {
                      at(second);
                      log("select failed");
                  }
                  log("another", "gn", KEST_LEVEL_ERROR);
                  log("select failed");
              }),
              "12.000 INFO    DEFAULT mod fn:1 select failed\n"
              "17.000 INFO    DEFAULT mod fn:1 repeated 5 times\n"
              "17.000 ERROR   DEFAULT mod gn:1 another\n"
              "17.000 INFO    DEFAULT mod fn:1 select failed\n");
}

TEST_F(Repeats, AreThoseOfTheSameTextLevelAndPlaceOnly)
{
    const std::vector<std::string> shown = linesOf(stderrOf([] {
        log("text");
        log("text", "gn");
        log("text", "gn", KEST_LEVEL_ERROR);
        log("text ", "gn", KEST_LEVEL_ERROR);
        kest_debug_log(nullptr, KEST_LEVEL_ERROR, "other", "gn", 1, "text \n");
        kest_debug_log(nullptr, KEST_LEVEL_ERROR, "other", "gn", 2, "text \n");
        log("text");
    }));
    EXPECT_EQ(shown.size(), 7U);
}

TEST_F(Repeats, ThatAlternateAreAllShown)
{
    EXPECT_EQ(linesOf(stderrOf([] {
                  for (int round = 0; round < 3; ++round) {
                      log("one");
                      log("two");
                  }
              })).size(),
              6U);
}

TEST_F(Repeats, ShowAgainAfterAMinute)
{
    EXPECT_EQ(stderrOf([] {
                  for (const time_t second : {100, 130, 159, 160, 220, 221}) {
                      at(second);
                      log("select failed");
                  }
              }),
              "100.000 INFO    DEFAULT mod fn:1 select failed\n"
              "160.000 INFO    DEFAULT mod fn:1 repeated 2 times\n"
              "160.000 INFO    DEFAULT mod fn:1 select failed\n"
              "220.000 INFO    DEFAULT mod fn:1 select failed\n");
}

TEST_F(Repeats, OfALostLineAreShown)
{
    libc.writeErrors = {EAGAIN};
    EXPECT_EQ(stderrOf([] {
                  log("text");
                  log("text");
              }),
              "12.000 INFO    DEFAULT mod fn:1 text\n");
}

TEST_F(Repeats, OfTheLongestLineAreCountedToo)
{
    const std::string longest(5000, 'a');
    const std::string shown = stderrOf([&] {
        log(longest.c_str());
        log(longest.c_str());
        errno = ENOENT;
        log("end");
        EXPECT_EQ(errno, ENOENT);
    });
    ASSERT_EQ(linesOf(shown).size(), 3U);
    EXPECT_EQ(linesOf(shown)[1], "12.000 INFO    DEFAULT mod fn:1 repeated 1 times");
}

TEST_F(Repeats, AllocateNothing)
{
    libc.outOfMemory = true;
    const std::string shown = stderrOf([] {
        log("text");
        log("text");
        log("end");
    });
    libc.outOfMemory = false;
    EXPECT_EQ(linesOf(shown).size(), 3U);
}

TEST_F(Repeats, OfManyThreadsAreAllCounted)
{
    constexpr unsigned kThreads = 8;
    constexpr unsigned kLines = 500;
    const std::string all = stderrOf([] {
        std::vector<std::thread> threads;
        for (unsigned thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([thread] {
                for (unsigned number = 0; number < kLines; ++number) {
                    log(number % 100 == 99 ? "rare" : "often", thread % 2 == 0 ? "fn" : "gn");
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        log("end");
    });
    const std::regex counted(R"(12\.000 INFO    DEFAULT mod [fg]n:1 repeated (\d+) times)");
    const std::regex whole(R"(12\.000 INFO    DEFAULT mod [fg]n:1 (often|rare|end))");
    unsigned count = 0;
    for (const std::string& line : linesOf(all)) {
        std::smatch part;
        if (std::regex_match(line, part, counted)) {
            count += static_cast<unsigned>(std::stoul(part[1]));
        } else {
            ASSERT_TRUE(std::regex_match(line, whole)) << line;
            ++count;
        }
    }
    EXPECT_EQ(count, kThreads * kLines + 1);
}

} // namespace
