#include "movo_net_fg/fg.h"
#include "support/log.h"

#include <cstring>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fg", &movoglue_net_debug};

/** Records taken off the list, in its order: who walks without the lock and stands on one of them goes on as before. */
MovoNetIface_t* s_pRetired; // guarded by ifaceListLock

void append(MovoNetIface_t*& list, MovoNetIface_t* iface)
{
    MovoNetIface_t** link = &list;
    while (*link != nullptr) {
        link = &(*link)->next;
    }
    store(*link, iface);
}
} // namespace

namespace movonet {
Mutex updateIfListLock{Mutex::Kind::Plain};
Mutex ifaceListLock{Mutex::Kind::Recursive};
MovoNetIface_t* s_pInterfaces;

void appendInterface(MovoNetIface_t* iface)
{
    append(s_pInterfaces, iface);
}

MovoNetIface_t* takeHeadInterface()
{
    MovoNetIface_t* head = s_pInterfaces;
    if (head != nullptr) {
        store(s_pInterfaces, head->next);
    }
    return head;
}

void retireInterface(MovoNetIface_t* iface)
{
    store(iface->next, nullptr);
    append(s_pRetired, iface);
}
} // namespace movonet

MovoNetIface_t* FindInterface(const char* ifname)
{
    const ScopedLock lock(ifaceListLock);
    if (!lock) {
        NET_ERROR("lock mutex failed\n");
        return nullptr;
    }
    if (ifname == nullptr) {
        return nullptr;
    }
    for (MovoNetIface_t* iface = firstInterface(); iface != nullptr; iface = nextInterface(iface)) {
        if (std::strcmp(iface->name, ifname) == 0) {
            return iface;
        }
    }
    return nullptr;
}
