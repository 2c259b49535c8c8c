#include "names.h"
#include "walk.h"

#include "support/atomic.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <memory>
#include <movo_net.h>
#include <random>
#include <sstream>

using namespace movonet;

namespace wifi {
namespace {
const sim::Lease kWired{};
const sim::Lease kWireless{"10.0.3.15", "255.255.255.0", "10.0.3.2", "10.0.3.3", "air"};

constexpr const char* kNames[] = {"Home", "Open", "Wep", "Gone"};
const std::vector<Network> kAir{{"Home", "[WPA2-PSK-CCMP][WPS][ESS]"}, {"Open", "[ESS]"}, {"Wep", "[WEP][ESS]"}};
constexpr const char* kAssociating = "<3>Trying to associate with 02:00:00:00:01:00 (SSID='Home' freq=2437 MHz)";

void join(Television& /*television*/, int number)
{
    (void)Movo_NET_WifiConnectEss(0, kIf, kNames[number]);
}

void key(Television& /*television*/, int number)
{
    constexpr const char* kKeys[] = {"12345", "a long pass phrase", "", "bad length"};
    (void)Movo_NET_WifiSetKey(0, kIf, kNames[number], kKeys[number], static_cast<int>(std::strlen(kKeys[number])));
}

void push(Television& /*television*/, int number)
{
    (void)Movo_NET_WifiStartWpsConnection(0, kIf, static_cast<MovoNetWifiWPSMode_e>(number), "12345670");
}

void mode(Television& television, int number)
{
    (void)Movo_NET_ConfigIPStatic(0, kIf, inet_addr("10.0.3.77"), inet_addr("255.255.255.0"), inet_addr("10.0.3.2"),
                                  inet_addr("10.0.3.3"), 0);
    (void)Movo_NET_ConfigIPMode(0, kIf, number == 0 ? _MOVO_NET_IPMODE_DHCP_ : _MOVO_NET_IPMODE_STATIC_);
    television.set.settle();
}

void event(Television& television, int number)
{
    static const Lines kEvents[] = {
        {kConnected},
        {kDisconnected},
        {kHandshake},
        {kResults},
        {kAssociating},
        {kConnected, kDisconnected},
        {kResults, kConnected},
        {kHandshake, kConnected},
        {"<3>", ""},
        {kAssociating, kConnected},
        {kDisconnected, kConnected, kResults},
    };
    television.hears(kEvents[number]);
}

/** The next request is not answered as usual. */
void answer(Television& television, int number)
{
    Supplicant& supplicant = television.supplicant;
    switch (number) {
    case 0:
        supplicant.results = {-2};
        return;
    case 1:
        supplicant.results = {-1};
        return;
    case 2:
        supplicant.results = {-2};
        supplicant.openFailures = 1; // the reconnection fails, too
        return;
    case 3:
        supplicant.nextReplies = {"FAIL-BUSY\n"};
        return;
    case 4:
        supplicant.nextReplies = {"FAIL-BUSY\n", "FAIL-BUSY\n"};
        return;
    default:
        supplicant.nextReplies = {"FAIL\n"};
        return;
    }
}

/** Messages of the DHCP client of an interface, if there is one that is listened to. */
void dhcp(Television& television, int number)
{
    const char* ifname = number % 2 == 0 ? kIf : "eth0";
    const MovoNetIface_t* iface = FindInterface(ifname);
    sim::DhcpClient client = television.set.dhcp(ifname);
    if (iface == nullptr || load(iface->dhcpcfd) < 0 || !client.running()) {
        return;
    }
    if (number < 4) {
        client.leases(number % 2 == 0 ? kWireless : kWired);
    } else {
        client.loses();
    }
}

void cable(Television& television, int number)
{
    sim::Cable wired = television.set.cable("eth0");
    (void)(number == 0 ? wired.plug() : wired.pull());
    television.set.grantTicks(10);
}

void ticks(Television& television, int number)
{
    constexpr int kCounts[] = {1, 1, 10, 10, 10, 20, 50, 310};
    television.set.grantTicks(kCounts[number]);
}

void iface(Television& /*television*/, int number)
{
    (void)(number == 0 ? Movo_NET_DisableIface(0, kIf) : Movo_NET_EnableIface(0, kIf));
}

void stick(Television& television, int number)
{
    if (number == 0) {
        television.set.iface(kIf).unplugDevice();
    } else {
        television.set.addIface(kIf).wireless();
    }
    television.set.grantTicks(10);
}

void pin(Television& /*television*/, int number)
{
    char text[9];
    (void)Movo_NET_WifiGenerateWpsPin(0, kIf, text, number);
}

/** The next callback does something of its own. */
void react(Television& television, int number)
{
    auto left = std::make_shared<std::atomic<int>>(1);
    television.set.onCallback([&television, number, left](MovoNetCBReason_e, void*) {
        if (left->fetch_sub(1) != 1) {
            return;
        }
        static constexpr void (*kReactions[])(Television&, int) = {join, iface, push, key};
        switch (number) {
        case 4:
            (void)Movo_NET_WifiDisConnect(0, kIf);
            return;
        case 5:
            (void)Movo_NET_WifiScanEsss(0, kIf);
            return;
        case 6:
            (void)Movo_NET_WifiUpdateEsss(0, kIf);
            return;
        case 7:
            (void)Movo_NET_DisableAllIfaces(0);
            return;
        default:
            kReactions[number](television, number == 0 ? 1 : 0);
        }
    });
}

constexpr Action kActions[] = {
    {"join", Actor::Application, 30, 4, join},
    {"key", Actor::Application, 6, 4, key},
    {"leave", Actor::Application, 8, 1, [](Television&, int) { (void)Movo_NET_WifiDisConnect(0, kIf); }},
    {"scan", Actor::Application, 8, 1, [](Television&, int) { (void)Movo_NET_WifiScanEsss(0, kIf); }},
    {"update", Actor::Application, 10, 1, [](Television&, int) { (void)Movo_NET_WifiUpdateEsss(0, kIf); }},
    {"hidden", Actor::Application, 4, 1, [](Television&, int) { (void)Movo_NET_WifiSearchHideEss(0, kIf, "Hidden"); }},
    {"wps", Actor::Application, 8, 5, push},
    {"pin", Actor::Application, 2, 10, pin},
    {"security", Actor::Application, 3, 5,
     [](Television&, int number) {
         (void)Movo_NET_WifiSetSecurityType(0, static_cast<MovoNetWifiUISecurity_e>(number));
     }},
    {"clear", Actor::Application, 2, 1, [](Television&, int) { (void)Movo_NET_ClearIP(0, kIf); }},
    {"mode", Actor::Application, 4, 2, mode},
    {"iface", Actor::Application, 4, 2, iface},
    {"react", Actor::WorldAlone, 6, 8, react},
    {"event", Actor::World, 60, 11, event},
    {"answer", Actor::WorldAlone, 8, 6, answer},
    {"alive", Actor::World, 3, 3, [](Television& television, int number) { television.lives(number > 0); }},
    {"dhcp", Actor::WorldAlone, 30, 6, dhcp},
    {"cable", Actor::World, 8, 2, cable},
    {"ticks", Actor::World, 24, 8, ticks},
    {"stick", Actor::WorldAlone, 2, 2, stick},
};
} // namespace

std::span<const Action> allActions()
{
    return kActions;
}

Trace randomTrace(unsigned seed, int steps)
{
    std::mt19937 random(seed);
    std::vector<std::size_t> lots;
    for (std::size_t action = 0; action < std::size(kActions); ++action) {
        lots.insert(lots.end(), static_cast<std::size_t>(kActions[action].weight), action);
    }
    Trace trace;
    for (int step = 0; step < steps; ++step) {
        const std::size_t action = lots[random() % lots.size()];
        trace.push_back({action, static_cast<int>(random() % static_cast<unsigned>(kActions[action].numbers))});
    }
    return trace;
}

std::string textOf(const Trace& trace)
{
    std::string text;
    for (const Step& step : trace) {
        text += (text.empty() ? "" : " ") + std::string(kActions[step.action].name) + ":" + std::to_string(step.number);
    }
    return text;
}

std::optional<Trace> parseTrace(const std::string& text)
{
    Trace trace;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const std::size_t colon = word.find(':');
        const auto* action =
            std::ranges::find_if(kActions, [&](const Action& each) { return word.substr(0, colon) == each.name; });
        const int number = colon != std::string::npos ? std::atoi(word.c_str() + colon + 1) : -1;
        if (action == std::end(kActions) || number < 0 || number >= action->numbers) {
            return std::nullopt;
        }
        trace.push_back({static_cast<std::size_t>(action - kActions), number});
    }
    return trace;
}
} // namespace wifi
