#include "calls.h"

namespace shell {
std::span<const Command> wifiCommands()
{
    static constexpr Command kCommands[] = {
        {"wifi", "wifi disconnect", "IFACE", "leaves the network that it is connected to", "Movo_NET_WifiDisConnect",
         act<Movo_NET_WifiDisConnect>},
    };
    return kCommands;
}
} // namespace shell
