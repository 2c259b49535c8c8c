#include "sim/ethtool.h"

#include "sim/world.h"

#include <cerrno>
#include <cstring>
#include <linux/ethtool.h>
#include <map>

namespace sim {
namespace {
std::map<std::string, std::uint32_t>& events()
{
    static auto& all = *new std::map<std::string, std::uint32_t>; // guarded as the world is
    return all;
}
} // namespace

std::uint32_t wakeEvents(const std::string& ifname)
{
    const Hold hold;
    return events()[ifname];
}

int answerEthtool(const std::string& ifname, const void* request)
{
    std::uint32_t command = 0;
    std::memcpy(&command, request, sizeof(command));
    if (command != ETHTOOL_SWOL) {
        return EOPNOTSUPP;
    }
    ethtool_wolinfo setting{};
    std::memcpy(&setting, request, sizeof(setting));
    events()[ifname] = setting.wolopts;
    return 0;
}
} // namespace sim
