/** Commands to the supplicant and their replies. */
#ifndef MOVO_NET_FL_WPACTRL_CHANNEL_H
#define MOVO_NET_FL_WPACTRL_CHANNEL_H

#include "movo_net_fl_wpactrl/wpactrl.h"

#include <cstddef>

namespace movonet {
/** Room for a reply and its end mark; zeroed before the first request, since a reopened connection answers nothing. */
struct Reply {
    static constexpr std::size_t kSize = 5120;

    char text[kSize] = {};
    std::size_t length = kSize - 1;
};

/** Closes the command or the monitor connection, if there is one, while no request uses it. The former keeps its place:
 * the link still counts as open, and every request fails. */
void closeCommandConnection(Wpactrl_t& w);
void closeMonitorConnection(Wpactrl_t& w);

/** Puts `connection`, which may be NULL, in the place of the command connection; closes that one if it is open. */
void replaceCommandConnection(Wpactrl_t& w, wpa_ctrl* connection);

/** Tells the supplicant that the monitor connection wants no more events. */
void detachMonitorConnection(Wpactrl_t& w);
} // namespace movonet

extern "C" {

/** Opens both connections of a link. 0, 1, or 5 for NULL or an empty name. */
RETURN_TYPE Wpactrl_Init(Wpactrl_t* w, const char* ifname);

/** Opens the command connection anew. 0, 1, or 5 for NULL. */
RETURN_TYPE Wpactrl_Reconnect(Wpactrl_t* w, const char* ifname);

/** One request: `*len` is the room in `buf`, one less than its size, then the reply's length. 0, 1, 5. */
RETURN_TYPE Wpactrl_SendCmd(Wpactrl_t* w, const char* cmd, char* buf, std::size_t* len);

/** One request whose reply must begin with OK; a busy supplicant is asked once more. 0, 1, 5. */
RETURN_TYPE Wpactrl_ExecCmd(Wpactrl_t* w, const char* cmd);

/** What a reply begins with. */
kest_bool Wpa_IsRetvalOK(const char* reply);
kest_bool Wpa_IsRetvalFAILBUSY(const char* reply);

/** Arm the time-outs of a scan and of a connection, in place of earlier ones. 0, 1, 5, or the event loop's code. */
RETURN_TYPE Wpactrl_Add_ScanEvent(Wpactrl_t* w, int timeout);
RETURN_TYPE Wpactrl_Add_ConnectEvent(Wpactrl_t* w, int timeout);

} // extern "C"

#endif
