/** The parts of the simulated set that a test takes in its hands: cables, interfaces, clients, processes. */
#ifndef SIM_MACHINE_H
#define SIM_MACHINE_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace sim {
/** The cable of a wired interface and the PHY behind it. Nothing notices before the next look at the PHY. */
class Cable {
public:
    explicit Cable(std::string ifname);

    Cable& plug();
    Cable& pull();
    Cable& remoteFault(bool present = true);
    Cable& jabber(bool present = true);
    /** Raw contents of register 1, until the next plug or pull. */
    Cable& statusRegister(std::uint16_t bits);
    /** The driver answers no PHY request at all: EOPNOTSUPP. */
    Cable& withoutMii();

private:
    std::string m_ifname;
};

/** A kernel interface. Addresses are dotted quads, "0.0.0.0" when there is none. */
class Iface {
public:
    explicit Iface(std::string name);

    bool up() const;
    std::string address() const;
    std::string mask() const;
    /** Like "52:54:00:12:34:56". */
    std::string mac() const;
    int index() const;

    Iface& setUp(bool up);
    Iface& setAddress(const std::string& address, const std::string& mask = "255.255.255.0");
    Iface& setMac(const std::string& mac);
    /** Listed in /proc/net/wireless too. */
    Iface& wireless(bool listed = true);
    /** Gone from the machine, routes included; `Set::addIface` brings it back. */
    void unplugDevice();

private:
    std::string m_name;
};

/** A process of the set, other than the product. */
class Process {
public:
    explicit Process(int pid);

    int pid() const { return m_pid; }
    bool alive() const;
    /** SIGHUP ends it only when it has been looked for (signal 0) so many times. */
    Process& diesAfterProbes(int probes);
    /** Only SIGKILL ends it. */
    Process& ignoresHangup();
    /** Belongs to somebody else: signals above 0 give EPERM. */
    Process& foreign();
    /** Ends by itself. */
    void dies();

private:
    int m_pid;
};

/** What a DHCP server hands out. */
struct Lease {
    std::string address = "10.0.2.15";
    std::string mask = "255.255.255.0";
    std::string gateway = "10.0.2.2";
    std::string dns = "10.0.2.3"; ///< Comma separated.
    std::string domain = "lan";
};

/**
 * The DHCP client of one interface. It comes to life when the product runs the launch command: takes a pid, writes
 * /tmp/dhcp/dhcpcd-IF.pid and remembers the pipe it was given. SIGHUP: gives the address back and ends. SIGUSR1:
 * ends. After each `says`, `leases` and `loses` the loop has dealt with the message and is quiet again.
 */
class DhcpClient {
public:
    explicit DhcpClient(std::string ifname);

    bool running() const;
    int pid() const;
    Process process() const;
    int launches() const;
    /** Pipe of the last launch, as the product named it. */
    std::string pipe() const;

    /** Writes bytes to the notify pipe; a tick passes if the loop does not know the pipe yet. A pipe that nobody has
     * open fails the test. */
    void says(const std::string& message);
    /** Address, route, info file and resolver file first, then "new". */
    void leases(const Lease& lease = {});
    /** Clears the address and says "down". */
    void loses();
    /** The client and all that follow it are such processes. */
    DhcpClient& ignoresHangup();
    DhcpClient& diesAfterProbes(int probes);
    DhcpClient& foreign();
    /** All that follow do not write their pid file. */
    DhcpClient& withoutPidFile();

private:
    std::string m_ifname;
};

/** Whoever watches a file for changes (inotify). After each call they have dealt with what they were told. */
class FileWatch {
public:
    explicit FileWatch(std::string path);

    int watchers() const;
    /** The changes that its watchers wait for, together. */
    std::uint32_t awaited() const;
    /** The file was written. */
    void modified();
    /** The file was removed: its watches report that and end. */
    void gone();
    /** What their next read gives, events or not. */
    void tells(const std::string& bytes);

private:
    std::string m_path;
};

/** A shell command with an answer of its own. Matches commands that begin with the text; the last rule wins. */
class CommandRule {
public:
    explicit CommandRule(int number) : m_number(number) {}

    /** Not run at all; system() and pclose() return `status`. */
    CommandRule& fails(int status = 256);
    /** Not run; prints to its reader and returns 0. */
    CommandRule& prints(std::string output);
    /** Run as usual, with `action` first, on the product's thread. */
    CommandRule& does(std::function<void()> action);
    /** Run as usual, but for so long; before that, its action is run. */
    CommandRule& takes(int milliseconds);
    /** Only so many times; then the older rules count again. */
    CommandRule& times(int count);

private:
    int m_number;
};
} // namespace sim

#endif
