/** A supplicant that speaks from a script, in place of its client library. */
#ifndef UNIT_WIFI_SUPPLICANT_H
#define UNIT_WIFI_SUPPLICANT_H

#include "attempts.h"
#include "sim/sim.h"

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

struct wpa_ctrl;

namespace wifi {
using Lines = std::vector<std::string>;

/** What the client library is asked, and what it answers. One at a time: the calls have no argument to tell apart. */
struct Supplicant {
    /** `iface` finds the record of the interface that it is for, or NULL. */
    explicit Supplicant(std::function<MovoNetIface_t*()> iface);
    ~Supplicant();
    Supplicant(const Supplicant&) = delete;
    Supplicant& operator=(const Supplicant&) = delete;

    /** Messages arrive on the monitor connection, if there is one: the loop finds it readable. */
    void says(const Lines& messages);
    /** Replies to a command from now on, also while requests come from other threads. */
    void answers(const std::string& command, const std::string& reply);
    /** It runs, or ends: then nothing opens or answers, and what was open stays dead. */
    void lives(bool alive);
    bool isAlive() const;
    /** Connections that are open. */
    int connections() const;

    /** Replies to a command, one a request, the last one for good. Others are answered "OK". */
    std::map<std::string, std::deque<std::string>> replies;
    /** What a request returns: 0, -1 for a lost peer, -2 for a time-out; one a request, then 0. */
    std::deque<int> results;
    /** Replies to the next requests, whatever they ask for; before those to a command. */
    std::deque<std::string> nextReplies;
    /** Messages that wait on the monitor connection. */
    std::deque<std::string> events;
    int openFailures = 0; ///< So many connections are refused, after `openGrants`.
    int openGrants = 0;
    bool attachFails = false;
    bool receiveFails = false;
    int shownDescriptor = -1; ///< What connections show for theirs; -1: what it is.
    int pendingAtEnd = 0;     ///< What is told of a connection without messages.
    /** Run before a command is answered and after, on the caller's thread. */
    std::function<void(const std::string& command)> onCommand;
    std::function<void(const std::string& command)> afterCommand;
    /** Run before a connection is opened, on the caller's thread. */
    std::function<void()> onOpen;
    /** Run when it is open, while programs still inherit it. */
    std::function<void(int fd)> onOpened;

    Lines commands; ///< As they were sent.
    Lines opened;   ///< Paths.
    int closed = 0;
    int attached = 0;
    int detached = 0;

    Attempts attempts;

private:
    friend struct Library;

    mutable std::recursive_mutex m_lock; // requests come from several threads
    bool m_alive = true;
    std::vector<wpa_ctrl*> m_open;
};

/** The commands of a supplicant since the last time. */
Lines sent(Supplicant& supplicant);
} // namespace wifi

#endif
