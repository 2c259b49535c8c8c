/** The program itself, on the fake library: its options and how it ends. */
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>

namespace {
struct Ended {
    int status;
    std::string output; // and errors
};

Ended runProgram(const std::string& arguments, const std::string& script)
{
    const std::string command = "printf '" + script + "' | " SHELL_PROGRAM " " + arguments + " 2>&1";
    std::FILE* const program = popen(command.c_str(), "r");
    std::string output;
    for (int c = std::fgetc(program); c != EOF; c = std::fgetc(program)) {
        output += static_cast<char>(c);
    }
    return {WEXITSTATUS(pclose(program)), output};
}
} // namespace

TEST(ShellProgram, StartsTheGlue)
{
    const Ended ended = runProgram("", "running\\nexpect IFFOUND eth0 0\\n");
    EXPECT_EQ(ended.status, 0) << ended.output;
    EXPECT_NE(ended.output.find("1 yes\n"), std::string::npos) << ended.output;
}

TEST(ShellProgram, DoesNotStartTheGlueWhenToldSo)
{
    const Ended ended = runProgram("--no-start", "running\\nstart\\nrunning\\nexpect IFFOUND eth0 0\\n");
    EXPECT_EQ(ended.status, 0) << ended.output;
    EXPECT_TRUE(ended.output.starts_with("0 no\n")) << ended.output;
    EXPECT_NE(ended.output.find("1 yes\n"), std::string::npos) << ended.output;
}

TEST(ShellProgram, EndsWithOneWhenAnExpectationIsNotMet)
{
    EXPECT_EQ(runProgram("--no-start", "expect IFFOUND 0\\n").status, 1);
}

TEST(ShellProgram, EndsWithTwoWhenALineCannotBeRun)
{
    EXPECT_EQ(runProgram("--no-start", "frobnicate\\n").status, 2);
}

TEST(ShellProgram, ShowsItsUsage)
{
    for (const char* option : {"--help", "-h"}) {
        const Ended ended = runProgram(option, "");
        EXPECT_EQ(ended.status, 0);
        EXPECT_TRUE(ended.output.starts_with("usage: movo_net_shell [--no-start]\n")) << ended.output;
    }
}

TEST(ShellProgram, RefusesWhatItDoesNotKnow)
{
    const Ended ended = runProgram("--frobnicate", "");
    EXPECT_EQ(ended.status, 2);
    EXPECT_TRUE(ended.output.starts_with("usage: ")) << ended.output;
}
