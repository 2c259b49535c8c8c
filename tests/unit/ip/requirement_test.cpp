#include "movo_net_fg/fg.h"
#include "movo_net_fl_common/common.h"
#include "movo_net_fl_common/route.h"
#include "movo_net_fl_ether/ether.h"

#include <gtest/gtest.h>

// What ends the process, in every build type, with its expression, module and function.

namespace {
struct Requirement {
    const char* function;
    const char* module;
    const char* expression;
    void (*call)();
};

void PrintTo(const Requirement& requirement, std::ostream* out)
{
    *out << requirement.function << " needs " << requirement.expression;
}

unsigned int s_value;
kest_bool s_flag;
std::int64_t s_mac;

class RequirementDeathTest : public testing::TestWithParam<Requirement> {};

TEST_P(RequirementDeathTest, EndsTheProcess)
{
    const Requirement& requirement = GetParam();
    const std::string said = std::string(requirement.module) + ":[0-9]+: " + requirement.function + ": Assertion `" +
                             requirement.expression + "' failed";
    EXPECT_EXIT(requirement.call(), testing::KilledBySignal(SIGABRT), said);
}

constexpr const char* kCommon = "movo_net_fl_common";
constexpr const char* kEther = "movo_net_fl_ether";

INSTANTIATE_TEST_SUITE_P(
    OfARecord, RequirementDeathTest,
    testing::Values(
        Requirement{"int_Movo_Net_IsConnected", kCommon, "pIface",
                    [] { (void)int_Movo_Net_IsConnected(nullptr, &s_flag); }},
        Requirement{"int_Movo_Net_GetIpv4", kCommon, "pIface", [] { (void)int_Movo_Net_GetIpv4(nullptr, &s_value); }},
        Requirement{"int_Movo_Net_GetMaskv4", kCommon, "pIface",
                    [] { (void)int_Movo_Net_GetMaskv4(nullptr, &s_value); }},
        Requirement{"int_Movo_Net_GetGwv4", kCommon, "pIface", [] { (void)int_Movo_Net_GetGwv4(nullptr, &s_value); }},
        Requirement{"int_Movo_Net_Getdnsv4", kCommon, "pIface",
                    [] { (void)int_Movo_Net_Getdnsv4(nullptr, &s_value, &s_value); }},
        Requirement{"int_Movo_Net_SetIpv4", kCommon, "pIface", [] { (void)int_Movo_Net_SetIpv4(nullptr, 0); }},
        Requirement{"int_Movo_Net_SetMaskv4", kCommon, "pIface", [] { (void)int_Movo_Net_SetMaskv4(nullptr, 0); }},
        Requirement{"int_Movo_Net_SetGwv4", kCommon, "pIface", [] { (void)int_Movo_Net_SetGwv4(nullptr, 0); }},
        Requirement{"int_Movo_Net_Setdnsv4", kCommon, "pIface", [] { (void)int_Movo_Net_Setdnsv4(nullptr, 0, 0); }},
        Requirement{"int_Movo_Net_GetMacAddr", kCommon, "pIface",
                    [] { (void)int_Movo_Net_GetMacAddr(nullptr, &s_mac); }},
        Requirement{"SetDNSDhcp", kCommon, "pIface", [] { (void)SetDNSDhcp(nullptr); }},
        Requirement{"int_Movo_Net_InitEther", kEther, "pIface", [] { (void)int_Movo_Net_InitEther(nullptr); }},
        Requirement{"int_Movo_Net_DeInitEther", kEther, "pIface", [] { (void)int_Movo_Net_DeInitEther(nullptr); }},
        Requirement{"int_Movo_Net_CanActiveEther", kEther, "pIface",
                    [] { (void)int_Movo_Net_CanActiveEther(nullptr); }},
        Requirement{"CreateConfigIPThread", "movo_net_fg", "pIface", [] { (void)CreateConfigIPThread(nullptr); }}),
    [](const auto& test) { return test.param.function; });

INSTANTIATE_TEST_SUITE_P(
    OfAnOutput, RequirementDeathTest,
    testing::Values(Requirement{"GetDefaultGateway", kCommon, "gw", [] { (void)GetDefaultGateway(nullptr, nullptr); }},
                    Requirement{"GetDNS", kCommon, "dns1", [] { (void)GetDNS(nullptr, nullptr); }},
                    Requirement{"GetDNS", kCommon, "dns2", [] { (void)GetDNS(&s_value, nullptr); }},
                    Requirement{"GetDefaultGatewayDHCP", kCommon, "gateway",
                                [] { (void)GetDefaultGatewayDHCP(nullptr, "eth0"); }}),
    [](const auto& test) { return std::string(test.param.function) + "_" + test.param.expression; });
} // namespace
