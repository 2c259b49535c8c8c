#include "tools.h"

#include "movo_net.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <fstream>
#include <iterator>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace netconfig;

// When the configuration is written and read while the television runs.

namespace {
std::uint32_t address(const char* dotted)
{
    return inet_addr(dotted);
}

std::vector<std::string> namesIn(const std::string& file)
{
    std::vector<std::string> names;
    for (std::size_t at = 4; at < file.size(); at += kRecord) {
        names.emplace_back(file.substr(at, 9).c_str());
    }
    return names;
}

TEST(StoredOrder, KeepsBeingReversedByEachLoad)
{
    sim::Set set;
    for (const char* name : {"A", "B", "C"}) {
        list(Settings{name, 1});
    }
    EXPECT_EQ(SaveNetConfig(), 0);
    EXPECT_EQ(namesIn(set.read(kFile)), (Lines{"A", "B", "C"}));
    EXPECT_EQ(LoadNetConfig(), 0);
    EXPECT_EQ(SaveNetConfig(), 0);
    EXPECT_EQ(namesIn(set.read(kFile)), (Lines{"C", "B", "A"}));
    EXPECT_EQ(LoadNetConfig(), 0);
    EXPECT_EQ(SaveNetConfig(), 0);
    EXPECT_EQ(namesIn(set.read(kFile)), (Lines{"A", "B", "C"}));
}

TEST(Television, ReadsItsConfigurationBeforeItLooksAtTheInterfaces)
{
    sim::Set set;
    set.cable("eth0").plug();
    set.write(kFile, golden("netconfig_1.hex"));
    ASSERT_EQ(set.start(), 0);
    EXPECT_EQ(set.iface("eth0").address(), "192.168.1.20");
    EXPECT_EQ(set.iface("eth0").mask(), "255.255.255.0");
    EXPECT_EQ(set.defaultRoutes(), Lines{"192.168.1.1 dev eth0"});
    EXPECT_EQ(set.read("/etc/resolv.conf"), "nameserver 192.168.1.2\nnameserver 192.168.1.3\n");
    EXPECT_CALLBACKS(
        set,
        {{sim::IPCHANGED, "eth0"}, {sim::IPCHANGED, "eth0"}, {sim::STATICIP_SUCCESS, "eth0"}, {sim::IFFOUND, "eth0"}});
    EXPECT_EQ(records().at(0)->name, std::string("eth0")) << "before what was found on the machine";
    EXPECT_EQ(records().at(1)->name, std::string("lo"));
}

TEST(Television, StartsAfreshOverABrokenFile)
{
    sim::Set set;
    set.cable("eth0").plug();
    set.write(kFile, "rubbish");
    ASSERT_EQ(set.start(), 0);
    EXPECT_FALSE(set.exists(kFile));
    set.dhcp("eth0").leases();
    EXPECT_CALLBACKS(set, {{sim::IFFOUND, "eth0"}, {sim::IPCHANGED, "eth0"}, {sim::DHCP_SUCCESS, "eth0"}});
}

TEST(Television, SavesWhenItIsStopped)
{
    sim::Set set;
    set.cable("eth0").plug();
    ASSERT_EQ(set.start(), 0);
    EXPECT_FALSE(set.exists(kFile)) << "finding an interface saves nothing";
    ASSERT_EQ(set.stop(), 0);
    EXPECT_EQ(namesIn(set.read(kFile)), (Lines{"lo", "eth0"}));
}

TEST(Television, SavesOnlyWhenTheLastUserStopsIt)
{
    sim::Set set;
    ASSERT_EQ(set.start(), 0);
    ASSERT_EQ(set.start(), 0);
    ASSERT_EQ(set.stop(), 0);
    EXPECT_FALSE(set.exists(kFile));
    ASSERT_EQ(set.stop(), 0);
    EXPECT_TRUE(set.exists(kFile));
}

/** One life of a television, in a process of its own; the configuration comes and goes through a file of the host. */
void live(const std::string& carried, const std::function<void(sim::Set&)>& life)
{
    sim::Set set;
    set.cable("eth0").plug();
    if (std::ifstream before(carried, std::ios::binary); before) {
        set.write(kFile, std::string(std::istreambuf_iterator<char>(before), {}));
    }
    EXPECT_EQ(set.start(), 0);
    life(set);
    set.settle();
    std::ofstream(carried, std::ios::binary) << set.read(kFile); // as it stands, without a stop
}

TEST(Restart, BringsAStaticAddressBack)
{
    std::string carried = testing::TempDir() + "netconfig.XXXXXX";
    ASSERT_EQ(close(mkstemp(carried.data())), 0);
    ASSERT_EQ(unlink(carried.c_str()), 0);
    EXPECT_EQ(sim::forkedRun([&] {
                  live(carried, [](sim::Set&) {
                      EXPECT_EQ(Movo_NET_ConfigIPStatic(0, "eth0", address("10.1.2.3"), address("255.0.0.0"),
                                                        address("10.0.0.1"), address("10.0.0.2"), 0),
                                0);
                      EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", _MOVO_NET_IPMODE_STATIC_), 0);
                  });
              }),
              0);
    EXPECT_EQ(sim::forkedRun([&] {
                  live(carried, [](sim::Set& set) {
                      EXPECT_EQ(set.iface("eth0").address(), "10.1.2.3");
                      EXPECT_EQ(set.defaultRoutes(), Lines{"10.0.0.1 dev eth0"});
                      EXPECT_EQ(Movo_NET_ConfigIPMode(0, "eth0", _MOVO_NET_IPMODE_DHCP_), 0);
                  });
              }),
              0);
    EXPECT_EQ(sim::forkedRun([&] {
                  live(carried, [](sim::Set& set) {
                      EXPECT_TRUE(set.dhcp("eth0").running()) << "the mode came back too";
                      EXPECT_EQ(FindInterface("eth0")->sipv4, address("10.1.2.3"));
                  });
              }),
              0);
    EXPECT_EQ(unlink(carried.c_str()), 0);
}

bool sleepsInKernel(long thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string stat(std::istreambuf_iterator<char>(file), {});
    const std::size_t end = stat.rfind(')');
    return end != std::string::npos && stat.substr(end + 2, 1) == "S";
}

/** Waits until the thread has slept through many looks, as one does that waits for a lock. */
void awaitBlocked(const std::atomic<long>& thread)
{
    constexpr int kLooks = 2000;
    for (int looks = 0; looks < kLooks; ++looks) {
        (void)sched_yield();
        looks = thread != 0 && sleepsInKernel(thread) ? looks : 0;
    }
}

TEST(SaveNetConfig, ListThatWasEmptiedWhileItWaitedIsNotSaved)
{
    sim::Set set;
    list(Settings{"eth0", 1});
    set.write(kFile, "the configuration before");
    movonet::ScopedLock lock(movonet::ifaceListLock);
    std::atomic<long> saver{0};
    RETURN_TYPE result = 0;
    set.background([&] {
        saver = syscall(SYS_gettid);
        result = SaveNetConfig();
    });
    awaitBlocked(saver);
    clearList();
    lock.unlock();
    set.joinBackground();
    EXPECT_EQ(result, 1);
    EXPECT_EQ(said(set, "SaveNetConfig"), Lines{"ERROR no saved interfaces\n"});
    EXPECT_EQ(set.read(kFile), "the configuration before");
}

TEST(SaveNetConfig, ManyAtATimeWriteOneAfterTheOther)
{
    sim::Set set(7);
    for (const Settings& settings : goldenConfiguration(10)) {
        list(settings);
    }
    for (int thread = 0; thread < 4; ++thread) {
        set.background([] {
            for (int count = 0; count < 20; ++count) {
                EXPECT_EQ(SaveNetConfig(), 0);
            }
        });
    }
    set.joinBackground();
    EXPECT_EQ(set.read(kFile), golden("netconfig_10.hex"));
    EXPECT_FALSE(set.exists(kTemporary));
}
} // namespace
