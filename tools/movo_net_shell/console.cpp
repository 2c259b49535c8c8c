#include "console.h"

#include "names.h"
#include "text.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>

namespace shell {
namespace {
constexpr std::size_t kMostShown = 1000;
constexpr std::chrono::milliseconds kProgressStep{1000};
constexpr std::size_t kTimeColumns = 20; // of what follows the words of a progress line

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

Console::Console(std::FILE* output, std::FILE* errors, Screen screen, int input)
    : m_output(output), m_errors(errors), m_screen(screen), m_input(input)
{
}

void Console::write(std::FILE* stream, const char* format, std::va_list arguments)
{
    (void)std::vfprintf(stream, format, arguments);
    (void)std::fflush(stream);
    m_printing = true;
}

void Console::print(const char* format, ...)
{
    if (!m_printing) {
        showArrivals();
    }
    std::va_list arguments;
    va_start(arguments, format);
    write(m_output, format, arguments);
    va_end(arguments);
}

void Console::complain(const char* format, ...)
{
    showArrivals();
    std::va_list arguments;
    va_start(arguments, format);
    write(m_errors, format, arguments);
    va_end(arguments);
}

void Console::result(RETURN_TYPE code)
{
    if (code != 0) {
        m_shortfall = Shortfall{code, false};
    }
    showArrivals();
    const std::string text = std::to_string(code) + " " + nameOf(resultNames(), code);
    print("%s\n", code == 0 ? text.c_str() : m_screen.styled(Style::Bad, text).c_str());
}

void Console::result(RETURN_TYPE code, const std::string& value)
{
    if (code != 0) {
        result(code);
        return;
    }
    showArrivals();
    print("0 success: %s\n", value.c_str());
}

void Console::answer(kest_bool yes)
{
    m_shortfall = Shortfall{0, true};
    showArrivals();
    print("%d %s\n", yes, textOf(yes).c_str());
}

/** A person at a terminal also sees the time of day. */
void Console::show(const Arrival& arrival)
{
    const long long ms = arrival.time.count();
    const std::string clock = m_screen.isTerminal() ? " " + clockText(arrival.wall) : "";
    char time[32];
    (void)std::snprintf(time, sizeof(time), "%lld.%03lld", ms / 1000, ms % 1000);
    const std::string line = "callback " + std::string(time) + clock + " " + nameOf(reasonNames(), arrival.reason) +
                             " " + printable(arrival.ifname);
    (void)std::fprintf(m_output, "%s\n", m_screen.styled(Style::Faint, line).c_str());
    const std::string remark = m_remark != nullptr ? m_remark(arrival) : "";
    if (!remark.empty()) {
        (void)std::fprintf(m_output, "  %s\n", m_screen.wrapped(remark, 2).c_str());
    }
}

void Console::showArrivals()
{
    sleepAgain();
    for (Arrival& arrival : takeArrivals()) {
        eraseProgress();
        show(arrival);
        m_shown.push_back(std::move(arrival));
    }
    if (m_shown.size() > kMostShown) {
        take(m_shown.size() - kMostShown);
    }
    (void)std::fflush(m_output);
}

/** In place of the line before, without an end. */
void Console::showProgress(Deadline deadline, const std::string& awaited)
{
    if (!m_screen.isTerminal() || awaited.empty()) {
        return;
    }
    const auto left = std::chrono::ceil<std::chrono::seconds>(deadline - std::chrono::steady_clock::now());
    const std::string time = deadline == kNoDeadline ? "" : ", " + std::to_string(left.count()) + " s left";
    const std::string line = shortened(awaited, m_screen.columns() - std::min(m_screen.columns(), kTimeColumns)) + time;
    (void)std::fprintf(m_output, "\r\033[K%s", m_screen.styled(Style::Faint, line).c_str());
    (void)std::fflush(m_output);
    m_progress = true;
}

void Console::eraseProgress()
{
    if (std::exchange(m_progress, false)) {
        (void)std::fputs("\r\033[K", m_output);
        (void)std::fflush(m_output);
    }
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

Wait Console::passLooking(Deadline deadline, const std::string& awaited, const std::function<bool()>& done)
{
    showArrivals();
    while (!done()) {
        showProgress(deadline, awaited);
        const bool ticks = m_progress && in(kProgressStep) < deadline;
        switch (nextEvent(ticks ? in(kProgressStep) : deadline)) {
        case Event::Interrupt:
            return Wait::Interrupted;
        case Event::TimeUp:
            if (!ticks) {
                return Wait::TimeUp;
            }
            break;
        case Event::Input:
        case Event::Woken:
            showArrivals();
        }
    }
    return Wait::Done;
}

Wait Console::pass(Deadline deadline, const std::string& awaited, const std::function<bool()>& done)
{
    const Wait wait = passLooking(deadline, awaited, done);
    eraseProgress();
    m_printing = false;
    return wait;
}

bool Console::takeExpected(MovoNetCBReason_e reason, const std::string& ifname)
{
    const auto found = std::ranges::find_if(m_shown, [&](const Arrival& arrival) {
        return arrival.reason == reason && (ifname.empty() || arrival.ifname == ifname);
    });
    if (found == m_shown.end()) {
        return false;
    }
    take(static_cast<std::size_t>(found - m_shown.begin()) + 1);
    return true;
}

void Console::take(std::size_t count)
{
    m_shown.erase(m_shown.begin(), m_shown.begin() + static_cast<std::ptrdiff_t>(count));
    m_taken += count;
}

std::optional<MovoNetCBReason_e> Console::shownSince(std::size_t& mark,
                                                     const std::function<bool(const Arrival&)>& fits) const
{
    for (std::size_t at = std::max(mark, m_taken); at < this->mark(); at++) {
        const Arrival& arrival = m_shown[at - m_taken];
        if (fits(arrival)) {
            mark = at + 1;
            return arrival.reason;
        }
    }
    return std::nullopt;
}
} // namespace shell
