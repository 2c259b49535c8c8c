/** Questions that the shell asks for its own sake. */
#ifndef MOVO_NET_SHELL_QUIET_LOG_H
#define MOVO_NET_SHELL_QUIET_LOG_H

#include <kest.h>

namespace shell {
/** Keeps questions whose failure means nothing out of the log. */
class QuietLog {
public:
    QuietLog() : m_level(__atomic_exchange_n(&__kest_debug_min, KEST_LEVEL_NONE, __ATOMIC_RELAXED)) {}
    ~QuietLog() { __atomic_store_n(&__kest_debug_min, m_level, __ATOMIC_RELAXED); }
    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;

private:
    int m_level;
};
} // namespace shell

#endif
