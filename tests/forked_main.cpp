/**
 * main() of the test programs: each test runs in a process of its own, several at a time.
 *
 *   PROGRAM FILE           runs every test whose name TESTS, a regular expression, matches, JOBS at a time; FILE then
 *                          holds the results in JUnit's form, the standard output what the failed ones printed
 *   PROGRAM --gtest_...    runs as GoogleTest has it
 */
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <map>
#include <regex>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {
constexpr unsigned kSecondsOfAHang = 1800; // only ends a test that hangs; the simulated set itself looks sooner
constexpr int kSkipped = 2;                // beside GoogleTest's 0 and 1
using Clock = std::chrono::steady_clock;

struct Test {
    std::string suite;
    std::string name;
};

struct Running {
    Test test;
    FILE* output;
    Clock::time_point begin;
};

struct Results {
    int tests = 0;
    int failures = 0;
    int skipped = 0;
    std::string cases;
};

std::vector<Test> testsThatMatch(const std::string& pattern)
{
    const std::regex wanted(pattern);
    std::vector<Test> tests;
    const testing::UnitTest& unit = *testing::UnitTest::GetInstance();
    for (int number = 0; number < unit.total_test_suite_count(); ++number) {
        const testing::TestSuite& suite = *unit.GetTestSuite(number);
        for (int test = 0; test < suite.total_test_count(); ++test) {
            const char* name = suite.GetTestInfo(test)->name();
            if (std::regex_search(std::string(suite.name()) + "." + name, wanted)) {
                tests.push_back({suite.name(), name});
            }
        }
    }
    return tests;
}

/** Leaves by exit(), so that the sanitizers have their last word. */
[[noreturn]] void runHere(const Test& test, FILE* output)
{
    (void)dup2(fileno(output), STDOUT_FILENO);
    (void)dup2(fileno(output), STDERR_FILENO);
    (void)alarm(kSecondsOfAHang);
    GTEST_FLAG_SET(filter, test.suite + "." + test.name);
    const int failed = RUN_ALL_TESTS();
    std::exit(testing::UnitTest::GetInstance()->skipped_test_count() > 0 ? kSkipped : failed);
}

void show(FILE* output)
{
    std::rewind(output);
    for (int byte = std::fgetc(output); byte != EOF; byte = std::fgetc(output)) {
        std::cout.put(static_cast<char>(byte));
    }
}

/** Starts tests and takes in their ends. */
class Runner {
public:
    explicit Runner(std::size_t jobs) : m_jobs(jobs) {}

    void run(const Test& test)
    {
        if (m_running.size() >= m_jobs) {
            takeOne();
        }
        FILE* output = std::tmpfile();
        const pid_t child = output != nullptr ? fork() : -1;
        if (child == 0) {
            runHere(test, output);
        }
        if (child < 0) {
            std::perror("cannot start a test");
            std::exit(1);
        }
        m_running[child] = {test, output, Clock::now()};
    }

    Results finish()
    {
        while (!m_running.empty()) {
            takeOne();
        }
        return m_results;
    }

private:
    void takeOne()
    {
        int status = -1;
        const auto ended = m_running.find(waitpid(-1, &status, 0));
        if (ended != m_running.end()) {
            record(ended->second, WIFEXITED(status) ? WEXITSTATUS(status) : -1);
            (void)std::fclose(ended->second.output);
            m_running.erase(ended);
        }
    }

    void record(const Running& ended, int status)
    {
        const Test& test = ended.test;
        const std::chrono::duration<double> seconds = Clock::now() - ended.begin;
        const char* outcome = status == 0 ? "" : status == kSkipped ? "<skipped/>" : "<failure/>";
        m_results.cases += "<testcase classname=\"" + test.suite + "\" name=\"" + test.name + "\" time=\"" +
                           std::to_string(seconds.count()) + "\">" + outcome + "</testcase>\n";
        ++m_results.tests;
        m_results.skipped += status == kSkipped ? 1 : 0;
        if (status != 0 && status != kSkipped) {
            ++m_results.failures;
            show(ended.output);
            std::cout << "failed: " << test.suite << '.' << test.name << std::endl;
        }
    }

    std::size_t m_jobs;
    std::map<pid_t, Running> m_running;
    Results m_results;
};

std::string environment(const char* name, const char* otherwise)
{
    const char* value = std::getenv(name);
    return value != nullptr ? value : otherwise;
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
    Runner runner(std::stoul(environment("JOBS", "1")));
    for (const Test& test : testsThatMatch(environment("TESTS", ""))) {
        runner.run(test);
    }
    const Results results = runner.finish();
    std::ofstream(argv[1]) << "<testsuite tests=\"" << results.tests << "\" failures=\"" << results.failures
                           << "\" skipped=\"" << results.skipped << "\">\n"
                           << results.cases << "</testsuite>\n";
    return results.failures > 0 ? 1 : 0;
}
