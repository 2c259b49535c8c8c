#include "networks.h"

#include "glue.h"
#include "names.h"
#include "quiet_log.h"
#include "text.h"

namespace shell {
namespace {
constexpr std::size_t kNameSize = 33;
constexpr std::size_t kKeySize = 65;
constexpr std::size_t kLabelWidth = 12;

std::string s_chosen;

/** What a call reads of one network, as text; a dash when it does not. */
template <typename Value, RETURN_TYPE (*call)(kest_sint32, const char*, const char*, Value*)>
std::string fact(const char* ifname, const char* essid)
{
    Value value{};
    const RETURN_TYPE code = call(kAppId, ifname, essid, &value);
    return code == 0 ? textOf(value) : "-";
}

std::string joined(const char* ifname, const char* essid)
{
    return joinedName(ifname) == essid ? "yes" : "no";
}

/** A network is remembered when its key can be read. */
std::string remembered(const char* ifname, const char* essid)
{
    const QuietLog quiet;
    char key[kKeySize] = "";
    int length = 0;
    return Movo_NET_WifiGetKey(kAppId, ifname, essid, key, &length) == 0 ? "yes" : "no";
}

constexpr Fact kFacts[] = {
    {"name", 34, Fact::kAlways, [](const char*, const char* essid) { return printable(essid); }},
    {"bssid", 19, 1, fact<long long, Movo_NET_WifiGetBssidEss>},
    {"signal", 8, Fact::kAlways, fact<int, Movo_NET_WifiGetSignalEss>, true},
    {"frequency", 0, 0, fact<int, Movo_NET_WifiGetFrequencyEss>},
    {"channel", 9, 5, fact<int, Movo_NET_WifiGetChannelEss>},
    {"security", 10, Fact::kAlways, fact<MovoNetWifiSecurity_e, Movo_NET_WifiGetSecurityEss>},
    {"cipher", 11, 2, fact<MovoNetWifiEncryption_e, Movo_NET_WifiGetEncryptionEss>},
    {"wps", 5, 3, fact<kest_bool, Movo_NET_WifiIsWPS>},
    {"priority", 0, 0, fact<int, Movo_NET_WifiGetPriorityEss>},
    {"joined", 8, Fact::kMarked, joined},
    {"remembered", 12, 4, remembered},
};

void showLine(Console& console, const char* label, const std::string& value)
{
    console.print("  %s%s\n", padded(label, kLabelWidth).c_str(), value.c_str());
}

template <typename Value, RETURN_TYPE (*call)(kest_sint32, const char*, Value*)>
void showValue(Console& console, const char* label, const char* ifname)
{
    Value value{};
    const RETURN_TYPE code = call(kAppId, ifname, &value);
    showLine(console, label, code == 0 ? textOf(value) : "-");
}
} // namespace

std::string wifiName()
{
    if (!s_chosen.empty()) {
        return s_chosen;
    }
    for (const std::string& ifname : interfaceNames()) {
        MovoNetIfaceType_e type{};
        if (Movo_NET_GetIfaceType(kAppId, ifname.c_str(), &type) == 0 && type == _MOVO_NET_IFACE_WIFI_) {
            return ifname;
        }
    }
    return "";
}

void chooseWifi(const std::string& ifname)
{
    s_chosen = ifname;
}

std::string joinedName(const char* ifname)
{
    char name[kNameSize] = "";
    (void)Movo_NET_WifiGetConnectedEss(kAppId, ifname, name, sizeof(name));
    return name;
}

std::vector<std::string> tableNames(const std::string& ifname)
{
    std::vector<std::string> names;
    int count = 0;
    if (Movo_NET_GetNumOfWifiEsss(kAppId, ifname.c_str(), &count) != 0) {
        return names;
    }
    for (int index = 0; index < count; ++index) {
        char name[kNameSize] = "";
        if (Movo_NET_WifiGetSsidEss(kAppId, ifname.c_str(), index, name) == 0) {
            names.emplace_back(name);
        }
    }
    return names;
}

std::vector<std::string> networkNames()
{
    const QuietLog quiet;
    const std::string ifname = wifiName();
    if (Movo_NET_IsInitializationDone(kAppId) == 0) {
        return {};
    }
    std::vector<std::string> names = tableNames(ifname);
    std::erase(names, "");
    return names;
}

std::span<const Fact> networkFacts()
{
    return kFacts;
}

Outcome showNetwork(Console& console, Arguments arguments)
{
    const std::string ifname = wifiName();
    const char* const essid = arguments[0].c_str();
    int signal = 0;
    const RETURN_TYPE code = Movo_NET_WifiGetSignalEss(kAppId, ifname.c_str(), essid, &signal);
    console.result(code);
    if (code == 0) {
        for (const Fact& each : kFacts) {
            showLine(console, each.label, each.value(ifname.c_str(), essid));
        }
    }
    return Outcome::Done;
}

Outcome showConnection(Console& console, Arguments /*arguments*/)
{
    const std::string ifname = wifiName();
    char name[kNameSize] = "";
    const RETURN_TYPE code = Movo_NET_WifiGetConnectedEss(kAppId, ifname.c_str(), name, sizeof(name));
    console.result(code);
    if (code != 0) {
        return Outcome::Done;
    }
    const bool isJoined = name[0] != '\0';
    showLine(console, "interface", printable(ifname));
    showValue<MovoNetWifiDevType_e, Movo_NET_WifiGetDevType>(console, "chip", ifname.c_str());
    showLine(console, "joined", isJoined ? printable(name) : "-");
    showLine(console, "signal", isJoined ? fact<int, Movo_NET_WifiGetSignalEss>(ifname.c_str(), name) : "-");
    showValue<kest_bool, Movo_NET_WifiIsReconnecting>(console, "joining", ifname.c_str());
    showValue<MovoNetWifiWPSMode_e, Movo_NET_WifiGetWpsModeEss>(console, "wps", ifname.c_str());
    return Outcome::Done;
}
} // namespace shell
