#include "connect.h"

#include "causes.h"
#include "glue.h"
#include "join.h"
#include "names.h"
#include "networks.h"
#include "saved.h"
#include "secret.h"
#include "text.h"
#include "warnings.h"

#include <algorithm>

namespace shell {
namespace {
using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kReadyLimit = 20s;
constexpr std::chrono::milliseconds kScanLimit = 35s;    // the glue's own is 30 s
constexpr std::chrono::milliseconds kJoinLimit = 35s;    // the glue's own is 30 s
constexpr std::chrono::milliseconds kAddressLimit = 30s; // a DHCP client that is not answered tries longer

using Reasons = std::initializer_list<MovoNetCBReason_e>;

/** Waits for the first callback of these on the interface that is shown after the mark, which it moves behind it. */
struct Awaited {
    Wait wait;
    MovoNetCBReason_e reason; // once it is done
};
Awaited await(Console& console, std::size_t& mark, const std::string& ifname, Reasons reasons,
              std::chrono::milliseconds limit, const std::string& what)
{
    Awaited awaited = {Wait::TimeUp, {}};
    awaited.wait = console.pass(in(limit), what, [&] {
        const auto found = console.shownSince(mark, [&](const Arrival& arrival) {
            return arrival.ifname == ifname && std::ranges::find(reasons, arrival.reason) != reasons.end();
        });
        awaited.reason = found.value_or(awaited.reason);
        return found.has_value();
    });
    return awaited;
}

/** How a try ends. */
enum class End { Connected, NoAddress, Refused, BadKey, TimedOut, Interrupted };

End endOf(const Awaited& awaited)
{
    if (awaited.wait == Wait::Interrupted) {
        return End::Interrupted;
    }
    const bool badKey = awaited.wait == Wait::Done && awaited.reason == _MOVO_NET_CALLBACK_WIFIBADKEY_;
    return badKey ? End::BadKey : End::TimedOut;
}

End waitForAddress(Console& console, std::size_t mark, const Network& network)
{
    const Reasons reasons = {_MOVO_NET_CALLBACK_DHCP_SUCCESS_, _MOVO_NET_CALLBACK_STATICIP_SUCCESS_,
                             _MOVO_NET_CALLBACK_DHCP_FAILED_, _MOVO_NET_CALLBACK_STATICIP_FAILED_};
    const Awaited awaited = await(console, mark, network.ifname, reasons, kAddressLimit,
                                  "joined " + printable(network.name) + ", waiting for an address");
    if (awaited.wait == Wait::Interrupted) {
        return End::Interrupted;
    }
    const bool failed =
        awaited.reason == _MOVO_NET_CALLBACK_DHCP_FAILED_ || awaited.reason == _MOVO_NET_CALLBACK_STATICIP_FAILED_;
    return awaited.wait == Wait::Done && !failed ? End::Connected : End::NoAddress;
}

End tryNetwork(Console& console, const Network& network)
{
    console.showArrivals(); // what came before is not the answer
    std::size_t mark = console.mark();
    if (join(network) != 0) {
        return End::Refused;
    }
    const Reasons reasons = {_MOVO_NET_CALLBACK_IFCONNECTED_, _MOVO_NET_CALLBACK_WIFIBADKEY_,
                             _MOVO_NET_CALLBACK_WIFITIMEOUT_};
    const Awaited awaited =
        await(console, mark, network.ifname, reasons, kJoinLimit, "joining " + printable(network.name));
    const bool joined = awaited.wait == Wait::Done && awaited.reason == _MOVO_NET_CALLBACK_IFCONNECTED_;
    return joined ? waitForAddress(console, mark, network) : endOf(awaited);
}

std::string addressOf(const std::string& ifname)
{
    unsigned now[5] = {};
    const RETURN_TYPE code = Movo_NET_GetIP(kAppId, ifname.c_str(), &now[0], &now[1], &now[2], &now[3], &now[4]);
    return code == 0 ? ", address " + addressText(now[0]) : "";
}

std::string verdictOf(End end, const Network& network, const std::string& seconds)
{
    const std::string name = printable(network.name);
    switch (end) {
    case End::Connected:
        return "joined " + name + " in " + seconds + addressOf(network.ifname);
    case End::NoAddress:
        return "joined " + name + ", but it gave no address within " + seconds;
    case End::Refused:
        return "not joined: the supplicant refused " + name + "; the log names the command";
    case End::BadKey:
        return "not joined: the key of " + name + " is wrong, after " + seconds;
    case End::TimedOut:
        return "not joined: " + name + " did not answer within " + seconds;
    case End::Interrupted:
        break;
    }
    return "interrupted; " + name + " is still being joined";
}

/** Tries the network and says how that ended. */
End tryAndTell(Console& console, const Network& network)
{
    const auto begin = std::chrono::steady_clock::now();
    const End end = tryNetwork(console, network);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    char seconds[32];
    (void)std::snprintf(seconds, sizeof(seconds), "%.1f s", took.count());
    const std::string verdict = console.screen().wrapped(verdictOf(end, network, seconds), 2);
    console.print("%s\n", console.screen().styled(end == End::Connected ? Style::Good : Style::Bad, verdict).c_str());
    return end;
}

bool isListed(const std::string& name)
{
    const std::vector<std::string> names = networkNames();
    return std::ranges::find(names, name) != names.end();
}

bool isReady(const std::string& ifname)
{
    return Movo_NET_IsEnabledIface(kAppId, ifname.c_str()) == 0 || Movo_NET_IsActivedIface(kAppId, ifname.c_str()) != 0;
}

/** At the start of the glue the interface comes some seconds later. */
Outcome waitUntilReady(Console& console, const std::string& ifname)
{
    if (ifname.empty()) {
        return Outcome::Done;
    }
    const auto ready = [&] { return isReady(ifname); };
    const Wait wait = console.pass(in(kReadyLimit), "waiting for " + printable(ifname), ready);
    return wait == Wait::Interrupted ? Outcome::Interrupted : Outcome::Done;
}

/** Looks for networks and reads what was found; the table has the name then, or it is not around. */
Outcome look(Console& console, const std::string& ifname, const std::string& name)
{
    std::size_t mark = console.mark();
    if (const RETURN_TYPE code = Movo_NET_WifiScanEsss(kAppId, ifname.c_str()); code != 0) {
        console.result(code);
        return Outcome::Unmet;
    }
    const Awaited scan =
        await(console, mark, ifname, {_MOVO_NET_CALLBACK_WIFISCANDONE_}, kScanLimit, "looking for networks");
    if (scan.wait == Wait::Interrupted) {
        return Outcome::Interrupted;
    }
    if (const RETURN_TYPE code = readScan(ifname); code != 0) {
        console.result(code);
        return Outcome::Unmet;
    }
    warnOfLostSecurity(console, ifname);
    if (!isListed(name)) {
        console.complain("%s\n", unknownNetwork(name).c_str());
        return Outcome::Unmet;
    }
    return Outcome::Done;
}

/** The network with a key that may join it; nothing when there is none. */
std::optional<Network> networkWithKey(Console& console, const std::string& name, Arguments typedKey)
{
    Network network = networkOf(name, typedKey);
    if (!network.key && wantsKey(network.kind) && console.screen().isTerminal()) {
        network.key = askSecret(console, "key of " + printable(name) + ": ");
        if (!network.key) {
            return std::nullopt;
        }
    }
    if (const std::string obstacle = obstacleOf(network); !obstacle.empty()) {
        console.complain("not joined: %s\n", console.screen().wrapped(obstacle, 2).c_str());
        return std::nullopt;
    }
    return network;
}

Outcome outcomeOf(End end)
{
    if (end == End::Interrupted) {
        return Outcome::Interrupted;
    }
    return end == End::Connected ? Outcome::Done : Outcome::Unmet;
}

/** A key that is new is saved before a lease comes. */
bool willBeSaved(const Network& network)
{
    auto mode = _MOVO_NET_IPMODE_STATIC_;
    (void)Movo_NET_GetIPMode(kAppId, network.ifname.c_str(), &mode);
    return mode == _MOVO_NET_IPMODE_DHCP_ && network.key && rememberedKey(network.ifname, network.name) != network.key;
}

/** A verdict of its own takes the place of remarks. */
Outcome connectAndTell(Console& console, const Network& network)
{
    const bool saves = willBeSaved(network);
    const SavedFile networks(kNetworks);
    const End end = tryAndTell(console, network);
    if (end == End::Connected && saves) {
        networks.warnUnlessWritten(console);
    }
    const auto left = leftNetwork();
    if (end == End::Connected || end == End::NoAddress || end == End::Interrupted || !left) {
        return outcomeOf(end);
    }
    console.print("back to %s\n", printable(left->name).c_str());
    const End back = tryAndTell(console, *left);
    return back == End::Interrupted ? Outcome::Interrupted : Outcome::Unmet;
}
} // namespace

Outcome connectNetwork(Console& console, Arguments arguments)
{
    const std::string ifname = wifiName();
    Outcome outcome = waitUntilReady(console, ifname);
    if (outcome == Outcome::Done && !isListed(arguments[0])) {
        outcome = look(console, ifname, arguments[0]);
    }
    if (outcome != Outcome::Done) {
        return outcome;
    }
    const auto network = networkWithKey(console, arguments[0], arguments.subspan(1));
    const auto remark = console.remarkWith(nullptr);
    outcome = network ? connectAndTell(console, *network) : Outcome::Unmet;
    (void)console.remarkWith(remark);
    return outcome;
}
} // namespace shell
