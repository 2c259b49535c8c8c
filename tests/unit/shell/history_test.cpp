/** The lines of earlier sessions, and what is not kept. */
#include "tools/movo_net_shell/history.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

using shell::keepLine;
using shell::keptLines;
using Lines = std::vector<std::string>;

namespace {
class ShellHistory : public testing::Test {
protected:
    ShellHistory() { (void)setenv("XDG_STATE_HOME", (m_folder + "/state").c_str(), 1); }
    ~ShellHistory() override { std::filesystem::remove_all(m_folder); }

    std::string file() const { return m_folder + "/state/movo_net_shell/history"; }
    static mode_t modeOf(const std::string& path)
    {
        struct stat found = {};
        return stat(path.c_str(), &found) == 0 ? found.st_mode & 07777U : 0;
    }

private:
    char m_template[32] = "/tmp/shell_history_XXXXXX";

protected:
    std::string m_folder = mkdtemp(m_template);
};
} // namespace

TEST_F(ShellHistory, IsKeptForItsOwnerAlone)
{
    keepLine("status");
    keepLine("wifi join caf\u00e9");
    EXPECT_EQ(keptLines(), Lines({"status", "wifi join caf\u00e9"}));
    EXPECT_EQ(modeOf(file()), 0600U);
    EXPECT_EQ(modeOf(m_folder + "/state/movo_net_shell"), 0700U);
}

TEST_F(ShellHistory, HasNoKeys)
{
    keepLine("wifi join Home \"correct horse\"");
    keepLine(" wifi  connect Home secret");
    keepLine("wifi key \"My Home\" \"secret");
    keepLine("wifi key Home");
    EXPECT_EQ(keptLines(), Lines({"wifi key Home"}));
}

TEST_F(ShellHistory, StaysShort)
{
    for (int i = 0; i < 2 * shell::kHistorySize; i++) {
        keepLine("echo " + std::to_string(i));
    }
    EXPECT_EQ(keptLines().size(), 200U);
    EXPECT_EQ(keptLines().front(), "echo 200");
    EXPECT_GT(std::filesystem::file_size(file()), 3000U) << "not rewritten each time";
    keepLine("echo 400");
    EXPECT_EQ(keptLines().back(), "echo 400");
    EXPECT_LT(std::filesystem::file_size(file()), 2000U);
    EXPECT_EQ(modeOf(file()), 0600U);
    EXPECT_EQ(keptLines().size(), 200U);
}

TEST_F(ShellHistory, StandsBelowTheHomeOtherwise)
{
    (void)setenv("XDG_STATE_HOME", "relative", 1);
    (void)setenv("HOME", m_folder.c_str(), 1);
    keepLine("status");
    EXPECT_TRUE(std::filesystem::exists(m_folder + "/.local/state/movo_net_shell/history"));
    (void)unsetenv("HOME");
    keepLine("never");
    EXPECT_EQ(keptLines(), Lines());
}

TEST_F(ShellHistory, FollowsNoLinkAndSkipsLinesThatAreTooLong)
{
    keepLine("status");
    std::ofstream(file(), std::ios::app) << std::string(2000, 'x') << "\n\n";
    EXPECT_EQ(keptLines(), Lines({"status"}));
    std::filesystem::remove(file());
    std::filesystem::create_symlink(m_folder + "/other", file());
    keepLine("status");
    EXPECT_FALSE(std::filesystem::exists(m_folder + "/other"));
}
