#include "movo_net_fl_hostap/hostap.h"
#include "support/atomic.h"
#include "support/command.h"
#include "support/fd.h"
#include "support/log.h"
#include "support/text.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_hostap", &KEST_CAT_DEFAULT};

constexpr const char* kConfigurationFile = "/data/wifi/hostapd.conf";
// Deliberate: the message tells one channel, the file leaves the choice to hostapd.
constexpr int kToldChannel = 6;
constexpr int kChannel = 0;

using Configuration = FixedText<256>;

// Both speak for SoftAP_startHostapd.

bool writeConfiguration(const Configuration& text, CallSite at)
{
    const UniqueFd file(open(kConfigurationFile, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (!file) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP:error open %s: %s \n", kConfigurationFile, std::strerror(errno));
        return false;
    }
    const std::size_t length = std::strlen(text.c_str());
    if (write(file.get(), text.c_str(), length) != static_cast<ssize_t>(length)) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP:error write to %s: %s\n", kConfigurationFile, std::strerror(errno));
        return false;
    }
    if (fchmod(file.get(), 0777) != 0) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "HOSTAP:error fchmod %s: %s", kConfigurationFile, std::strerror(errno));
        return false;
    }
    return true;
}

/** Runs one of the platform's switches; logs under its caller's name. */
int runSwitch(const FixedText<256>& command, CallSite at)
{
    NET_LOG_AT(at, KEST_LEVEL_INFO, "HOSTAP :run dnsmasq \n"); // Deliberate: for either switch.
    NET_LOG_AT(at, KEST_LEVEL_INFO, "HOSTAP:Command: %s\n", command.c_str());
    return runShell(command) != 0 ? -1 : 0;
}
} // namespace

int SoftAP_hostapd_setprop(kest_bool up)
{
    return runSwitch(FixedText<256>("setprop hostapd.enable %d", up ? 1 : 0), NET_HERE);
}

int SoftAP_dnsmasq_setprop(kest_bool up)
{
    return runSwitch(FixedText<256>("setprop dnsmasq.enable %d", up ? 1 : 0), NET_HERE);
}

int SoftAP_startHostapd(void)
{
    const HotspotTexts texts = hotspotTexts();
    const int hidden = load(hotspot.mIsHidden) ? 1 : 0;
    // Deliberate: always visible.
    NET_ERROR("HOSTAP :start hostapd at channel=%d SSID=%s hidden_ssid=%d\n", kToldChannel, texts.ssid, hidden);
    const Configuration text("interface=%s\ndriver=nl80211\nctrl_interface=/data/wifi\nchannel=%d\nhw_mode=g\n"
                             "ieee80211n=1\nssid=%s\nignore_broadcast_ssid=%d\n",
                             texts.interface, kChannel, texts.ssid, hidden);
    if (!text.fits()) {
        NET_ERROR("HOSTAP:fail in sprintf\n");
        return -1;
    }
    if (!writeConfiguration(text, NET_HERE)) {
        return -1;
    }
    NET_ERROR("HOSTAP :run hostapd \n"); // Deliberate: always visible.
    if (SoftAP_hostapd_setprop(kTrue) != 0) {
        NET_ERROR("HOSTAP: failed to setup  hostapd%s", std::strerror(errno));
        return -1;
    }
    return 0;
}

int SoftAP_stopHostapd(void)
{
    NET_ERROR("HOSTAP: failed to stop  hostapd%s", std::strerror(errno));
    return -1;
}
