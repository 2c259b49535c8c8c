#include "movo_net_fg/fg.h"
#include "support/log.h"

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fg", &movoglue_net_debug};

/** A record whose back end could not be initialised has no operations: it cannot be activated. */
int canActive(MovoNetIface_t& iface)
{
    return iface.funcs.CanActive != nullptr ? iface.funcs.CanActive(&iface) : 0;
}

// The two below speak for OnLinkStatusEventRev.

void makeAvailable(MovoNetIface_t& iface, CallSite at)
{
    const bool wasActive = load(iface.isActived) != kFalse;
    store(iface.isAvailable, kTrue);
    // Deliberate: always visible.
    NET_LOG_AT(at, KEST_LEVEL_ERROR, "link:interface available, start to active iface %s\n", iface.name);
    if (iface.funcs.Active(&iface, kTrue) != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "link:activate %s failed\n", iface.name);
        store(iface.isAvailable, kFalse);
        if (!wasActive) {
            store(iface.isActived, kFalse); // or the next pass would not try again
        }
        return;
    }
    store(iface.isEnabled, kTrue);
    (void)NotifyApp(_MOVO_NET_CALLBACK_IFFOUND_, &iface);
}

void makeUnavailable(MovoNetIface_t& iface, CallSite at)
{
    store(iface.isAvailable, kFalse);
    // Deliberate: always visible.
    NET_LOG_AT(at, KEST_LEVEL_ERROR, "link:interface removed %s\n", iface.name);
    store(iface.isConnected, kFalse);
    (void)NotifyApp(_MOVO_NET_CALLBACK_IFREMOVED_, &iface);
    if (iface.funcs.Active(&iface, kFalse) != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "link:deactivate %s failed\n", iface.name);
    }
}

/** Deliberate: a wired interface goes with its link, whether listed or not; a wireless one with its name alone. */
bool isGone(const MovoNetIface_t& iface, bool present, bool can)
{
    return iface.type == _MOVO_NET_IFACE_ETHER_ ? !can : !present;
}

void checkLink(MovoNetIface_t& iface, CallSite at)
{
    const bool present = IsInterfacePresent(iface.name) != kFalse;
    const bool can = canActive(iface) == 1;
    const bool available = load(iface.isAvailable) != kFalse;
    if (present && can) {
        if (!available && !load(s_bThreadTerminating)) { // nobody would read what a client of a stopped glue reports
            makeAvailable(iface, at);
        }
    } else if (available && isGone(iface, present, can)) {
        makeUnavailable(iface, at);
    }
}

/** Releases updateIfListLock, which its owner has taken without waiting. */
class PassGuard {
public:
    PassGuard() = default;
    PassGuard(const PassGuard&) = delete;
    PassGuard& operator=(const PassGuard&) = delete;
    ~PassGuard() { updateIfListLock.unlock(); }
};
} // namespace

RETURN_TYPE OnLinkStatusEventRev(int /*fd*/, void* /*data*/, kest_bool /*isTimeout*/)
{
    if (!updateIfListLock.tryLock()) {
        NET_INFO("still processing\n");
        return kOk;
    }
    const PassGuard pass;
    UpdateInterfaces();

    ScopedLock listLock(ifaceListLock);
    if (!listLock) {
        NET_ERROR("lock mutex failed\n");
        return kFail;
    }
    for (MovoNetIface_t* iface = firstInterface(); iface != nullptr; iface = nextInterface(iface)) {
        if (iface->type != _MOVO_NET_IFACE_LO_) {
            checkLink(*iface, NET_HERE);
        }
    }
    listLock.unlock();
    if (!load(s_bThreadTerminating)) {
        store(s_bIsInitDone, kTrue);
    }
    return kOk;
}
