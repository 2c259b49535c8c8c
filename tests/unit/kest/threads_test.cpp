#include "kest_libc.h"

#include "kest.h"

#include <array>
#include <fcntl.h>
#include <regex>
#include <thread>
#include <unistd.h>

namespace {

constexpr int kThreads = 8;
constexpr int kLinesPerThread = 500;

void logFromManyThreads()
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([thread] {
            // Of very different lengths, the longest nearly as long as a line can be.
            for (int number = 0; number < kLinesPerThread; ++number) {
                const std::string body(static_cast<size_t>(number % 97 * 10), static_cast<char>('a' + thread));
                kest_debug_log(nullptr, KEST_LEVEL_INFO, "m", "f", number, "<%d %s>\n", thread, body.c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void expectEveryLineWhole(const std::string& all)
{
    const std::regex whole(R"(\d+\.\d{3} INFO    DEFAULT m f:(\d+) <(\d) ([a-h]*)>)");
    std::vector<int> next(kThreads, 0);
    for (const std::string& line : linesOf(all)) {
        std::smatch part;
        ASSERT_TRUE(std::regex_match(line, part, whole)) << line;
        const int number = std::stoi(part[1]);
        const int thread = std::stoi(part[2]);
        const std::string body(static_cast<size_t>(number % 97 * 10), static_cast<char>('a' + thread));
        ASSERT_EQ(part[3], body);
        ASSERT_EQ(number, next[static_cast<size_t>(thread)]++) << "lines of one thread are in order";
    }
    EXPECT_EQ(next, std::vector<int>(kThreads, kLinesPerThread));
}

class LogThreads : public KestTest {};

TEST_F(LogThreads, LinesNeverMixInAFile)
{
    expectEveryLineWhole(stderrOf(logFromManyThreads));
}

TEST_F(LogThreads, LinesNeverMixInAPipe)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    std::string all;
    std::thread reader([&] { all = readAll(ends[0]); });
    {
        const StderrTo redirected(ends[1]);
        close(ends[1]);
        logFromManyThreads();
    }
    reader.join();
    close(ends[0]);
    expectEveryLineWhole(all);
}

} // namespace
