#include "movo_net_fl_common/common.h"
#include "tools.h"

#include <net/if.h>
#include <sys/ioctl.h>

using ip::address;
using ip::Lines;
using ip::record;
using ip::told;

namespace {
MovoNetIface_t filled()
{
    MovoNetIface_t iface = record("eth0");
    iface.isConnected = 1;
    iface.ipv4 = address("10.0.2.15");
    iface.maskv4 = address("255.255.0.0");
    iface.gwv4 = address("10.0.2.2");
    iface.dns1v4 = address("10.0.2.3");
    iface.dns2v4 = address("10.0.2.4");
    return iface;
}

struct Getter {
    const char* name;
    RETURN_TYPE (*call)(MovoNetIface_t*, std::uint32_t*);
    const char* value;
};

void PrintTo(const Getter& getter, std::ostream* out)
{
    *out << getter.name;
}

class AddressGetter : public testing::TestWithParam<Getter> {};

TEST_P(AddressGetter, CopiesItsField)
{
    MovoNetIface_t iface = filled();
    std::uint32_t value = 0;
    EXPECT_EQ(GetParam().call(&iface, &value), 0);
    EXPECT_EQ(value, address(GetParam().value));
}

TEST_P(AddressGetter, RefusesAnOutputThatIsNull)
{
    MovoNetIface_t iface = filled();
    EXPECT_EQ(GetParam().call(&iface, nullptr), 5);
}

INSTANTIATE_TEST_SUITE_P(All, AddressGetter,
                         testing::Values(Getter{"Ipv4", int_Movo_Net_GetIpv4, "10.0.2.15"},
                                         Getter{"Maskv4", int_Movo_Net_GetMaskv4, "255.255.0.0"},
                                         Getter{"Gwv4", int_Movo_Net_GetGwv4, "10.0.2.2"}),
                         [](const auto& test) { return test.param.name; });

TEST(DnsGetter, CopiesBothServers)
{
    MovoNetIface_t iface = filled();
    std::uint32_t dns1 = 0;
    std::uint32_t dns2 = 0;
    EXPECT_EQ(int_Movo_Net_Getdnsv4(&iface, &dns1, &dns2), 0);
    EXPECT_EQ(dns1, address("10.0.2.3"));
    EXPECT_EQ(dns2, address("10.0.2.4"));
}

TEST(DnsGetter, RefusesEitherOutputThatIsNullAndLeavesTheOther)
{
    MovoNetIface_t iface = filled();
    std::uint32_t dns = 7;
    EXPECT_EQ(int_Movo_Net_Getdnsv4(&iface, nullptr, &dns), 5);
    EXPECT_EQ(int_Movo_Net_Getdnsv4(&iface, &dns, nullptr), 5);
    EXPECT_EQ(dns, 7U);
}

TEST(ConnectedGetter, CopiesTheFlag)
{
    MovoNetIface_t iface = filled();
    kest_bool connected = 0;
    EXPECT_EQ(int_Movo_Net_IsConnected(&iface, &connected), 0);
    EXPECT_EQ(connected, 1);
    iface.isConnected = 0;
    EXPECT_EQ(int_Movo_Net_IsConnected(&iface, &connected), 0);
    EXPECT_EQ(connected, 0);
    EXPECT_EQ(int_Movo_Net_IsConnected(&iface, nullptr), 5);
}

TEST(Throughput, KeepsFailingAlthoughItWritesZero)
{
    MovoNetIface_t iface = filled();
    std::int32_t throughput = 7;
    EXPECT_EQ(int_Movo_Net_GetThroughput(&iface, &throughput), 1);
    EXPECT_EQ(throughput, 0);
}

TEST(Throughput, LooksAtItsOutputAlone)
{
    std::int32_t throughput = 7;
    EXPECT_EQ(int_Movo_Net_GetThroughput(nullptr, &throughput), 1);
    EXPECT_EQ(throughput, 0);
    EXPECT_EQ(int_Movo_Net_GetThroughput(nullptr, nullptr), 5);
}

class InEveryMode : public testing::TestWithParam<MovoNetIPMode_e> {
protected:
    bool isStatic() const { return GetParam() == _MOVO_NET_IPMODE_STATIC_ || GetParam() == _MOVO_NET_IPMODE_DNSONLY_; }
};

TEST_P(InEveryMode, TheGatewayIsStoredAndIsTheCurrentOneInAStaticModeOnly)
{
    sim::Set set;
    MovoNetIface_t iface = record("eth0", GetParam());
    EXPECT_EQ(int_Movo_Net_SetGwv4(&iface, address("10.0.2.9")), 0);
    EXPECT_EQ(iface.sgwv4, address("10.0.2.9"));
    EXPECT_EQ(iface.gwv4, isStatic() ? address("10.0.2.9") : 0U);
    EXPECT_TRUE(set.commands().empty());
    EXPECT_EQ(told(set), Lines{});
}

TEST_P(InEveryMode, TheServersAreStoredAndAreTheCurrentOnesInAStaticModeOnly)
{
    sim::Set set;
    MovoNetIface_t iface = record("eth0", GetParam());
    iface.isActived = 0;
    EXPECT_EQ(int_Movo_Net_Setdnsv4(&iface, address("8.8.8.8"), address("8.8.4.4")), 0);
    EXPECT_EQ(iface.sdns1v4, address("8.8.8.8"));
    EXPECT_EQ(iface.sdns2v4, address("8.8.4.4"));
    EXPECT_EQ(iface.dns1v4, isStatic() ? address("8.8.8.8") : 0U);
    EXPECT_EQ(iface.dns2v4, isStatic() ? address("8.8.4.4") : 0U);
    EXPECT_EQ(told(set), Lines{});
}

TEST_P(InEveryMode, TheAddressIsStoredAndAppliedInAStaticModeOnly)
{
    sim::Set set;
    set.recordCallbacks();
    set.forget();
    MovoNetIface_t iface = record("eth0", GetParam());
    EXPECT_EQ(int_Movo_Net_SetIpv4(&iface, address("10.0.2.77")), 0);
    EXPECT_EQ(iface.sipv4, address("10.0.2.77"));
    EXPECT_EQ(iface.ipv4, isStatic() ? address("10.0.2.77") : 0U);
    EXPECT_EQ(iface.isConnected, isStatic() ? 1 : 0);
    EXPECT_EQ(iface.ipStatus, isStatic() ? _MOVO_NET_IPSTATUS_STATIC_ : _MOVO_NET_IPSTATUS_NONE_);
    EXPECT_EQ(set.iface("eth0").address(), isStatic() ? "10.0.2.77" : "0.0.0.0");
    EXPECT_EQ(set.callbacks().size(), isStatic() ? 1U : 0U);
    EXPECT_EQ(told(set).empty(), !isStatic());
}

TEST_P(InEveryMode, TheMaskIsStoredAndAppliedInAStaticModeOnly)
{
    sim::Set set;
    set.iface("eth0").setAddress("10.0.2.77", "255.255.255.0");
    MovoNetIface_t iface = record("eth0", GetParam());
    EXPECT_EQ(int_Movo_Net_SetMaskv4(&iface, address("255.0.0.0")), 0);
    EXPECT_EQ(iface.smaskv4, address("255.0.0.0"));
    EXPECT_EQ(iface.maskv4, isStatic() ? address("255.0.0.0") : 0U);
    EXPECT_EQ(set.iface("eth0").mask(), isStatic() ? "255.0.0.0" : "255.255.255.0");
}

TEST_P(InEveryMode, AnInactiveInterfaceOnlyStoresAddressAndMask)
{
    sim::Set set;
    MovoNetIface_t iface = record("eth0", GetParam());
    iface.isActived = 0;
    EXPECT_EQ(int_Movo_Net_SetIpv4(&iface, address("10.0.2.77")), 0);
    EXPECT_EQ(int_Movo_Net_SetMaskv4(&iface, address("255.0.0.0")), 0);
    EXPECT_EQ(iface.sipv4, address("10.0.2.77"));
    EXPECT_EQ(iface.smaskv4, address("255.0.0.0"));
    EXPECT_EQ(iface.ipv4, 0U);
    EXPECT_EQ(iface.maskv4, 0U);
    EXPECT_EQ(set.iface("eth0").address(), "0.0.0.0");
    EXPECT_EQ(told(set), Lines{});
}

INSTANTIATE_TEST_SUITE_P(All, InEveryMode,
                         testing::Values(_MOVO_NET_IPMODE_DHCP_, _MOVO_NET_IPMODE_AUTOIP_, _MOVO_NET_IPMODE_STATIC_,
                                         _MOVO_NET_IPMODE_DNSONLY_, static_cast<MovoNetIPMode_e>(4)),
                         [](const auto& test) { return "Mode" + std::to_string(test.param); });

TEST(StaticAddress, IsToldAsANumberAndAnnounced)
{
    sim::Set set;
    set.recordCallbacks();
    set.forget();
    MovoNetIface_t iface = record("eth0", _MOVO_NET_IPMODE_STATIC_);
    EXPECT_EQ(int_Movo_Net_SetIpv4(&iface, 0x0402000a), 0);
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, "movo_net_fl_common", "int_Movo_Net_SetIpv4", "setting ip to 0402000a\n");
    EXPECT_CALLBACKS(set, {{sim::IPCHANGED, "eth0"}});
    EXPECT_EQ(set.openDescriptors(), Lines{});
}

TEST(StaticAddress, IsCompleteWhenItIsAnnounced)
{
    sim::Set set;
    set.recordCallbacks();
    MovoNetIface_t iface = record("eth0", _MOVO_NET_IPMODE_STATIC_);
    int seen = 0;
    set.onCallback([&](MovoNetCBReason_e, void* param) {
        const auto* changed = static_cast<MovoNetIface_t*>(param);
        seen += changed == &iface && changed->ipv4 == address("10.0.2.77") && changed->isConnected == 1 &&
                changed->ipStatus == _MOVO_NET_IPSTATUS_STATIC_;
    });
    EXPECT_EQ(int_Movo_Net_SetIpv4(&iface, address("10.0.2.77")), 0);
    EXPECT_EQ(seen, 1);
}

TEST(StaticMask, IsToldAsANumberAndNeverAnnounced)
{
    sim::Set set;
    set.recordCallbacks();
    set.forget();
    set.iface("eth0").setAddress("10.0.2.77");
    MovoNetIface_t iface = record("eth0", _MOVO_NET_IPMODE_DNSONLY_);
    EXPECT_EQ(int_Movo_Net_SetMaskv4(&iface, 0x00ffffff), 0);
    EXPECT_EQ(told(set), Lines{"INFO movo_net_fl_common int_Movo_Net_SetMaskv4: setting ip mask to 00ffffff\n"});
    EXPECT_EQ(iface.isConnected, 0);
    EXPECT_EQ(iface.ipStatus, _MOVO_NET_IPSTATUS_NONE_);
    EXPECT_CALLBACKS(set, {});
    EXPECT_EQ(set.openDescriptors(), Lines{});
}

TEST(Messages, AreLeftOutBelowTheThreshold)
{
    sim::Set set;
    MovoNetIface_t iface = record("nothere", _MOVO_NET_IPMODE_STATIC_);
    __atomic_store_n(&__kest_debug_min, static_cast<int>(KEST_LEVEL_ERROR), __ATOMIC_RELAXED);
    EXPECT_EQ(int_Movo_Net_SetIpv4(&iface, 1), 1);
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_common int_Movo_Net_SetIpv4: Set IP Address ERROR\n"});
    set.forget();
    __atomic_store_n(&__kest_debug_min, static_cast<int>(KEST_LEVEL_NONE), __ATOMIC_RELAXED);
    EXPECT_EQ(int_Movo_Net_SetIpv4(&iface, 1), 1);
    EXPECT_EQ(told(set), Lines{});
}

struct Refusal {
    const char* name;
    RETURN_TYPE (*call)(MovoNetIface_t*, std::uint32_t);
    sim::Call step;
    const char* said;
};

void PrintTo(const Refusal& refusal, std::ostream* out)
{
    *out << refusal.said;
}

class RefusedSetting : public testing::TestWithParam<Refusal> {};

TEST_P(RefusedSetting, KeepsTheStoredValueAndChangesNothingElse)
{
    sim::Set set;
    set.recordCallbacks();
    set.forget();
    set.fail({.call = GetParam().step, .on = GetParam().step == sim::Call::Socket ? "inet" : "eth0", .error = EPERM});
    MovoNetIface_t iface = record("eth0", _MOVO_NET_IPMODE_STATIC_);
    EXPECT_EQ(GetParam().call(&iface, address("10.0.2.77")), 1);
    ASSERT_EQ(told(set).size(), 2U);
    EXPECT_EQ(told(set)[1], GetParam().said);
    EXPECT_EQ(iface.sipv4 | iface.smaskv4, address("10.0.2.77"));
    EXPECT_EQ(iface.ipv4, 0U);
    EXPECT_EQ(iface.maskv4, 0U);
    EXPECT_EQ(iface.isConnected, 0);
    EXPECT_EQ(iface.ipStatus, _MOVO_NET_IPSTATUS_NONE_);
    EXPECT_CALLBACKS(set, {});
    EXPECT_EQ(set.openDescriptors(), Lines{});
}

INSTANTIATE_TEST_SUITE_P(
    All, RefusedSetting,
    testing::Values(Refusal{"AddressWithoutSocket", int_Movo_Net_SetIpv4, sim::Call::Socket,
                            "ERROR movo_net_fl_common int_Movo_Net_SetIpv4: Cannot get control socket\n"},
                    Refusal{"AddressByTheKernel", int_Movo_Net_SetIpv4, sim::Call::Ioctl,
                            "ERROR movo_net_fl_common int_Movo_Net_SetIpv4: Set IP Address ERROR\n"},
                    Refusal{"MaskWithoutSocket", int_Movo_Net_SetMaskv4, sim::Call::Socket,
                            "ERROR movo_net_fl_common int_Movo_Net_SetMaskv4: Cannot get control socket\n"},
                    Refusal{"MaskByTheKernel", int_Movo_Net_SetMaskv4, sim::Call::Ioctl,
                            "ERROR movo_net_fl_common int_Movo_Net_SetMaskv4: Set IP MASK ERROR\n"}),
    [](const auto& test) { return test.param.name; });
} // namespace
