/**
 * The simulated set: a television in one process, for unit tests and stories.
 *
 * A test executable made with `movo_sim_test` (tests/CMakeLists.txt) holds the product with its libc calls renamed:
 * while a `sim::Set` lives they act on a simulated machine, and the test owns time. The test's own libc calls stay what
 * they are. One Set per process; ctest runs each test in a process of its own.
 *
 *     TEST(Boot, CableIn)
 *     {
 *         sim::Set set;                          // lo and eth0, cable out, nothing started
 *         set.cable("eth0").plug();
 *         ASSERT_EQ(set.start(), 0);             // Movo_NET_Glue_Init with a callback installed from its first step on
 *         EXPECT_RAN(set, "netcfg eth0 up");
 *         set.dhcp("eth0").leases();
 *         EXPECT_CALLBACKS(set, {{IFFOUND, "eth0"}, {IPCHANGED, "eth0"}, {DHCP_SUCCESS, "eth0"}});
 *         set.cable("eth0").pull();
 *         set.grantTicks(10);                    // one second passes; the loop is quiet again
 *         EXPECT_LOGGED(set, KEST_LEVEL_ERROR, "movo_net_fg", "OnLinkStatusEventRev", "link:interface removed eth0\n");
 *     }                                          // the set stops the glue and checks what the product left behind
 *
 * At its end the set fails the test when the product closed a descriptor that was not its own, opened one that is not
 * close-on-exec, signalled pid 0 or below, waited for input that cannot come, or did not run into a fault that was set.
 */
#ifndef SIM_SIM_H
#define SIM_SIM_H

#include "sim/expect.h"
#include "sim/faults.h"
#include "sim/machine.h"
#include "sim/netlink.h"
#include "sim/records.h"

#include <functional>
#include <string>
#include <vector>

namespace movonet {
class Mutex;
}

namespace sim {
/** How often a test repeats what depends on luck: under emulation, which is slow, a tenth of it. */
constexpr unsigned repetitions(unsigned count)
{
    return SIM_EMULATED ? count / 10 : count;
}

/** The same for seeds of long runs, of which the thread sanitizer takes a tenth, too. */
constexpr unsigned seeds(unsigned count)
{
    return SIM_THREADS_ONLY ? count / 10 : repetitions(count);
}

class Set {
public:
    /** With a seed other than 0, threads dawdle at their calls so that each seed gives another interleaving. */
    explicit Set(unsigned seed = 0);
    ~Set();
    Set(const Set&) = delete;
    Set& operator=(const Set&) = delete;

    // --- The machine ---

    Cable cable(const std::string& ifname) { return Cable(ifname); }
    Iface iface(const std::string& name) { return Iface(name); }
    /** Adds an interface with a PHY and its cable out; its MAC is made up from its index. */
    Iface addIface(const std::string& name);
    DhcpClient dhcp(const std::string& ifname) { return DhcpClient(ifname); }
    /** The process with that pid; it is brought to life if it was not there. */
    Process process(int pid);
    FileWatch watch(const std::string& path) { return FileWatch(path); }
    CommandRule onCommand(const std::string& beginning);
    /** What `bdconf -p` prints; at first "mac=02:00:00:00:00:01\n". */
    void boardPrints(const std::string& output) { onCommand("bdconf -p").prints(output); }

    void addDefaultRoute(const std::string& ifname, const std::string& gateway);
    /** The default routes of the main table, like "10.0.2.2 dev eth0". */
    std::vector<std::string> defaultRoutes() const;
    /** Any route, for instance of another table; see sim/netlink.h. */
    void addRoute(const Route& route);
    /** The next dump is answered with these datagrams instead of the routing table, whatever they hold. */
    void answerDump(std::vector<std::string> datagrams);

    // --- Files, by the paths that the product uses ---

    /** Replaces the file, making folders; a kernel table so written is not rendered any more. */
    void write(const std::string& path, const std::string& contents);
    std::string read(const std::string& path) const;
    bool exists(const std::string& path) const;
    /** Removes a file, or a folder with all it holds. */
    void remove(const std::string& path);
    /** Another user owns the file, whatever its kind. */
    void disown(const std::string& path);
    /** Where the path really is, for whatever else a test wants to do with it. */
    std::string real(const std::string& path) const;

    // --- Time and threads ---

    /** Virtual milliseconds since the set's start. Sleeping adds to it at once; the loop's idle waits when granted. */
    std::int64_t clock() const;
    /** Lets so many of the loop's waits pass idle; returns when every product thread has ended or waits again. */
    void grantTicks(int count = 1);
    /** Returns when every product thread has ended or waits, and the loop has taken all input that there is. */
    void settle();
    /** From now on a product thread other than the test's that sleeps so long stays asleep until `wake`; 0: none. */
    void holdSleeps(int atLeastMs);
    /** Lets the sleeper go on and settles; false when nobody sleeps. */
    bool wake();
    /** So much time passes while the product is inside a call, for the action of a fault or a rule. */
    void spend(int milliseconds);
    /** Milliseconds that threads of that kind have slept or spent, together. */
    std::int64_t waited(ThreadKind kind) const;
    /** Does the calling thread hold that lock? For the action of a fault or a rule. */
    bool holds(const movonet::Mutex& lock) const;
    /** The loop thread does not begin before `releaseLoopThread`, or before the product waits for it to have begun. */
    void holdLoopThread();
    void releaseLoopThread();
    /** Runs `body` on a tracked thread: `settle` waits for it too. Joined at the set's end at the latest. */
    void background(std::function<void()> body);
    /** Waits until all bodies given to `background` have ended. */
    void joinBackground();
    /** Threads of the product that live. */
    int liveThreads() const;

    // --- The glue ---

    /** `Movo_NET_Glue_Init` with the callback recorder installed from inside its first look; `settle`s unless it
     * failed. Without a seed the loop's first pass comes after it: the link pass then runs every 10th tick. */
    int start();
    /** `Movo_NET_Glue_Exit`. */
    int stop();
    /** For tests of single modules: the event loop alone, running and settled. Ended by the set. What is registered
     * from now on is live after the loop's present wait: the first granted tick is not counted for it. */
    void startLoop();
    void stopLoop();
    /** Installs the recorder now; `start` does it by itself. */
    void recordCallbacks();
    /** Also called on each callback, on its thread, after it was recorded; nothing of the set is locked. */
    void onCallback(std::function<void(MovoNetCBReason_e, void*)> action);
    /** The same for a watcher that stands beside whatever the test does in a callback; called before that. */
    void watchCallbacks(std::function<void(MovoNetCBReason_e, void*)> watcher);

    /** Also called on each line that is logged, on its thread, after it was recorded; nothing of the set is locked.
     * With it a test does something at a chosen place of the product. */
    void onLog(std::function<void(const LogLine&)> action);

    // --- Faults ---

    /** Returns a number for `hits`. */
    int fail(const Fault& fault);
    /** Taking this mutex fails from now on. */
    template <typename Lock>
    int failLock(const Lock& lock, int nth = 0)
    {
        const int number =
            fail({.call = Call::MutexLock, .object = &lock, .size = sizeof(lock), .nth = nth, .error = EINVAL});
        (void)fail({.call = Call::MutexTryLock,
                    .object = &lock,
                    .size = sizeof(lock),
                    .nth = nth,
                    .error = EINVAL,
                    .mayMiss = true});
        return number;
    }
    /** How often it struck. */
    int hits(int fault) const;
    /** Takes all faults away; those that never struck fail the test. */
    void clearFaults();

    // --- What happened ---

    std::vector<Command> commands() const;
    std::vector<LogLine> log() const;
    std::vector<Called> callbacks() const;
    std::vector<Signal> signals() const;
    /** What was sent to the kernel to ask for its routes, byte for byte. */
    std::vector<std::string> netlinkRequests() const;
    /** Locks of the product that are held, by whatever thread. */
    int heldLocks() const;
    /** What has happened that fails the test at its end. */
    std::vector<std::string> problems() const;
    /** Product descriptors that are open, each as the call that opened it, oldest first. */
    std::vector<std::string> openDescriptors() const;
    /** Makes a descriptor of the test the product's, which may then close it. */
    void give(int fd);
    /** Forgets commands, log, callbacks, signals and questions for routes. */
    void forget();

    /** The answers behind the EXPECT_ macros of sim/expect.h. */
    testing::AssertionResult ran(const std::string& command) const;
    testing::AssertionResult ranInOrder(const std::vector<std::string>& commands) const;
    testing::AssertionResult logged(int level, const std::string& module, const std::string& function,
                                    const std::string& text) const;
    testing::AssertionResult calledBack(const std::vector<Called>& expected);
};

/** Runs `body` in a child of this process and returns its exit status: 0, 1 after a failed expectation, -1 when it was
 * killed. */
int forkedRun(const std::function<void()>& body);

/** While it lives, what is opened gets a descriptor beyond those that select can watch. */
class HighDescriptors {
public:
    HighDescriptors();
    ~HighDescriptors();
    HighDescriptors(const HighDescriptors&) = delete;
    HighDescriptors& operator=(const HighDescriptors&) = delete;

    /** False in a process that may not open so many. */
    explicit operator bool() const { return m_high; }

private:
    std::vector<int> m_taken;
    bool m_high = false;
};

/** What goes to standard output while it lives. */
class CapturedOutput {
public:
    CapturedOutput();
    ~CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    std::string text() const;

private:
    int m_saved;
    int m_file;
};
} // namespace sim

#endif
