#include "tools.h"

#include <functional>

using namespace api;

// What all calls have in common: no glue, no such interface, nowhere to write to.

namespace {
constexpr int kUntouched = 0x5a5a5a5a;

int s_int;
unsigned s_words[5];
long long s_mac;
kest_bool s_bool;
char s_name[16];
MovoNetIfaceType_e s_type;
MovoNetIPMode_e s_mode;
MovoNetIPStatus_e s_status;

void resetOutputs()
{
    s_int = kUntouched;
    s_mac = kUntouched;
    s_bool = 0x5a;
    s_name[0] = 'Z';
    s_type = static_cast<MovoNetIfaceType_e>(kUntouched);
    s_mode = static_cast<MovoNetIPMode_e>(kUntouched);
    s_status = static_cast<MovoNetIPStatus_e>(kUntouched);
    for (unsigned& word : s_words) {
        word = kUntouched;
    }
}

void expectOutputsUntouched()
{
    EXPECT_EQ(s_int, kUntouched);
    EXPECT_EQ(s_mac, kUntouched);
    EXPECT_EQ(s_bool, 0x5a);
    EXPECT_EQ(s_name[0], 'Z');
    EXPECT_EQ(s_type, kUntouched);
    EXPECT_EQ(s_mode, kUntouched);
    EXPECT_EQ(s_status, kUntouched);
    for (const unsigned word : s_words) {
        EXPECT_EQ(word, static_cast<unsigned>(kUntouched));
    }
}

/** A call by an interface's name. */
struct ByName {
    std::string function;
    std::function<int(const char*)> call;
    int notStarted = 1;
    int notFound = 1;
    int notFoundLevel = KEST_LEVEL_ERROR;
};

void PrintTo(const ByName& row, std::ostream* out)
{
    *out << row.function;
}

int getIp(const char* name)
{
    return Movo_NET_GetIP(0, name, &s_words[0], &s_words[1], &s_words[2], &s_words[3], &s_words[4]);
}

int getIpStatic(const char* name)
{
    return Movo_NET_GetIPStatic(0, name, &s_words[0], &s_words[1], &s_words[2], &s_words[3], &s_words[4]);
}

const std::vector<ByName> kByName{
    {"Movo_NET_GetIfaceType", [](const char* name) { return Movo_NET_GetIfaceType(0, name, &s_type); }},
    {"Movo_NET_GetIfaceMacAddress", [](const char* name) { return Movo_NET_GetIfaceMacAddress(0, name, &s_mac); }},
    {"Movo_NET_GetIfaceThroughput", [](const char* name) { return Movo_NET_GetIfaceThroughput(0, name, &s_int); }},
    {"Movo_NET_EnableIface", [](const char* name) { return Movo_NET_EnableIface(0, name); }},
    {"Movo_NET_DisableIface", [](const char* name) { return Movo_NET_DisableIface(0, name); }},
    {"Movo_NET_IsEnabledIface", [](const char* name) { return int{Movo_NET_IsEnabledIface(0, name)}; }, 1, 0},
    {"Movo_NET_IsActivedIface", [](const char* name) { return int{Movo_NET_IsActivedIface(0, name)}; }, 1, 0},
    {"Movo_NET_IsPhyConnected", [](const char* name) { return int{Movo_NET_IsPhyConnected(0, name)}; }, 1, 1},
    {"Movo_NET_SetIfacePriority", [](const char* name) { return Movo_NET_SetIfacePriority(0, name, 3); }},
    {"Movo_NET_GetIfacePriority", [](const char* name) { return Movo_NET_GetIfacePriority(0, name, &s_int); }},
    {"Movo_NET_ConfigIPMode",
     [](const char* name) { return Movo_NET_ConfigIPMode(0, name, _MOVO_NET_IPMODE_STATIC_); }},
    {"Movo_NET_GetIPMode", [](const char* name) { return Movo_NET_GetIPMode(0, name, &s_mode); }},
    {"Movo_NET_GetIPStatus", [](const char* name) { return Movo_NET_GetIPStatus(0, name, &s_status); }},
    {"Movo_NET_GetIP", getIp},
    {"Movo_NET_GetIPStatic", getIpStatic},
    {"Movo_NET_IsConnected", [](const char* name) { return Movo_NET_IsConnected(0, name, &s_bool); }, 1, 1,
     KEST_LEVEL_INFO},
    {"Movo_NET_ClearIP", [](const char* name) { return Movo_NET_ClearIP(0, name); }},
};

class CallByName : public testing::TestWithParam<ByName> {
protected:
    /** The result of the call; no output was written. */
    int called(const char* name)
    {
        resetOutputs();
        const int result = GetParam().call(name);
        expectOutputsUntouched();
        return result;
    }
    std::string notFound(const std::string& name)
    {
        const std::string level = GetParam().notFoundLevel == KEST_LEVEL_INFO ? "INFO " : "ERROR ";
        return level + GetParam().function + ": ifname not found: " + name + "\n";
    }
};

TEST_P(CallByName, BeforeTheStart)
{
    sim::Set set;
    EXPECT_EQ(called("eth0"), GetParam().notStarted);
    EXPECT_EQ(said(set), Lines{"ERROR " + GetParam().function + ": s_bIsInitDone=false\n"});
}

TEST_P(CallByName, AfterTheStop)
{
    Television television;
    EXPECT_EQ(television.set.stop(), 0);
    television.set.forget();
    EXPECT_EQ(called("eth0"), GetParam().notStarted);
    EXPECT_EQ(said(television.set), Lines{"ERROR " + GetParam().function + ": s_bIsInitDone=false\n"});
}

TEST_P(CallByName, UnknownInterface)
{
    Layer layer;
    layer.add("eth0");
    for (const std::string name : {"eth1", "eth", "eth00", "", "ETH0"}) {
        layer.set.forget();
        EXPECT_EQ(called(name.c_str()), GetParam().notFound) << name;
        EXPECT_EQ(said(layer.set), Lines{notFound(name)});
    }
}

TEST_P(CallByName, NameOfThousandCharacters)
{
    Layer layer;
    const std::string name(1000, 'e');
    EXPECT_EQ(called(name.c_str()), GetParam().notFound);
    EXPECT_EQ(said(layer.set), Lines{notFound(name)});
}

TEST_P(CallByName, NullNameIsTheNameOfNoInterface)
{
    Layer layer;
    layer.add("eth0");
    EXPECT_EQ(called(nullptr), GetParam().notFound);
    EXPECT_EQ(said(layer.set), Lines{notFound("(null)")});
}

TEST_P(CallByName, ListThatCannotBeLockedHasNoInterface)
{
    Layer layer;
    layer.add("eth0");
    layer.set.failLock(movonet::ifaceListLock);
    EXPECT_EQ(called("eth0"), GetParam().notFound);
    EXPECT_EQ(said(layer.set), (Lines{"ERROR FindInterface: lock mutex failed\n", notFound("eth0")}));
}

INSTANTIATE_TEST_SUITE_P(Calls, CallByName, testing::ValuesIn(kByName),
                         [](const auto& row) { return row.param.function; });

/** A call without a name, or one that does not look for it. */
struct Plain {
    std::string function;
    std::function<int()> call;
    int notStarted = 1;
};

void PrintTo(const Plain& row, std::ostream* out)
{
    *out << row.function;
}

const std::vector<Plain> kPlain{
    {"Movo_NET_GetNumOfIfaces", [] { return Movo_NET_GetNumOfIfaces(0, &s_int); }},
    {"Movo_NET_GetIfaceName", [] { return Movo_NET_GetIfaceName(0, 0, 15, s_name); }},
    {"Movo_NET_GetActivedIface", [] { return Movo_NET_GetActivedIface(0, &s_int); }},
    {"Movo_NET_GetActivedIfaceType", [] { return Movo_NET_GetActivedIfaceType(0, &s_type); }},
    {"Movo_NET_DisableAllIfaces", [] { return Movo_NET_DisableAllIfaces(0); }},
    {"Movo_NET_IsDNSOK", [] { return int{Movo_NET_IsDNSOK(0, "eth0")}; }, 1},
    {"Movo_NET_IsNetworkOK", [] { return int{Movo_NET_IsNetworkOK(0)}; }, 0},
    {"Movo_NET_SetWol", [] { return Movo_NET_SetWol(0, "eth0", 1); }},
};

class PlainCall : public testing::TestWithParam<Plain> {};

TEST_P(PlainCall, BeforeTheStart)
{
    sim::Set set;
    set.write("/etc/resolv.conf", "nameserver 8.8.8.8\n");
    resetOutputs();
    EXPECT_EQ(GetParam().call(), GetParam().notStarted);
    expectOutputsUntouched();
    EXPECT_EQ(said(set), Lines{"ERROR " + GetParam().function + ": s_bIsInitDone=false\n"});
}

INSTANTIATE_TEST_SUITE_P(Calls, PlainCall, testing::ValuesIn(kPlain),
                         [](const auto& row) { return row.param.function; });

class LockedCall : public testing::TestWithParam<Plain> {};

TEST_P(LockedCall, ListThatCannotBeLocked)
{
    Layer layer;
    layer.add("eth0");
    layer.set.failLock(movonet::ifaceListLock);
    resetOutputs();
    EXPECT_EQ(GetParam().call(), 1);
    expectOutputsUntouched();
    EXPECT_EQ(said(layer.set), Lines{"ERROR " + GetParam().function + ": lock mutex failed\n"});
}

INSTANTIATE_TEST_SUITE_P(Calls, LockedCall, testing::Values(kPlain[0], kPlain[1], kPlain[2]),
                         [](const auto& row) { return row.param.function; });

/** A call that is given no place to write to, for an interface that there is not. */
const std::vector<Plain> kWithoutOutput{
    {"GetNumOfIfaces", [] { return Movo_NET_GetNumOfIfaces(0, nullptr); }},
    {"GetIfaceName", [] { return Movo_NET_GetIfaceName(0, 99, 15, nullptr); }},
    {"GetIfaceType", [] { return Movo_NET_GetIfaceType(0, "none", nullptr); }},
    {"GetIfaceMacAddress", [] { return Movo_NET_GetIfaceMacAddress(0, "none", nullptr); }},
    {"GetIfaceThroughput", [] { return Movo_NET_GetIfaceThroughput(0, "none", nullptr); }},
    {"GetActivedIface", [] { return Movo_NET_GetActivedIface(0, nullptr); }},
    {"GetActivedIfaceType", [] { return Movo_NET_GetActivedIfaceType(0, nullptr); }},
    {"GetIfacePriority", [] { return Movo_NET_GetIfacePriority(0, "none", nullptr); }},
    {"GetIPMode", [] { return Movo_NET_GetIPMode(0, "none", nullptr); }},
    {"GetIPStatus", [] { return Movo_NET_GetIPStatus(0, "none", nullptr); }},
    {"IsConnected", [] { return Movo_NET_IsConnected(0, "none", nullptr); }},
};

class WithoutOutput : public testing::TestWithParam<Plain> {};

TEST_P(WithoutOutput, IsAnInvalidArgumentBeforeTheNameIsLookedAt)
{
    Layer layer;
    EXPECT_EQ(GetParam().call(), 5);
    EXPECT_EQ(said(layer.set), Lines{});
}

TEST_P(WithoutOutput, OfAGlueThatDoesNotRunFailsForThat)
{
    sim::Set set;
    EXPECT_EQ(GetParam().call(), 1);
    EXPECT_EQ(said(set), Lines{"ERROR Movo_NET_" + GetParam().function + ": s_bIsInitDone=false\n"});
}

INSTANTIATE_TEST_SUITE_P(Calls, WithoutOutput, testing::ValuesIn(kWithoutOutput),
                         [](const auto& row) { return row.param.function; });

TEST(GetIP, KeepsTellingOfEachMissingOutputBeforeTheStart)
{
    sim::Set set;
    unsigned* const words = s_words;
    resetOutputs();
    for (int missing = 0; missing < 5; ++missing) {
        const auto out = [&](int number) { return number == missing ? nullptr : &words[number]; };
        EXPECT_EQ(Movo_NET_GetIP(0, "eth0", out(0), out(1), out(2), out(3), out(4)), 5) << missing;
    }
    expectOutputsUntouched();
    EXPECT_EQ(said(set), Lines{});
}

TEST(FilterOutIF, DoesNothingAtAnyTime)
{
    sim::Set set;
    EXPECT_EQ(Movo_NET_FilterOutIF(0, "eth0"), 0);
    EXPECT_EQ(Movo_NET_FilterOutIF(0, nullptr), 0);
    EXPECT_TRUE(set.log().empty());
    EXPECT_TRUE(set.commands().empty());
}

TEST(ConfigIPStatic, TellsItsArgumentsBeforeItLooksForTheInterface)
{
    Layer layer;
    EXPECT_EQ(Movo_NET_ConfigIPStatic(0, "eth9", 0x1a, 2, 3, 4, 0xfffffff5), 1);
    EXPECT_EQ(said(layer.set),
              (Lines{"INFO Movo_NET_ConfigIPStatic: if=eth9, ip=0000001a, mask=00000002, gw=00000003, dns1=00000004, "
                     "dns2=fffffff5\n",
                     "ERROR Movo_NET_ConfigIPStatic: ifname not found: eth9\n"}));
    layer.set.forget();
    EXPECT_EQ(Movo_NET_ConfigIPStatic(0, nullptr, 0, 0, 0, 0, 0), 1);
    EXPECT_EQ(said(layer.set).front(), "INFO Movo_NET_ConfigIPStatic: if=(null), ip=00000000, mask=00000000, "
                                       "gw=00000000, dns1=00000000, dns2=00000000\n");
}

TEST(ConfigIPStatic, BeforeTheStartSaysNothingElse)
{
    sim::Set set;
    EXPECT_EQ(Movo_NET_ConfigIPStatic(0, "eth0", 1, 2, 3, 4, 5), 1);
    EXPECT_EQ(said(set), Lines{"ERROR Movo_NET_ConfigIPStatic: s_bIsInitDone=false\n"});
}
} // namespace
