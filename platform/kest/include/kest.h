/**
 * The platform's utility library: basic types, logger, delay, CRC, backtrace.
 *
 * Every function may be called from any thread.
 */
#ifndef KEST_H
#define KEST_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Boolean of one byte, 0 or 1. */
typedef unsigned char kest_bool;
typedef int32_t kest_sint32;
typedef uint32_t kest_uint32;
typedef uint8_t kest_uint8;

/** Levels of a log message; a message shows when the threshold `__kest_debug_min` is at least its level. */
enum {
    KEST_LEVEL_NONE = 0,
    KEST_LEVEL_ERROR = 1,
    KEST_LEVEL_WARNING = 2,
    KEST_LEVEL_INFO = 3,
    KEST_LEVEL_DEBUG = 4,
    KEST_LEVEL_LOG = 5
};

/** A named group of log messages. */
typedef struct kest_debug_category kest_debug_category;

/** Threshold of the whole process, `KEST_LEVEL_ERROR` until `kest_debug_init` reads another one; atomic access only. */
extern int __kest_debug_min;

/** The category of whoever has none of its own; never NULL. */
extern kest_debug_category* KEST_CAT_DEFAULT;

/**
 * Starts the logger: sets the threshold from the environment variable `KEST_DEBUG` (one digit, 0 to 5).
 * Any other value, or none, leaves the threshold as it is. `KEST_DEBUG_KEYS=1` lets the log show keys. From now on
 * lines that repeat are counted, see `kest_debug_log`. The logger works without this call: it writes errors, each line
 * by itself, without keys.
 *
 * @param[in] name  The program's name; not used by this logger.
 */
void kest_debug_init(const char* name);

/**
 * Makes a category. Categories live until the process ends.
 *
 * @param[in] name         Shown in every line of the category; copied, the first 63 bytes count; NULL means empty.
 * @param[in] colour       The platform's colour number; not used by this logger.
 * @param[in] description  For people; not used by this logger.
 *
 * @return The category, or `KEST_CAT_DEFAULT` when there is no memory for another one; never NULL.
 */
kest_debug_category* kest_debug_category_new(const char* name, int colour, const char* description);

/** Returns the name that `category` was made with, in the category's own memory; NULL means the default category. */
const char* kest_debug_category_name(const kest_debug_category* category);

/**
 * Writes one line to standard error: monotonic time in seconds, level, category, module, function:line, text.
 *
 *     12.345 WARNING RECOVERY_NET_CONNECTION movo_net_fl_common ifup:42 no reply
 *
 * One message is one line, whatever it holds: line ends at its end are dropped, and any other control character
 * becomes a blank. The line goes out in one write, which the kernel keeps whole on a terminal, a pipe or a file, so
 * that lines of different threads and processes never mix. "***" stands for the key of a Wi-Fi network, which is what
 * follows `psk "`, `wep_key0 ` or `key-"`, unless `KEST_DEBUG_KEYS` says otherwise. It is cut to 1023 bytes before its
 * line end. A message that standard error does not take is lost; a pipe that nobody reads any more raises no SIGPIPE.
 * Never allocates and keeps `errno`. The caller tests the threshold.
 *
 * Once `kest_debug_init` was called, a line that is the one before again, all but its time, is only counted for a
 * minute. When another line comes, or the minute is over, the count comes first:
 *
 *     12.345 WARNING RECOVERY_NET_CONNECTION movo_net_fl_common ifup:42 repeated 7 times
 *
 * @param[in] category  NULL stands for the default category.
 * @param[in] level     One of the levels; shown as a word.
 * @param[in] file      Name of the source module.
 * @param[in] function  Name of the function.
 * @param[in] line      Line in the source.
 * @param[in] format    As for printf; `%m` gives the caller's `errno`.
 */
void kest_debug_log(kest_debug_category* category, int level, const char* file, const char* function, int line,
                    const char* format, ...) __attribute__((format(printf, 6, 7)));

/** Sleeps for `milliseconds`, also when signals arrive; 0 or less returns at once. */
void Kest_Util_Delay(int milliseconds);

/**
 * Continues a CRC-32 (reflected polynomial 0xEDB88320, the one of gzip).
 *
 * @param[in] previous  0 to start, else the result of the call before.
 * @param[in] buffer    Bytes to add; may be NULL when `length` is 0.
 * @param[in] length    Number of bytes; 0 or less adds nothing.
 *
 * @return The CRC of everything added so far.
 */
kest_uint32 Kest_Util_CRC32(kest_uint32 previous, const void* buffer, kest_sint32 length);

/** Prints the innermost `frames` stack frames of the caller, at most 64, to standard error; raises no SIGPIPE. */
void Kest_Util_BT(int frames);

#ifdef __cplusplus
}
#endif

#endif
