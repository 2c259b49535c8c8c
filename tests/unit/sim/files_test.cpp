#include "sim/calls.h"
#include "sim/sim.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest-spi.h>
#include <unistd.h>

using namespace sim;

TEST(Files, AreTheMachinesOwnWithoutASet)
{
    const int fd = sim_open("/proc/self/status", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    char byte = 0;
    EXPECT_EQ(sim_read(fd, &byte, 1), 1);
    EXPECT_EQ(sim_close(fd), 0);

    Set set;
    EXPECT_EQ(sim_open("/proc/self/status", O_RDONLY | O_CLOEXEC), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST(Files, LieBelowTheRoot)
{
    Set set;
    set.write("/etc/resolv.conf", "nameserver 1.2.3.4\n");
    FILE* stream = sim_fopen("/etc/resolv.conf", "re");
    ASSERT_NE(stream, nullptr);
    char line[64] = {};
    EXPECT_STREQ(fgets(line, sizeof(line), stream), "nameserver 1.2.3.4\n");
    EXPECT_EQ(sim_fclose(stream), 0);

    const int fd = sim_open("/data/tv/save/netconfig", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(sim_write(fd, "abc", 3), 3);
    EXPECT_EQ(sim_close(fd), 0);
    EXPECT_EQ(set.read("/data/tv/save/netconfig"), "abc");

    EXPECT_EQ(sim_rename("/data/tv/save/netconfig", "/data/tv/save/other"), 0);
    EXPECT_FALSE(set.exists("/data/tv/save/netconfig"));
    EXPECT_EQ(sim_remove("/data/tv/save/other"), 0);
    EXPECT_FALSE(set.exists("/data/tv/save/other"));
    EXPECT_EQ(sim_mkfifo("/tmp/pipe", 02702), 0);
    EXPECT_TRUE(set.exists("/tmp/pipe"));
}

TEST(Files, OfAnotherUserStayWithTheirOwnerUntilTheyAreGone)
{
    Set set;
    set.write("/tmp/theirs", "");
    set.disown("/tmp/theirs");
    struct stat status {};
    EXPECT_EQ(sim_lstat("/tmp/theirs", &status), 0);
    EXPECT_NE(status.st_uid, geteuid());
    set.remove("/tmp/theirs");
    set.write("/tmp/theirs", ""); // another file of that name
    EXPECT_EQ(sim_lstat("/tmp/theirs", &status), 0);
    EXPECT_EQ(status.st_uid, geteuid());
}

TEST(Files, TheRootIsGoneAtTheEnd)
{
    std::string root;
    {
        Set set;
        root = set.real("");
        EXPECT_EQ(access(root.c_str(), F_OK), 0);
    }
    EXPECT_EQ(access(root.c_str(), F_OK), -1);
}

TEST(Files, KernelTablesFollowTheInterfaces)
{
    Set set;
    const auto table = [](const char* path) {
        std::string text;
        FILE* stream = sim_fopen(path, "re");
        if (stream != nullptr) {
            char line[256];
            while (fgets(line, sizeof(line), stream) != nullptr) {
                text += line;
            }
            (void)sim_fclose(stream);
        }
        return text;
    };
    EXPECT_NE(table("/proc/net/dev").find("    lo:"), std::string::npos);
    EXPECT_NE(table("/proc/net/dev").find("  eth0:"), std::string::npos);
    EXPECT_EQ(table("/proc/net/wireless").find("eth0"), std::string::npos);

    set.addIface("mlan0").wireless();
    EXPECT_NE(table("/proc/net/wireless").find(" mlan0:"), std::string::npos);
    set.iface("eth0").unplugDevice();
    EXPECT_EQ(table("/proc/net/dev").find("eth0"), std::string::npos);

    set.write("/proc/net/dev", "rubbish");
    EXPECT_EQ(table("/proc/net/dev"), "rubbish");
    set.remove("/proc/net/dev");
    EXPECT_EQ(sim_fopen("/proc/net/dev", "re"), nullptr);
}

TEST(Files, ARootThatACrashLeftIsRemovedByTheNextSet)
{
    char folder[] = "/tmp/sim_test.XXXXXX"; // of its own: sets of other tests remove such roots too
    ASSERT_NE(mkdtemp(folder), nullptr);
    setenv("TMPDIR", folder, 1);
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    EXPECT_EQ(forkedRun([ends] {
                  const Set set;
                  const std::string root = set.real("");
                  EXPECT_EQ(write(ends[1], root.data(), root.size()), static_cast<ssize_t>(root.size()));
                  _exit(0);
              }),
              0);
    char root[256] = {};
    ASSERT_GT(read(ends[0], root, sizeof(root) - 1), 0);
    EXPECT_EQ(access(root, F_OK), 0);
    {
        const Set set;
        EXPECT_EQ(access(root, F_OK), -1);
    }
    EXPECT_EQ(rmdir(folder), 0);
    (void)close(ends[0]);
    (void)close(ends[1]);
}

TEST(Descriptors, AreListedUntilClosed)
{
    Set set;
    const int socket = sim_socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    FILE* stream = sim_popen("bdconf -p", "re");
    EXPECT_EQ(set.openDescriptors(), (std::vector<std::string>{"socket(\"inet\")", "popen(\"bdconf -p\")"}));
    EXPECT_EQ(sim_close(socket), 0);
    EXPECT_EQ(sim_pclose(stream), 0);
    EXPECT_TRUE(set.openDescriptors().empty());
}

TEST(Descriptors, OneThatAChildWouldInheritFailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(
        {
            Set set;
            (void)sim_close(sim_socket(AF_INET, SOCK_DGRAM, 0));
        },
        "socket(\"inet\") is not close-on-exec");
}

TEST(Descriptors, AStreamThatAChildWouldInheritFailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(
        {
            Set set;
            (void)sim_popen("bdconf -p", "r");
        },
        "popen(\"bdconf -p\") is not close-on-exec");
}

TEST(Descriptors, ClosingTwiceFailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(
        {
            Set set;
            const int socket = sim_socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
            (void)sim_close(socket);
            (void)sim_close(socket);
        },
        "not a descriptor of the product");
}

TEST(Descriptors, OneOfTheTestsCanBeGivenAway)
{
    Set set;
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    set.give(fd);
    EXPECT_EQ(sim_close(fd), 0);
}
