#include "sim/calls.h"
#include "sim/sim.h"
#include "sim/world.h"

#include <csignal>

namespace sim {
namespace {
ProcessState& stateOf(int pid)
{
    return world().processes.all[pid];
}

/** What a DHCP client does before it ends. */
void endClient(int pid, const ProcessState& process, bool release)
{
    if (process.client.empty()) {
        return;
    }
    if (KernelIface* iface = findIface(process.client); release && iface != nullptr) {
        clearAddress(*iface);
    }
    const std::string pidFile = "/tmp/dhcp/dhcpcd-" + process.client + ".pid";
    if (readFile(pidFile) == std::to_string(pid) + "\n") {
        (void)remove(realPath(pidFile).c_str());
    }
}

void end(int pid, ProcessState& process, bool release)
{
    process.alive = false;
    endClient(pid, process, release);
}

/** Signal 0 finds a process that is about to end for a while yet. */
void noteProbe(int pid, ProcessState& process)
{
    if (process.dying && --process.probesToDeath <= 0) {
        end(pid, process, true);
    }
}

void hangUp(int pid, ProcessState& process)
{
    if (process.ignoresHangup || process.dying) {
        return;
    }
    process.dying = process.probesToDeath > 0;
    if (!process.dying) {
        end(pid, process, true);
    }
}

int deliver(int pid, int number)
{
    const auto found = world().processes.all.find(pid);
    if (found == world().processes.all.end() || !found->second.alive) {
        return ESRCH;
    }
    ProcessState& process = found->second;
    if (process.foreign) {
        return number == 0 ? 0 : EPERM;
    }
    switch (number) {
    case 0:
        noteProbe(pid, process);
        break;
    case SIGHUP:
        hangUp(pid, process);
        break;
    case SIGKILL:
        process.alive = false;
        break;
    default:
        end(pid, process, false);
        break;
    }
    return 0;
}
} // namespace

int signalProcess(int pid, int number)
{
    int result = 0;
    if (pid <= 0) {
        world().problems.push_back("a signal for pid " + std::to_string(pid) + " would reach many processes");
    } else {
        result = deliver(pid, number);
    }
    world().records.signals.push_back({pid, number, result});
    return result;
}

Process::Process(int pid) : m_pid(pid) {}

bool Process::alive() const
{
    const Hold hold;
    const auto& all = world().processes.all;
    const auto found = all.find(m_pid);
    return found != all.end() && found->second.alive;
}

Process& Process::diesAfterProbes(int probes)
{
    const Hold hold;
    stateOf(m_pid).probesToDeath = probes;
    return *this;
}

Process& Process::ignoresHangup()
{
    const Hold hold;
    stateOf(m_pid).ignoresHangup = true;
    return *this;
}

Process& Process::foreign()
{
    const Hold hold;
    stateOf(m_pid).foreign = true;
    return *this;
}

void Process::dies()
{
    const Hold hold;
    stateOf(m_pid).alive = false;
}

Process Set::process(int pid)
{
    const Hold hold;
    (void)stateOf(pid);
    return Process(pid);
}

std::vector<Signal> Set::signals() const
{
    const Hold hold;
    return world().records.signals;
}

std::ostream& operator<<(std::ostream& out, const Signal& signal)
{
    return out << "signal " << signal.number << " for " << signal.pid << ": " << signal.result;
}
} // namespace sim

using namespace sim;

int sim_kill(pid_t pid, int number)
{
    if (!active()) {
        return kill(pid, number);
    }
    if (const auto strike = enter(Call::Kill, {.name = std::to_string(pid)})) {
        return failWith(strike->error);
    }
    int error = 0;
    {
        const Hold hold;
        error = signalProcess(pid, number);
    }
    return error == 0 ? 0 : failWith(error);
}
