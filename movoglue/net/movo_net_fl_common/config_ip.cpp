#include "movo_net_fl_common/common.h"
#include "movo_net_fl_common/dhcp.h"
#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_wifi/wifi.h"
#include "movo_net_fl_wpactrl/wpactrl.h"
#include "support/atomic.h"
#include "support/command.h"
#include "support/log.h"
#include "support/own_file.h"
#include "support/text.h"

#include <cerrno>
#include <cstring>
#include <sys/select.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace movonet;

// The helpers of this file are steps of ConfigIP and speak for it.

namespace {
constexpr LogModule kLog{"movo_net_fl_common", &movoglue_net_debug};

constexpr mode_t kPipeMode = 02702;
constexpr int kLeaseTimeoutSeconds = 90;

/** One call of ConfigIP. */
struct Run {
    MovoNetIface_t* iface;
    bool whileActive; ///< The interface was active at the beginning, so the run is over when it is taken down.
    CallSite at;

    bool over() const { return whileActive && !load(iface->isActived); }
};

bool applyStaticAddress(const Run& run)
{
    MovoNetIface_t* pIface = run.iface;
    // Each field is read when its turn comes: the callback of the address step may change those after it.
    const auto plausible = [](const std::uint32_t& field) { return isPlausible(load(field)); };
    return plausible(pIface->sipv4) && int_Movo_Net_SetIpv4(pIface, load(pIface->sipv4)) == kOk && !run.over() &&
           int_Movo_Net_SetMaskv4(pIface, load(pIface->smaskv4)) == kOk && plausible(pIface->sgwv4) &&
           int_Movo_Net_SetGwv4(pIface, load(pIface->sgwv4)) == kOk &&
           (plausible(pIface->sdns1v4) || plausible(pIface->sdns2v4)) &&
           int_Movo_Net_Setdnsv4(pIface, load(pIface->sdns1v4), load(pIface->sdns2v4)) == kOk && ResetGwAndDns() == kOk;
}

/** Marks the interface connected unless the run is over; a reselection would choose it. */
bool markConnected(const Run& run)
{
    const LoopGate gate;
    if (run.over()) {
        return false;
    }
    store(run.iface->isConnected, kTrue); // Deliberate: also when the configuration was refused.
    return true;
}

void configureStatic(const Run& run)
{
    MovoNetIface_t* pIface = run.iface;
    NET_LOG_AT(run.at, KEST_LEVEL_INFO, "if=%s, ip=%08x, mask=%08x, gw=%08x, dns1=%08x, dns2=%08x\n", pIface->name,
               load(pIface->sipv4), load(pIface->smaskv4), load(pIface->sgwv4), load(pIface->sdns1v4),
               load(pIface->sdns2v4));
    if (IsDhcpcdRunning(pIface)) {
        (void)ShutdownDhcpcd(pIface, kRelease);
    }
    if (run.over()) {
        return;
    }
    store(pIface->priority, priorityWithAddress(*pIface));
    const bool applied = applyStaticAddress(run);
    if (!markConnected(run)) {
        return;
    }
    store(g_isWifiConnectByUI, kFalse);
    (void)NotifyApp(_MOVO_NET_CALLBACK_IPCHANGED_, pIface);
    if (run.over()) {
        return;
    }
    NotifyNtpclient();
    (void)NotifyApp(applied ? _MOVO_NET_CALLBACK_STATICIP_SUCCESS_ : _MOVO_NET_CALLBACK_STATICIP_FAILED_, pIface);
}

bool isAssociated(MovoNetIface_t* pIface)
{
    kest_bool connected = kFalse;
    (void)int_Movo_Net_Wpactrl_IsConnected(pIface, &connected);
    return connected != kFalse;
}

bool openPipe(MovoNetIface_t* pIface, const HeapText& path, CallSite at)
{
    if (mkfifo(path.c_str(), kPipeMode) != 0 && errno != EEXIST) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "can't create fifo : %s\n", std::strerror(errno));
        return false;
    }
    const int fd = openFifo(path.c_str());
    if (fd < 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "can not open file: %s error is %s\n", path.c_str(), std::strerror(errno));
        return false;
    }
    // A client with an empty pid file leaves its pipe open; its descriptor and event must not be lost.
    if (const int left = exchange(pIface->dhcpcfd, fd); left != kNoFd) {
        (void)int_removeEvent(exchange(pIface->dhcpcEventHandle, 0));
        (void)close(left);
    }
    return true;
}

/** Makes the pipe anew and watches it. The loop is held off: file, descriptor and event change together. */
bool watchPipe(const Run& run, const HeapText& path)
{
    MovoNetIface_t* pIface = run.iface;
    const CallSite at = run.at;
    const LoopGate gate;
    if (run.over()) {
        return false;
    }
    const int removed = unlink(path.c_str());
    NET_LOG_AT(at, KEST_LEVEL_INFO, "removing dhcpcd pipe: %s, return=%d\n", path.c_str(), removed);
    NET_LOG_AT(at, KEST_LEVEL_INFO, "opening dhcpcd pipe: %s\n", path.c_str());
    if (!openPipe(pIface, path, at)) {
        return false;
    }
    const int fd = load(pIface->dhcpcfd);
    // One that is too high for the loop's set would park the loop for good.
    if (fd >= FD_SETSIZE || int_addEvent({fd, 0, pIface, OnDhcpEventRev}, &pIface->dhcpcEventHandle) != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "can not addevent\n");
        return false;
    }
    return true;
}

bool pipeIsNamed(const MovoNetIface_t& iface, const HeapText& path)
{
    const LoopGate gate; // nobody closes the descriptor meanwhile
    return isNamed(load(iface.dhcpcfd), path.c_str());
}

/** The command follows links, so that the name must still be the pipe's. */
bool openToEverybody(const MovoNetIface_t& iface, const HeapText& path, CallSite at)
{
    if (!pipeIsNamed(iface, path) || runShell(HeapText("chmod 777 %s", path.c_str())) != 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, ":chmod failed \n");
        return false;
    }
    return true;
}

int launchClient(MovoNetIface_t* pIface, const HeapText& path)
{
    // Deliberate: the two commands differ in blanks alone; the client is not told of auto-IP.
    if (load(pIface->ipMode) == _MOVO_NET_IPMODE_AUTOIP_) {
        return runShell(
            HeapText("export DHCP_NOTIFY_PIPE_DIR=\"%s\"; /system/bin/dhcpcd -B  --noarp -h movo-tv -t %d %s &",
                     path.c_str(), kLeaseTimeoutSeconds, pIface->name));
    }
    return runShell(
        HeapText("export DHCP_NOTIFY_PIPE_DIR=\"%s\"; /system/bin/dhcpcd  -B --noarp -h movo-tv  -t %d %s &",
                 path.c_str(), kLeaseTimeoutSeconds, pIface->name));
}

RETURN_TYPE startClient(const Run& run)
{
    MovoNetIface_t* pIface = run.iface;
    const HeapText path("%s.%s", load(s_sDhcpcdPipeName), pIface->name);
    if (!watchPipe(run, path) || !openToEverybody(*pIface, path, run.at) || run.over()) {
        return kFail;
    }
    store(pIface->ipStatus, _MOVO_NET_IPSTATUS_DHCP_ACQUIRING_);
    if (launchClient(pIface, path) == -1) {
        NET_LOG_AT(run.at, KEST_LEVEL_ERROR, "launch dhcpcd faild\n");
        return kFail;
    }
    return kOk;
}

RETURN_TYPE configureDhcp(const Run& run, kest_bool force)
{
    MovoNetIface_t* pIface = run.iface;
    NET_LOG_AT(run.at, KEST_LEVEL_INFO, "Set IP mode to  dhcp, should set IP address to 0.0.0.0\n");
    (void)runShell(FixedText<384>("ifconfig %s 0.0.0.0", pIface->name));
    if (IsDhcpcdRunning(pIface)) {
        if (!force) {
            // Deliberate: the client keeps the interface, although its address was just cleared.
            (void)NotifyApp(_MOVO_NET_CALLBACK_IPCHANGED_, pIface);
            return kOk;
        }
        (void)ShutdownDhcpcd(pIface, kRelease);
    }
    if (pIface->type == _MOVO_NET_IFACE_WIFI_ && !isAssociated(pIface)) {
        NET_LOG_AT(run.at, KEST_LEVEL_INFO, "wifi not connected, can not dhcp\n");
        return kFail;
    }
    return startClient(run);
}

/** Takes back what a run has left that is over. The gate keeps an activation from coming in between. */
bool undoIfOver(const Run& run)
{
    const LoopGate gate;
    if (!run.over()) {
        return false;
    }
    if (usesStaticAddress(*run.iface)) {
        (void)ShutdownDhcpcd(run.iface, kRelease); // the mode may have been DHCP until now
    }
    (void)ifdown(run.iface);
    return true;
}

RETURN_TYPE configure(const Run& run, kest_bool force)
{
    RETURN_TYPE result = kOk;
    NET_LOG_AT(run.at, KEST_LEVEL_INFO, "if=%s\n", run.iface->name);
    if (usesStaticAddress(*run.iface)) {
        configureStatic(run);
    } else {
        result = configureDhcp(run, force);
    }
    return undoIfOver(run) ? kOk : result;
}
} // namespace

namespace movonet {
RETURN_TYPE configureActive(MovoNetIface_t* pIface, kest_bool force)
{
    return configure({pIface, true, CallSite{"ConfigIP", __LINE__}}, force);
}
} // namespace movonet

RETURN_TYPE ConfigIP(MovoNetIface_t* pIface, kest_bool force)
{
    NET_REQUIRE(pIface != nullptr, "pIface");
    return configure({pIface, load(pIface->isActived) != kFalse, NET_HERE}, force);
}
