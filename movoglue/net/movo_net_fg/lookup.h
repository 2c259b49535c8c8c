/** How a public call comes to its interface. Each helper speaks for the call that uses it. */
#ifndef MOVO_NET_FG_LOOKUP_H
#define MOVO_NET_FG_LOOKUP_H

#include "movo_net_internal.h"
#include "support/atomic.h"
#include "support/report.h"

#include <kest.h>

namespace movonet {
/** Tells whether the glue runs; if not, says so. */
bool started(CallSite at = CallSite::current());

/** The listed interface of that name; when there is none, NULL, and says so at `notFoundLevel`. */
MovoNetIface_t* listedInterface(const char* ifname, int notFoundLevel = KEST_LEVEL_ERROR,
                                CallSite at = CallSite::current());

/** The listed interface of that name, while the glue runs; else NULL, and says which of the two it was. */
MovoNetIface_t* knownInterface(const char* ifname, CallSite at = CallSite::current());

/** As `knownInterface`, and also NULL for an interface that is not wireless. */
MovoNetIface_t* wifiInterface(const char* ifname, int notFoundLevel = KEST_LEVEL_ERROR,
                              CallSite at = CallSite::current());

/** A name for a message: what the caller gave, or what stands for no name. */
inline const char* nameOrNull(const char* ifname)
{
    return ifname != nullptr ? ifname : "(null)";
}

/** The whole of a call that copies one field of a record. */
template <typename Field>
RETURN_TYPE readInterface(const char* ifname, Field MovoNetIface_t::*field, Field* out,
                          CallSite at = CallSite::current())
{
    if (!started(at)) {
        return kFail;
    }
    if (out == nullptr) {
        return kBadArgument;
    }
    const MovoNetIface_t* ift = listedInterface(ifname, KEST_LEVEL_ERROR, at);
    if (ift == nullptr) {
        return kFail;
    }
    *out = load(ift->*field);
    return kOk;
}
} // namespace movonet

#endif
