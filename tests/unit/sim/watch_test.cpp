#include "sim/calls.h"
#include "sim/sim.h"

#include <atomic>
#include <ifaddrs.h>
#include <sys/inotify.h>
#include <sys/stat.h>

using namespace sim;

namespace {
constexpr const char* kFile = "/tmp/file";

TEST(FileWatches, NeedTheFile)
{
    Set set;
    const int fd = sim_inotify_init1(IN_CLOEXEC);
    EXPECT_EQ(sim_inotify_add_watch(fd, kFile, IN_MODIFY), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(set.watch(kFile).watchers(), 0);
    set.write(kFile, "");
    EXPECT_GT(sim_inotify_add_watch(fd, kFile, IN_MODIFY), 0);
    EXPECT_EQ(set.watch(kFile).watchers(), 1);
    EXPECT_EQ(sim_close(fd), 0);
    EXPECT_EQ(set.watch(kFile).watchers(), 0);
}

TEST(FileWatches, TellOfWritesWhoeverWantsToKnow)
{
    Set set;
    set.write(kFile, "");
    const int wants = sim_inotify_init1(IN_CLOEXEC);
    const int wantsOther = sim_inotify_init1(IN_CLOEXEC);
    EXPECT_GT(sim_inotify_add_watch(wants, kFile, IN_MODIFY), 0);
    EXPECT_GT(sim_inotify_add_watch(wantsOther, kFile, IN_DELETE_SELF), 0);
    set.watch(kFile).modified();
    inotify_event event{};
    EXPECT_EQ(sim_read(wants, &event, sizeof(event)), static_cast<ssize_t>(sizeof(event)));
    EXPECT_EQ(event.mask, static_cast<std::uint32_t>(IN_MODIFY));
    set.watch(kFile).tells("whatever");
    char bytes[16] = {};
    EXPECT_EQ(sim_read(wantsOther, bytes, sizeof(bytes)), 8);
    EXPECT_STREQ(bytes, "whatever");
}

TEST(FileWatches, CountAsQuietWhileTheyAreRead)
{
    Set set;
    set.write(kFile, "");
    const int fd = sim_inotify_init1(IN_CLOEXEC);
    EXPECT_GT(sim_inotify_add_watch(fd, kFile, IN_MODIFY), 0);
    std::atomic<bool> read = false;
    set.background([&] {
        inotify_event event{};
        EXPECT_GT(sim_read(fd, &event, sizeof(event)), 0);
        read = true;
    });
    set.settle();
    EXPECT_FALSE(read);
    set.watch(kFile).modified();
    set.joinBackground();
    EXPECT_TRUE(read);
}

TEST(Interfaces, AreListedByName)
{
    Set set;
    ifaddrs* list = nullptr;
    ASSERT_EQ(sim_getifaddrs(&list), 0);
    ASSERT_NE(list, nullptr);
    ASSERT_NE(list->ifa_next, nullptr);
    EXPECT_STREQ(list->ifa_name, "lo");
    EXPECT_STREQ(list->ifa_next->ifa_name, "eth0");
    EXPECT_EQ(list->ifa_next->ifa_next, nullptr);
    sim_freeifaddrs(list);
}

TEST(Interfaces, AreMadeAndDeletedByTheSupplicant)
{
    Set set;
    EXPECT_EQ(sim_system("/bin/wpa_cli INTERFACE_CREATE bcm0"), 0);
    EXPECT_EQ(set.iface("bcm0").index(), 3);
    EXPECT_NE(sim_system("/bin/wpa_cli INTERFACE_CREATE bcm0"), 0);
    EXPECT_EQ(sim_system("/bin/wpa_cli interface_del bcm0"), 0);
    EXPECT_NE(sim_system("/bin/wpa_cli interface_del bcm0"), 0);
}
} // namespace
