/** Calls succeed although nothing was saved: the shell looks at the file. */
#include "fake_net.h"
#include "play.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {
class ShellSaved : public testing::Test {
protected:
    ShellSaved() { write("netconfig"); }
    ~ShellSaved() override { std::filesystem::remove_all(m_folder); }

    /** As the glue does: another file takes the name. */
    void write(const std::string& name)
    {
        std::ofstream(m_folder + "/made") << "x";
        std::filesystem::rename(m_folder + "/made", m_folder + "/" + name);
    }
    void savesOn(const std::string& function)
    {
        fake::onCall([this, function](const std::string& call) {
            if (call.starts_with(function)) {
                write("netconfig");
            }
        });
    }
    std::string warning(const std::string& why)
    {
        return "warning: " + m_folder + "/netconfig is not written (" + why +
               "); it is as before after the next start\n";
    }

private:
    char m_template[32] = "/tmp/shell_saved_XXXXXX";

protected:
    std::string m_folder = mkdtemp(m_template);
};

struct Save {
    const char* line;
    const char* function;
};
constexpr Save kSaves[] = {{"enable eth0\n", "Movo_NET_EnableIface"},
                           {"priority eth0 5\n", "Movo_NET_SetIfacePriority"},
                           {"mode eth0 dhcp\n", "Movo_NET_ConfigIPMode"},
                           {"virgin set\n", "Movo_NET_SetNetworkToModeVirgin"}};
} // namespace

TEST_F(ShellSaved, NothingIsSaidOfAFileThatIsWritten)
{
    for (const Save& each : kSaves) {
        savesOn(each.function);
        EXPECT_EQ(playSaving(each.line, m_folder).output, "0 success\n") << each.line;
    }
}

TEST_F(ShellSaved, AFileThatIsNotWrittenIsAWarning)
{
    for (const Save& each : kSaves) {
        EXPECT_EQ(playSaving(each.line, m_folder).output, "0 success\n" + warning("the log has more")) << each.line;
    }
}

TEST_F(ShellSaved, AFolderThatIsNotThereIsTheCause)
{
    std::filesystem::remove_all(m_folder);
    const std::string text = "0 success\n" + warning("No such file or directory");
    EXPECT_EQ(playSaving("enable eth0\n", m_folder).output, text);
    EXPECT_EQ(playSaving("static eth0 10.1.1.5 255.0.0.0 10.1.1.1 8.8.4.4\n", m_folder).output, text)
        << "which saves on another thread";
}

TEST_F(ShellSaved, TheFirstFileIsWrittenToo)
{
    std::filesystem::remove(m_folder + "/netconfig");
    savesOn("Movo_NET_EnableIface");
    EXPECT_EQ(playSaving("enable eth0\n", m_folder).output, "0 success\n");
}

TEST_F(ShellSaved, AFailureAndTheSameModeAreNotSaved)
{
    EXPECT_EQ(playSaving("mode eth0 static\n", m_folder).output, "0 success\n");
    fake::returns("Movo_NET_EnableIface", 1);
    EXPECT_EQ(playSaving("enable eth0\n", m_folder).output.find("warning"), std::string::npos);
}

TEST_F(ShellSaved, NobodyLooksWithoutAFolder)
{
    EXPECT_EQ(play("enable eth0\n").output, "0 success\n");
}

TEST_F(ShellSaved, ANewKeyOfAJoinedNetworkIsSaved)
{
    fake::addWireless("wlan0");
    fake::setMode(_MOVO_NET_IPMODE_DHCP_);
    bool saves = true;
    fake::onCall([&](const std::string& call) {
        if (call.starts_with("Movo_NET_WifiConnectEss")) {
            if (saves) {
                write("saved_esss");
            }
            fake::callBack(_MOVO_NET_CALLBACK_IFCONNECTED_, "wlan0");
            fake::callBack(_MOVO_NET_CALLBACK_DHCP_SUCCESS_, "wlan0");
        }
    });
    const std::string warned = m_folder + "/saved_esss is not written";
    const std::string newKey = "callback on\nwifi connect caf\u00e9 \"another key\"\n";
    EXPECT_EQ(playSaving(newKey, m_folder).output.find(warned), std::string::npos);
    saves = false;
    EXPECT_NE(playSaving(newKey, m_folder).output.find(warned), std::string::npos);
    const std::string knownKey = "callback on\nwifi connect caf\u00e9 \"correct horse\"\n";
    EXPECT_EQ(playSaving(knownKey, m_folder).output.find(warned), std::string::npos) << "it stands there already";
}
