#include "tools.h"

#include <functional>
#include <tuple>

using namespace api;

// The Wi-Fi calls find their interface and hand everything else on as it is.

namespace {
constexpr int kOperationsResult = 17;

/** What a value is to a test that looks whether it was handed on: pointers by where they point. */
template <typename Value>
std::string shown(Value value)
{
    if constexpr (std::is_pointer_v<Value>) {
        return "at " + std::to_string(reinterpret_cast<std::uintptr_t>(value));
    } else {
        return std::to_string(static_cast<long long>(value));
    }
}

MovoNetIface_t* s_iface; // the record that an operation was called with
Lines s_arguments;       // the rest

template <typename... Arguments>
RETURN_TYPE operation(MovoNetIface_t* iface, Arguments... arguments)
{
    s_iface = iface;
    s_arguments = {shown(arguments)...};
    return kOperationsResult;
}

/** One call with its arguments after the interface's name. */
struct WifiCall {
    std::string function;
    std::function<int(const char* ifname)> call;
    std::function<void(MovoNetIfaceFunc_t&)> install; // the operation above in its slot
    Lines arguments;
    std::string notFoundLevel = "ERROR ";
};

void PrintTo(const WifiCall& row, std::ostream* out)
{
    *out << row.function;
}

template <typename... Arguments>
WifiCall row(const char* function, RETURN_TYPE (*call)(kest_sint32, const char*, Arguments...),
             RETURN_TYPE (*MovoNetIfaceFunc_t::*slot)(MovoNetIface_t*, Arguments...),
             std::type_identity_t<Arguments>... arguments)
{
    const std::tuple<Arguments...> rest{arguments...};
    return {function,
            [=](const char* ifname) {
                return std::apply([&](Arguments... each) { return call(0, ifname, each...); }, rest);
            },
            [=](MovoNetIfaceFunc_t& ops) { ops.*slot = operation<Arguments...>; },
            {shown(arguments)...}};
}
WifiCall quieter(WifiCall call, const char* notFoundLevel)
{
    call.notFoundLevel = notFoundLevel;
    return call;
}

// Never looked at: only where they are counts.
int s_int;
kest_bool s_bool;
char s_text[8];
MovoNetWifiEncryption_e s_cipher;
MovoNetWifiSecurity_e s_security;
MovoNetWifiWPSMode_e s_mode;
MovoNetWifiDevType_e s_chip;
constexpr const char* kEssid = "Net";

using Ops = MovoNetIfaceFunc_t;
#define ROW(call, ...) row("Movo_NET_" #call, Movo_NET_##call, __VA_ARGS__)

const std::vector<WifiCall> kCalls{
    ROW(WifiScanEsss, &Ops::WifiScanEsss),
    ROW(WifiUpdateEsss, &Ops::WifiUpdateEsss),
    ROW(GetNumOfWifiEsss, &Ops::WifiGetNumOfEsss, &s_int),
    ROW(WifiGetSsidEss, &Ops::WifiGetSsidEss, -3, s_text),
    ROW(WifiGetSignalEss, &Ops::WifiGetSignalEss, kEssid, &s_int),
    ROW(WifiIsWPS, &Ops::WifiIsWPS, kEssid, &s_bool),
    ROW(WifiGetEncryptionEss, &Ops::WifiGetEncryptionEss, kEssid, &s_cipher),
    ROW(WifiGetSecurityEss, &Ops::WifiGetSecurityEss, kEssid, &s_security),
    ROW(WifiGetFrequencyEss, &Ops::WifiGetFrequencyEss, kEssid, &s_int),
    ROW(WifiGetChannelEss, &Ops::WifiGetChannelEss, kEssid, &s_int),
    ROW(WifiSetPriorityEss, &Ops::WifiSetPriorityEss, kEssid, 99),
    ROW(WifiGetPriorityEss, &Ops::WifiGetPriorityEss, kEssid, &s_int),
    ROW(WifiSetKey, &Ops::WifiSetKey, kEssid, "key", -1),
    ROW(WifiGetKey, &Ops::WifiGetKey, kEssid, s_text, &s_int),
    ROW(WifiConnectEss, &Ops::WifiConnectEss, nullptr),
    ROW(WifiDisConnect, &Ops::WifiDisConnect),
    quieter(ROW(WifiGetConnectedEss, &Ops::WifiGetConnectedEss, s_text, -1), "WARNING "),
    ROW(WifiGetWpsModeEss, &Ops::WifiGetWpsModeEss, &s_mode),
    ROW(WifiStartWpsConnection, &Ops::WifiStartWpsConnection, static_cast<MovoNetWifiWPSMode_e>(99), "pin"),
    ROW(WifiGenerateWpsPin, &Ops::WifiGenerateWpsPin, s_text, 8),
    ROW(WifiSearchHideEss, &Ops::WifiSearchHideEss, ""),
    {"Movo_NET_WifiGetBssidEss", [](const char* name) { return Movo_NET_WifiGetBssidEss(0, name, kEssid, nullptr); },
     [](Ops& ops) { ops.WifiGetBssidEss = operation<const char*, std::int64_t*>; }, Lines{shown(kEssid), "at 0"}},
    ROW(WifiGetDevType, &Ops::WifiGetDevType, &s_chip),
    quieter(ROW(WifiIsReconnecting, &Ops::WifiIsReconnecting, &s_bool), "INFO "),
};

class EachWifiCall : public testing::TestWithParam<WifiCall> {
protected:
    std::string notFound(const std::string& name) const
    {
        return GetParam().notFoundLevel + GetParam().function + ": ifname not found: " + name + "\n";
    }
};

TEST_P(EachWifiCall, HandsItsArgumentsOnAndReturnsWhatComesBack)
{
    Layer layer;
    (void)layer.add("wlan1", _MOVO_NET_IFACE_WIFI_);
    MovoNetIface_t& wlan0 = layer.add("wlan0", _MOVO_NET_IFACE_WIFI_);
    wlan0.isActived = 0; // the operation's business
    GetParam().install(wlan0.funcs);
    EXPECT_EQ(GetParam().call("wlan0"), kOperationsResult);
    EXPECT_EQ(s_iface, &wlan0);
    EXPECT_EQ(s_arguments, GetParam().arguments);
    EXPECT_EQ(said(layer.set), Lines{});
}

TEST_P(EachWifiCall, BeforeTheStart)
{
    sim::Set set;
    EXPECT_EQ(GetParam().call("wlan0"), 1);
    EXPECT_EQ(said(set), Lines{"ERROR " + GetParam().function + ": s_bIsInitDone=false\n"});
}

TEST_P(EachWifiCall, AfterTheStop)
{
    Television television;
    EXPECT_EQ(television.set.stop(), 0);
    television.set.forget();
    EXPECT_EQ(GetParam().call("eth0"), 1);
    EXPECT_EQ(said(television.set), Lines{"ERROR " + GetParam().function + ": s_bIsInitDone=false\n"});
}

TEST_P(EachWifiCall, UnknownInterface)
{
    Layer layer;
    (void)layer.add("wlan0", _MOVO_NET_IFACE_WIFI_);
    for (const std::string& name : {std::string("wlan1"), std::string(), std::string(1000, 'w')}) {
        layer.set.forget();
        EXPECT_EQ(GetParam().call(name.c_str()), 1) << name;
        EXPECT_EQ(said(layer.set), Lines{notFound(name)});
    }
    layer.set.forget();
    EXPECT_EQ(GetParam().call(nullptr), 1);
    EXPECT_EQ(said(layer.set), Lines{notFound("(null)")});
}

TEST_P(EachWifiCall, ListThatCannotBeLockedHasNoInterface)
{
    Layer layer;
    (void)layer.add("wlan0", _MOVO_NET_IFACE_WIFI_);
    layer.set.failLock(movonet::ifaceListLock);
    EXPECT_EQ(GetParam().call("wlan0"), 1);
    EXPECT_EQ(said(layer.set), (Lines{"ERROR FindInterface: lock mutex failed\n", notFound("wlan0")}));
}

TEST_P(EachWifiCall, InterfaceThatIsNotWireless)
{
    Layer layer;
    for (const MovoNetIfaceType_e type :
         {_MOVO_NET_IFACE_LO_, _MOVO_NET_IFACE_ETHER_, static_cast<MovoNetIfaceType_e>(3)}) {
        const std::string name = "if" + std::to_string(type);
        GetParam().install(layer.add(name, type).funcs);
        s_iface = nullptr;
        EXPECT_EQ(GetParam().call(name.c_str()), 1);
        EXPECT_EQ(said(layer.set), Lines{"ERROR " + GetParam().function + ": ifname is not wifi: " + name + "\n"});
        EXPECT_EQ(s_iface, nullptr);
    }
}

TEST_P(EachWifiCall, BackEndWithoutThatOperationIsAnInvalidArgument)
{
    Layer layer;
    layer.add("wlan0", _MOVO_NET_IFACE_WIFI_).funcs = {};
    (void)layer.add("p2p0", _MOVO_NET_IFACE_WIFI_); // it has no back end at all
    EXPECT_EQ(GetParam().call("wlan0"), 5);
    EXPECT_EQ(GetParam().call("p2p0"), 5);
    EXPECT_EQ(said(layer.set), Lines{});
}

INSTANTIATE_TEST_SUITE_P(Calls, EachWifiCall, testing::ValuesIn(kCalls),
                         [](const auto& each) { return each.param.function; });

RETURN_TYPE bssid(MovoNetIface_t* /*iface*/, const char* /*essid*/, std::int64_t* out)
{
    *out = 0x0000665544332211;
    return 0;
}

RETURN_TYPE failingBssid(MovoNetIface_t* /*iface*/, const char* /*essid*/, std::int64_t* /*out*/)
{
    return 1;
}

TEST(WifiGetBssidEss, HasAnOutputOfItsOwnType)
{
    Layer layer;
    MovoNetIface_t& wlan0 = layer.add("wlan0", _MOVO_NET_IFACE_WIFI_);
    long long address = -1;
    wlan0.funcs.WifiGetBssidEss = failingBssid;
    EXPECT_EQ(Movo_NET_WifiGetBssidEss(0, "wlan0", "Net", &address), 1);
    EXPECT_EQ(address, -1);
    wlan0.funcs.WifiGetBssidEss = bssid;
    EXPECT_EQ(Movo_NET_WifiGetBssidEss(0, "wlan0", "Net", &address), 0);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&address), 6), "\x11\x22\x33\x44\x55\x66");
}
} // namespace
