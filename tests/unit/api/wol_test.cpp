#include "tools.h"

#include "sim/ethtool.h"

#include <linux/ethtool.h>
#include <linux/sockios.h>

using namespace api;
using sim::Call;

namespace {
TEST(SetWol, LetsAMagicPacketWakeTheSet)
{
    Layer layer;
    EXPECT_EQ(Movo_NET_SetWol(0, "eth0", 1), 0);
    EXPECT_EQ(sim::wakeEvents("eth0"), unsigned{WAKE_MAGIC});
    EXPECT_EQ(Movo_NET_SetWol(0, "eth0", 0), 0);
    EXPECT_EQ(sim::wakeEvents("eth0"), 0U);
    EXPECT_EQ(layer.set.openDescriptors(), Lines{});
    EXPECT_EQ(said(layer.set), Lines{});
}

TEST(SetWol, TakesOnlyOneForYes)
{
    Layer layer;
    EXPECT_EQ(Movo_NET_SetWol(0, "eth0", 1), 0);
    EXPECT_EQ(Movo_NET_SetWol(0, "eth0", 2), 0);
    EXPECT_EQ(sim::wakeEvents("eth0"), 0U);
}

TEST(SetWol, WorksOnInterfacesThatTheGlueDoesNotKnow)
{
    Layer layer;
    layer.set.addIface("usb9");
    layer.set.addIface("fifteencharssss");
    EXPECT_EQ(Movo_NET_SetWol(0, "usb9", 1), 0);
    EXPECT_EQ(sim::wakeEvents("usb9"), unsigned{WAKE_MAGIC});
    EXPECT_EQ(Movo_NET_SetWol(0, "fifteencharssss", 1), 0);
    EXPECT_EQ(sim::wakeEvents("fifteencharssss"), unsigned{WAKE_MAGIC});
}

TEST(SetWol, WithoutASocket)
{
    Layer layer;
    layer.set.fail({.call = Call::Socket, .error = EMFILE});
    EXPECT_EQ(Movo_NET_SetWol(0, "eth0", 1), 1);
    EXPECT_EQ(said(layer.set), Lines{"ERROR Movo_NET_SetWol: Cannot get control socket"});
}

class Refused : public testing::TestWithParam<const char*> {};

TEST_P(Refused, NameIsToldAndTheSocketClosed)
{
    Layer layer;
    const std::string name = GetParam();
    EXPECT_EQ(Movo_NET_SetWol(0, name == "NULL" ? nullptr : name.c_str(), 1), 1);
    EXPECT_EQ(said(layer.set), Lines{"ERROR Movo_NET_SetWol: ioctl failed, Cannot set new wake-on-lan settings"});
    EXPECT_EQ(layer.set.openDescriptors(), Lines{});
}

INSTANTIATE_TEST_SUITE_P(Names, Refused,
                         testing::Values("none", "", "NULL", "a name that is longer than any interface's may be"));

TEST(SetWol, OfADriverThatCannot)
{
    Layer layer;
    layer.set.fail({.call = Call::Ioctl, .on = "eth0", .code = SIOCETHTOOL, .error = EOPNOTSUPP});
    EXPECT_EQ(Movo_NET_SetWol(0, "eth0", 1), 1);
    EXPECT_EQ(said(layer.set), Lines{"ERROR Movo_NET_SetWol: ioctl failed, Cannot set new wake-on-lan settings"});
    EXPECT_EQ(layer.set.openDescriptors(), Lines{});
}
} // namespace
