#include "join.h"

#include "glue.h"
#include "networks.h"
#include "text.h"
#include "warnings.h"

namespace shell {
namespace {
std::optional<Network> s_left;   // the network that was joined when the last join began
std::optional<Network> s_trying; // the last join's

/** The first step of a join removes it. */
void noteJoined(const std::string& ifname)
{
    const std::string name = joinedName(ifname.c_str());
    if (name.empty()) {
        return;
    }
    auto key = rememberedKey(ifname, name);
    if (!key && s_trying && s_trying->name == name) {
        key = s_trying->key; // it worked, but is not remembered or not in this table
    }
    s_left = Network{ifname, name, key, KeyKind::Unknown};
}
} // namespace

Network networkOf(const std::string& name, Arguments typedKey)
{
    const std::string ifname = wifiName();
    const KeyKind kind = keyKindOf(ifname, name);
    if (!typedKey.empty()) {
        return {ifname, name, typedKey[0], kind};
    }
    return {ifname, name, wantsKey(kind) ? keyOf(ifname, name) : std::nullopt, kind};
}

std::string obstacleOf(const Network& network)
{
    if (network.key) {
        return faultOf(network.kind, *network.key);
    }
    return !wantsKey(network.kind)
               ? ""
               : printable(network.name) + " wants a key: wifi connect " + asWord(network.name) + " KEY";
}

RETURN_TYPE join(const Network& network)
{
    noteJoined(network.ifname);
    s_trying = network;
    if (network.key) {
        if (const RETURN_TYPE code = setKey(network.ifname, network.name, *network.key); code != 0) {
            return code;
        }
    }
    return Movo_NET_WifiConnectEss(kAppId, network.ifname.c_str(), network.name.c_str());
}

RETURN_TYPE readScan(const std::string& ifname)
{
    noteSecured(ifname);
    const RETURN_TYPE code = Movo_NET_WifiUpdateEsss(kAppId, ifname.c_str());
    if (code == 0) {
        forgetKeys();
    }
    return code;
}

std::optional<Network> leftNetwork()
{
    return s_left && joinedName(s_left->ifname.c_str()).empty() ? s_left : std::nullopt;
}

std::string remarkOn(const Arrival& arrival)
{
    const bool badKey = arrival.reason == _MOVO_NET_CALLBACK_WIFIBADKEY_;
    if ((!badKey && arrival.reason != _MOVO_NET_CALLBACK_WIFITIMEOUT_) || !s_trying) {
        return "";
    }
    const std::string name = printable(s_trying->name);
    const auto left = leftNetwork();
    return (badKey ? "the key of " + name + " is wrong" : name + " was not joined in time") +
           (left ? "; wifi back joins " + printable(left->name) + " again" : "");
}

Outcome joinNetwork(Console& console, Arguments arguments)
{
    const Network network = networkOf(arguments[0], arguments.subspan(1));
    if (const std::string obstacle = obstacleOf(network); !obstacle.empty()) {
        console.print("not joined: %s\n", obstacle.c_str());
        return Outcome::Done;
    }
    console.result(join(network));
    return Outcome::Done;
}

Outcome joinLeftNetwork(Console& console, Arguments /*arguments*/)
{
    if (const auto left = leftNetwork(); left) {
        console.result(join(*left));
        return Outcome::Done;
    }
    console.print(s_left ? "a network is joined\n" : "no join has left a network\n");
    return Outcome::Done;
}
} // namespace shell
