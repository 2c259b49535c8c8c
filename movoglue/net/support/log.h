/** The macros by which modules log and check; support code itself does neither. */
#ifndef MOVO_NET_SUPPORT_LOG_H
#define MOVO_NET_SUPPORT_LOG_H

#include "support/report.h"

#include <kest.h>

namespace movonet {
/** Under which name and category the files of one module log; each .cpp has one, called kLog. */
struct LogModule {
    const char* name;
    kest_debug_category** category;
};
} // namespace movonet

#define NET_LOG_AT(site, level, ...)                                                                       \
    do {                                                                                                   \
        if (__atomic_load_n(&__kest_debug_min, __ATOMIC_RELAXED) >= (level)) {                             \
            kest_debug_log(*kLog.category, (level), kLog.name, (site).function, (site).line, __VA_ARGS__); \
        }                                                                                                  \
    } while (false)

#define NET_HERE (movonet::CallSite{__func__, __LINE__})
#define NET_ERROR(...) NET_LOG_AT(NET_HERE, KEST_LEVEL_ERROR, __VA_ARGS__)
#define NET_INFO(...) NET_LOG_AT(NET_HERE, KEST_LEVEL_INFO, __VA_ARGS__)

/** Ends the process, in every build type, unless `condition` holds; `expression` is its fixed text. */
#define NET_REQUIRE(condition, expression)                               \
    do {                                                                 \
        if (!(condition)) {                                              \
            movonet::failedRequirement(expression, kLog.name, NET_HERE); \
        }                                                                \
    } while (false)

/** Tells of a failed expectation with a backtrace; the process goes on. */
#define NET_REPORT(expression) movonet::reportFailure(expression, kLog.name, NET_HERE)

#endif
