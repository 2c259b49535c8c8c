/** A summary of all interfaces, out of the public calls. */
#include "calls.h"
#include "text.h"

namespace shell {
namespace {
constexpr auto kSubject = "interface";
constexpr std::size_t kLabelWidth = 14;
constexpr std::size_t kColumnWidth = 20; // a MAC address and some blanks
constexpr std::size_t kColumns = 3;      // where no terminal says how many fit

template <typename Value, RETURN_TYPE (*call)(kest_sint32, const char*, Value*)>
std::string cell(const char* ifname)
{
    Value value{};
    const RETURN_TYPE code = call(kAppId, ifname, &value);
    return code == 0 ? textOf(value) : "-";
}

template <kest_bool (*call)(kest_sint32, const char*)>
std::string cell(const char* ifname)
{
    return textOf(call(kAppId, ifname));
}

std::string active(const char* ifname)
{
    const bool enabled = Movo_NET_IsEnabledIface(kAppId, ifname) != 0; // the other call complains when it is not
    return enabled ? cell<Movo_NET_IsActivedIface>(ifname) : "no";
}

std::string link(const char* ifname)
{
    MovoNetIfaceType_e type{};
    const RETURN_TYPE code = Movo_NET_GetIfaceType(kAppId, ifname, &type);
    return code == 0 && type != _MOVO_NET_IFACE_LO_ ? cell<Movo_NET_IsPhyConnected>(ifname) : "-"; // lo has no PHY
}

template <std::size_t Which>
std::string address(const char* ifname)
{
    unsigned now[5] = {};
    const RETURN_TYPE code = Movo_NET_GetIP(kAppId, ifname, &now[0], &now[1], &now[2], &now[3], &now[4]);
    return code == 0 ? addressText(now[Which]) : "-";
}

/** The call goes on with the state of the last connection when that is lost. */
std::string state(const char* ifname)
{
    kest_bool isConnected = 1;
    (void)Movo_NET_IsConnected(kAppId, ifname, &isConnected);
    const std::string text = cell<MovoNetIPStatus_e, Movo_NET_GetIPStatus>(ifname);
    return isConnected == 0 && text == textOf(_MOVO_NET_IPSTATUS_DHCP_GOT_) ? "lost" : text;
}

std::size_t columnsOn(const Screen& screen)
{
    return screen.isTerminal() ? std::max<std::size_t>((screen.columns() - kLabelWidth) / kColumnWidth, 1) : kColumns;
}

/** One line of the table. */
struct Row {
    const char* label;
    std::string (*value)(const char* ifname);
};
constexpr Row kRows[] = {
    {"interface", [](const char* ifname) { return printable(ifname); }},
    {"type", cell<MovoNetIfaceType_e, Movo_NET_GetIfaceType>},
    {"mac", cell<long long, Movo_NET_GetIfaceMacAddress>},
    {"enabled", cell<Movo_NET_IsEnabledIface>},
    {"active", active},
    {"link", link},
    {"connected", cell<kest_bool, Movo_NET_IsConnected>},
    {"priority", cell<int, Movo_NET_GetIfacePriority>},
    {"mode", cell<MovoNetIPMode_e, Movo_NET_GetIPMode>},
    {"state", state},
    {"address", address<0>},
    {"mask", address<1>},
    {"gateway", address<2>},
    {"dns 1", address<3>},
    {"dns 2", address<4>},
};

/** A table of some interfaces, one column each. */
std::string tableOf(std::span<const std::string> ifnames)
{
    std::string table;
    for (const Row& row : kRows) {
        std::string line = padded(row.label, kLabelWidth);
        for (const std::string& ifname : ifnames) {
            line += padded(row.value(ifname.c_str()), kColumnWidth);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        table += line + "\n";
    }
    return table;
}

Outcome status(Console& console, Arguments /*arguments*/)
{
    if (Movo_NET_IsInitializationDone(kAppId) == 0) {
        console.print("the glue does not run\n");
        return Outcome::Done;
    }
    std::string text;
    const std::vector<std::string> ifnames = interfaceNames();
    const std::size_t columns = columnsOn(console.screen());
    for (std::size_t at = 0; at < ifnames.size(); at += columns) {
        text += tableOf(std::span(ifnames).subspan(at, std::min(columns, ifnames.size() - at))) + "\n";
    }
    console.print("%sthe network %s\n", text.c_str(), Movo_NET_IsNetworkOK(kAppId) != 0 ? "works" : "does not work");
    return Outcome::Done;
}
} // namespace

std::span<const Command> statusCommands()
{
    static constexpr Command kCommands[] = {
        {kSubject, "status", "", "shows all interfaces in a table", "", status},
        {kSubject, "interfaces", "", "the same as status", "", status},
    };
    return kCommands;
}
} // namespace shell
