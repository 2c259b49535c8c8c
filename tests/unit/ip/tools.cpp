#include "tools.h"

#include "movo_net_fg/fg.h"

#include <arpa/inet.h>
#include <cstring>

namespace ip {
std::uint32_t address(const std::string& dottedQuad)
{
    in_addr parsed{};
    EXPECT_EQ(inet_pton(AF_INET, dottedQuad.c_str(), &parsed), 1) << dottedQuad;
    return parsed.s_addr;
}

MovoNetIface_t record(const std::string& name, MovoNetIPMode_e mode, MovoNetIfaceType_e type)
{
    MovoNetIface_t iface{};
    name.copy(iface.name, sizeof(iface.name) - 1);
    iface.type = type;
    iface.ipMode = mode;
    iface.isActived = 1;
    iface.dhcpcfd = movonet::kNoFd;
    return iface;
}

MovoNetIface_t& listed(const MovoNetIface_t& iface, int priority)
{
    auto* copy = new MovoNetIface_t(iface);
    copy->isConnected = 1;
    copy->priority = priority;
    const movonet::ScopedLock lock(movonet::ifaceListLock);
    EXPECT_TRUE(lock);
    movonet::appendInterface(copy);
    return *copy;
}

Lines told(const sim::Set& set)
{
    static constexpr const char* kLevels[] = {"NONE", "ERROR", "WARNING", "INFO", "DEBUG", "LOG"};
    Lines lines;
    for (const sim::LogLine& line : set.log()) {
        lines.push_back(std::string(kLevels[line.level]) + " " + line.module + " " + line.function + ": " + line.text);
    }
    return lines;
}

Lines ran(const sim::Set& set)
{
    Lines lines;
    for (const sim::Command& command : set.commands()) {
        lines.push_back(command.text);
    }
    return lines;
}
} // namespace ip
