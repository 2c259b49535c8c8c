/** The inside of the simulated set: what its files share. Only the set's own sources include it. */
#ifndef SIM_WORLD_H
#define SIM_WORLD_H

#include "sim/faults.h"
#include "sim/netlink.h"
#include "sim/records.h"
#include "sim/state.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>

#ifdef __SANITIZE_THREAD__
#define SIM_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define SIM_THREAD_SANITIZER 1
#endif
#endif

namespace sim {
inline constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;

/** Everything there is. Never destroyed: a thread that the product leaves behind may still wait in it. */
struct World {
    std::atomic<bool> active{false};
    std::mutex mutex; ///< Guards all that follows; the innermost of all locks.
    std::condition_variable changed;

    std::atomic<unsigned> progress{0}; ///< Counts all calls, for the watchdog.
    unsigned seed = 0;
    std::string root;
    std::vector<std::string> problems; ///< Each fails the test at the set's end.

    Threads threads;
    Time time;
    Kernel kernel;
    Files files;
    Commands commands;
    Processes processes;
    Records records;
    std::vector<FaultRule> faults;
};

World& world();

/** Hides the set's own doings from the thread sanitizer: its locking must not hide a race of the product. */
class Unseen {
public:
    Unseen();
    ~Unseen();
    Unseen(const Unseen&) = delete;
    Unseen& operator=(const Unseen&) = delete;
};

/** The right to touch the world; nothing of the product is called while it is held. */
class Hold {
public:
    Hold();
    ~Hold() = default;
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    /** Waits until `condition` holds; too long ends the process with a report of all threads. */
    void waitUntil(const char* what, const std::function<bool()>& condition);
    /** Waits for any change at all. */
    void wait();

private:
    Unseen m_unseen;
    std::unique_lock<std::mutex> m_lock;
};

inline bool active()
{
    return world().active.load(std::memory_order_acquire);
}

/** How a call fails. */
struct Strike {
    int error;
    int bytes; ///< -1, or how much to transfer instead of failing.
};

/** What a call is about, for faults and reports. */
struct Subject {
    std::string name = {};
    unsigned long code = 0;
    const void* object = nullptr;
};

/**
 * The beginning of every call of the product: notes where the thread is, may yield, wakes who waits for its progress,
 * and tells whether the call is to fail. Keeps errno.
 */
std::optional<Strike> enter(Call call, const Subject& subject);

/** -1 with that errno. */
int failWith(int error);

/** Something that must not happen; fails the test at its end. */
void problem(const std::string& text);

/** The calling thread's record. The world is held. */
Thread& self();
ThreadKind selfKind();
/** Ends the process, telling where every thread is. */
[[noreturn]] void wedged(const char* what);
/** How long nothing may move: ten minutes, or the seconds of the environment variable SIM_PATIENCE. */
unsigned patienceSeconds();
void startWatchdog();
void stopWatchdog();

/** Is this the event loop, told to end? */
bool isToEnd(const Thread& thread);
/** Without a seed the order of a start is always the same: the loop's first pass waits for the test to settle. */
void parkLoopAt(const void* mutex);
/** Lets it go on. The world is held. */
void unparkLoop();

/** The rule of the product's locks: nobody asks for the event loop's with another one in hand; see lock_order.cpp. */
void checkOrder(const void* mutex);
void noteMade(const void* mutex);
void noteLocked(const void* mutex);
void noteUnlocked(const void* mutex);
/** Is the thread sanitizer to see this lock as merely tried by the calling thread? */
bool looksTried(const void* mutex);

/** Does any thread wait for a tick? The world is held. */
bool anybodySelects();

/** Is every tracked thread, `except` one, at an end or waiting for the test? The world is held. */
bool quiet(const Thread* except);
/** For the thread sanitizer: what a thread did before it waits for the test, the test may look at once it settled. */
void handToTest();
/** The test's side of it. */
void takeFromTest();

/** Like `open("/etc/resolv.conf")`. */
std::string describe(Call call, const std::string& subject);
/** The rule that lets this call fail, if any; counts. The world is held. */
FaultRule* strikes(Call call, const Subject& subject, ThreadKind kind);

/** Where a file of the product really is; a kernel table is written before it is looked at. */
std::string preparedPath(const std::string& path);
/** What a descriptor was opened on; empty for one that the test has given. */
std::string openedOn(int fd);
/** Installs the callback recorder when `start` wants it and this is the first look at the kernel's tables. */
void installAtFirstLook(const std::string& path);

/** Waits until `fd` has input, for good if need be; meanwhile the thread counts as quiet. */
void waitForInput(int fd);

/** Answers a route dump, datagram by datagram. */
std::vector<std::string> dumpRoutes();
/** Drops what the calling thread logs. */
void muteLog(bool muted);
/** Lets time pass, and calls the timers that end meanwhile on this thread; not while the world is held. */
void spend(std::int64_t microseconds);
/** As `Set::settle` and `Set::grantTicks`. */
void settleWorld();
void passTicks(int count);

// The world is held for all that follow.

KernelIface* findIface(const std::string& name);
void addKernelIface(const std::string& name);
void removeKernelIface(const std::string& name);
KernelIface& ifaceOrFail(const std::string& name);
void clearAddress(KernelIface& iface);
void dropRoutes(const std::string& ifname);
std::string renderTable(const std::string& path);
std::string textOf(std::uint32_t address);
std::uint32_t addressOf(const std::string& text);

std::string realPath(const std::string& path);
void writeFile(const std::string& path, const std::string& contents);
std::optional<std::string> readFile(const std::string& path);
void noteDescriptor(int fd, Descriptor descriptor);
const Descriptor* findDescriptor(int fd);

/** Runs a command on the simulated machine and returns its wait status. */
int runCommand(const std::string& command);
/** Launches a DHCP client. */
int launchClient(const std::string& command);
/** A signal for a process; 0 or the errno. */
int signalProcess(int pid, int number);
} // namespace sim

#endif
