#include "movo_net_fl_ether/ether.h"
#include "tools.h"

#include <cctype>
#include <linux/sockios.h>

using ip::Lines;
using ip::record;
using ip::told;

namespace {
TEST(WiredInit, AddsItsThreeOperationsAndNoOther)
{
    sim::Set set;
    MovoNetIface_t iface = record("eth1");
    EXPECT_EQ(int_Movo_Net_InitEther(&iface), 0);
    EXPECT_EQ(iface.funcs.Init, int_Movo_Net_InitEther);
    EXPECT_EQ(iface.funcs.DeInit, int_Movo_Net_DeInitEther);
    EXPECT_EQ(iface.funcs.CanActive, int_Movo_Net_CanActiveEther);

    iface.funcs.Init = nullptr;
    iface.funcs.DeInit = nullptr;
    iface.funcs.CanActive = nullptr;
    const auto* slots = reinterpret_cast<const std::uintptr_t*>(&iface.funcs);
    for (std::size_t slot = 0; slot < sizeof(iface.funcs) / sizeof(*slots); ++slot) {
        EXPECT_EQ(slots[slot], 0U) << slot;
    }
}

TEST(WiredInit, LooksForTheBoardsAddressForEth0Only)
{
    sim::Set set;
    for (const char* name : {"eth1", "eth", "eth00", "lo", "Eth0", ""}) {
        MovoNetIface_t iface = record(name);
        EXPECT_EQ(int_Movo_Net_InitEther(&iface), 0) << name;
    }
    EXPECT_EQ(ip::ran(set), Lines{});
    EXPECT_EQ(told(set), Lines{});
}

struct LockStep {
    const char* name;
    sim::Call call;
};

void PrintTo(const LockStep& step, std::ostream* out)
{
    *out << step.name;
}

class WiredLock : public testing::TestWithParam<LockStep> {};

TEST_P(WiredLock, ThatCannotBeMadeFailsTheInitAndIsTriedAgain)
{
    sim::Set set;
    set.fail({.call = GetParam().call, .nth = 1, .error = ENOMEM});
    MovoNetIface_t iface = record("eth0");
    EXPECT_EQ(int_Movo_Net_InitEther(&iface), 1);
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_ether int_Movo_Net_InitEther: init mutex failed\n"});
    EXPECT_EQ(iface.funcs.Init, nullptr);
    EXPECT_EQ(ip::ran(set), Lines{});

    EXPECT_EQ(int_Movo_Net_InitEther(&iface), 0);
    EXPECT_EQ(iface.funcs.Init, int_Movo_Net_InitEther);
}

TEST_P(WiredLock, IsMadeOnce)
{
    sim::Set set;
    MovoNetIface_t iface = record("eth1");
    EXPECT_EQ(int_Movo_Net_InitEther(&iface), 0);
    set.fail({.call = GetParam().call, .error = ENOMEM, .mayMiss = true});
    EXPECT_EQ(int_Movo_Net_InitEther(&iface), 0);
}

INSTANTIATE_TEST_SUITE_P(All, WiredLock,
                         testing::Values(LockStep{"Attributes", sim::Call::MutexAttrInit},
                                         LockStep{"Type", sim::Call::MutexAttrSetType},
                                         LockStep{"Mutex", sim::Call::MutexInit}),
                         [](const auto& test) { return test.param.name; });

TEST(WiredDeInit, DoesNothing)
{
    sim::Set set;
    MovoNetIface_t iface = record("eth0");
    EXPECT_EQ(int_Movo_Net_DeInitEther(&iface), 0);
    EXPECT_EQ(iface.isActived, 1);
    EXPECT_EQ(ip::ran(set), Lines{});
    EXPECT_EQ(told(set), Lines{});
}

TEST(HexDigit, HasItsValueInBothCases)
{
    const std::string digits = "0123456789abcdef";
    for (int value = 0; value < 16; ++value) {
        const char digit = digits[static_cast<std::size_t>(value)];
        EXPECT_EQ(GetOprd(digit), value);
        EXPECT_EQ(GetOprd(static_cast<char>(std::toupper(digit))), value);
    }
}

TEST(HexDigit, IsZeroForAnyOtherCharacter)
{
    for (int code = 0; code < 256; ++code) {
        if (std::isxdigit(code) == 0) {
            EXPECT_EQ(GetOprd(static_cast<char>(code)), 0) << code;
        }
    }
}

// --- The link, as the PHY tells it ---

struct Status {
    std::uint16_t bits;
    int link;
};

void PrintTo(const Status& status, std::ostream* out)
{
    *out << "bits " << status.bits << ", link " << status.link;
}

class LinkStatus : public testing::TestWithParam<Status> {};

TEST_P(LinkStatus, DependsOnThreeBitsOnly)
{
    sim::Set set;
    MovoNetIface_t iface = record("eth0");
    constexpr std::uint16_t kOthers = 0xffff & ~(0x0004 | 0x0010 | 0x0002);
    set.cable("eth0").statusRegister(GetParam().bits);
    EXPECT_EQ(int_Movo_Net_CanActiveEther(&iface), GetParam().link);
    set.cable("eth0").statusRegister(static_cast<std::uint16_t>(GetParam().bits | kOthers));
    EXPECT_EQ(int_Movo_Net_CanActiveEther(&iface), GetParam().link);
    EXPECT_EQ(told(set), Lines{});
    EXPECT_EQ(set.openDescriptors(), Lines{});
}

INSTANTIATE_TEST_SUITE_P(All, LinkStatus,
                         testing::Values(Status{0x0000, 0}, Status{0x0002, 0}, Status{0x0004, 1}, Status{0x0006, 0},
                                         Status{0x0010, 0}, Status{0x0012, 0}, Status{0x0014, 0}, Status{0x0016, 0}),
                         [](const auto& test) { return "Bits" + std::to_string(test.param.bits); });

TEST(Link, FollowsTheCable)
{
    sim::Set set;
    MovoNetIface_t iface = record("eth0");
    EXPECT_EQ(int_Movo_Net_CanActiveEther(&iface), 0);
    set.cable("eth0").plug();
    EXPECT_EQ(int_Movo_Net_CanActiveEther(&iface), 1);
    set.cable("eth0").remoteFault();
    EXPECT_EQ(int_Movo_Net_CanActiveEther(&iface), 0);
    set.cable("eth0").remoteFault(false).jabber();
    EXPECT_EQ(int_Movo_Net_CanActiveEther(&iface), 0);
}

struct NoAnswer {
    const char* name;
    sim::Fault fault;
    const char* said;
};

void PrintTo(const NoAnswer& answer, std::ostream* out)
{
    *out << answer.said;
}

class LinkFailure : public testing::TestWithParam<NoAnswer> {};

TEST_P(LinkFailure, IsToldAndIsMinusOne)
{
    sim::Set set;
    set.cable("eth0").plug();
    set.fail(GetParam().fault);
    MovoNetIface_t iface = record("eth0");
    EXPECT_EQ(int_Movo_Net_CanActiveEther(&iface), -1);
    EXPECT_EQ(told(set), Lines{GetParam().said});
    EXPECT_EQ(set.openDescriptors(), Lines{});
}

INSTANTIATE_TEST_SUITE_P(
    All, LinkFailure,
    testing::Values(NoAnswer{"NoSocket",
                             {.call = sim::Call::Socket, .on = "inet", .error = EMFILE},
                             "ERROR movo_net_fl_ether int_Movo_Net_CanActiveEther: Cannot get control socket, exit\n"},
                    NoAnswer{"NoPhy",
                             {.call = sim::Call::Ioctl, .on = "eth0", .code = SIOCGMIIPHY, .error = ENODEV},
                             "ERROR movo_net_fl_ether int_Movo_Net_CanActiveEther: "
                             "SIOCGMIIPHY on eth0 failed: No such device\n"},
                    NoAnswer{"NoRegister",
                             {.call = sim::Call::Ioctl, .on = "eth0", .code = SIOCGMIIREG, .error = EIO},
                             "ERROR movo_net_fl_ether int_Movo_Net_CanActiveEther: "
                             "SIOCGMIIREG on eth0 failed: Input/output error\n"}),
    [](const auto& test) { return test.param.name; });

TEST(Link, OfADriverWithoutAPhyIsMinusOne)
{
    sim::Set set;
    set.cable("eth0").plug().withoutMii();
    MovoNetIface_t iface = record("eth0");
    EXPECT_EQ(int_Movo_Net_CanActiveEther(&iface), -1);
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_ether int_Movo_Net_CanActiveEther: "
                               "SIOCGMIIPHY on eth0 failed: Operation not supported\n"});
}

TEST(Link, OfTheLoopbackIsMinusOne)
{
    sim::Set set;
    MovoNetIface_t iface = record("lo", _MOVO_NET_IPMODE_STATIC_, _MOVO_NET_IFACE_LO_);
    EXPECT_EQ(int_Movo_Net_CanActiveEther(&iface), -1);
}

TEST(Link, OfAnInterfaceThatIsGoneIsMinusOne)
{
    sim::Set set;
    MovoNetIface_t iface = record("longname");
    EXPECT_EQ(int_Movo_Net_CanActiveEther(&iface), -1);
    EXPECT_EQ(told(set), Lines{"ERROR movo_net_fl_ether int_Movo_Net_CanActiveEther: "
                               "SIOCGMIIPHY on longname failed: No such device\n"});
}
} // namespace
