#include "sim/sim.h"
#include "sim/world.h"

#include <fcntl.h>
#include <sstream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace sim {
namespace {
ClientState& clientOf(const std::string& ifname)
{
    return world().processes.clients[ifname];
}

/** Changes what the next clients are born as, and the one that runs. */
template <typename Change>
void changeClient(const std::string& ifname, Change change)
{
    const Hold hold;
    ClientState& client = clientOf(ifname);
    change(client.born);
    if (client.pid != 0) {
        change(world().processes.all[client.pid]);
    }
}

/** Something lies in the pipe, and the test may let time pass. */
bool isUnread(int fd)
{
    int bytes = 0;
    const Hold hold;
    return !self().tracked && anybodySelects() && ioctl(fd, FIONREAD, &bytes) == 0 && bytes > 0;
}

void writeLeaseFiles(const std::string& ifname, const Lease& lease)
{
    writeFile("/etc/dhcpc/dhcpcd-" + ifname + ".info",
              "DOMAIN='" + lease.domain + "'\nDNS=" + lease.dns + "\nGATEWAY=" + lease.gateway + "\n");
    std::string resolver;
    std::istringstream servers(lease.dns);
    for (std::string server; std::getline(servers, server, ',');) {
        resolver += "nameserver " + server + "\n";
    }
    writeFile("/etc/resolv.conf", resolver + "search " + lease.domain + "\n");
}
} // namespace

int launchClient(const std::string& command)
{
    // export DHCP_NOTIFY_PIPE_DIR="PIPE"; /system/bin/dhcpcd OPTIONS IF &
    const std::size_t quote = command.find('"');
    const std::size_t end = command.rfind(" &");
    const std::size_t blank = command.rfind(' ', end - 1);
    if (quote == std::string::npos || end == std::string::npos) {
        return 127 << 8;
    }
    const std::string ifname = command.substr(blank + 1, end - blank - 1);
    ClientState& client = clientOf(ifname);
    client.pipe = command.substr(quote + 1, command.find('"', quote + 1) - quote - 1);
    client.pid = ++world().processes.lastPid;
    ++client.launches;
    ProcessState process = client.born;
    process.client = ifname;
    world().processes.all[client.pid] = process;
    if (client.writesPidFile) {
        writeFile("/tmp/dhcp/dhcpcd-" + ifname + ".pid", std::to_string(client.pid) + "\n");
    }
    return 0; // the shell has put it into the background
}

DhcpClient::DhcpClient(std::string ifname) : m_ifname(std::move(ifname)) {}

bool DhcpClient::running() const
{
    return pid() != 0 && process().alive();
}

int DhcpClient::pid() const
{
    const Hold hold;
    return clientOf(m_ifname).pid;
}

Process DhcpClient::process() const
{
    return Process(pid());
}

int DhcpClient::launches() const
{
    const Hold hold;
    return clientOf(m_ifname).launches;
}

std::string DhcpClient::pipe() const
{
    const Hold hold;
    return clientOf(m_ifname).pipe;
}

void DhcpClient::says(const std::string& message)
{
    const int fd = open((realPath(pipe())).c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        ADD_FAILURE() << "the client of " << m_ifname << " cannot say \"" << message << "\": nobody listens at "
                      << pipe();
        return;
    }
    const ssize_t written = ::write(fd, message.data(), message.size());
    EXPECT_EQ(written, static_cast<ssize_t>(message.size()));
    settleWorld();
    // The loop does not look at a pipe that was registered from elsewhere before its wait has passed.
    for (int waits = 0; waits < 2 && isUnread(fd); ++waits) {
        passTicks(1);
    }
    (void)close(fd);
}

void DhcpClient::leases(const Lease& lease)
{
    {
        const Hold hold;
        KernelIface& iface = ifaceOrFail(m_ifname);
        iface.address = addressOf(lease.address);
        iface.mask = addressOf(lease.mask);
        dropRoutes(m_ifname);
        if (!lease.gateway.empty()) {
            world().kernel.routes.push_back({.ifname = m_ifname, .gateway = lease.gateway});
        }
        writeLeaseFiles(m_ifname, lease);
    }
    says("new");
}

void DhcpClient::loses()
{
    {
        const Hold hold;
        clearAddress(ifaceOrFail(m_ifname));
    }
    says("down");
}

DhcpClient& DhcpClient::ignoresHangup()
{
    changeClient(m_ifname, [](ProcessState& process) { process.ignoresHangup = true; });
    return *this;
}

DhcpClient& DhcpClient::diesAfterProbes(int probes)
{
    changeClient(m_ifname, [probes](ProcessState& process) { process.probesToDeath = probes; });
    return *this;
}

DhcpClient& DhcpClient::foreign()
{
    changeClient(m_ifname, [](ProcessState& process) { process.foreign = true; });
    return *this;
}

DhcpClient& DhcpClient::withoutPidFile()
{
    const Hold hold;
    clientOf(m_ifname).writesPidFile = false;
    return *this;
}
} // namespace sim
