/** The program itself, on the fake library: its options and how it ends. */
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
struct Ended {
    int status;
    std::string output; // and errors, unless they go elsewhere
};

Ended runProgram(const std::string& arguments, const std::string& script, const std::string& errors = "&1")
{
    const std::string command = "printf '" + script + "' | " SHELL_PROGRAM " " + arguments + " 2>" + errors;
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
        EXPECT_TRUE(
            ended.output.starts_with("usage: movo_net_shell [--no-start] [--programs FOLDER] [--play SCRIPT]\n"))
            << ended.output;
    }
}

TEST(ShellProgram, RefusesWhatItDoesNotKnow)
{
    for (const char* options : {"--frobnicate", "--programs", "--play"}) {
        const Ended ended = runProgram(options, "");
        EXPECT_EQ(ended.status, 2);
        EXPECT_TRUE(ended.output.starts_with("usage: ")) << ended.output;
    }
}

TEST(ShellProgram, ShowsItsVersion)
{
    const Ended ended = runProgram("--version", "");
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "movo_net_shell " MOVO_NET_VERSION "\n");
}

TEST(ShellProgram, LeavesTheNetworkToAnotherHost)
{
    (void)setenv("FAKE_HOST", "812 recovery_net", 1);
    const Ended ended = runProgram("", "echo never\\n");
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "movo_net_shell: the network glue runs already: recovery_net, pid 812\n");
}

TEST(ShellProgram, DoesNotStartTheGlueBesideAnotherHost)
{
    (void)setenv("FAKE_HOST", "812", 1);
    const Ended ended = runProgram("--no-start", "start\\nrunning\\n");
    EXPECT_EQ(ended.status, 0);
    EXPECT_TRUE(ended.output.starts_with("movo_net_shell: the network glue runs already: an unknown program, pid 812\n"
                                         "1 failure\n"))
        << ended.output;
    EXPECT_NE(ended.output.find("0 no\n"), std::string::npos) << ended.output;
}

TEST(ShellProgram, WarnsOnceWhereNoLockCanBe)
{
    (void)setenv("FAKE_HOST", "", 1);
    const Ended ended = runProgram("", "running\\nstart\\n");
    EXPECT_EQ(ended.status, 0);
    const std::string warning = "movo_net_shell: another host of the network glue would not be noticed: "
                                "/run/movo_net.lock: Read-only file system\n";
    EXPECT_TRUE(ended.output.starts_with(warning)) << ended.output;
    EXPECT_EQ(ended.output.find(warning, 1), std::string::npos) << ended.output;
    EXPECT_NE(ended.output.find("1 yes\n"), std::string::npos) << ended.output;
}

class ShellProgramPlays : public testing::Test {
protected:
    ~ShellProgramPlays() override { std::filesystem::remove(m_script); }
    Ended play(const std::string& script, const std::string& input, const std::string& errors = "&1")
    {
        std::ofstream(m_script) << script;
        return runProgram("--no-start --play " + m_script, input, errors);
    }

private:
    std::string m_script = "/tmp/shell_plays_" + std::to_string(getpid());
};

TEST_F(ShellProgramPlays, AScriptBeforeTheInput)
{
    const Ended ended = play("# a comment\necho one", "echo two\\n");
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "movo> # a comment\nmovo> echo one\none\ntwo\n");
}

TEST_F(ShellProgramPlays, NothingAfterALineThatFails)
{
    const Ended ended = play("expect IFFOUND 0\necho one\n", "echo two\\n");
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "movo> expect IFFOUND 0\nexpected IFFOUND, not called back within 0 s\n"
                            "stopped at line 1: expect IFFOUND 0\n");
}

TEST_F(ShellProgramPlays, AndShowsWhatWentWrongAmongItsLines)
{
    for (const char* script : {"expect IFFOUND 0\n", "frobnicate\n", "help nothing\n"}) {
        const Ended ended = play(script, "", "/dev/null");
        EXPECT_NE(ended.output.find('\n'), ended.output.rfind('\n')) << ended.output;
    }
}

TEST_F(ShellProgramPlays, AndTellsTheLineOfTheScriptThatItDoesNotUnderstand)
{
    const Ended ended = play("\nfrobnicate\n", "");
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.output, "movo> \nmovo> frobnicate\nline 2: unknown command: frobnicate; help lists them\n");
}

TEST_F(ShellProgramPlays, QuitAsItsEnd)
{
    EXPECT_EQ(play("quit\n", "echo two\\n").output, "movo> quit\n");
}

TEST(ShellProgram, LeavesWhatOthersPrintToTheLog)
{
    const std::string script = "start\\nrunning\\n";
    EXPECT_NE(runProgram("--no-start", script).output.find("printed by the library"), std::string::npos);
    const Ended ended = runProgram("--no-start", script, "/dev/null");
    EXPECT_NE(ended.output.find("1 yes"), std::string::npos) << ended.output;
    EXPECT_EQ(ended.output.find("printed by the library"), std::string::npos) << ended.output;
}

TEST(ShellProgram, RefusesAFolderThatIsNotThere)
{
    for (const char* folder : {"/nowhere", "/dev/null"}) {
        const Ended ended = runProgram(std::string("--programs ") + folder, "echo never\\n");
        EXPECT_EQ(ended.status, 2);
        EXPECT_EQ(ended.output, std::string("no folder of programs: ") + folder + "\n");
    }
}

TEST(ShellProgram, RefusesAScriptThatItCannotRead)
{
    const Ended ended = runProgram("--play /nowhere/script", "");
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.output, "cannot read /nowhere/script\n");
}

class ShellProgramFolder : public testing::Test {
protected:
    ShellProgramFolder()
    {
        add("cable", "echo \"the cable is $1, $2\"", 0700);
        add("fails", "exit 7", 0700);
        add("eats", "cat", 0700);
        add("hold", "echo wrong", 0600);
    }
    ~ShellProgramFolder() override { std::filesystem::remove_all(m_folder); }

    void add(const std::string& name, const std::string& body, mode_t mode)
    {
        const std::string path = m_folder + "/" + name;
        std::ofstream(path) << "#!/bin/sh\n" << body << "\n";
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
    }
    Ended play(const std::string& script) { return runProgram("--no-start --programs " + m_folder, script); }

private:
    char m_template[32] = "/tmp/shell_programs_XXXXXX";
    std::string m_folder = mkdtemp(m_template);
};

TEST_F(ShellProgramFolder, AddsCommands)
{
    const Ended ended = play("echo before\\ncable \"off now\" eth0\\necho after\\n");
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "before\nthe cable is off now, eth0\nafter\n");
}

TEST_F(ShellProgramFolder, IsListedByTheHelp)
{
    EXPECT_TRUE(play("help\\n").output.ends_with("\nprograms\n  cable\n  eats\n  fails\n"));
}

TEST_F(ShellProgramFolder, CarriesItsHelp)
{
    add("cable", "# cable on|off [NIC]: plugs or pulls a cable,\n# or none.\n\n# not this\n", 0700);
    add("eats", "# Eats what it gets.\n", 0700);
    const std::string help = play("help\\n").output;
    EXPECT_TRUE(help.ends_with("programs\n"
                               "  cable on|off [NIC]                plugs or pulls a cable, or none.\n"
                               "  eats                              Eats what it gets.\n"
                               "  fails\n"))
        << help;
    EXPECT_EQ(play("help cable\\nhelp eats\\nhelp fails\\n").output,
              "cable on|off [NIC]\n  plugs or pulls a cable, or none.\n"
              "eats\n  Eats what it gets.\n"
              "fails\n  it says nothing of itself\n");
}

TEST_F(ShellProgramFolder, AFailureEndsAScript)
{
    const Ended ended = play("fails\\necho after\\n");
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "fails ended with status 7\nstopped at line 1: fails\n");
}

TEST_F(ShellProgramFolder, LeavesTheScriptToTheShell)
{
    EXPECT_EQ(play("eats\\necho after\\n").output, "after\n");
}

TEST_F(ShellProgramFolder, HoldsOnlyPrograms)
{
    for (const char* line : {"hold", "../bin/true", "/bin/true", ".", "absent"}) {
        const Ended ended = play(std::string(line) + "\\n");
        EXPECT_EQ(ended.status, 2) << line;
        EXPECT_EQ(ended.output, "line 1: unknown command: " + std::string(line) + "; help lists them\n");
    }
}

TEST_F(ShellProgramFolder, DoesNotHideACommand)
{
    add("running", "echo wrong", 0700);
    EXPECT_EQ(play("running\\n").output, "0 no\n");
}
