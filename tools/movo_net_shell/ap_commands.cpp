#include "ap_commands.h"

#include "calls.h"
#include "text.h"

#include <chrono>
#include <cstring>
#include <optional>

namespace shell {
std::string notUp(std::chrono::seconds since)
{
    constexpr std::chrono::seconds kLongestStart{30}; // 20 s of it for the name
    return "started " + std::to_string(since.count()) + " s ago and not up" +
           (since < kLongestStart ? " yet: it may take half a minute"
                                  : ": it failed; the log names the step and what its program said");
}

namespace {
using Clock = std::chrono::steady_clock;
constexpr auto kSubject = "softap";

std::optional<Clock::time_point> s_started; // by this shell, and not stopped since

Outcome start(Console& console, Arguments /*arguments*/)
{
    const RETURN_TYPE result = Movo_Net_WiFi_HostAP_Start(kAppId);
    if (result == 0) {
        s_started = Clock::now();
    }
    console.result(result);
    return Outcome::Done;
}

Outcome stop(Console& console, Arguments /*arguments*/)
{
    s_started.reset();
    console.result(Movo_Net_WiFi_HostAP_Stop(kAppId));
    return Outcome::Done;
}

std::string bssidText(const MovoHotspotconfig_t& config)
{
    long long address = 0;
    std::memcpy(&address, config.Bssid, sizeof(config.Bssid));
    return macText(address);
}

Outcome status(Console& console, Arguments /*arguments*/)
{
    const auto isUp = Movo_Net_WiFi_HostAP_Status(kAppId);
    console.answer(isUp);
    if (isUp == 0 && s_started) {
        const auto since = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - *s_started);
        console.print("  %s\n", notUp(since).c_str());
    }
    MovoHotspotconfig_t config{};
    if (Movo_Net_WiFi_HostAP_Config(kAppId, &config) == 0) {
        console.print("  network  %s\n", printable(config.Ssid).c_str());
        console.print("  address  %s\n", bssidText(config).c_str());
        console.print("  hidden   %s\n", textOf(config.Hidden).c_str());
    }
    return Outcome::Done;
}

Outcome clients(Console& console, Arguments /*arguments*/)
{
    const Softap_Connection_info_t device = lastDevice();
    if (device.macaddr[0] == '\0') {
        console.print("no device\n");
        return Outcome::Done;
    }
    console.print("  mac      %s\n", printable(device.macaddr).c_str());
    console.print("  address  %s\n", printable(device.ipaddr).c_str());
    console.print("  name     %s\n", printable(device.devicename).c_str());
    console.print("  client   %s\n", printable(device.packetmac).c_str());
    console.print("  until    %s\n", printable(device.timestamp).c_str());
    return Outcome::Done;
}

Outcome wakeUp(Console& console, Arguments /*arguments*/)
{
    char none[] = "";
    console.result(Movo_Net_WiFi_Wakeup(kAppId, none, 1));
    return Outcome::Done;
}
} // namespace

std::span<const Command> apCommands()
{
    static constexpr Command kCommands[] = {
        {kSubject, "ap start", "", "starts the soft access point; ap status tells when it is up",
         "Movo_Net_WiFi_HostAP_Start", start},
        {kSubject, "ap stop", "", "stops the soft access point", "Movo_Net_WiFi_HostAP_Stop", stop},
        {kSubject, "ap status", "", "tells whether it is up, and what its network looks like",
         "Movo_Net_WiFi_HostAP_Status Movo_Net_WiFi_HostAP_Config", status},
        {kSubject, "ap clients", "", "shows the device of the latest SOFTAPCONNECTED", "", clients},
        {kSubject, "wake", "", "arms the Wi-Fi chip for wake-up", "Movo_Net_WiFi_Wakeup", wakeUp},
    };
    return kCommands;
}
} // namespace shell
