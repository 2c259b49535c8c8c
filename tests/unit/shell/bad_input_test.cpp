/** Lines that cannot be run end a script with status 2 and a message that names the line. */
#include "fake_net.h"
#include "play.h"
#include "tools/movo_net_shell/command.h"

#include <gtest/gtest.h>

namespace {
void expectRefused(const std::string& line, const std::string& message)
{
    const Played played = play("echo first\n" + line + "\necho never\n");
    EXPECT_EQ(played.status, 2) << line;
    EXPECT_EQ(played.output, "first\n") << line;
    EXPECT_EQ(played.errors, "line 2: " + message + "\n") << line;
}
} // namespace

TEST(ShellBadInput, UnknownCommand)
{
    expectRefused("frobnicate eth0", "unknown command: frobnicate; help lists them");
    expectRefused("ap", "unknown command: ap; after ap comes start, stop, status or clients");
    expectRefused("ap frobnicate", "unknown command: ap frobnicate; after ap comes start, stop, status or clients");
    expectRefused("Mode eth0", "unknown command: Mode; did you mean mode?");
    expectRefused("stauts", "unknown command: stauts; did you mean status?");
    expectRefused("inter", "unknown command: inter; did you mean interfaces?");
    expectRefused("\"\"", "unknown command: ; help lists them");
    expectRefused("\a\033[31m", "unknown command: \\x07\\x1b[31m; help lists them");
}

TEST(ShellBadInput, OpenQuote)
{
    expectRefused("echo \"a", "a quote or a backslash has nothing after it");
    expectRefused("echo a\\", "a quote or a backslash has nothing after it");
}

TEST(ShellBadInput, MissingArguments)
{
    for (const shell::Command& command : shell::allCommands()) {
        if (shell::parametersOf(command).least > 0) {
            expectRefused(command.name, "usage: " + shell::usageOf(command));
        }
    }
}

TEST(ShellBadInput, TooManyArguments)
{
    for (const shell::Command& command : shell::allCommands()) {
        const std::size_t most = shell::parametersOf(command).most;
        std::string line = command.name;
        if (most < 100) {
            for (std::size_t i = 0; i <= most; i++) {
                line += " 1";
            }
            const Played played = play(line + "\n");
            EXPECT_EQ(played.status, 2) << line;
            EXPECT_TRUE(played.errors.starts_with("line 1: usage: " + shell::usageOf(command))) << played.errors;
        }
    }
}

TEST(ShellBadInput, ANameWithoutItsQuotesIsShownWithThem)
{
    fake::addWireless("wlan0");
    expectRefused("wifi info My Home Net secret",
                  "usage: wifi info NAME; a name with blanks has quotes: wifi info \"My Home Net\"");
    expectRefused("wifi join Your Home Net", "usage: wifi join NAME [KEY]; a name with blanks has quotes, as in "
                                             "wifi join \"My Network\"");
}

TEST(ShellBadInput, BadArguments)
{
    expectRefused("watch soon", "usage: watch [SECONDS]");
    expectRefused("sleep -1", "usage: sleep SECONDS");
    expectRefused("sleep nan", "usage: sleep SECONDS");
    expectRefused("sleep 1e99", "usage: sleep SECONDS");
    expectRefused("expect NOTHING",
                  "usage: expect REASON [IFACE] [SECONDS]; REASON is IFFOUND, IFREMOVED, IFDISCONNECTED, IFCONNECTED, "
                  "IFACTIVED, IFDEACTIVED, IPCHANGED, WIFISCANDONE, WIFIESSSUPDATED, WIFIBADKEY, WIFITIMEOUT, "
                  "SOFTAPSCAN, SOFTAPCONNECTED, SOFTAPDISCONNECTED, STATICIP_SUCCESS, STATICIP_FAILED, DHCP_SUCCESS or "
                  "DHCP_FAILED");
    expectRefused("expect IFFOUND eth0 soon", "usage: expect REASON [IFACE] [SECONDS]");
    expectRefused("log loud", "usage: log [LEVEL]; LEVEL is none, error, warning, info, debug or log");
    expectRefused("join soon", "usage: join [SECONDS]");
    expectRefused("callback maybe", "usage: callback on|off");
    expectRefused("link-type 256", "usage: link-type [NUMBER]");
    expectRefused("link-type -1", "usage: link-type [NUMBER]");
    expectRefused("resource set x 1", "usage: resource set RESOURCE CLIENTS [CLIENT]");
    expectRefused("resource add 65536 1 x", "usage: resource add RESOURCE CLIENTS [CLIENT]");
    expectRefused("name first", "usage: name INDEX [LENGTH]");
    expectRefused("name 0 256", "usage: name INDEX [LENGTH]");
    expectRefused("priority eth0 high", "usage: priority IFACE [NUMBER]");
    expectRefused("priority eth0 99999999999", "usage: priority IFACE [NUMBER]");
    expectRefused("wol eth0 1", "usage: wol IFACE on|off");
    expectRefused("mode eth0 manual", "usage: mode IFACE [MODE]; MODE is dhcp, autoip, static or dnsonly");
    expectRefused("wifi priority Net high", "usage: wifi priority NAME [NUMBER]");
    expectRefused("wifi wps magic", "usage: wifi wps [WAY] [PIN]; WAY is none, push, pin or both");
    expectRefused("wifi security strong", "usage: wifi security WISH; WISH is none, wep, mix or default");
    EXPECT_EQ(fake::calls(), std::vector<std::string>());
}

TEST(ShellBadInput, BadAddresses)
{
    const std::string usage = "usage: static IFACE [ADDRESS MASK GATEWAY DNS1 [DNS2]]";
    expectRefused("static eth0 10.0.0.1", usage);
    expectRefused("static eth0 10.0.0.1 255.0.0.0 10.0.0.2", usage);
    expectRefused("static eth0 10.0.0 255.0.0.0 10.0.0.2 9.9.9.9", usage);
    expectRefused("static eth0 10.0.0.256 255.0.0.0 10.0.0.2 9.9.9.9", usage);
    expectRefused("static eth0 10.0.0.1 255.0.0.0 10.0.0.2 ::1", usage);
    EXPECT_EQ(fake::calls(), std::vector<std::string>());
}

TEST(ShellBadInput, UnknownHelp)
{
    const Played played = play("help frobnicate\n");
    EXPECT_EQ(played.status, 2);
    EXPECT_EQ(played.errors, "no command and no subject: frobnicate\nline 1: usage: help [COMMAND|SUBJECT...]\n");
}

TEST(ShellBadInput, OverlongLine)
{
    const std::string longest = "echo " + std::string(1018, 'x');
    EXPECT_EQ(play(longest + "\n").output, std::string(1018, 'x') + "\n");

    const std::string message = "longer than 1023 characters";
    expectRefused(longest + "x", message);
    expectRefused(std::string(1000000, 'x'), message);
}

TEST(ShellBadInput, OverlongLastLineWithoutEnd)
{
    const Played played = play(std::string(5000, 'x'));
    EXPECT_EQ(played.status, 2);
    EXPECT_EQ(played.errors, "line 1: longer than 1023 characters\n");
}

TEST(ShellBadInput, OverlongNamesReachTheCallAsTheyAre)
{
    const std::string name(900, 'n');
    EXPECT_EQ(play("enable " + name + "\n").status, 0);
    EXPECT_EQ(fake::calls(), std::vector<std::string>{"Movo_NET_EnableIface " + name});
}

TEST(ShellBadInput, AnyBytesAreJustAnUnknownCommand)
{
    std::string bytes;
    for (int byte = 1; byte < 256; byte++) {
        if (byte != '\n' && byte != '"' && byte != '\\' && byte != '#') {
            bytes += static_cast<char>(byte);
        }
    }
    EXPECT_EQ(play(bytes + '\0' + "\n").status, 2);
}
