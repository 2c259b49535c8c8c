#include "movo_net_fl_eventloop/eventloop.h"
#include "movo_net_fl_wifi/wifi.h"
#include "movo_net_fl_wpactrl/connect.h"
#include "support/atomic.h"
#include "support/log.h"
#include "support/text.h"

#include <cstring>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wpactrl", &movoglue_net_debug};

// The ones below are steps that several functions share, and speak for them.

RETURN_TYPE checkLink(MovoNetIface_t* pIface, CallSite at)
{
    if (pIface == nullptr) {
        reportFailure("pIface", kLog.name, at);
        return kBadArgument;
    }
    return wpactrl_iface(pIface) != nullptr ? kOk : kBadArgument;
}

void removeNetwork(MovoNetIface_t* pIface, CallSite at)
{
    endHiddenSearch(*wpactrl_iface(pIface));
    if (int_Movo_Net_Wpactrl_RemoveNetwork(pIface) != kOk) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "[REMOVE_NETWORK] failed\n");
    }
}

/** From now on the events teach which network is joined. */
RETURN_TYPE enterWpsMode(Wpactrl_t* w, CallSite at)
{
    const LoopGate gate; // no event is read between the state and the mode
    (void)Wpactrl_Add_ConnectEvent(w, kWpsTimeoutTicks);
    const ScopedLock lock(w->lock);
    if (!lock) {
        NET_LOG_AT(at, KEST_LEVEL_ERROR, "lock wpactrl mutex failed\n");
        return kFail;
    }
    store(w->isWpsEssSaved, kFalse);
    store(w->isWpsMode, kTrue);
    return kOk;
}
} // namespace

RETURN_TYPE int_Movo_Net_Wpactrl_WPSPBC(MovoNetIface_t* pIface)
{
    if (const RETURN_TYPE result = checkLink(pIface, NET_HERE); result != kOk) {
        return result;
    }
    if (load(pIface->isConnected)) {
        (void)NotifyApp(_MOVO_NET_CALLBACK_IFDISCONNECTED_, pIface);
    }
    removeNetwork(pIface, NET_HERE);
    Wpactrl_t* w = wpactrl_iface(pIface);
    if (const RETURN_TYPE result = Wpactrl_ExecCmd(w, "WPS_PBC any"); result != kOk) {
        NET_ERROR("[wps_pbc any] failed\n");
        return result;
    }
    return enterWpsMode(w, NET_HERE);
}

RETURN_TYPE int_Movo_Net_Wpactrl_WPSSetPIN(MovoNetIface_t* pIface, const char* pin)
{
    if (const RETURN_TYPE result = checkLink(pIface, NET_HERE); result != kOk) {
        return result;
    }
    if (pin == nullptr) {
        return kBadArgument;
    }
    removeNetwork(pIface, NET_HERE);
    Wpactrl_t* w = wpactrl_iface(pIface);
    Reply reply;
    const FixedText<100> command("WPS_PIN any %s", pin);
    if (const RETURN_TYPE result = Wpactrl_SendCmd(w, command.c_str(), reply.text, &reply.length); result != kOk) {
        return result;
    }
    if (std::strcmp(reply.text, pin) != 0) {
        NET_ERROR("[wps_pin any] does not match\n");
        return kFail;
    }
    return enterWpsMode(w, NET_HERE);
}

RETURN_TYPE int_Movo_Net_Wpactrl_WPSGetPIN(MovoNetIface_t* pIface, char* pin, int bufnum)
{
    if (const RETURN_TYPE result = checkActiveWifi(pIface, kLog); result != kOk) {
        return result;
    }
    if (pin == nullptr) {
        return kBadArgument;
    }
    removeNetwork(pIface, NET_HERE);
    Reply reply;
    const RETURN_TYPE result = Wpactrl_SendCmd(wpactrl_iface(pIface), "WPS_PIN any", reply.text, &reply.length);
    if (result != kOk) {
        NET_ERROR("Wpactrl_SendCommand failed\n");
        return result;
    }
    // After a time-out the length is the room of the whole buffer, so that an empty text is not taken for a PIN.
    if (bufnum <= 0 || reply.length >= static_cast<std::size_t>(bufnum)) {
        NET_ERROR("pin strlen too long");
        return kFail;
    }
    copyPadded(pin, reply.text, static_cast<std::size_t>(bufnum));
    return kOk;
}
