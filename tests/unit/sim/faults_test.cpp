#include "sim/calls.h"
#include "sim/sim.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest-spi.h>
#include <linux/sockios.h>
#include <net/if.h>

using namespace sim;

namespace {
int openSocket()
{
    return sim_socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
}

struct Guarded {
    int before = 0;
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
};
} // namespace

TEST(Faults, StrikeTheNthCallOnce)
{
    Set set;
    const int fault = set.fail({.call = Call::Socket, .nth = 2, .error = EMFILE});
    EXPECT_GE(openSocket(), 0);
    EXPECT_EQ(openSocket(), -1);
    EXPECT_EQ(errno, EMFILE);
    EXPECT_GE(openSocket(), 0);
    EXPECT_EQ(set.hits(fault), 1);
}

TEST(Faults, StrikeByPathCodeAndKind)
{
    Set set;
    set.write("/etc/a", "");
    set.write("/etc/b", "");
    (void)set.fail({.call = Call::Open, .on = "/etc/a", .error = EACCES});
    EXPECT_EQ(sim_open("/etc/a", O_RDONLY | O_CLOEXEC), -1);
    EXPECT_EQ(errno, EACCES);
    EXPECT_GE(sim_open("/etc/b", O_RDONLY | O_CLOEXEC), 0);

    (void)set.fail({.call = Call::Ioctl, .on = "eth0", .code = SIOCGIFFLAGS, .error = EPERM});
    ifreq request{};
    request.ifr_name[0] = 'l';
    request.ifr_name[1] = 'o';
    const int fd = openSocket();
    EXPECT_EQ(sim_ioctl(fd, SIOCGIFFLAGS, &request), 0);
    *stpcpy(request.ifr_name, "eth0") = '\0';
    EXPECT_EQ(sim_ioctl(fd, SIOCGIFFLAGS, &request), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(sim_ioctl(fd, SIOCGIFHWADDR, &request), 0);

    (void)set.fail({.call = Call::Socket, .on = "netlink"});
    EXPECT_GE(openSocket(), 0);
    EXPECT_EQ(sim_socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, 0), -1);
}

TEST(Faults, TransfersCanBeShort)
{
    Set set;
    set.write("/etc/a", "abcdef");
    (void)set.fail({.call = Call::Read, .on = "/etc/a", .nth = 1, .bytes = 2});
    const int fd = sim_open("/etc/a", O_RDONLY | O_CLOEXEC);
    char buffer[8] = {};
    EXPECT_EQ(sim_read(fd, buffer, sizeof(buffer)), 2);
    EXPECT_EQ(sim_read(fd, buffer, sizeof(buffer)), 4);
}

TEST(Faults, ALockFailsByTheObjectItLiesIn)
{
    Set set;
    Guarded one;
    Guarded two;
    (void)set.failLock(one);
    EXPECT_EQ(sim_pthread_mutex_lock(&one.mutex), EINVAL);
    EXPECT_EQ(sim_pthread_mutex_trylock(&one.mutex), EINVAL);
    EXPECT_EQ(sim_pthread_mutex_lock(&two.mutex), 0);
    EXPECT_EQ(pthread_mutex_unlock(&two.mutex), 0);
}

TEST(Faults, MemoryRunsOutForTheProductAlone)
{
    Set set;
    (void)set.fail({.call = Call::Malloc});
    EXPECT_EQ(sim_malloc(1), nullptr);
    void* mine = std::malloc(1);
    EXPECT_NE(mine, nullptr);
    std::free(mine);
}

TEST(Faults, CanBeForOneThreadAlone)
{
    Set set;
    (void)set.fail({.call = Call::Socket, .thread = ThreadKind::Other});
    EXPECT_GE(openSocket(), 0);
    int elsewhere = 0;
    set.background([&elsewhere] { elsewhere = openSocket(); });
    set.joinBackground();
    EXPECT_EQ(elsewhere, -1);
}

TEST(Faults, OneThatNeverStruckFailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(
        {
            Set set;
            (void)set.fail({.call = Call::Open, .on = "/etc/resolv.conf"});
        },
        "no call ran into the fault of open(\"/etc/resolv.conf\")");
}

TEST(Faults, OneThatMayMissDoesNot)
{
    Set set;
    (void)set.fail({.call = Call::Open, .mayMiss = true});
}
