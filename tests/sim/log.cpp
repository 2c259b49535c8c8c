#include "sim/sim.h"
#include "sim/world.h"

#include <cstdarg>
#include <cstdio>
#include <kest.h>

namespace sim {
namespace {
thread_local bool t_muted;

std::string format(const char* pattern, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // the caller's own was checked
    const int length = std::vsnprintf(nullptr, 0, pattern, again);
    va_end(again);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    (void)std::vsnprintf(text.data(), text.size() + 1, pattern, arguments);
#pragma GCC diagnostic pop
    return text;
}
} // namespace

void muteLog(bool muted)
{
    t_muted = muted;
}

std::vector<LogLine> Set::log() const
{
    const Hold hold;
    return world().records.log;
}

void Set::onLog(std::function<void(const LogLine&)> action)
{
    const Hold hold;
    world().records.onLog = std::move(action);
}

std::ostream& operator<<(std::ostream& out, const LogLine& line)
{
    out << line.level << " " << line.category << " " << line.module << " " << line.function << ":" << line.line
        << " \"";
    for (const char character : line.text) {
        out << (character == '\n' ? "\\n" : std::string(1, character));
    }
    return out << "\"";
}
} // namespace sim

extern "C" void __wrap_kest_debug_log(kest_debug_category* category, int level, const char* file, const char* function,
                                      int line, const char* pattern, ...) __attribute__((format(printf, 6, 7)));

extern "C" void __wrap_kest_debug_log(kest_debug_category* category, int level, const char* file, const char* function,
                                      int line, const char* pattern, ...)
{
    using namespace sim;
    if (!active() || t_muted) {
        return;
    }
    const int error = errno;
    va_list arguments;
    va_start(arguments, pattern);
    std::string text = format(pattern, arguments); // reads the caller's memory, for the sanitizers to see
    va_end(arguments);
    std::function<void(const LogLine&)> action;
    LogLine logged{level, kest_debug_category_name(category), file, function, line, std::move(text), ThreadKind::Any};
    {
        const Hold hold;
        logged.thread = self().kind;
        world().records.log.push_back(logged);
        action = world().records.onLog;
    }
    if (action) {
        action(logged);
    }
    errno = error;
}
