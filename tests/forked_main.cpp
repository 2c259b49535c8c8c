/**
 * main() of the tests where starting a program is dear, as under emulation: one start, and a child for each test.
 *
 *   PROGRAM FILE           runs every test whose name TESTS, a regular expression, matches; writes the counts to FILE
 *   PROGRAM --gtest_...    runs as GoogleTest has it
 */
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <regex>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {
constexpr unsigned kSecondsOfATest = 120;
constexpr int kSkipped = 2; // beside GoogleTest's 0 and 1

struct Counts {
    int tests = 0;
    int failures = 0;
    int skipped = 0;
};

std::vector<std::string> testNames(const std::string& pattern)
{
    const std::regex wanted(pattern);
    std::vector<std::string> names;
    const testing::UnitTest& unit = *testing::UnitTest::GetInstance();
    for (int number = 0; number < unit.total_test_suite_count(); ++number) {
        const testing::TestSuite& suite = *unit.GetTestSuite(number);
        for (int test = 0; test < suite.total_test_count(); ++test) {
            const std::string name = std::string(suite.name()) + "." + suite.GetTestInfo(test)->name();
            if (std::regex_search(name, wanted)) {
                names.push_back(name);
            }
        }
    }
    return names;
}

[[noreturn]] void runHere(const std::string& name)
{
    (void)alarm(kSecondsOfATest);
    GTEST_FLAG_SET(filter, name);
    const int failed = RUN_ALL_TESTS();
    (void)std::fflush(nullptr);
    _exit(testing::UnitTest::GetInstance()->skipped_test_count() > 0 ? kSkipped : failed);
}

/** 0 when the test has passed. */
int run(const std::string& name)
{
    const pid_t child = fork();
    if (child == 0) {
        runHere(name);
    }
    int status = -1;
    (void)waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

Counts runEach(const std::vector<std::string>& names)
{
    Counts counts;
    for (const std::string& name : names) {
        const int status = run(name);
        ++counts.tests;
        if (status == kSkipped) {
            ++counts.skipped;
        } else if (status != 0) {
            ++counts.failures;
            std::cerr << "failed: " << name << '\n';
        }
    }
    return counts;
}
} // namespace

int main(int argc, char** argv)
{
    const bool forked = argc == 2 && argv[1][0] != '-';
    GTEST_FLAG_SET(brief, forked);
    testing::InitGoogleTest(&argc, argv);
    if (!forked) {
        return RUN_ALL_TESTS();
    }
    const char* pattern = std::getenv("TESTS");
    const Counts counts = runEach(testNames(pattern != nullptr ? pattern : ""));
    std::ofstream(argv[1]) << "<testsuite tests=\"" << counts.tests << "\" failures=\"" << counts.failures
                           << "\" skipped=\"" << counts.skipped << "\"/>\n";
    return counts.failures > 0 ? 1 : 0;
}
