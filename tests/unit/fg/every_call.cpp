#include "every_call.h"

#include <arpa/inet.h>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <movo_net.h>
#include <regex>
#include <sstream>

namespace {
/** A network that the tests of wireless interfaces list. */
constexpr const char* kEssid = "Net";

/** A question about one network of the table. */
template <typename Output>
PublicCall asking(const char* name, RETURN_TYPE (*function)(kest_sint32, const char*, const char*, Output*))
{
    return {name, [function](sim::Set&, const char* ifname) {
                Output output{};
                (void)function(0, ifname, kEssid, &output);
            }};
}
/** Something done to one network of the table. */
PublicCall doing(const char* name, RETURN_TYPE (*function)(kest_sint32, const char*, const char*))
{
    return {name, [function](sim::Set&, const char* ifname) { (void)function(0, ifname, kEssid); }};
}

void getKey(sim::Set&, const char* ifname)
{
    char key[65];
    int length = 0;
    (void)Movo_NET_WifiGetKey(0, ifname, kEssid, key, &length);
}

void getNames(sim::Set&, const char* ifname)
{
    char name[33];
    (void)Movo_NET_WifiGetSsidEss(0, ifname, 0, name);
}

void getConnectedName(sim::Set&, const char* ifname)
{
    char name[33];
    (void)Movo_NET_WifiGetConnectedEss(0, ifname, name, sizeof(name));
}

void getConnectedSignal(sim::Set&, const char*)
{
    char ifname[9];
    char name[33];
    int signal = 0;
    (void)Movo_NET_WifiGetConnectedSignal(0, ifname, name, &signal);
}

void generatePin(sim::Set&, const char* ifname)
{
    char pin[9];
    (void)Movo_NET_WifiGenerateWpsPin(0, ifname, pin, sizeof(pin));
}

/** Flips between two values from call to call, so that each call changes something. */
bool flip()
{
    static std::atomic<unsigned> calls;
    return calls++ % 2 == 0;
}

/** Turns a call with the arguments of most into one of the list. */
template <typename... Output>
PublicCall reading(const char* name, RETURN_TYPE (*function)(kest_sint32, const char*, Output*...))
{
    return {name, [function](sim::Set&, const char* ifname) {
                std::tuple<Output...> outputs;
                std::apply([&](Output&... output) { (void)function(0, ifname, &output...); }, outputs);
            }};
}
PublicCall asking(const char* name, kest_bool (*function)(kest_sint32, const char*))
{
    return {name, [function](sim::Set&, const char* ifname) { (void)function(0, ifname); }};
}
PublicCall doing(const char* name, RETURN_TYPE (*function)(kest_sint32, const char*))
{
    return {name, [function](sim::Set&, const char* ifname) { (void)function(0, ifname); }};
}
template <typename Output>
PublicCall counting(const char* name, RETURN_TYPE (*function)(kest_sint32, Output*))
{
    return {name, [function](sim::Set&, const char*) {
                Output output{};
                (void)function(0, &output);
            }};
}
template <typename Result>
PublicCall simple(const char* name, Result (*function)(kest_sint32))
{
    return {name, [function](sim::Set&, const char*) { (void)function(0); }};
}

void configureStatic(sim::Set&, const char* ifname)
{
    (void)Movo_NET_ConfigIPStatic(0, ifname, inet_addr(flip() ? "10.0.2.7" : "10.0.2.8"), inet_addr("255.255.255.0"),
                                  inet_addr("10.0.2.2"), inet_addr("10.0.2.3"), 0);
}

void configureMode(sim::Set&, const char* ifname)
{
    (void)Movo_NET_ConfigIPMode(0, ifname, flip() ? _MOVO_NET_IPMODE_STATIC_ : _MOVO_NET_IPMODE_DHCP_);
}

void nameInterface(sim::Set&, const char*)
{
    char name[9];
    (void)Movo_NET_GetIfaceName(0, 1, 8, name);
}

void allot(sim::Set&, const char*)
{
    kest_sint32 client = 1;
    (void)Movo_NET_SetResourceAllocation(PLFRes_netlink, 1, &client);
}

/** One that ends early: the set makes no second interface. */
void startAccessPoint(sim::Set& set, const char*)
{
    static std::atomic<bool> told;
    if (!told.exchange(true)) {
        set.onCommand("/bin/wpa_cli ").fails();
    }
    (void)Movo_Net_WiFi_HostAP_Start(0);
}

void describeAccessPoint(sim::Set&, const char*)
{
    MovoHotspotconfig_t config{};
    (void)Movo_Net_WiFi_HostAP_Config(0, &config);
}

void armWakeUp(sim::Set&, const char*)
{
    char ignored[] = "mlan0";
    (void)Movo_Net_WiFi_Wakeup(0, ignored, 1);
}

void allotNone(sim::Set&, const char*)
{
    kest_sint32 client = 1;
    (void)Movo_NET_SetClientResourceAllocation(PLFRes_netlink, 0, &client);
}

#define NAMED(function) #function, function

std::vector<PublicCall> generalCalls()
{
    return {
        simple(NAMED(Movo_NET_IsInitializationDone)),
        counting(NAMED(Movo_NET_GetMaxNumOfIfacesSupported)),
        counting(NAMED(Movo_NET_GetMaxNumOfWifiEssSupported)),
        simple(NAMED(Movo_NET_IsNetworkModeVirgin)),
        simple(NAMED(Movo_NET_SetNetworkToModeVirgin)),
        {"Movo_NET_UnInstallCallback", [](sim::Set&, const char*) { (void)Movo_NET_UnInstallCallback(0, 0); }},
        {"Movo_NET_InstallCallback", [](sim::Set& set, const char*) { set.recordCallbacks(); }},
        {"Movo_NET_SetResourceAllocation", allot},
        {"Movo_NET_SetClientResourceAllocation", allotNone},

        counting(NAMED(Movo_NET_GetNumOfIfaces)),
        {"Movo_NET_GetIfaceName", nameInterface},
        reading(NAMED(Movo_NET_GetIfaceType)),
        reading(NAMED(Movo_NET_GetIfaceMacAddress)),
        reading(NAMED(Movo_NET_GetIfaceThroughput)),
        doing(NAMED(Movo_NET_EnableIface)),
        asking(NAMED(Movo_NET_IsEnabledIface)),
        asking(NAMED(Movo_NET_IsActivedIface)),
        counting(NAMED(Movo_NET_GetActivedIface)),
        counting(NAMED(Movo_NET_GetActivedIfaceType)),
        asking(NAMED(Movo_NET_IsPhyConnected)),
        {"Movo_NET_SetIfacePriority",
         [](sim::Set&, const char* ifname) { (void)Movo_NET_SetIfacePriority(0, ifname, flip() ? 1 : 2); }},
        reading(NAMED(Movo_NET_GetIfacePriority)),
        doing(NAMED(Movo_NET_FilterOutIF)),
        {"Movo_NET_SetWol",
         [](sim::Set&, const char* ifname) { (void)Movo_NET_SetWol(0, ifname, flip() ? kest_bool{1} : kest_bool{0}); }},

        reading(NAMED(Movo_NET_GetIPMode)),
        reading(NAMED(Movo_NET_GetIPStatus)),
        reading(NAMED(Movo_NET_GetIP)),
        reading(NAMED(Movo_NET_GetIPStatic)),
        reading(NAMED(Movo_NET_IsConnected)),
        asking(NAMED(Movo_NET_IsDNSOK)),
        simple(NAMED(Movo_NET_IsNetworkOK)),
        {"Movo_NET_ConfigIPStatic", configureStatic},
        {"Movo_NET_ConfigIPMode", configureMode},

        {"Movo_Net_WiFi_HostAP_Start", startAccessPoint},
        simple(NAMED(Movo_Net_WiFi_HostAP_Stop)),
        simple(NAMED(Movo_Net_WiFi_HostAP_Status)),
        {"Movo_Net_WiFi_HostAP_Config", describeAccessPoint},
        {"Movo_Net_WiFi_Wakeup", armWakeUp},

        doing(NAMED(Movo_NET_ClearIP)),
        doing(NAMED(Movo_NET_DisableIface)),
        simple(NAMED(Movo_NET_DisableAllIfaces)),
    };
}

std::vector<PublicCall> wirelessCalls()
{
    return {
        doing(NAMED(Movo_NET_WifiScanEsss)),
        doing(NAMED(Movo_NET_WifiUpdateEsss)),
        reading(NAMED(Movo_NET_GetNumOfWifiEsss)),
        {"Movo_NET_WifiGetSsidEss", getNames},
        asking(NAMED(Movo_NET_WifiGetSignalEss)),
        asking(NAMED(Movo_NET_WifiIsWPS)),
        asking(NAMED(Movo_NET_WifiGetEncryptionEss)),
        asking(NAMED(Movo_NET_WifiGetSecurityEss)),
        asking(NAMED(Movo_NET_WifiGetFrequencyEss)),
        asking(NAMED(Movo_NET_WifiGetChannelEss)),
        asking(NAMED(Movo_NET_WifiGetPriorityEss)),
        asking(NAMED(Movo_NET_WifiGetBssidEss)),
        {"Movo_NET_WifiSetPriorityEss",
         [](sim::Set&, const char* ifname) { (void)Movo_NET_WifiSetPriorityEss(0, ifname, kEssid, 1); }},
        {"Movo_NET_WifiSetKey",
         [](sim::Set&, const char* ifname) { (void)Movo_NET_WifiSetKey(0, ifname, kEssid, "key", 3); }},
        {"Movo_NET_WifiGetKey", getKey},
        doing(NAMED(Movo_NET_WifiConnectEss)),
        doing(NAMED(Movo_NET_WifiSearchHideEss)),
        {"Movo_NET_WifiStartWpsConnection",
         [](sim::Set&, const char* ifname) {
             (void)Movo_NET_WifiStartWpsConnection(0, ifname, _MOVO_NET_WIFI_WPS_PBC_, "");
         }},
        {"Movo_NET_WifiGenerateWpsPin", generatePin},
        reading(NAMED(Movo_NET_WifiGetWpsModeEss)),
        reading(NAMED(Movo_NET_WifiGetDevType)),
        reading(NAMED(Movo_NET_WifiIsReconnecting)),
        {"Movo_NET_WifiGetConnectedEss", getConnectedName},
        {"Movo_NET_WifiGetConnectedSignal", getConnectedSignal},
        {"Movo_NET_WifiSetSecurityType",
         [](sim::Set&, const char*) { (void)Movo_NET_WifiSetSecurityType(0, _MOVO_NET_WIFI_UI_DEFAULT_); }},
        doing(NAMED(Movo_NET_WifiDisConnect)),
    };
}
} // namespace

const std::vector<PublicCall>& everyCall()
{
    static const std::vector<PublicCall> all = [] {
        std::vector<PublicCall> calls = wirelessCalls();
        const std::vector<PublicCall> rest = generalCalls(); // ends with those that take the interfaces down
        calls.insert(calls.end(), rest.begin(), rest.end());
        return calls;
    }();
    return all;
}

void callEverything(sim::Set& set, const char* ifname)
{
    for (const PublicCall& each : everyCall()) {
        each.call(set, ifname);
    }
    (void)Movo_NET_EnableIface(0, ifname);
}

std::vector<std::string> declaredCalls()
{
    static const std::regex comment(R"(/\*[^]*?\*/|//[^\n]*)");
    static const std::regex declaration(R"(\b(Movo_\w+|WaitForChild2Exit)\s*\()");
    std::vector<std::string> names;
    for (const auto& header : std::filesystem::directory_iterator(INCLUDE_FOLDER)) {
        std::ifstream file(header.path());
        std::stringstream contents;
        contents << file.rdbuf();
        const std::string code = std::regex_replace(contents.str(), comment, "");
        for (std::sregex_iterator found(code.begin(), code.end(), declaration), end; found != end; ++found) {
            names.push_back((*found)[1]);
        }
    }
    return names;
}
