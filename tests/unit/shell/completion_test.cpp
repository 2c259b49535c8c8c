#include "fake_net.h"
#include "tools/movo_net_shell/completion.h"
#include "tools/movo_net_shell/programs.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

using shell::completionOf;
using Words = std::vector<std::string>;

TEST(ShellCompletion, OfCommands)
{
    EXPECT_EQ(completionOf("ru").candidates, Words({"running"}));
    EXPECT_EQ(completionOf("ru").begun, "ru");
    EXPECT_EQ(completionOf("en").candidates, Words({"enable", "enabled"}));
    EXPECT_EQ(completionOf("  ru").candidates, Words({"running"}));
    EXPECT_EQ(completionOf("zz").candidates, Words());
}

TEST(ShellCompletion, OfPrograms)
{
    char folder[] = "/tmp/shell_completion_XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string program = std::string(folder) + "/cable";
    std::ofstream(program) << "#!/bin/sh\n";
    ASSERT_EQ(chmod(program.c_str(), 0700), 0);
    shell::setProgramFolder(folder);
    EXPECT_EQ(completionOf("ca").candidates, Words({"cable", "callback"}));
    EXPECT_EQ(completionOf("wifi ca").candidates, Words());
    shell::setProgramFolder(nullptr);
    EXPECT_EQ(completionOf("ca").candidates, Words({"callback"}));
    std::filesystem::remove_all(folder);
}

TEST(ShellCompletion, OfTheSecondWordOfAName)
{
    EXPECT_EQ(completionOf("resource ").candidates, Words({"add", "set"}));
    EXPECT_EQ(completionOf("wifi s").candidates, Words({"scan", "security", "signal", "status"}));
    EXPECT_EQ(completionOf("virgin ").candidates, Words({"set"}));
}

TEST(ShellCompletion, OfInterfaces)
{
    fake::setRunning(true);
    EXPECT_EQ(completionOf("enable ").candidates, Words({"eth0", "lo"}));
    EXPECT_EQ(completionOf("wifi use e").candidates, Words({"eth0"}));
    EXPECT_EQ(completionOf("expect IFFOUND e").candidates, Words({"eth0"}));
}

TEST(ShellCompletion, AsksNothingOfAGlueThatDoesNotRun)
{
    EXPECT_EQ(completionOf("enable ").candidates, Words());
    EXPECT_EQ(fake::calls(), Words({"Movo_NET_IsInitializationDone"}));
}

TEST(ShellCompletion, OfNamedValues)
{
    EXPECT_EQ(completionOf("mode eth0 d").candidates, Words({"dhcp", "dnsonly"}));
    EXPECT_EQ(completionOf("expect STATIC").candidates, Words({"STATICIP_FAILED", "STATICIP_SUCCESS"}));
    EXPECT_EQ(completionOf("log ").candidates, Words({"debug", "error", "info", "log", "none", "warning"}));
    EXPECT_EQ(completionOf("wol eth0 ").candidates, Words({"off", "on"}));
    EXPECT_EQ(completionOf("callback o").candidates, Words({"off", "on"}));
    EXPECT_EQ(completionOf("wifi wps p").candidates, Words({"pin", "push"}));
    EXPECT_EQ(completionOf("wifi security ").candidates, Words({"default", "mix", "none", "wep"}));
    EXPECT_EQ(completionOf("help mo").candidates, Words({"mode"}));
}

TEST(ShellCompletion, EndsWithTheArguments)
{
    EXPECT_EQ(completionOf("mode eth0 dhcp ").candidates, Words());
    EXPECT_EQ(completionOf("static eth0 ").candidates, Words());
    EXPECT_EQ(completionOf("echo \"a ").candidates, Words());
}

TEST(ShellCompletion, CommonBeginning)
{
    EXPECT_EQ(shell::commonBeginning({}), "");
    EXPECT_EQ(shell::commonBeginning({"one"}), "one");
    EXPECT_EQ(shell::commonBeginning({"enable", "enabled"}), "enable");
    EXPECT_EQ(shell::commonBeginning({"a", "b"}), "");
}
