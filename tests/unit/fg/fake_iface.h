/** An interface whose back end does what the test says. */
#pragma once

#include "movo_net_fg/fg.h"

#include <cstring>
#include <functional>
#include <string>

/** Outlives the list that it is put on: declare it before the set. */
class FakeIface {
public:
    FakeIface(const char* name, MovoNetIfaceType_e type)
    {
        (void)std::strncpy(record.name, name, sizeof(record.name) - 1);
        record.type = type;
        record.dhcpcfd = -1;
        record.priv = this;
        record.funcs.CanActive = canActive;
        record.funcs.Active = active;
    }
    FakeIface(const FakeIface&) = delete;
    FakeIface& operator=(const FakeIface&) = delete;

    void list()
    {
        const movonet::ScopedLock lock(movonet::ifaceListLock);
        movonet::appendInterface(&record);
    }

    MovoNetIface_t record{};
    int can = 1;                    ///< Answer of CanActive.
    RETURN_TYPE result = 0;         ///< Answer of Active.
    int asked = 0;                  ///< Calls of CanActive.
    std::string calls;              ///< "+" for each activation, "-" for each deactivation.
    std::function<void()> onActive; ///< Runs inside Active.

private:
    static FakeIface& of(MovoNetIface_t* iface) { return *static_cast<FakeIface*>(iface->priv); }
    static int canActive(MovoNetIface_t* iface)
    {
        ++of(iface).asked;
        return of(iface).can;
    }
    static RETURN_TYPE active(MovoNetIface_t* iface, kest_bool isActive)
    {
        of(iface).calls += isActive != 0 ? "+" : "-";
        if (of(iface).onActive) {
            of(iface).onActive();
        }
        return of(iface).result;
    }
};
