/** The wireless back end and its supplicant as the IP half asks them, in the test's hands. */
#ifndef UNIT_DHCP_WIFI_FAKE_H
#define UNIT_DHCP_WIFI_FAKE_H

#include "movo_net_internal.h"

namespace dhcp {
struct WifiFake {
    RETURN_TYPE initResult = 0;
    /** Result of both questions; their answers are only given with 0. */
    RETURN_TYPE askResult = 0;
    kest_bool associated = 0;
    kest_bool idle = 0;
    RETURN_TYPE resetResult = 0;

    int initialised = 0;
    int resets = 0;
    MovoNetIface_t* asked = nullptr;
};
/** One for the process, like the back end itself. */
extern WifiFake wifiFake;
} // namespace dhcp

#endif
