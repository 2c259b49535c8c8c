#include "calls.h"
#include "connect.h"
#include "join.h"
#include "keys.h"
#include "networks.h"
#include "text.h"
#include "warnings.h"

namespace shell {
namespace {
constexpr auto kSubject = "wifi";

/** A call on the wireless interface that does something. */
template <RETURN_TYPE (*call)(kest_sint32, const char*)>
Outcome actOnWifi(Console& console, Arguments /*arguments*/)
{
    console.result(call(kAppId, wifiName().c_str()));
    return Outcome::Done;
}

/** The same with a network's name. */
template <RETURN_TYPE (*call)(kest_sint32, const char*, const char*)>
Outcome actOnNetwork(Console& console, Arguments arguments)
{
    console.result(call(kAppId, wifiName().c_str(), arguments[0].c_str()));
    return Outcome::Done;
}

/** A call that reads something of the wireless interface. */
template <typename Value, RETURN_TYPE (*call)(kest_sint32, const char*, Value*)>
Outcome readWifi(Console& console, Arguments /*arguments*/)
{
    const std::string ifname[] = {wifiName()};
    return readIface<Value, call>(console, ifname);
}

Outcome use(Console& console, Arguments arguments)
{
    if (!arguments.empty()) {
        chooseWifi(arguments[0]);
        return Outcome::Done;
    }
    const std::string ifname = wifiName();
    console.print("%s\n", ifname.empty() ? "no wireless interface" : printable(ifname).c_str());
    return Outcome::Done;
}

Outcome update(Console& console, Arguments /*arguments*/)
{
    const std::string ifname = wifiName();
    const RETURN_TYPE code = readScan(ifname);
    console.result(code);
    if (code == 0) {
        warnOfLostSecurity(console, ifname);
    }
    return Outcome::Done;
}

Outcome key(Console& console, Arguments arguments)
{
    const std::string ifname = wifiName();
    if (arguments.size() > 1) {
        console.result(setKey(ifname, arguments[0], arguments[1]));
        return Outcome::Done;
    }
    char text[65] = "";
    int length = 0;
    const RETURN_TYPE code = Movo_NET_WifiGetKey(kAppId, ifname.c_str(), arguments[0].c_str(), text, &length);
    console.result(code, printable(text));
    return Outcome::Done;
}

Outcome priority(Console& console, Arguments arguments)
{
    const char* const essid = arguments[0].c_str();
    if (arguments.size() == 1) {
        int value = 0;
        const RETURN_TYPE code = Movo_NET_WifiGetPriorityEss(kAppId, wifiName().c_str(), essid, &value);
        console.result(code, textOf(value));
        return Outcome::Done;
    }
    const auto value = parseInt(arguments[1]);
    if (!value) {
        return Outcome::BadArgument;
    }
    console.result(Movo_NET_WifiSetPriorityEss(kAppId, wifiName().c_str(), essid, *value));
    return Outcome::Done;
}

bool hasPin(int mode)
{
    return mode == _MOVO_NET_WIFI_WPS_PIN || mode == _MOVO_NET_WIFI_WPS_PBC_PIN;
}

/** The PIN of a WPS mode: the given one, or one made by the supplicant and shown; nothing when that fails. */
std::optional<std::string> pinFor(Console& console, int mode, const std::string& ifname, Arguments given)
{
    if (!given.empty()) {
        return given[0];
    }
    if (!hasPin(mode)) {
        return "";
    }
    char made[9] = "";
    const RETURN_TYPE code = Movo_NET_WifiGenerateWpsPin(kAppId, ifname.c_str(), made, sizeof(made));
    console.result(code, printable(made));
    return code == 0 ? std::optional<std::string>(made) : std::nullopt;
}

Outcome wps(Console& console, Arguments arguments)
{
    if (arguments.empty()) {
        return readWifi<MovoNetWifiWPSMode_e, Movo_NET_WifiGetWpsModeEss>(console, arguments);
    }
    const auto mode = valueOrNumber(wpsNames(), arguments[0]);
    if (!mode) {
        return Outcome::BadArgument;
    }
    const std::string ifname = wifiName();
    if (const auto pin = pinFor(console, *mode, ifname, arguments.subspan(1)); pin) {
        if (hasPin(*mode)) {
            warnOfPin(console, *pin);
        }
        console.result(Movo_NET_WifiStartWpsConnection(kAppId, ifname.c_str(), static_cast<MovoNetWifiWPSMode_e>(*mode),
                                                       pin->c_str()));
    }
    return Outcome::Done;
}

Outcome security(Console& console, Arguments arguments)
{
    const auto wish = valueOrNumber(wishNames(), arguments[0]);
    if (!wish) {
        return Outcome::BadArgument;
    }
    noteSecurityChoice(*wish);
    console.result(Movo_NET_WifiSetSecurityType(kAppId, static_cast<MovoNetWifiUISecurity_e>(*wish)));
    return Outcome::Done;
}

Outcome signal(Console& console, Arguments /*arguments*/)
{
    char ifname[9] = "";
    char essid[33] = "";
    int level = 0;
    const RETURN_TYPE code = Movo_NET_WifiGetConnectedSignal(kAppId, ifname, essid, &level);
    console.result(code, printable(ifname) + " " + std::to_string(level) + " " + printable(essid));
    return Outcome::Done;
}
} // namespace

std::span<const Command> wifiCommands()
{
    static constexpr Command kCommands[] = {
        {kSubject, "wifi use", "[IFACE]", "shows or chooses the interface of these commands; else the first", "", use},
        {kSubject, "wifi status", "", "shows the chip, and the network that is joined",
         "Movo_NET_WifiGetConnectedEss Movo_NET_WifiGetDevType Movo_NET_WifiGetSignalEss Movo_NET_WifiIsReconnecting "
         "Movo_NET_WifiGetWpsModeEss",
         showConnection},
        {kSubject, "wifi chip", "", "shows which chip it has", "Movo_NET_WifiGetDevType",
         readWifi<MovoNetWifiDevType_e, Movo_NET_WifiGetDevType>},
        {kSubject, "wifi scan", "", "looks for networks; WIFISCANDONE follows", "Movo_NET_WifiScanEsss",
         actOnWifi<Movo_NET_WifiScanEsss>},
        {kSubject, "wifi update", "", "reads what was found; keys that were set are forgotten",
         "Movo_NET_WifiUpdateEsss Movo_NET_GetNumOfWifiEsss Movo_NET_WifiGetSsidEss Movo_NET_WifiGetSecurityEss "
         "Movo_NET_WifiGetKey",
         update},
        {kSubject, "wifi list", "", "shows the networks in a table",
         "Movo_NET_GetNumOfWifiEsss Movo_NET_WifiGetSsidEss Movo_NET_WifiGetBssidEss Movo_NET_WifiGetSignalEss "
         "Movo_NET_WifiGetChannelEss Movo_NET_WifiGetSecurityEss Movo_NET_WifiGetEncryptionEss Movo_NET_WifiIsWPS "
         "Movo_NET_WifiGetConnectedEss Movo_NET_WifiGetKey",
         listNetworks},
        {kSubject, "wifi info", "NAME", "shows one network",
         "Movo_NET_WifiGetSignalEss Movo_NET_WifiGetBssidEss Movo_NET_WifiGetFrequencyEss Movo_NET_WifiGetChannelEss "
         "Movo_NET_WifiGetSecurityEss Movo_NET_WifiGetEncryptionEss Movo_NET_WifiIsWPS Movo_NET_WifiGetPriorityEss "
         "Movo_NET_WifiGetConnectedEss Movo_NET_WifiGetKey",
         showNetwork},
        {kSubject, "wifi key", "NAME [KEY]", "shows the remembered key, or sets the one to join with",
         "Movo_NET_WifiGetKey Movo_NET_WifiSetKey", key},
        {kSubject, "wifi priority", "NAME [NUMBER]", "shows or sets its priority, from 0 to 7",
         "Movo_NET_WifiGetPriorityEss Movo_NET_WifiSetPriorityEss", priority},
        {kSubject, "wifi join", "NAME [KEY]", "joins a network, with this key or the one that is known",
         "Movo_NET_WifiGetEncryptionEss Movo_NET_WifiGetConnectedEss Movo_NET_WifiGetKey Movo_NET_WifiSetKey "
         "Movo_NET_WifiConnectEss",
         joinNetwork},
        {kSubject, "wifi connect", "NAME [KEY]", "joins it in one step: looks, asks for its key, waits",
         "Movo_NET_WifiScanEsss Movo_NET_WifiUpdateEsss Movo_NET_WifiGetEncryptionEss Movo_NET_WifiGetConnectedEss "
         "Movo_NET_WifiGetKey Movo_NET_WifiSetKey Movo_NET_WifiConnectEss Movo_NET_GetIP",
         connectNetwork},
        {kSubject, "wifi back", "", "joins the network again that the last join has left",
         "Movo_NET_WifiGetConnectedEss Movo_NET_WifiSetKey Movo_NET_WifiConnectEss", joinLeftNetwork},
        {kSubject, "wifi leave", "", "leaves the network that is joined", "Movo_NET_WifiDisConnect",
         actOnWifi<Movo_NET_WifiDisConnect>},
        {kSubject, "wifi hidden", "NAME", "looks for an open network that does not send its name",
         "Movo_NET_WifiSearchHideEss", actOnNetwork<Movo_NET_WifiSearchHideEss>},
        {kSubject, "wifi wps", "[WAY] [PIN]", "joins by push, pin or both, or shows the way of last time",
         "Movo_NET_WifiGetWpsModeEss Movo_NET_WifiGenerateWpsPin Movo_NET_WifiStartWpsConnection", wps},
        {kSubject, "wifi security", "WISH", "how to join from now on: default, none, wep or mix",
         "Movo_NET_WifiSetSecurityType", security},
        {kSubject, "wifi signal", "", "shows the best connected wireless interface with its signal",
         "Movo_NET_WifiGetConnectedSignal", signal},
    };
    return kCommands;
}
} // namespace shell
