/** One host at a time: processes of the test are the other hosts. */
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <movo_net_tools.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
constexpr int kOk = 0;
constexpr int kAnother = 1;
constexpr int kImpossible = 6;

class ToolsHost : public testing::Test {
protected:
    char m_folder[32] = "/tmp/movo_net_hostXXXXXX";
    std::string m_file = std::string(mkdtemp(m_folder)) + "/lock";
    MovoNetHost_t m_holder = {"untouched", -1};

    ~ToolsHost() override { std::filesystem::remove_all(m_folder); }

    int take(const char* name = "second") { return Movo_NET_TakeHostLock(m_file.c_str(), name, &m_holder); }

    std::string content() const
    {
        std::ifstream file(m_file);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void write(const std::string& text) const { std::ofstream(m_file) << text; }
};

/** A process that does something and then waits until it is ended; the constructor returns when it has done it. */
class Process {
public:
    explicit Process(const std::function<bool()>& task)
    {
        int ready[2];
        EXPECT_EQ(pipe2(ready, O_CLOEXEC), 0);
        m_pid = fork();
        if (m_pid == 0) {
            const char done = task() ? 1 : 0;
            (void)!::write(ready[1], &done, 1);
            for (;;) {
                (void)pause();
            }
        }
        char done = 0;
        EXPECT_EQ(read(ready[0], &done, 1), 1);
        EXPECT_EQ(done, 1);
        (void)close(ready[0]);
        (void)close(ready[1]);
    }
    ~Process() { end(); }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void end()
    {
        if (m_pid > 0) {
            (void)kill(m_pid, SIGKILL);
            (void)waitpid(m_pid, nullptr, 0);
        }
        m_pid = 0;
    }
    int pid() const { return m_pid; }

private:
    pid_t m_pid = 0;
};

TEST_F(ToolsHost, IsTheFirstThatAsks)
{
    EXPECT_EQ(take("first"), kOk);
    EXPECT_STREQ(m_holder.name, "untouched");
    EXPECT_EQ(content(), std::to_string(getpid()) + " first\n");
    struct stat status {};
    ASSERT_EQ(stat(m_file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFREG | 0600U);
}

TEST_F(ToolsHost, IsNamedToTheSecond)
{
    const Process first([this] { return take("first") == kOk; });
    EXPECT_EQ(take(), kAnother);
    EXPECT_STREQ(m_holder.name, "first");
    EXPECT_EQ(m_holder.pid, first.pid());
    EXPECT_EQ(content(), std::to_string(first.pid()) + " first\n") << "the second leaves no trace";
}

TEST_F(ToolsHost, NeedsNotBeNamed)
{
    const Process first([this] { return take("first") == kOk; });
    EXPECT_EQ(Movo_NET_TakeHostLock(m_file.c_str(), "second", nullptr), kAnother);
}

TEST_F(ToolsHost, MakesRoomHoweverItEnds)
{
    Process first([this] { return take("a name that is longer than the next") == kOk; });
    EXPECT_EQ(take(), kAnother);
    first.end();
    EXPECT_EQ(take(), kOk);
    EXPECT_EQ(content(), std::to_string(getpid()) + " second\n");
}

TEST_F(ToolsHost, StaysWhenItAsksAgain)
{
    ASSERT_EQ(take(), kOk);
    ASSERT_EQ(take(), kOk);
    const Process other([this] { return take("other") == kAnother && m_holder.pid == getppid(); });
}

TEST_F(ToolsHost, MakesRoomAlsoWhileAProgramThatItHasStartedGoesOn)
{
    int line[2]; // on which that program reads to the end of this test
    ASSERT_EQ(pipe2(line, O_CLOEXEC), 0);
    Process first([this, &line] {
        const bool taken = take("first") == kOk;
        if (fork() == 0) {
            (void)dup2(line[0], STDIN_FILENO);
            (void)execlp("cat", "cat", nullptr);
        }
        return taken;
    });
    EXPECT_EQ(take(), kAnother);
    first.end();
    EXPECT_EQ(take(), kOk);
}

TEST_F(ToolsHost, NamesAreCut)
{
    const Process first([this] { return take(std::string(100, 'x').c_str()) == kOk; });
    EXPECT_EQ(take(), kAnother);
    EXPECT_EQ(m_holder.name, std::string(MOVO_NET_HOST_NAME_LENGTH - 1, 'x'));
}

TEST_F(ToolsHost, OfAnEarlierHostIsNotBelieved)
{
    const Process first([this] {
        const bool taken = take("first") == kOk;
        const int fd = open(m_file.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
        return taken && fd >= 0 && ::write(fd, "1 init\n", 7) == 7; // and stays open: closing would give the lock back
    });
    EXPECT_EQ(take(), kAnother);
    EXPECT_STREQ(m_holder.name, "");
    EXPECT_EQ(m_holder.pid, first.pid());
}

TEST_F(ToolsHost, WhoseFileSaysAnythingIsNamedInPrintableLetters)
{
    const Process first([this] {
        const std::string text = std::to_string(getpid()) + " a\x1b[31m\xff" + std::string(5000, 'b');
        const bool taken = take("first") == kOk;
        const int fd = open(m_file.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
        return taken && fd >= 0 && ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    });
    EXPECT_EQ(take(), kAnother);
    EXPECT_EQ(m_holder.name, "a?[31m?" + std::string(MOVO_NET_HOST_NAME_LENGTH - 1 - 7, 'b'));
}

TEST_F(ToolsHost, TakesOverAFileThatNobodyHolds)
{
    write(std::string(5000, 'x'));
    ASSERT_EQ(chmod(m_file.c_str(), 0666), 0);
    EXPECT_EQ(take(), kOk);
    EXPECT_EQ(content(), std::to_string(getpid()) + " second\n");
    struct stat status {};
    ASSERT_EQ(stat(m_file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(ToolsHost, FollowsNoLink)
{
    const std::string other = std::string(m_folder) + "/other";
    std::ofstream(other) << "precious";
    ASSERT_EQ(symlink(other.c_str(), m_file.c_str()), 0);
    EXPECT_EQ(take(), kImpossible);
    EXPECT_EQ(errno, ELOOP);
    EXPECT_EQ(std::filesystem::file_size(other), 8U);
}

TEST_F(ToolsHost, LeavesAFileWithAnotherNameAlone)
{
    const std::string other = std::string(m_folder) + "/other";
    std::ofstream(other) << "precious";
    ASSERT_EQ(link(other.c_str(), m_file.c_str()), 0);
    EXPECT_EQ(take(), kImpossible);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(std::filesystem::file_size(other), 8U);
}

TEST_F(ToolsHost, DoesNotWaitForAPipe)
{
    ASSERT_EQ(mkfifo(m_file.c_str(), 0600), 0);
    EXPECT_EQ(take(), kImpossible);
    EXPECT_EQ(errno, EPERM);
}

TEST_F(ToolsHost, SaysWhyThereCanBeNoFile)
{
    m_file = std::string(m_folder) + "/missing/lock";
    EXPECT_EQ(take(), kImpossible);
    EXPECT_EQ(errno, ENOENT);
    m_file = m_folder;
    EXPECT_EQ(take(), kImpossible);
    EXPECT_EQ(errno, EISDIR);
}

TEST_F(ToolsHost, HasAName)
{
    EXPECT_EQ(take(nullptr), 5);
    EXPECT_FALSE(std::filesystem::exists(m_file));
}

TEST_F(ToolsHost, KeepsOneDescriptorThatNoProgramInherits)
{
    const auto open = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator());
    };
    const auto before = open();
    ASSERT_EQ(take(), kOk);
    EXPECT_EQ(open(), before + 1);
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        if (std::filesystem::read_symlink(entry, error) == m_file) {
            EXPECT_EQ(fcntl(std::stoi(entry.path().filename()), F_GETFD), FD_CLOEXEC);
        }
    }
    const Process other([this, &open] {
        const auto first = open();
        return take() == kAnother && open() == first;
    });
}
} // namespace
