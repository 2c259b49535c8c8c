#include "calls.h"
#include "saved.h"
#include "text.h"

#include <array>

namespace shell {
namespace {
constexpr auto kSubject = "address";

/** Address, mask, gateway and two name servers, in network byte order. */
using Addresses = std::array<unsigned, 5>;

void showAddresses(Console& console, RETURN_TYPE code, const Addresses& values)
{
    console.result(code);
    if (code == 0) {
        console.print("  address  %s\n", addressText(values[0]).c_str());
        console.print("  mask     %s\n", addressText(values[1]).c_str());
        console.print("  gateway  %s\n", addressText(values[2]).c_str());
        console.print("  dns      %s %s\n", addressText(values[3]).c_str(), addressText(values[4]).c_str());
    }
}

Outcome mode(Console& console, Arguments arguments)
{
    if (arguments.size() == 1) {
        return readIface<MovoNetIPMode_e, Movo_NET_GetIPMode>(console, arguments);
    }
    const auto value = valueOrNumber(modeNames(), arguments[1]);
    if (!value) {
        return Outcome::BadArgument;
    }
    const char* const ifname = arguments[0].c_str();
    const auto wanted = static_cast<MovoNetIPMode_e>(*value);
    auto before = wanted;
    (void)Movo_NET_GetIPMode(kAppId, ifname, &before);
    const SavedFile settings(kSettings);
    const RETURN_TYPE code = Movo_NET_ConfigIPMode(kAppId, ifname, wanted);
    console.result(code);
    if (code == 0 && before != wanted) { // the same mode again is not saved
        settings.warnUnlessWritten(console);
    }
    return Outcome::Done;
}

/** The call goes on with the state of the last connection when that is lost. */
Outcome state(Console& console, Arguments arguments)
{
    MovoNetIPStatus_e value{};
    kest_bool isConnected = 1;
    const RETURN_TYPE code = Movo_NET_GetIPStatus(kAppId, arguments[0].c_str(), &value);
    (void)Movo_NET_IsConnected(kAppId, arguments[0].c_str(), &isConnected);
    console.result(code, textOf(value));
    if (code == 0 && isConnected == 0 && value == _MOVO_NET_IPSTATUS_DHCP_GOT_) {
        console.print("  of the last connection, which is lost\n");
    }
    return Outcome::Done;
}

Outcome ip(Console& console, Arguments arguments)
{
    Addresses now{};
    const RETURN_TYPE code = Movo_NET_GetIP(kAppId, arguments[0].c_str(), &now[0], &now[1], &now[2], &now[3], &now[4]);
    showAddresses(console, code, now);
    return Outcome::Done;
}

/** Four or five addresses; the second name server may be left out. */
std::optional<Addresses> parseAddresses(Arguments texts)
{
    Addresses addresses{};
    if (texts.size() + 1 < addresses.size()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < texts.size(); i++) {
        const auto address = parseAddress(texts[i]);
        if (!address) {
            return std::nullopt;
        }
        addresses[i] = *address;
    }
    return addresses;
}

Outcome fixed(Console& console, Arguments arguments)
{
    const char* const ifname = arguments[0].c_str();
    if (arguments.size() == 1) {
        Addresses stored{};
        const RETURN_TYPE code =
            Movo_NET_GetIPStatic(kAppId, ifname, &stored[0], &stored[1], &stored[2], &stored[3], &stored[4]);
        showAddresses(console, code, stored);
        return Outcome::Done;
    }
    const auto wanted = parseAddresses(arguments.subspan(1));
    if (!wanted) {
        return Outcome::BadArgument;
    }
    const auto& [address, mask, gateway, dns1, dns2] = *wanted;
    const RETURN_TYPE code = Movo_NET_ConfigIPStatic(kAppId, ifname, address, mask, gateway, dns1, dns2);
    console.result(code);
    if (code == 0) {
        warnUnlessWritable(console, kSettings);
    }
    return Outcome::Done;
}

Outcome dns(Console& console, Arguments arguments)
{
    console.answer(Movo_NET_IsDNSOK(kAppId, arguments.empty() ? "" : arguments[0].c_str()));
    return Outcome::Done;
}

Outcome network(Console& console, Arguments /*arguments*/)
{
    console.answer(Movo_NET_IsNetworkOK(kAppId));
    return Outcome::Done;
}
} // namespace

std::span<const Command> ipCommands()
{
    static constexpr Command kCommands[] = {
        {kSubject, "mode", "IFACE [MODE]", "shows or sets how: dhcp, autoip, static or dnsonly",
         "Movo_NET_GetIPMode Movo_NET_ConfigIPMode", mode},
        {kSubject, "state", "IFACE", "shows the state of its address", "Movo_NET_GetIPStatus Movo_NET_IsConnected",
         state},
        {kSubject, "ip", "IFACE", "shows its current addresses", "Movo_NET_GetIP", ip},
        {kSubject, "static", "IFACE [ADDRESS MASK GATEWAY DNS1 [DNS2]]",
         "shows or stores the addresses of its static modes", "Movo_NET_GetIPStatic Movo_NET_ConfigIPStatic", fixed},
        {kSubject, "connected", "IFACE", "tells whether it has an address", "Movo_NET_IsConnected",
         readIface<kest_bool, Movo_NET_IsConnected>},
        {kSubject, "dns", "[IFACE]", "tells whether the resolver names a server", "Movo_NET_IsDNSOK", dns},
        {kSubject, "network", "", "tells whether an interface and the resolver work", "Movo_NET_IsNetworkOK", network},
        {kSubject, "clear", "IFACE", "gives its address up", "Movo_NET_ClearIP", act<Movo_NET_ClearIP>},
    };
    return kCommands;
}
} // namespace shell
