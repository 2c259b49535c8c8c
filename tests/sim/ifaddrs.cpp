#include "sim/calls.h"
#include "sim/world.h"

#include <cstring>
#include <sys/socket.h>

using namespace sim;

namespace {
/** One entry of the list, with what it points at. */
struct Entry {
    ifaddrs entry;
    sockaddr address;
    char name[32];
};

Entry* newEntry(const KernelIface& iface, ifaddrs* next)
{
    auto* made = new Entry{};
    iface.name.copy(made->name, sizeof(made->name) - 1);
    made->address.sa_family = AF_PACKET;
    made->entry.ifa_next = next;
    made->entry.ifa_name = made->name;
    made->entry.ifa_addr = &made->address;
    return made;
}
} // namespace

int sim_getifaddrs(struct ifaddrs** list)
{
    if (!active()) {
        return getifaddrs(list);
    }
    if (const auto strike = enter(Call::GetIfAddrs, {})) {
        return failWith(strike->error);
    }
    const Hold hold;
    *list = nullptr;
    const auto& ifaces = world().kernel.ifaces;
    for (auto iface = ifaces.rbegin(); iface != ifaces.rend(); ++iface) {
        *list = &newEntry(*iface, *list)->entry;
    }
    return 0;
}

void sim_freeifaddrs(struct ifaddrs* list)
{
    if (!active()) {
        freeifaddrs(list);
        return;
    }
    while (list != nullptr) {
        auto* made = reinterpret_cast<Entry*>(list);
        list = list->ifa_next;
        delete made;
    }
}
