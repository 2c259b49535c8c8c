#include "console.h"

#include "names.h"
#include "text.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <poll.h>

namespace shell {
namespace {
constexpr std::size_t kMostShown = 1000;

/** Milliseconds for poll: rounded up, so that a time-out does not come too early; -1 without deadline. */
int pollTimeout(Deadline deadline)
{
    if (deadline == kNoDeadline) {
        return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, INT_MAX));
}
} // namespace

Deadline in(std::chrono::milliseconds time)
{
    return std::chrono::steady_clock::now() + time;
}

Console::Console(std::FILE* output, std::FILE* errors) : m_output(output), m_errors(errors) {}

void Console::print(const char* format, ...)
{
    showArrivals();
    std::va_list arguments;
    va_start(arguments, format);
    (void)std::vfprintf(m_output, format, arguments);
    va_end(arguments);
    (void)std::fflush(m_output);
}

void Console::complain(const char* format, ...)
{
    showArrivals();
    std::va_list arguments;
    va_start(arguments, format);
    (void)std::vfprintf(m_errors, format, arguments);
    va_end(arguments);
    (void)std::fflush(m_errors);
}

void Console::result(RETURN_TYPE code)
{
    if (code != 0) {
        m_shortfall = Shortfall{code, false};
    }
    print("%d %s\n", code, nameOf(resultNames(), code).c_str());
}

void Console::result(RETURN_TYPE code, const std::string& value)
{
    if (code != 0) {
        result(code);
        return;
    }
    print("0 success: %s\n", value.c_str());
}

void Console::answer(kest_bool yes)
{
    if (yes == 0) {
        m_shortfall = Shortfall{0, true};
    }
    print("%d %s\n", yes, textOf(yes).c_str());
}

void Console::showArrivals()
{
    sleepAgain();
    for (Arrival& arrival : takeArrivals()) {
        const long long ms = arrival.time.count();
        (void)std::fprintf(m_output, "callback %lld.%03lld %s %s\n", ms / 1000, ms % 1000,
                           nameOf(reasonNames(), arrival.reason).c_str(), printable(arrival.ifname).c_str());
        m_shown.push_back(std::move(arrival));
    }
    while (m_shown.size() > kMostShown) {
        m_shown.pop_front();
    }
    (void)std::fflush(m_output);
}

Event Console::nextEvent(Deadline deadline, int descriptor)
{
    pollfd waits[] = {{wakeDescriptor(), POLLIN, 0}, {descriptor, POLLIN, 0}};
    while (!takeInterrupt()) {
        const int ready = poll(waits, std::size(waits), pollTimeout(deadline));
        if (ready == 0 && std::chrono::steady_clock::now() >= deadline) {
            return Event::TimeUp;
        }
        if (ready <= 0) {
            continue;
        }
        if (takeInterrupt()) {
            return Event::Interrupt;
        }
        return waits[0].revents != 0 ? Event::Woken : Event::Input;
    }
    return Event::Interrupt;
}

Wait Console::pass(Deadline deadline, const std::function<bool()>& done)
{
    showArrivals();
    while (!done()) {
        switch (nextEvent(deadline)) {
        case Event::Interrupt:
            return Wait::Interrupted;
        case Event::TimeUp:
            return Wait::TimeUp;
        case Event::Input:
        case Event::Woken:
            showArrivals();
        }
    }
    return Wait::Done;
}

bool Console::takeExpected(MovoNetCBReason_e reason, const std::string& ifname)
{
    const auto found = std::ranges::find_if(m_shown, [&](const Arrival& arrival) {
        return arrival.reason == reason && (ifname.empty() || arrival.ifname == ifname);
    });
    if (found == m_shown.end()) {
        return false;
    }
    m_shown.erase(m_shown.begin(), found + 1);
    return true;
}
} // namespace shell
