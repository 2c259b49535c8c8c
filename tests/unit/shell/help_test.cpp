#include "play.h"
#include "tools/movo_net_shell/command.h"

#include <gtest/gtest.h>

TEST(ShellHelp, ShowsEveryCommandUnderItsSubject)
{
    const Played played = play("help\n");
    EXPECT_EQ(played.status, 0);
    for (const shell::Command& command : shell::allCommands()) {
        const std::size_t subject = played.output.find(std::string(command.subject) + "\n");
        const std::size_t usage = played.output.find("\n  " + shell::usageOf(command));
        ASSERT_NE(subject, std::string::npos) << command.subject;
        ASSERT_NE(usage, std::string::npos) << command.name;
        EXPECT_LT(subject, usage) << command.name;
        EXPECT_NE(played.output.find(command.help, usage), std::string::npos) << command.name;
    }
}

TEST(ShellHelp, FitsATerminal)
{
    std::string output = play("help\n").output;
    for (std::size_t end = output.find('\n'); end != std::string::npos; end = output.find('\n')) {
        EXPECT_LE(end, 100U) << output.substr(0, end);
        output.erase(0, end + 1);
    }
}

TEST(ShellHelp, ShowsASubject)
{
    const Played played = play("help wifi\n");
    EXPECT_EQ(played.status, 0);
    EXPECT_TRUE(played.output.starts_with("wifi\n  wifi use [IFACE]  ")) << played.output;
    EXPECT_EQ(played.output.find("enable"), std::string::npos) << played.output;
}

TEST(ShellHelp, ShowsACommandAndWhatItCalls)
{
    EXPECT_EQ(play("help mode\n").output, "mode IFACE [MODE]\n"
                                          "  shows or sets how: dhcp, autoip, static or dnsonly\n"
                                          "  calls Movo_NET_GetIPMode Movo_NET_ConfigIPMode\n");
    EXPECT_EQ(play("help quit\n").output, "quit\n  stops the glue and leaves, as the end of the input does\n");
}

TEST(ShellHelp, TakesACommandOfTwoWords)
{
    EXPECT_EQ(play("help virgin set\n").output,
              "virgin set\n  writes the configuration file\n  calls Movo_NET_SetNetworkToModeVirgin\n");
}
