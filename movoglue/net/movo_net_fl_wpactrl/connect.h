/** What joining a network depends on besides the network. Read and written atomically. */
#ifndef MOVO_NET_FL_WPACTRL_CONNECT_H
#define MOVO_NET_FL_WPACTRL_CONNECT_H

#include "movo_net_fl_wpactrl/channel.h"
#include "support/report.h"

namespace movonet {
/** The connection being started is the automatic one of an activation. */
extern kest_bool s_bFirstConnect;

/** Ticks until an attempt counts as failed. */
constexpr int kConnectTimeoutTicks = 300;
constexpr int kWpsTimeoutTicks = 1200;

/** Commands one after the other: after the first that fails, the rest is not sent and its code is kept. */
class CommandSequence {
public:
    explicit CommandSequence(Wpactrl_t* w, CallSite at = CallSite::current()) : m_wpactrl(w), m_at(at) {}

    /** Sends a command of at most 99 characters; a longer one is cut. */
    __attribute__((format(printf, 2, 3))) void send(const char* format, ...);
    RETURN_TYPE result() const { return m_result; }

private:
    Wpactrl_t* m_wpactrl;
    CallSite m_at;
    RETURN_TYPE m_result = kOk;
};

/** Asks for a new network and its id, which anything but a number makes 0; speaks for `at`. */
RETURN_TYPE addNetwork(Wpactrl_t* w, int& id, CallSite at);
} // namespace movonet

extern "C" {
/** Cleared, an activation does not join a remembered network by itself. */
extern kest_bool g_bWiFiAutoLink;
/** Other than 0: WEP networks are joined with open authentication only. */
extern kest_uint8 g_WEPLinkType;
/** How the person at the set wants the network to be taken, in spite of the scan. */
extern MovoNetWifiUISecurity_e g_UISecurityType;
}

#endif
