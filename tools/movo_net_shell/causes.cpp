#include "causes.h"

#include "glue.h"
#include "join.h"
#include "likeness.h"
#include "networks.h"
#include "text.h"

#include <algorithm>
#include <cstring>

namespace shell {
namespace {
using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kSupplicantTimeout = 10s; // of one exchange

/** What a code of a command means where glue, interface and network are there; "" fits every command, 0 every code. */
struct Meaning {
    const char* command;
    int code;
    const char* text;
};
constexpr Meaning kMeanings[] = {
    {"start", 1, "the log names the step that failed, or who hosts the glue already"},
    {"stop", 1, "it was stopped before"},
    {"callback", 1, "the glue was stopped"},
    {"resource set", 1, "the resource is 65536, for one client at most"},
    {"resource add", 1, "the resource is 65536, for one client at most"},
    {"name", 1, "no interface at this position; count tells how many there are"},
    {"name", 3, "the name is longer; 8 characters are enough for each"},
    {"enable", 1, "marked as wanted, but it cannot be brought up now: no cable, no access point, or the log says why"},
    {"priority", 1, "set, but route or resolver could not be written; the log says which"},
    {"best-type", 1, "no interface is up; status shows them"},
    {"wol", 1, "the card or its driver cannot be woken so; the log names the call"},
    {"wifi key", 1, "its key is not remembered; wifi key NAME KEY sets the one to join with"},
    {"wifi key", 5, "a key has from 1 to 64 characters"},
    {"wifi priority", 5, "a priority is a number from 0 to 7"},
    {"wifi signal", 1, "no network is joined; wifi connect NAME joins one"},
    {"wifi scan", 1, "the supplicant refused to look; it may be busy: try again in some seconds"},
    {"wifi wps", 5, "pin and both want a PIN"},
    {"ap start", 1, "there is no thread for it"},
    {"ap stop", 1, "a step failed, which the log names; it may be tried again"},
    {"wake", 1, "the chip's own tool failed; the log has its command"},
    {"", 4, "the system has no memory left"},
    {"", 5, "an argument is not taken"},
};

bool isAbout(const Failed& failed, const char* subject)
{
    return std::strcmp(failed.command.subject, subject) == 0;
}

bool isCalled(const Failed& failed, const char* name)
{
    return std::strcmp(failed.command.name, name) == 0;
}

/** The argument that the row calls so; empty when it was left out. */
std::string argumentOf(const Failed& failed, const char* parameter)
{
    const std::vector<std::string> names = parametersOf(failed.command).names;
    const auto at = static_cast<std::size_t>(std::ranges::find(names, parameter) - names.begin());
    return at < names.size() && at < failed.arguments.size() ? failed.arguments[at] : "";
}

std::string known(const std::string& ifname)
{
    const std::vector<std::string> names = interfaceNames();
    if (std::ranges::find(names, ifname) != names.end()) {
        return "";
    }
    const std::string there = names.empty() ? "none is known yet" : "there are " + enumerated(names);
    return "no interface \"" + printable(ifname) + "\"; " + there;
}

std::string notRunning(const Failed& failed)
{
    constexpr const char* kAlways[] = {"start", "stop", "running", "callback", "resource set", "resource add"};
    const auto isIt = [&](const char* name) { return isCalled(failed, name); };
    if (std::ranges::any_of(kAlways, isIt) || isAbout(failed, "softap") || Movo_NET_IsInitializationDone(kAppId) != 0) {
        return "";
    }
    return wasStopped() ? "the glue was stopped, for good in this process; leave the shell and start it anew"
                        : "the glue does not run; start starts it";
}

std::string noAnswer(const Failed& failed)
{
    const bool late = isAbout(failed, "wifi") && failed.took >= kSupplicantTimeout;
    return late ? "the supplicant did not answer within 10 s; disable and enable the interface to start another" : "";
}

std::string unknownInterface(const Failed& failed)
{
    const std::string ifname = argumentOf(failed, "IFACE");
    return ifname.empty() ? "" : known(ifname);
}

/** Whether the interface of the Wi-Fi commands can serve them. */
std::string noWireless(const Failed& failed)
{
    if (!isAbout(failed, "wifi") || isCalled(failed, "wifi signal")) {
        return "";
    }
    const std::string ifname = wifiName();
    if (ifname.empty()) {
        return "no wireless interface; there are " + enumerated(interfaceNames());
    }
    if (std::string unknown = known(ifname); !unknown.empty()) {
        return unknown;
    }
    MovoNetIfaceType_e type{};
    if (Movo_NET_GetIfaceType(kAppId, ifname.c_str(), &type) == 0 && type != _MOVO_NET_IFACE_WIFI_) {
        return printable(ifname) + " is not wireless; wifi use \"\" goes back to the one that is";
    }
    if (Movo_NET_IsEnabledIface(kAppId, ifname.c_str()) == 0) {
        return printable(ifname) + " is disabled; enable " + printable(ifname) + " brings it up";
    }
    return Movo_NET_IsActivedIface(kAppId, ifname.c_str()) == 0
               ? printable(ifname) + " is not active: no link yet, or no supplicant runs; IFFOUND comes when it is"
               : "";
}

std::string noNetwork(const Failed& failed)
{
    const std::string name = argumentOf(failed, "NAME");
    if (name.empty() || isCalled(failed, "wifi hidden")) {
        return "";
    }
    const std::vector<std::string> names = networkNames();
    return std::ranges::find(names, name) == names.end() ? unknownNetwork(name) : "";
}

std::string meaning(const Failed& failed)
{
    for (const Meaning& each : kMeanings) {
        if ((each.command[0] == '\0' || isCalled(failed, each.command)) && each.code == failed.shortfall.code) {
            return each.text;
        }
    }
    if (isCalled(failed, "wifi join") || isCalled(failed, "wifi back")) {
        const auto left = leftNetwork();
        return "the supplicant refused; the log names the command" +
               (left ? "; wifi back joins " + printable(left->name) + " again" : "");
    }
    return isAbout(failed, "wifi") ? "the supplicant refused; the log names the command"
                                   : "the log names the step that failed; log info makes it say more";
}

/** The first that finds something has the cause. */
using LookUp = std::string (*)(const Failed& failed);
constexpr LookUp kLookUps[] = {notRunning, unknownInterface, noAnswer, noWireless, noNetwork, meaning};
constexpr LookUp kLookUpsOfAnswers[] = {notRunning, unknownInterface};

std::string firstOf(std::span<const LookUp> lookUps, const Failed& failed)
{
    for (const LookUp lookUp : lookUps) {
        if (std::string cause = lookUp(failed); !cause.empty()) {
            return cause;
        }
    }
    return "";
}
} // namespace

std::string causeOf(const Failed& failed)
{
    if (!failed.shortfall.isAnswer) {
        return firstOf(kLookUps, failed);
    }
    return argumentOf(failed, "IFACE").empty() ? "" : firstOf(kLookUpsOfAnswers, failed);
}

std::string unknownNetwork(const std::string& name)
{
    const std::vector<std::string> names = networkNames();
    const std::string quoted = "no network \"" + printable(name) + "\"";
    if (names.empty()) {
        return quoted + ", no network is listed; wifi scan looks for them, wifi update reads what was found";
    }
    const std::string meant = closest(name, names);
    return meant.empty() ? quoted + " is listed; wifi scan and wifi update look again, wifi list shows them"
                         : quoted + "; did you mean " + printable(meant) + "?";
}
} // namespace shell
