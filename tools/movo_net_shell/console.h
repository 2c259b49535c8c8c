/** What the shell prints, and how it waits. One thread, the shell's own. */
#ifndef MOVO_NET_SHELL_CONSOLE_H
#define MOVO_NET_SHELL_CONSOLE_H

#include "arrivals.h"

#include <chrono>
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
    Console(std::FILE* output, std::FILE* errors);
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    void print(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void complain(const char* format, ...) __attribute__((format(printf, 2, 3)));

    /** For a program that prints in the console's place. */
    int outputDescriptor() const { return fileno(m_output); }

    /** A result with the meaning of its code; the value follows when the code is 0. Callbacks of its call come first.
     */
    void result(RETURN_TYPE code);
    void result(RETURN_TYPE code, const std::string& value);
    /** The answer of a call that returns a boolean. */
    void answer(kest_bool yes);

    /** The latest result that was a failure, or the latest answer "no", since the last call; nothing when all went
     * well. */
    std::optional<Shortfall> takeShortfall() { return std::exchange(m_shortfall, std::nullopt); }

    /** Prints the callbacks that have arrived; whatever is printed by other means comes after them. */
    void showArrivals();

    /**
     * Waits for input on `descriptor` (-1: none), an interrupt, the deadline, or a wake: show what has arrived then.
     */
    Event nextEvent(Deadline deadline, int descriptor = -1);

    /** Shows callbacks as they arrive until `done` holds. */
    Wait pass(Deadline deadline, const std::function<bool()>& done);

    /** Takes the first shown callback that fits, and all before it; an empty name fits every interface. */
    bool takeExpected(MovoNetCBReason_e reason, const std::string& ifname);
    /** Takes all that were shown. */
    void forgetShown() { m_shown.clear(); }

private:
    std::FILE* m_output;
    std::FILE* m_errors;
    std::optional<Shortfall> m_shortfall;
    std::deque<Arrival> m_shown; // not yet taken by an expectation; the oldest are dropped
};
} // namespace shell

#endif
