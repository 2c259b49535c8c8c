/** Watches in every Wi-Fi test that an attempt to join a network ends once, and that the application is told so once.
 */
#ifndef UNIT_WIFI_ATTEMPTS_H
#define UNIT_WIFI_ATTEMPTS_H

#include "movo_net_fl_wpactrl/wpactrl.h"

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace wifi {
/** How an attempt ends. */
enum class End { Connected, BadKey, TimeOut, Replaced, Left, Lost };

/**
 * Sees the commands as the supplicant gets them, and the callbacks. What must not be fails the test at its end:
 * - an attempt that begins over another network, whose removal was not asked for
 * - IFCONNECTED, WIFIBADKEY or WIFITIMEOUT that ends no attempt, so also the second one of the same attempt
 * - IFDISCONNECTED when nothing was joined, left or addressed
 * - a wrong key whose network is not removed
 * - a network that a hidden search's end removes while it is being joined or is joined
 */
class Attempts {
public:
    /** `iface` finds the record, or NULL; `linked` tells whether the commands of the glue reach the supplicant. */
    Attempts(std::function<MovoNetIface_t*()> iface, std::function<bool()> linked);

    /** A command; `taken` when it was answered as it should be. */
    void command(const std::string& text, bool taken);
    void callback(MovoNetCBReason_e reason);
    /** The test is over. */
    void finish();

    /** Ended attempts, by how. */
    std::map<End, int> ends() const;
    /** How often the supplicant was made to try its network anew. */
    int resets() const;
    /** Tells whether the glue's state of the connection is what commands and callbacks have made of it. */
    bool agreesWith(WpactrlConnectStatus_e status);
    /** From now on nothing is complained of: requests on several threads mix their commands. */
    void lookAway();

private:
    enum class Stage { None, Trying, Joined, BadKey };

    void begin();
    void removed(bool searching);
    void disconnected(bool linked);
    void timedOut(bool linked);
    void end(End how, Stage next);
    void complain(const char* what);
    void note(const std::string& seen);

    std::function<MovoNetIface_t*()> m_iface;
    std::function<bool()> m_linked; // asked before the lock is taken: the supplicant calls with its own in hand
    mutable std::mutex m_lock;
    Stage m_stage = Stage::None;
    bool m_wasTrying = false; ///< The network that was removed was one being tried; how that ended shows later.
    bool m_searching = false; ///< The network that is tried is the one of a hidden search, which goes when that ends.
    bool m_justTaken = false; ///< The latest thing seen is a removal, during a search, of what was tried or joined.
    bool m_removed = false;   ///< A network was removed, and nothing told since.
    bool m_left = false;      ///< That was told as having been left.
    bool m_looking = true;
    std::map<End, int> m_ends;
    int m_resets = 0;
    std::deque<std::string> m_seen; ///< The latest ones, for the report.
};
} // namespace wifi

#endif
