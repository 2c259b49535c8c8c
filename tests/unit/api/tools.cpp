#include "tools.h"

#include "movo_net_fl_common/common.h"

#include <arpa/inet.h>

namespace api {
namespace {
constexpr const char* kModule = "movo_net_fg";

std::string levelOf(int level)
{
    static constexpr const char* kLevels[] = {"NONE ", "ERROR ", "WARNING ", "INFO ", "DEBUG ", "LOG "};
    return kLevels[level];
}
} // namespace

std::uint32_t address(const char* dottedQuad)
{
    in_addr parsed{};
    EXPECT_EQ(inet_pton(AF_INET, dottedQuad, &parsed), 1) << dottedQuad;
    return parsed.s_addr;
}

Lines said(const sim::Set& set)
{
    Lines lines;
    for (const sim::LogLine& line : set.log()) {
        if (line.module == kModule) {
            lines.push_back(levelOf(line.level) + line.function + ": " + line.text);
        }
    }
    return lines;
}

Lines said(const sim::Set& set, const std::string& function)
{
    Lines lines;
    for (const sim::LogLine& line : set.log()) {
        if (line.module == kModule && line.function == function) {
            lines.push_back(levelOf(line.level) + line.text);
        }
    }
    return lines;
}

Layer::Layer()
{
    movonet::store(movonet::s_bIsInitDone, movonet::kTrue);
}

MovoNetIface_t& Layer::add(const std::string& name, MovoNetIfaceType_e type)
{
    auto* iface = new MovoNetIface_t{};
    name.copy(iface->name, sizeof(iface->name) - 1);
    iface->type = type;
    (void)int_Movo_Net_Init(iface);
    iface->isEnabled = 1;
    iface->isActived = 1;
    const movonet::ScopedLock lock(movonet::ifaceListLock);
    EXPECT_TRUE(lock);
    movonet::appendInterface(iface);
    set.forget();
    return *iface;
}

Television::Television()
{
    set.cable("eth0").plug();
    EXPECT_EQ(set.start(), 0);
    set.dhcp("eth0").leases();
    set.forget();
}
} // namespace api
