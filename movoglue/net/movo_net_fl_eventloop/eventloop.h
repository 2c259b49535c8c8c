/** The event loop's calls beyond those of movo_net_internal.h. */
#ifndef MOVO_NET_FL_EVENTLOOP_EVENTLOOP_H
#define MOVO_NET_FL_EVENTLOOP_EVENTLOOP_H

#include "movo_net_internal.h"
#include "support/lock.h"

namespace movonet {
/** First in the lock order: guards the live events and is held while handlers run. */
extern Mutex eventListLock;
/** After eventListLock: guards the registrations that are not live yet. */
extern Mutex eventListTodoLock;

/**
 * Holds the loop's handlers off while it lives; free of effect on the loop's own thread and after the loop has ended.
 * Whoever is going to hold ifaceListLock or callbackListLock while unknown code runs takes it first: a handler takes
 * the same locks with eventListLock held. A thread's outermost gate decides for those inside it, so that a loop that
 * starts in between is not waited for with other locks in hand.
 */
class LoopGate {
public:
    LoopGate() : m_locked(s_gates++ == 0 && eventListLock.lock()) {}
    LoopGate(const LoopGate&) = delete;
    LoopGate& operator=(const LoopGate&) = delete;
    ~LoopGate()
    {
        s_gates--;
        if (m_locked) {
            eventListLock.unlock();
        }
    }

private:
    /** How many this thread stands inside; its place is known when the library is loaded, so that none is allocated. */
    __attribute__((tls_model("initial-exec"))) static inline thread_local int s_gates = 0;
    bool m_locked;
};

/**
 * As `int_removeEvent`, messages included, but leaves a registration that has another handler or other data alone
 * and treats it as unknown: for handles that may be left over from another process.
 */
RETURN_TYPE removeEventOf(int handle, RETURN_TYPE (*handler)(int, void*, kest_bool), const void* data);

/** Waits until the loop's thread takes registrations or has failed to start. */
void waitForEventLoop();

/** True once after each loop's thread that has failed to start, and is over. */
bool takeEventLoopFailure();
} // namespace movonet

#endif
