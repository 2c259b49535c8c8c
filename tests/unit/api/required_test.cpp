#include "tools.h"

#include <csignal>

using namespace api;

// Operations that a back end must have: without them the process ends.

namespace {
struct Required {
    const char* function;
    const char* slot;
    int (*call)();
};

void PrintTo(const Required& required, std::ostream* out)
{
    *out << required.function;
}

class EmptySlot : public testing::TestWithParam<Required> {};

TEST_P(EmptySlot, EndsTheProcess)
{
    Layer layer;
    MovoNetIface_t& eth0 = layer.add("eth0");
    eth0.isAvailable = 1;
    eth0.funcs = {};
    const std::string message = std::string("movo_net_fg:[0-9]+: ") + GetParam().function + ": Assertion `ift->funcs." +
                                GetParam().slot + "' failed";
    EXPECT_EXIT((void)GetParam().call(), testing::KilledBySignal(SIGABRT), message);
}

int getThroughput()
{
    int throughput = 0;
    return Movo_NET_GetIfaceThroughput(0, "eth0", &throughput);
}

int isConnected()
{
    kest_bool connected = 0;
    return Movo_NET_IsConnected(0, "eth0", &connected);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, EmptySlot,
    testing::Values(Required{"Movo_NET_GetIfaceThroughput", "GetIfaceThroughput", getThroughput},
                    Required{"Movo_NET_EnableIface", "Active", [] { return Movo_NET_EnableIface(0, "eth0"); }},
                    Required{"Movo_NET_DisableIface", "Active", [] { return Movo_NET_DisableIface(0, "eth0"); }},
                    Required{"Movo_NET_IsConnected", "IsConnected", isConnected}),
    [](const auto& row) { return row.param.function; });

TEST(EnableIface, OperationOfAnInterfaceThatIsNotAvailableIsNotNeeded)
{
    Layer layer;
    layer.add("eth0").funcs = {};
    EXPECT_EQ(Movo_NET_EnableIface(0, "eth0"), 1);
}
} // namespace
