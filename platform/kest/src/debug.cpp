#include "kest.h"
#include "mask.h"
#include "sigpipe.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <pthread.h>
#include <string_view>
#include <time.h>
#include <unistd.h>

struct kest_debug_category {
    char name[64];
};

static kest_debug_category s_defaultCategory{"DEFAULT"};
static bool s_keysAreShown;

int __kest_debug_min = KEST_LEVEL_ERROR;
kest_debug_category* KEST_CAT_DEFAULT = &s_defaultCategory;

namespace {

/** One line of the log in the making, on the stack so that logging never allocates. What does not fit is cut. */
class Line {
public:
    __attribute__((format(printf, 2, 3))) void append(const char* format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        appendList(format, arguments);
        va_end(arguments);
    }

    void appendList(const char* format, va_list arguments) __attribute__((format(printf, 2, 0)))
    {
        const std::size_t room = sizeof m_text - m_length;
        const int wanted = std::vsnprintf(m_text + m_length, room, format, arguments);
        if (wanted > 0) {
            m_length += std::min(static_cast<std::size_t>(wanted), room - 1);
        }
    }

    /** Drops the line ends at the end; inside, every control character becomes a blank. */
    void fold()
    {
        while (m_length > 0 && (m_text[m_length - 1] == '\n' || m_text[m_length - 1] == '\r')) {
            --m_length;
        }
        std::replace_if(
            m_text, m_text + m_length, [](unsigned char c) { return c < ' ' || c == 0x7F; }, ' ');
    }

    /** Once it is folded: a key ends with its line. */
    void mask() { m_length = kest::maskKeys(m_text, m_length, sizeof m_text - 1); }

    /** The time ends here, and level, category and place begin. */
    void beginPlace() { m_place = m_length; }
    void beginMessage() { m_message = m_length; }
    std::string_view place() const { return {m_text + m_place, m_message - m_place}; }

    /** Is it `other` but for the time? */
    bool repeats(const Line& other) const { return placeAndMessage() == other.placeAndMessage(); }

    /** A single write, which the kernel keeps whole for a line of this length; false when it was lost. */
    bool write()
    {
        const kest::SigpipeHeld held;
        m_text[m_length++] = '\n'; // takes the place of the terminator
        ssize_t written = -1;
        do { // again when a signal came before the first byte: nothing was written yet
            written = ::write(STDERR_FILENO, m_text, m_length);
        } while (written == -1 && errno == EINTR);
        return written != -1;
    }

private:
    std::string_view placeAndMessage() const { return {m_text + m_place, m_length - m_place}; }

    char m_text[1024];
    std::size_t m_length = 0;
    std::size_t m_place = 0;
    std::size_t m_message = 0;
};

constexpr time_t kFoldSeconds = 60; // what goes on for days still shows once a minute

bool s_isStarted; // before, a line is shown as it comes
pthread_mutex_t s_showing = PTHREAD_MUTEX_INITIALIZER;
Line s_last;         // guarded by s_showing, as all below: the last line that was written
time_t s_lastSecond; // when that was
unsigned s_repeats;  // how often it came again since

void appendTime(Line& line, const timespec& now)
{
    line.append("%lld.%03ld ", static_cast<long long>(now.tv_sec), now.tv_nsec / 1'000'000L);
    line.beginPlace();
}

/** Messages right after an open or a write that failed, without its cause. */
constexpr std::string_view kFailedCalls[] = {"cannot open ", "write failed", "write crc value to file failed",
                                             "write ifaces to file failed"};

bool isOfFailedCall(std::string_view format)
{
    return std::ranges::any_of(kFailedCalls,
                               [&](std::string_view text) { return format.find(text) != std::string_view::npos; });
}

void writeRepeats(const timespec& now)
{
    Line count;
    appendTime(count, now);
    count.append("%.*srepeated %u times", static_cast<int>(s_last.place().size()), s_last.place().data(), s_repeats);
    (void)count.write();
    s_repeats = 0;
}

/** Writes the line, or counts it when it is the last one again; the lock keeps the count beside its line. */
void show(Line& line, const timespec& now)
{
    (void)pthread_mutex_lock(&s_showing);
    const bool again = now.tv_sec - s_lastSecond < kFoldSeconds && line.repeats(s_last);
    if (again && __atomic_load_n(&s_isStarted, __ATOMIC_RELAXED)) {
        ++s_repeats;
    } else {
        if (s_repeats > 0) {
            writeRepeats(now);
        }
        s_last = line;
        s_lastSecond = now.tv_sec;
        if (!line.write()) {
            s_last = Line{};
        }
    }
    (void)pthread_mutex_unlock(&s_showing);
}

} // namespace

static const char* levelName(int level)
{
    static constexpr const char* kNames[] = {"NONE", "ERROR", "WARNING", "INFO", "DEBUG", "LOG"};
    return level >= KEST_LEVEL_NONE && level <= KEST_LEVEL_LOG ? kNames[level] : "?";
}

void kest_debug_init(const char* /*name*/)
{
    const char* value = std::getenv("KEST_DEBUG");
    const std::string_view digit = value != nullptr ? value : "";
    if (digit.size() == 1 && digit[0] >= '0' && digit[0] <= '5') {
        __atomic_store_n(&__kest_debug_min, digit[0] - '0', __ATOMIC_RELAXED);
    }
    const char* keys = std::getenv("KEST_DEBUG_KEYS");
    __atomic_store_n(&s_keysAreShown, keys != nullptr && std::string_view(keys) == "1", __ATOMIC_RELAXED);
    __atomic_store_n(&s_isStarted, true, __ATOMIC_RELAXED);
}

kest_debug_category* kest_debug_category_new(const char* name, int /*colour*/, const char* /*description*/)
{
    auto* category = static_cast<kest_debug_category*>(std::malloc(sizeof(kest_debug_category)));
    if (category == nullptr) {
        return KEST_CAT_DEFAULT;
    }

    (void)std::snprintf(category->name, sizeof category->name, "%s", name != nullptr ? name : "");
    return category;
}

const char* kest_debug_category_name(const kest_debug_category* category)
{
    return category != nullptr ? category->name : s_defaultCategory.name;
}

void kest_debug_log(kest_debug_category* category, int level, const char* file, const char* function, int line,
                    const char* format, ...)
{
    const int callersError = errno;
    timespec now{};
    (void)clock_gettime(CLOCK_MONOTONIC, &now);

    Line text;
    appendTime(text, now);
    text.append("%-7s %s %s %s:%d ", levelName(level), kest_debug_category_name(category), file, function, line);
    text.beginMessage();
    errno = callersError; // for a %m in the message
    va_list arguments;
    va_start(arguments, format);
    text.appendList(format, arguments);
    va_end(arguments);

    text.fold();
    const bool isStarted = __atomic_load_n(&s_isStarted, __ATOMIC_RELAXED);
    if (isStarted && level == KEST_LEVEL_ERROR && callersError != 0 && isOfFailedCall(format)) {
        errno = callersError;
        text.append(" (%m)");
    }
    if (!__atomic_load_n(&s_keysAreShown, __ATOMIC_RELAXED)) {
        text.mask();
    }
    show(text, now);
    errno = callersError;
}
