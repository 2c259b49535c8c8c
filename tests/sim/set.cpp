#include "sim/sim.h"

#include "sim/calls.h"
#include "sim/world.h"

#include "movo_net_internal.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <unistd.h>

namespace sim {
namespace {
constexpr int kMostStarts = 16; // how many a test may leave open

kest_bool s_loopEnds; // of the event loop that `startLoop` runs
pthread_t s_loopThread;
bool s_loopStarted = false;

bool loopLives()
{
    const Hold hold;
    return std::ranges::any_of(world().threads.all, [](const Thread& thread) {
        return thread.kind == ThreadKind::Loop && thread.place != Place::Ended;
    });
}

/** Folders are called sim.PID.RANDOM; those of processes that ended before they could remove theirs are removed. */
void removeRootsOfTheDead(const std::string& base)
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(base, error)) {
        int pid = 0;
        const bool ours = std::sscanf(entry.path().filename().c_str(), "sim.%d.", &pid) == 1 && pid > 0;
        if (ours && kill(pid, 0) != 0 && errno == ESRCH) {
            std::error_code ignored; // another test may be at it
            std::filesystem::remove_all(entry.path(), ignored);
        }
    }
}

void makeRoot()
{
    const char* folder = std::getenv("TMPDIR");
    const std::string base = folder != nullptr ? folder : "/tmp";
    removeRootsOfTheDead(base);
    std::string pattern = base + "/sim." + std::to_string(getpid()) + ".XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        std::cerr << "no folder for the simulated set: " << pattern << "\n";
        std::exit(1);
    }
    world().root = pattern;
    for (const char* needed : {"/proc/net", "/etc/dhcpc", "/tmp/dhcp", "/data/tv/save", "/data/wifi"}) {
        std::filesystem::create_directories(world().root + needed);
    }
}

void removeRoot()
{
    World& w = world();
    for (const auto& [fd, descriptor] : w.files.descriptors) {
        const bool isStream = std::ranges::any_of(
            w.files.streams, [number = fd](const auto& each) { return fileno(each.first) == number; });
        if (!isStream) {
            (void)close(fd);
        }
    }
    for (const auto& [stream, status] : w.files.streams) {
        (void)fclose(stream);
    }
    for (const ForeignFile& file : w.files.foreign) {
        (void)close(file.fd);
    }
    std::filesystem::remove_all(w.root);
}

/** What happened, for whoever has to find out why a test failed. */
void tell()
{
    const Records& records = world().records;
    std::cerr << "--- log\n";
    for (const LogLine& line : records.log) {
        std::cerr << line << "\n";
    }
    std::cerr << "--- commands\n";
    for (const Command& command : records.commands) {
        std::cerr << command.at << " ms \"" << command.text << "\" (" << command.status << ")\n";
    }
}
} // namespace

Set::Set(unsigned seed)
{
    World& w = world();
    if (!w.root.empty()) {
        std::cerr << "There is one television per process: run the tests through ctest, or one with --gtest_filter.\n";
        std::exit(1);
    }
    makeRoot();
    w.seed = seed;
    {
        const Hold hold;
        self().kind = ThreadKind::Test;
    }
    addIface("lo").setAddress("127.0.0.1", "255.0.0.0").setUp(true);
    cable("lo").withoutMii();
    addIface("eth0");
    boardPrints("mac=02:00:00:00:00:01\n");
    (void)unsetenv("DHCP_NOTIFY_PIPE_DIR");
    __atomic_store_n(&__kest_debug_min, static_cast<int>(KEST_LEVEL_LOG), __ATOMIC_RELAXED);
    startWatchdog();
    w.active.store(true, std::memory_order_release);
}

Set::~Set()
{
    World& w = world();
    clearFaults();
    holdSleeps(0);
    releaseLoopThread();
    stopLoop();
    for (int count = 0; count < kMostStarts && loopLives(); ++count) {
        (void)stop();
    }
    joinBackground();
    if (!loopLives()) {
        settle();
    }
    w.active.store(false, std::memory_order_release);
    stopWatchdog();
    const Hold hold;
    for (const std::string& text : w.problems) {
        ADD_FAILURE() << text;
    }
    if (testing::Test::HasFailure()) {
        tell();
    }
    removeRoot();
}

int Set::start()
{
    {
        const Hold hold;
        world().records.installAtFirstLook = true;
    }
    const int result = Movo_NET_Glue_Init();
    if (result == 0) {
        settle();
    }
    return result;
}

int Set::stop()
{
    return Movo_NET_Glue_Exit();
}

void Set::startLoop()
{
    __atomic_store_n(&s_loopEnds, kest_bool{0}, __ATOMIC_RELEASE);
    s_loopStarted = sim_pthread_create(&s_loopThread, nullptr, int_eventLoopThread, &s_loopEnds) == 0;
    settle();
}

void Set::stopLoop()
{
    if (s_loopStarted) {
        s_loopStarted = false;
        __atomic_store_n(&s_loopEnds, kest_bool{1}, __ATOMIC_RELEASE);
        (void)sim_pthread_join(s_loopThread, nullptr); // wakes it
    }
}
} // namespace sim
