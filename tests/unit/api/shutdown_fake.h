/** Stands in for the end of the supplicant. */
#ifndef UNIT_API_SHUTDOWN_FAKE_H
#define UNIT_API_SHUTDOWN_FAKE_H

#include "movo_net_internal.h"

namespace api {
struct ShutdownFake {
    int calls = 0;
    MovoNetIface_t* iface = nullptr;
};
extern ShutdownFake shutdownFake;
} // namespace api

#endif
