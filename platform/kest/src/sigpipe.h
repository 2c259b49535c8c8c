/** Writing to standard error, whoever reads it. */
#ifndef KEST_SIGPIPE_H
#define KEST_SIGPIPE_H

#include <cerrno>
#include <csignal>
#include <time.h>

namespace kest {
/**
 * While it lives, a write to a pipe without a reader fails with EPIPE and does not end the process. The signal of this
 * thread is held back and dropped; the host's own handling of SIGPIPE stays as it is.
 */
class SigpipeHeld {
public:
    SigpipeHeld()
    {
        sigset_t pending;
        (void)sigpending(&pending);
        m_hostsIsPending = sigismember(&pending, SIGPIPE) == 1;
        (void)sigemptyset(&m_sigpipe);
        (void)sigaddset(&m_sigpipe, SIGPIPE);
        (void)pthread_sigmask(SIG_BLOCK, &m_sigpipe, &m_hostsMask);
    }
    ~SigpipeHeld()
    {
        constexpr timespec kAtOnce{};
        while (!m_hostsIsPending && sigtimedwait(&m_sigpipe, nullptr, &kAtOnce) == -1 && errno == EINTR) {
            // Another signal came first.
        }
        (void)pthread_sigmask(SIG_SETMASK, &m_hostsMask, nullptr);
    }
    SigpipeHeld(const SigpipeHeld&) = delete;
    SigpipeHeld& operator=(const SigpipeHeld&) = delete;

private:
    bool m_hostsIsPending;
    sigset_t m_sigpipe;
    sigset_t m_hostsMask;
};
} // namespace kest

#endif
