#include "shutdown_fake.h"

namespace api {
ShutdownFake shutdownFake;
} // namespace api

// The linker gives it to the product in place of the real one.
extern "C" RETURN_TYPE __wrap_ShutdownWpactrl(MovoNetIface_t* pIface);

RETURN_TYPE __wrap_ShutdownWpactrl(MovoNetIface_t* pIface)
{
    ++api::shutdownFake.calls;
    api::shutdownFake.iface = pIface;
    return 0;
}
