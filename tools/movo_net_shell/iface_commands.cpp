#include "calls.h"
#include "saved.h"
#include "text.h"

namespace shell {
namespace {
constexpr auto kSubject = "interface";
constexpr int kNameLength = 8;
constexpr int kLongestBuffer = 255;

Outcome name(Console& console, Arguments arguments)
{
    const auto index = parseInt(arguments[0]);
    const auto length = arguments.size() > 1 ? parseInt(arguments[1]) : kNameLength;
    if (!index || !length || *length > kLongestBuffer) {
        return Outcome::BadArgument;
    }
    std::string text(static_cast<std::size_t>(std::max(*length, 0)) + 1, '\0');
    const RETURN_TYPE code = Movo_NET_GetIfaceName(kAppId, *index, *length, text.data());
    console.result(code, printable(text.c_str()));
    return Outcome::Done;
}

Outcome enable(Console& console, Arguments arguments)
{
    const SavedFile settings(kSettings);
    const RETURN_TYPE code = Movo_NET_EnableIface(kAppId, arguments[0].c_str());
    console.result(code);
    if (code == 0) {
        settings.warnUnlessWritten(console);
    }
    return Outcome::Done;
}

Outcome disableAll(Console& console, Arguments /*arguments*/)
{
    console.result(Movo_NET_DisableAllIfaces(kAppId));
    return Outcome::Done;
}

Outcome priority(Console& console, Arguments arguments)
{
    if (arguments.size() == 1) {
        return readIface<int, Movo_NET_GetIfacePriority>(console, arguments);
    }
    const auto value = parseInt(arguments[1]);
    if (!value) {
        return Outcome::BadArgument;
    }
    const SavedFile settings(kSettings);
    const RETURN_TYPE code = Movo_NET_SetIfacePriority(kAppId, arguments[0].c_str(), *value);
    console.result(code);
    if (code == 0) {
        settings.warnUnlessWritten(console);
    }
    return Outcome::Done;
}

Outcome wakeOnLan(Console& console, Arguments arguments)
{
    const auto allowed = parseSwitch(arguments[1]);
    if (!allowed) {
        return Outcome::BadArgument;
    }
    console.result(Movo_NET_SetWol(kAppId, arguments[0].c_str(), *allowed ? 1 : 0));
    return Outcome::Done;
}
} // namespace

std::span<const Command> ifaceCommands()
{
    static constexpr Command kCommands[] = {
        {kSubject, "count", "", "counts the interfaces, the loopback one too", "Movo_NET_GetNumOfIfaces",
         readGlue<int, Movo_NET_GetNumOfIfaces>},
        {kSubject, "name", "INDEX [LENGTH]", "shows the name at a position, of at most so many characters",
         "Movo_NET_GetIfaceName", name},
        {kSubject, "type", "IFACE", "shows what it is: lo, ether or wifi", "Movo_NET_GetIfaceType",
         readIface<MovoNetIfaceType_e, Movo_NET_GetIfaceType>},
        {kSubject, "mac", "IFACE", "shows its MAC address", "Movo_NET_GetIfaceMacAddress",
         readIface<long long, Movo_NET_GetIfaceMacAddress>},
        {kSubject, "throughput", "IFACE", "shows its throughput", "Movo_NET_GetIfaceThroughput",
         readIface<int, Movo_NET_GetIfaceThroughput>},
        {kSubject, "enable", "IFACE", "marks it as wanted and brings it up", "Movo_NET_EnableIface", enable},
        {kSubject, "disable", "IFACE", "marks it as not wanted and takes it down", "Movo_NET_DisableIface",
         act<Movo_NET_DisableIface>},
        {kSubject, "disable-all", "", "marks every interface as not wanted", "Movo_NET_DisableAllIfaces", disableAll},
        {kSubject, "enabled", "IFACE", "tells whether it is wanted", "Movo_NET_IsEnabledIface",
         ask<Movo_NET_IsEnabledIface>},
        {kSubject, "active", "IFACE", "tells whether it is wanted and up", "Movo_NET_IsActivedIface",
         ask<Movo_NET_IsActivedIface>},
        {kSubject, "best", "", "shows the position of the best one that is up, -1 for none", "Movo_NET_GetActivedIface",
         readGlue<int, Movo_NET_GetActivedIface>},
        {kSubject, "best-type", "", "shows what the best one that is up is", "Movo_NET_GetActivedIfaceType",
         readGlue<MovoNetIfaceType_e, Movo_NET_GetActivedIfaceType>},
        {kSubject, "link", "IFACE", "tells whether it has a link, such as a cable", "Movo_NET_IsPhyConnected",
         ask<Movo_NET_IsPhyConnected>},
        {kSubject, "priority", "IFACE [NUMBER]", "shows or sets its priority; the highest wins",
         "Movo_NET_GetIfacePriority Movo_NET_SetIfacePriority", priority},
        {kSubject, "filter", "IFACE", "does nothing; there is no filter", "Movo_NET_FilterOutIF",
         act<Movo_NET_FilterOutIF>},
        {kSubject, "wol", "IFACE on|off", "lets a magic packet wake the set, or forbids it", "Movo_NET_SetWol",
         wakeOnLan},
    };
    return kCommands;
}
} // namespace shell
