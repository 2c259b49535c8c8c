#include "movo_net_fl_hostap/hostap.h"
#include "support/command.h"
#include "support/log.h"

#include <unistd.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_hostap", &KEST_CAT_DEFAULT};

constexpr const char* kMarker = "/data/wakeoncast";

/** The chip's command, by whether a cast request may wake the set; logs under its caller's name. */
const char* wakeCommand(CallSite at)
{
    if (access(kMarker, F_OK) != 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "wifi_wake : Access %s failed ,no such file!disable wake-on-cast \n", kMarker);
        return "wl wowl 1&&wl wowl_activate ";
    }
    // Deliberate: "% s" prints the path right before the rest of the word. The compiler rightly doubts the blank.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
    NET_LOG_AT(at, KEST_LEVEL_ERROR, "wifi_wake : Access % success , enable wake-on-cast \n", kMarker);
#pragma GCC diagnostic pop
    return "wl wowl 0x80001&&wl wowl_activate ";
}
} // namespace

RETURN_TYPE Movo_Net_WiFi_Wakeup(int /*appid*/, char* /*iface*/, kest_bool /*wakeup*/)
{
    if (runShell(wakeCommand(NET_HERE)) != 0) {
        NET_ERROR("wifi_wake: WiFi enter power save mode failed\n");
        return kFail;
    }
    NET_INFO("wifi_wake: WiFi enter power save mode successfully\n");
    return kOk;
}
