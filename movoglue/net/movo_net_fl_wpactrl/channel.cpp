#include "movo_net_fl_wpactrl/channel.h"

#include "support/atomic.h"
#include "support/command.h"
#include "support/log.h"
#include "support/text.h"

#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/select.h>
#include <wpa_ctrl.h>

using namespace movonet;

namespace {
constexpr LogModule kLog{"movo_net_fl_wpactrl", &movoglue_net_debug};

constexpr const char* kSocketFolder = "/dev/socket/";
constexpr const char* kSocketName = "wpa_mlan0";
constexpr const char* kFallbackInterface = "mlan0";
constexpr int kRetryDelayMs = 500;
constexpr int kLibraryTimeout = -2;

/**
 * Held for one exchange with the client library, for opening and for closing: two requests at once would take each
 * other's reply, and the library counts its sockets without a lock. While it is held only launchLock is taken.
 */
StaticMutex s_requestLock;

using SocketPath = FixedText<328>;

/** A connection that the event loop can watch and that programs started by us do not inherit; NULL when there is none.
 */
wpa_ctrl* openConnection(const SocketPath& path)
{
    const StaticLock lock(s_requestLock);
    const NoLaunch untilClosedOnExec; // the library opens a socket that programs inherit
    wpa_ctrl* connection = wpa_ctrl_open(path.c_str());
    if (connection == nullptr) {
        return nullptr;
    }
    const int fd = wpa_ctrl_get_fd(connection);
    if (fd >= FD_SETSIZE) {
        wpa_ctrl_close(connection);
        return nullptr;
    }
    (void)fcntl(fd, F_SETFD, FD_CLOEXEC);
    return connection;
}

bool attach(wpa_ctrl* monitor)
{
    const StaticLock lock(s_requestLock);
    return wpa_ctrl_attach(monitor) == 0;
}

void closeConnection(wpa_ctrl* connection)
{
    if (connection != nullptr) {
        const StaticLock lock(s_requestLock);
        wpa_ctrl_close(connection);
    }
}

/** The exchange itself; a connection that is closed fails like one whose peer is gone. */
int request(Wpactrl_t& w, const char* cmd, char* buf, std::size_t* len, std::uint32_t& generation)
{
    const StaticLock lock(s_requestLock);
    generation = load(w.generation);
    wpa_ctrl* connection = load(w.ctrl_conn);
    if (connection == nullptr || load(w.ctrlClosed)) {
        return -1;
    }
    return wpa_ctrl_request(connection, cmd, std::strlen(cmd), buf, len, nullptr);
}

/** Closes the command connection that an exchange of that generation used; false when the link has changed since. */
bool closeUsed(Wpactrl_t& w, std::uint32_t generation)
{
    const StaticLock lock(s_requestLock);
    if (load(w.generation) != generation) {
        return false;
    }
    wpa_ctrl* connection = load(w.ctrl_conn);
    if (connection != nullptr && !exchange(w.ctrlClosed, kTrue)) {
        wpa_ctrl_close(connection);
    }
    return true;
}

void exchangeConnection(Wpactrl_t& w, wpa_ctrl* connection) MOVO_REQUIRES(s_requestLock)
{
    wpa_ctrl* old = load(w.ctrl_conn);
    if (old != nullptr && !load(w.ctrlClosed)) {
        wpa_ctrl_close(old);
    }
    store(w.ctrl_conn, connection);
    store(w.ctrlClosed, kFalse);
}

/** Gives a link of that generation its new connection; false when the link has changed since. */
bool giveConnection(Wpactrl_t& w, wpa_ctrl* connection, std::uint32_t generation)
{
    const StaticLock lock(s_requestLock);
    if (load(w.generation) != generation) {
        return false;
    }
    exchangeConnection(w, connection);
    return true;
}

/** Wpactrl_Reconnect, for which it logs; it leaves a link alone that was shut down or opened since `generation`. */
RETURN_TYPE reopen(Wpactrl_t& w, const char* ifname, std::uint32_t generation)
{
    constexpr const char* kCaller = "Wpactrl_Reconnect";
    if (ifname == nullptr || *ifname == '\0' || !closeUsed(w, generation)) {
        return kFail;
    }
    const SocketPath path("%s/%s", kSocketFolder, ifname); // Deliberate: not the path that was opened first.
    NET_LOG_AT((CallSite{kCaller, __LINE__}), KEST_LEVEL_INFO, "open wpa_ctrl %s, ctrl\n", path.c_str());
    wpa_ctrl* connection = openConnection(path);
    if (connection == nullptr) {
        // ctrl_conn keeps its value, since the link counts as open, but is marked closed and never used again.
        NET_LOG_AT((CallSite{kCaller, __LINE__}), KEST_LEVEL_ERROR, "cannot open wpa_ctrl %s, ctrl\n", path.c_str());
        return kFail;
    }
    if (!giveConnection(w, connection, generation)) {
        closeConnection(connection);
        return kFail;
    }
    return kOk;
}

/** Reopens under the owning interface's name; without an owner under the usual one. */
RETURN_TYPE reopenAfterTimeout(Wpactrl_t& w, std::uint32_t generation)
{
    const MovoNetWifi_t* wifi = w.pWifiIface;
    const bool owned = wifi != nullptr && wifi->piface != nullptr;
    return reopen(w, owned ? wifi->piface->name : kFallbackInterface, generation);
}
} // namespace

namespace movonet {
void closeCommandConnection(Wpactrl_t& w)
{
    (void)closeUsed(w, load(w.generation));
}

void replaceCommandConnection(Wpactrl_t& w, wpa_ctrl* connection)
{
    const StaticLock lock(s_requestLock);
    exchangeConnection(w, connection);
}

void closeMonitorConnection(Wpactrl_t& w)
{
    closeConnection(exchange(w.mon_conn, nullptr));
}

void detachMonitorConnection(Wpactrl_t& w)
{
    const StaticLock lock(s_requestLock);
    if (wpa_ctrl* monitor = load(w.mon_conn); monitor != nullptr) {
        (void)wpa_ctrl_detach(monitor);
    }
}
} // namespace movonet

RETURN_TYPE Wpactrl_Init(Wpactrl_t* w, const char* ifname)
{
    if (w == nullptr || ifname == nullptr || *ifname == '\0') {
        return kBadArgument;
    }
    replaceCommandConnection(*w, nullptr); // an activation that failed after opening them left both open
    closeMonitorConnection(*w);
    const SocketPath path("%s/%s", kSocketFolder, kSocketName); // Deliberate: the doubled slash.
    NET_INFO("open wpa_ctrl %s, ctrl\n", path.c_str());
    wpa_ctrl* command = openConnection(path);
    if (command == nullptr) {
        NET_ERROR("cannot open wpa_ctrl %s, ctrl\n", path.c_str());
        return kFail;
    }
    wpa_ctrl* monitor = openConnection(path);
    if (monitor == nullptr) {
        NET_ERROR("cannot open wpa_ctrl %s, mon\n", path.c_str());
        closeConnection(command);
        return kFail;
    }
    if (!attach(monitor)) {
        NET_ERROR("cannot attach to wpa_ctrl\n");
        closeConnection(command);
        closeConnection(monitor);
        return kFail;
    }
    store(w->mon_conn, monitor);
    store(w->fd, wpa_ctrl_get_fd(monitor));
    store(w->generation, load(w->generation) + 1); // before: a reconnection of an earlier one must not replace it
    replaceCommandConnection(*w, command);
    return kOk;
}

RETURN_TYPE Wpactrl_Reconnect(Wpactrl_t* w, const char* ifname)
{
    if (w == nullptr) {
        return kBadArgument;
    }
    return reopen(*w, ifname, load(w->generation));
}

RETURN_TYPE Wpactrl_SendCmd(Wpactrl_t* w, const char* cmd, char* buf, std::size_t* len)
{
    if (w == nullptr || load(w->ctrl_conn) == nullptr || buf == nullptr || len == nullptr) {
        return kBadArgument;
    }
    NET_INFO("command: %s\n", cmd);
    std::uint32_t generation = 0;
    const int result = request(*w, cmd, buf, len, generation);
    if (result == kLibraryTimeout) {
        NET_ERROR("wpa_ctrl_request time out\n");
        if (reopenAfterTimeout(*w, generation) != kOk) {
            NET_ERROR("Wpactrl_Reconnect failed\n");
            Kest_Util_Delay(kRetryDelayMs);
            return kFail;
        }
        // Deliberate: the command is not repeated; the reply is what the buffer held.
    } else if (result < 0) {
        NET_ERROR("wpa_ctrl_request error\n");
        return kFail;
    }
    buf[*len] = '\0';
    NET_INFO("reply: %s\n", buf);
    return kOk;
}

RETURN_TYPE Wpactrl_ExecCmd(Wpactrl_t* w, const char* cmd)
{
    if (cmd == nullptr) {
        return kBadArgument;
    }
    if (w == nullptr || load(w->ctrl_conn) == nullptr) {
        NET_ERROR("Wpactrl_SendCmd failed\n");
        return kBadArgument;
    }
    Reply reply;
    if (Wpactrl_SendCmd(w, cmd, reply.text, &reply.length) != kOk) {
        NET_ERROR("Wpactrl_SendCmd failed\n");
        return kFail;
    }
    if (Wpa_IsRetvalOK(reply.text)) {
        return kOk;
    }
    NET_ERROR("[%s] failed\n", cmd);
    if (!Wpa_IsRetvalFAILBUSY(reply.text)) {
        return kFail;
    }
    NET_INFO("send [%s] again\n", cmd);
    Kest_Util_Delay(kRetryDelayMs);
    // Deliberate: the first reply's length bounds the second one.
    if (Wpactrl_SendCmd(w, cmd, reply.text, &reply.length) == kOk && Wpa_IsRetvalOK(reply.text)) {
        return kOk;
    }
    NET_ERROR("[%s] failed again\n", cmd);
    if (std::string_view(cmd) == "SCAN") {
        constexpr int kFailedScanTicks = 100;
        (void)Wpactrl_Add_ScanEvent(w, kFailedScanTicks);
    }
    return kFail;
}

kest_bool Wpa_IsRetvalOK(const char* reply)
{
    return std::string_view(reply).starts_with("OK") ? kTrue : kFalse;
}

kest_bool Wpa_IsRetvalFAILBUSY(const char* reply)
{
    return std::string_view(reply).starts_with("FAIL-BUSY") ? kTrue : kFalse;
}
