/** The data of the simulated set. */
#ifndef SIM_STATE_H
#define SIM_STATE_H

#include "sim/faults.h"
#include "sim/machine.h"
#include "sim/netlink.h"
#include "sim/records.h"

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <pthread.h>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

namespace sim {
/** Where a thread is. */
enum class Place { Held, Running, Selecting, Reading, Asleep, Waiting, Joining, Ended };

struct Thread {
    ThreadKind kind = ThreadKind::Other;
    bool tracked = false; ///< Made by the product or by `background`: `settle` waits for it.
    pthread_t id{};
    Place place = Place::Running;
    std::string at = "-";                     ///< Its latest call.
    const unsigned char* terminate = nullptr; ///< The flag that ends the event loop.
    unsigned seen = 0;                        ///< Selecting, reading: the generation in which it last found no input.
    const void* waitsFor = nullptr;           ///< Waiting: the condition variable.
    pthread_t joins{};                        ///< Joining: the thread.
    unsigned random = 0;                      ///< State of its yields.
    std::int64_t waited = 0;                  ///< Microseconds that it slept or spent.
};

struct Threads {
    std::list<Thread> all;
    unsigned generation = 1; ///< Raised by whoever wants every waiting thread to look at its input again.
    unsigned activity = 0;   ///< Counts the calls of tracked threads.
    bool holdLoop = false;   ///< The event loop does not begin yet.
    bool parkLoop = false;   ///< Its first pass does not begin yet.
    bool loopCreated = false;
    bool loopReached = false; ///< It takes registrations, or has ended.
    std::vector<pthread_t> background;
};

/** A timer that calls a function when its time is over. */
struct Timer {
    void (*function)(sigval);
    sigval value;
    bool armed = false;
    std::int64_t ends = 0; ///< Virtual microseconds.
};

struct Time {
    std::int64_t microseconds = 0;
    std::vector<Timer> timers;
    int ticks = 0; ///< Granted and not used.
    int holdSleepsMs = 0;
    unsigned wakes = 0; ///< Raised to wake who is asleep.
};

struct KernelIface {
    std::string name;
    int index = 0;
    std::string mac; ///< Six bytes.
    std::uint32_t address = 0;
    std::uint32_t mask = 0;
    bool up = false;
    bool wireless = false;
    bool mii = true;
    std::uint16_t bmsr = 0;
};

struct Kernel {
    std::vector<KernelIface> ifaces;
    int lastIndex = 0;
    std::vector<Route> routes; ///< In the order of the dump, without those that addresses bring.
    std::optional<std::vector<std::string>> scriptedDump;
};

enum class DescriptorKind { File, Inet, Netlink, FileWatch };

struct Descriptor {
    DescriptorKind kind;
    std::string subject; ///< Path, command, "inet" or "netlink".
    std::string text;    ///< The call that opened it.
    int order = 0;
    std::list<std::string> datagrams = {}; ///< Netlink: waiting to be received.
    int tellsThrough = -1;                 ///< File watch: where its events are written.
    std::string watched = {};              ///< File watch: the file, and which of its changes are told of.
    std::uint32_t mask = 0;
};

/** A file of another user. Kept open, so that no other file gets its number. */
struct ForeignFile {
    int fd;
    dev_t device;
    ino_t number;
};

struct Files {
    std::vector<ForeignFile> foreign;
    std::set<std::string> taken;                 ///< Kernel tables that a test has written itself.
    std::map<std::string, std::string> rendered; ///< Those that the set has written, as they are.
    std::map<int, Descriptor> descriptors;
    int opened = 0;
    std::map<FILE*, int> streams; ///< By popen, with the status that pclose returns.
};

struct CommandScript {
    std::string beginning;
    std::optional<int> status = {};
    std::optional<std::string> output = {};
    std::function<void()> action = {};
    int takesMs = 0;
    int left = -1; ///< -1: for good.
};

struct Commands {
    std::vector<CommandScript> scripts;
};

struct ProcessState {
    bool alive = true;
    bool ignoresHangup = false;
    bool foreign = false;
    int probesToDeath = 0; ///< Signal 0 finds it so often after SIGHUP.
    bool dying = false;
    std::string client; ///< Interface of the DHCP client that it is.
};

struct ClientState {
    int pid = 0;
    int launches = 0;
    std::string pipe;
    bool writesPidFile = true;
    ProcessState born; ///< What each launch begins as.
};

struct Processes {
    std::map<int, ProcessState> all;
    std::map<std::string, ClientState> clients;
    int lastPid = 5000;
};

struct Records {
    std::vector<Command> commands;
    std::vector<LogLine> log;
    std::function<void(const LogLine&)> onLog;
    std::vector<Called> callbacks;
    std::size_t callbacksTaken = 0; ///< Already compared.
    std::vector<Signal> signals;
    std::vector<std::string> netlinkRequests;
    std::function<void(MovoNetCBReason_e, void*)> onCallback;
    std::function<void(MovoNetCBReason_e, void*)> watcher;
    bool installAtFirstLook = false;
};

struct FaultRule {
    Fault fault;
    int matched = 0;
    int struck = 0;
    bool cleared = false;
};
} // namespace sim

#endif
