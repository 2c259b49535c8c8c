/** What the shell prints, and how it waits. One thread, the shell's own. */
#ifndef MOVO_NET_SHELL_CONSOLE_H
#define MOVO_NET_SHELL_CONSOLE_H

#include "arrivals.h"
#include "screen.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace shell {
using Deadline = std::chrono::steady_clock::time_point;
constexpr Deadline kNoDeadline = Deadline::max();
Deadline in(std::chrono::milliseconds time);

enum class Event { Input, Woken, Interrupt, TimeUp };
enum class Wait { Done, TimeUp, Interrupted };

/** What a person wants to know the cause of. */
struct Shortfall {
    RETURN_TYPE code; // 0 for an answer
    bool isAnswer;
};

class Console {
public:
    Console(std::FILE* output, std::FILE* errors, Screen screen = {}, int input = -1);
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /** Callbacks that have arrived come before the first text of a command; between its lines none come. */
    void print(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void complain(const char* format, ...) __attribute__((format(printf, 2, 3)));

    const Screen& screen() const { return m_screen; }
    /** What is said below a callback, unless it is nothing. */
    using Remark = std::string (*)(const Arrival& arrival);
    /** Returns the one before; NULL says nothing. */
    Remark remarkWith(Remark remark) { return std::exchange(m_remark, remark); }
    /** What is printed from now on is another command's. */
    void beginCommand() { m_printing = false; }

    /** What a person types at; -1 where there is nobody. */
    int input() const { return m_input; }

    /** For a program that prints in the console's place. */
    int outputDescriptor() const { return fileno(m_output); }

    /** A result with the meaning of its code; the value follows when the code is 0. Callbacks of its call come first.
     */
    void result(RETURN_TYPE code);
    void result(RETURN_TYPE code, const std::string& value);
    /** The answer of a call that returns a boolean. */
    void answer(kest_bool yes);

    /** The latest result that was a failure, or the latest answer, since the last call; nothing when all went
     * well. */
    std::optional<Shortfall> takeShortfall() { return std::exchange(m_shortfall, std::nullopt); }

    /** Prints the callbacks that have arrived; whatever is printed by other means comes after them. */
    void showArrivals();

    /**
     * Waits for input on `descriptor` (-1: none), an interrupt, the deadline, or a wake: show what has arrived then.
     */
    Event nextEvent(Deadline deadline, int descriptor = -1);

    /** Shows callbacks as they arrive until `done` holds; a terminal shows what is awaited, and how long yet. */
    Wait pass(Deadline deadline, const std::string& awaited, const std::function<bool()>& done);

    /** Takes the first shown callback that fits, and all before it; an empty name fits every interface. */
    bool takeExpected(MovoNetCBReason_e reason, const std::string& ifname);
    /** The place behind the last callback that was shown. */
    std::size_t mark() const { return m_taken + m_shown.size(); }
    /** The first of those behind the mark that fits, which the mark moves behind; nobody takes it. */
    std::optional<MovoNetCBReason_e> shownSince(std::size_t& mark,
                                                const std::function<bool(const Arrival&)>& fits) const;
    /** Takes all that were shown. */
    void forgetShown() { take(m_shown.size()); }

private:
    void write(std::FILE* stream, const char* format, std::va_list arguments) __attribute__((format(printf, 3, 0)));
    void show(const Arrival& arrival);
    void showProgress(Deadline deadline, const std::string& awaited);
    void eraseProgress();
    void take(std::size_t count);
    Wait passLooking(Deadline deadline, const std::string& awaited, const std::function<bool()>& done);

    std::FILE* m_output;
    std::FILE* m_errors;
    Screen m_screen;
    int m_input;
    Remark m_remark = nullptr;
    bool m_printing = false; // a text of the command stands there already
    bool m_progress = false; // its line stands there
    std::optional<Shortfall> m_shortfall;
    std::size_t m_taken = 0;     // callbacks that were taken or dropped
    std::deque<Arrival> m_shown; // not yet taken by an expectation; the oldest are dropped
};
} // namespace shell

#endif
