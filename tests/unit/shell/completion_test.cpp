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

TEST(ShellCompletion, OfNetworks)
{
    fake::setRunning(true);
    fake::addWireless("wlan0");
    fake::setNetworks({"My Home Net", "caf\u00e9", "caf\u00e8 2", "say \"hi\" \\o/", "latin\xe9", "", "#1"});
    for (const char* command : {"wifi join ", "wifi info ", "wifi key ", "wifi priority "}) {
        EXPECT_EQ(completionOf(command).candidates.size(), 6U) << command;
    }
    EXPECT_EQ(completionOf("wifi join caf").candidates, Words({"caf\u00e8 2", "caf\u00e9"}));
    EXPECT_EQ(completionOf("wifi join My\\ H").candidates, Words({"My Home Net"}));
    EXPECT_EQ(completionOf("wifi join My H").candidates, Words()) << "the key";
    EXPECT_EQ(completionOf("wifi join \"My H").candidates, Words({"My Home Net"}));
    fake::returns("Movo_NET_GetNumOfWifiEsss", 1);
    EXPECT_EQ(completionOf("wifi join ").candidates, Words());
}

TEST(ShellCompletion, IsTypedAsTheWordBegan)
{
    fake::setRunning(true);
    fake::addWireless("wlan0");
    fake::setNetworks({"My Home Net", "caf\u00e9", "caf\u00e8 2", "say \"hi\" \\o/", "latin\xe9", "#1"});
    const std::pair<std::string, std::string> kKeys[] = {
        {"My", "\\ Home\\ Net "},
        {"\"My", " Home Net\" "},
        {"M\"y", " Home Net\" "},
        {"c", "af"},
        {"caf", ""},
        {"caf\u00e9", " "},
        {"\"s", R"(ay \"hi\" \\o/" )"},
        {"lat", "in\\xe9 "},
        {"latin\\xe9", " "},
        {"\\#", "1 "},
        {"My\\", ""},
        {"#", ""},
    };
    for (const auto& [begun, keys] : kKeys) {
        EXPECT_EQ(shell::keysFor(completionOf("wifi join " + begun)), keys) << begun;
    }
}

TEST(ShellCompletion, AsksNothingOfAGlueThatDoesNotRun)
{
    for (const char* line : {"enable ", "wifi join "}) {
        EXPECT_EQ(completionOf(line).candidates, Words());
    }
    for (const std::string& call : fake::calls()) {
        EXPECT_EQ(call, "Movo_NET_IsInitializationDone");
    }
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
    EXPECT_EQ(shell::commonBeginning({"caf\u00e8", "caf\u00e9"}), "caf") << "no half of a character";
}
