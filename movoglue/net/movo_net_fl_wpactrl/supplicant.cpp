#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_wifi/device.h"
#include "movo_net_fl_wpactrl/channel.h"
#include "movo_net_fl_wpactrl/connect.h"
#include "support/atomic.h"
#include "support/command.h"
#include "support/fd.h"
#include "support/log.h"
#include "support/own_file.h"
#include "support/process.h"
#include "support/text.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <wpa_ctrl.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wpactrl", &movoglue_net_debug};

constexpr int kMaxWaitCount = 12;
constexpr const char* kConfiguration = "/etc/wpa_supplicant.conf";
constexpr std::size_t kCommandSize = 148;

kest_bool s_bBootup = kTrue;
std::int32_t wait_count;

/**
 * The board's command line with name, configuration and name in place of its first three %s. Nothing else of it is a
 * format: %% is a percent sign, a further %s nothing, and any other percent sign itself. What is too long is cut.
 */
class SupplicantCommand {
public:
    SupplicantCommand(const char* pattern, const char* ifname)
    {
        const char* const arguments[] = {ifname, kConfiguration, ifname};
        std::size_t used = 0;
        for (const char* at = pattern; *at != '\0'; ++at) {
            if (at[0] != '%' || (at[1] != 's' && at[1] != '%')) {
                append(at, 1);
                continue;
            }
            ++at;
            if (*at == '%') {
                append("%", 1);
            } else if (used < std::size(arguments)) {
                append(arguments[used], std::strlen(arguments[used]));
                ++used;
            }
        }
    }
    const char* c_str() const { return m_text; }

private:
    void append(const char* text, std::size_t length)
    {
        const std::size_t room = sizeof(m_text) - 1 - m_length;
        const std::size_t copied = length < room ? length : room;
        std::memcpy(m_text + m_length, text, copied);
        m_length += copied;
    }

    char m_text[kCommandSize] = {};
    std::size_t m_length = 0;
};

// The ones below speak for the public functions whose steps they are.

/** At boot the system starts the supplicant; it is waited for, one look a call. */
RETURN_TYPE adoptAtBoot(MovoNetIface_t* pIface, CallSite at)
{
    const std::int32_t count = load(wait_count);
    if (!Wpa_Wpa_supplicantIsOn(pIface)) {
        NET_LOG_AT(at, KEST_LEVEL_INFO, "Wpa_supplicant is not running.wait_count %d\n", count);
        store(wait_count, count + 1);
        return kFail;
    }
    if (count > kMaxWaitCount) {
        // Deliberate: waiting too long is for good.
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "Max wait count reached, Wpa_supplicant may not be launched\n");
        return kFail;
    }
    store(s_bBootup, kFalse);
    return kOk;
}

RETURN_TYPE launchSupplicant(MovoNetIface_t* pIface, CallSite at)
{
    const MovoNetWifiDevType_e devType = load(wifi_iface(pIface)->devType);
    if (devType == _MOVO_NET_WIFI_UNKNOWN_) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "The wifi device is not supported.\n");
        return kFail;
    }
    (void)runShell("cp -f Misc/wpa_supplicant.conf /etc/");
    (void)runShell("sync");
    const char* pattern = int_Wifi_GetWpaSupplicantStr(devType);
    if (pattern == nullptr) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "WPA_SUPPLICANT_STR for device type %d is not configured.\n",
                   static_cast<int>(devType));
        return kFail;
    }
    NET_LOG_AT(at, KEST_LEVEL_INFO, "WPA_SUPPLICANT_STR: %s\n", pattern);
    const SupplicantCommand command(pattern, pIface->name);
    // Deliberate: always visible.
    NET_LOG_AT(at, KEST_LEVEL_ERROR, "Current WPA_Supplicant cmd is: %s\n", command.c_str());
    if (runShell(command) == -1) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "Start wpa_supplicant failed.\n");
        return kFail;
    }
    return kOk;
}

void killSupplicant(const MovoNetIface_t& iface, CallSite at)
{
    const FixedText<128> path("/tmp/wpa_supplicant_%s.pid", iface.name);
    NET_LOG_AT(at, KEST_LEVEL_INFO, "checking file %s\n", path.c_str());
    const UniqueFd file(openRegular(path.c_str(), O_RDONLY));
    char text[32] = {};
    if (!file || read(file.get(), text, sizeof(text) - 1) <= 0) {
        return;
    }
    const long long parsed = std::strtoll(text, nullptr, 10);
    const int pid = parsed > INT_MAX || parsed < INT_MIN ? 0 : static_cast<int>(parsed);
    NET_LOG_AT(at, KEST_LEVEL_INFO, "wpa_supplicant pid=%d\n", pid);
    if (maySignal(pid)) {
        (void)runShell(FixedText<128>("kill -9 %d", pid));
    }
}
} // namespace

kest_bool Wpa_Wpa_supplicantIsOn(MovoNetIface_t* pIface)
{
    if (pIface == nullptr) {
        NET_REPORT("pIface");
        return kFalse;
    }
    constexpr const char* kCommand = "ps |grep wpa_supplicant";
    NET_INFO("Command: %s\n", kCommand);
    return runShell(kCommand) == 0 ? kTrue : kFalse;
}

RETURN_TYPE Wpa_SetWpa_supplicantOn(MovoNetIface_t* pIface)
{
    if (pIface == nullptr) {
        NET_REPORT("pIface");
        return kBadArgument;
    }
    if (wpactrl_iface(pIface) == nullptr) {
        return kBadArgument;
    }
    if (load(s_bBootup)) {
        return adoptAtBoot(pIface, NET_HERE);
    }
    if (Wpa_Wpa_supplicantIsOn(pIface)) {
        NET_INFO("Wpa_supplicant is already running.\n");
        return kOk;
    }
    return launchSupplicant(pIface, NET_HERE);
}

RETURN_TYPE Wpa_SetWpa_supplicantOff(MovoNetIface_t* pIface)
{
    if (pIface == nullptr) {
        NET_REPORT("pIface");
        return kBadArgument;
    }
    Wpactrl_t* w = wpactrl_iface(pIface);
    if (w != nullptr && load(w->ctrl_conn) != nullptr) {
        if (Wpactrl_ExecCmd(w, "TERMINATE") == kOk) {
            return kOk;
        }
        closeCommandConnection(*w);
    }
    killSupplicant(*pIface, NET_HERE);
    return kOk;
}

RETURN_TYPE ShutdownWpactrl(MovoNetIface_t* pIface)
{
    if (pIface == nullptr) {
        NET_REPORT("pIface");
        return kBadArgument;
    }
    Wpactrl_t* w = wpactrl_iface(pIface);
    if (w == nullptr) {
        return kBadArgument;
    }
    const LoopGate gate; // connections and event change together, as in an activation
    if (load(w->ctrl_conn) == nullptr || exchange(w->isShuttingDown, kTrue)) {
        return kOk;
    }
    (void)int_removeEvent(load(w->event_handle));
    detachMonitorConnection(*w);
    closeMonitorConnection(*w);
    (void)Wpa_SetWpa_supplicantOff(pIface);
    store(w->generation, load(w->generation) + 1); // before: a reconnection on another thread must not come after it
    // A supplicant that ended by itself leaves the connection open; each would cost a descriptor and a socket file.
    replaceCommandConnection(*w, nullptr);
    store(w->isShuttingDown, kFalse);
    return kOk;
}
