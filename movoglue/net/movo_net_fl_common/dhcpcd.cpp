#include "movo_net_fl_common/common.h"
#include "movo_net_fl_common/dhcp.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "support/atomic.h"
#include "support/command.h"
#include "support/fd.h"
#include "support/log.h"
#include "support/own_file.h"
#include "support/process.h"
#include "support/text.h"

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_common", &movoglue_net_debug};

constexpr int kPollMs = 10;
constexpr int kMaxPolls = 200;

struct PidFile {
    explicit PidFile(const MovoNetIface_t& iface) : path("/tmp/dhcp/dhcpcd-%s.pid", iface.name) {}

    FixedText<31> path;
    bool exists = false;
    bool empty = true;
    int pid = 0;
};

PidFile readPidFile(const MovoNetIface_t& iface)
{
    PidFile result(iface);
    // What a local user may plant under this name counts as no file, or we would signal the process of his choice.
    const UniqueFd file(openRegular(result.path.c_str(), O_RDONLY));
    result.exists = static_cast<bool>(file);
    if (!result.exists) {
        return result;
    }
    char text[32] = {};
    result.empty = read(file.get(), text, sizeof(text) - 1) <= 0;
    // Rubbish reads as 0, and what no int holds as the nearest that one does.
    const long pid = std::strtol(text, nullptr, 10);
    result.pid = static_cast<int>(std::clamp<long>(pid, INT_MIN, INT_MAX));
    return result;
}

/** A pid that must not be signalled counts as that of a client that is gone. */
bool processExists(int pid)
{
    return maySignal(pid) && kill(pid, 0) == 0;
}

// The helpers below are steps of ShutdownDhcpcd and IsDhcpcdRunning and speak for them.

/** The loop is held off: file, descriptor and event change together. */
void closePipe(MovoNetIface_t* pIface, CallSite at)
{
    const LoopGate gate;
    const int fd = exchange(pIface->dhcpcfd, kNoFd);
    if (fd == kNoFd) {
        return;
    }
    (void)int_removeEvent(exchange(pIface->dhcpcEventHandle, 0));
    (void)close(fd);
    const FixedText<32> path("%s.%s", load(s_sDhcpcdPipeName), pIface->name);
    if (!path.fits()) {
        failedRequirement("path.fits()", kLog.name, at);
    }
    const int removed = unlink(path.c_str());
    NET_LOG_AT(at, KEST_LEVEL_INFO, "removing dhcpcd pipe: %s, return=%d\n", path.c_str(), removed);
}

bool waitForEnd(int pid)
{
    Kest_Util_Delay(kPollMs);
    for (int poll = 0; poll < kMaxPolls; ++poll) {
        if (!processExists(pid)) {
            return true;
        }
        Kest_Util_Delay(kPollMs);
    }
    return false;
}

void killClient(const MovoNetIface_t& iface, int pid, CallSite at)
{
    // Deliberate: the constant 201 is printed, not the number of attempts.
    NET_LOG_AT(at, KEST_LEVEL_ERROR, "ShutdownDhcpcd, kill dhcp process, time out count = %d\n", 201);
    (void)runShell(FixedText<256>("kill -9 %d", pid));
    (void)runShell(FixedText<256>("rm /tmp/dhcp/dhcpcd-%s.cache /tmp/dhcp/dhcpcd-%s.info /tmp/dhcp/dhcpcd-%s.pid",
                                  iface.name, iface.name, iface.name));
}

bool signalClient(const MovoNetIface_t& iface, int pid, kest_bool bKeepIfconfig, CallSite at)
{
    if (kill(pid, bKeepIfconfig ? SIGUSR1 : SIGHUP) != 0) {
        // Deliberate: the same words for both signals.
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "command kill SIGUSR1 failed.\n");
        return false;
    }
    if (!bKeepIfconfig && !waitForEnd(pid)) {
        killClient(iface, pid, at);
    }
    return true;
}

bool isRunning(MovoNetIface_t* pIface, CallSite at)
{
    const PidFile file = readPidFile(*pIface);
    NET_LOG_AT(at, KEST_LEVEL_INFO, "IsDhcpcdRunning, checking file %s\n", file.path.c_str());
    if (!file.exists) {
        (void)ShutdownDhcpcd(pIface, kRelease);
        return false;
    }
    if (file.empty) {
        return false;
    }
    NET_LOG_AT(at, KEST_LEVEL_INFO, "IsDhcpcdRunning, dhcpcd pid=%d\n", file.pid);
    const bool alive = processExists(file.pid);
    const bool open = load(pIface->dhcpcfd) != kNoFd;
    const bool watched = load(pIface->dhcpcEventHandle) != 0;
    if (alive && open && watched) {
        return true;
    }
    if (!alive && !open && !watched) {
        (void)unlink(file.path.c_str());
    } else {
        (void)ShutdownDhcpcd(pIface, kRelease);
    }
    return false;
}
} // namespace

kest_bool ShutdownDhcpcd(MovoNetIface_t* pIface, kest_bool bKeepIfconfig)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    NET_INFO("ShutdownDhcpcd, pIface->dhcpcfd=%d, pIface->dhcpcEventHandle=0x%x\n", load(pIface->dhcpcfd),
             static_cast<unsigned>(load(pIface->dhcpcEventHandle)));
    closePipe(pIface, NET_HERE);

    const PidFile file = readPidFile(*pIface);
    NET_INFO("ShutdownDhcpcd, checking file %s\n", file.path.c_str());
    if (!file.exists) {
        NET_INFO("ShutdownDhcpcd, Q310 don't support\n");
        return kTrue;
    }
    if (!file.empty) {
        NET_INFO("ShutdownDhcpcd, dhcpcd pid=%d\n", file.pid);
        if (processExists(file.pid)) {
            NET_INFO("ShutdownDhcpcd, dhcpcd running, pid=%d\n", file.pid);
            if (!signalClient(*pIface, file.pid, bKeepIfconfig, NET_HERE)) {
                return kFalse;
            }
        }
    }
    (void)unlink(file.path.c_str());
    return kTrue;
}

kest_bool IsDhcpcdRunning(MovoNetIface_t* pIface)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    NET_INFO("IsDhcpcdRunning, pIface->dhcpcfd=%d, pIface->dhcpcEventHandle=0x%x\n", load(pIface->dhcpcfd),
             static_cast<unsigned>(load(pIface->dhcpcEventHandle)));
    const bool running = isRunning(pIface, NET_HERE);
    NET_INFO("Dhcp running=%d\n", running ? 1 : 0);
    return running ? kTrue : kFalse;
}
