#include "command.h"
#include "names.h"
#include "text.h"

#include <kest.h>

namespace shell {
namespace {
using namespace std::chrono_literals;

constexpr auto kSubject = "script";
constexpr std::chrono::milliseconds kExpectTimeout = 30s;

bool never()
{
    return false;
}

Outcome letPass(Console& console, Deadline deadline)
{
    return console.pass(deadline, "watching", never) == Wait::Interrupted ? Outcome::Interrupted : Outcome::Done;
}

Outcome watch(Console& console, Arguments arguments)
{
    if (arguments.empty()) {
        return letPass(console, kNoDeadline);
    }
    const auto time = parseSeconds(arguments[0]);
    return time ? letPass(console, in(*time)) : Outcome::BadArgument;
}

/** What `expect` waits for. */
struct Expected {
    MovoNetCBReason_e reason;
    std::string ifname; // empty: any
    std::chrono::milliseconds timeout;
};

std::optional<Expected> parseExpected(Arguments arguments)
{
    const auto reason = valueOf(reasonNames(), arguments[0]);
    if (!reason) {
        return std::nullopt;
    }
    Expected expected = {static_cast<MovoNetCBReason_e>(*reason), "", kExpectTimeout};
    const auto lastTime = arguments.size() > 1 ? parseSeconds(arguments.back()) : std::nullopt;
    expected.timeout = lastTime.value_or(kExpectTimeout);
    if (arguments.size() == 3 || (arguments.size() == 2 && !lastTime)) {
        expected.ifname = arguments[1];
    }
    return arguments.size() == 3 && !lastTime ? std::nullopt : std::optional(expected);
}

Outcome expect(Console& console, Arguments arguments)
{
    const auto expected = parseExpected(arguments);
    if (!expected) {
        return Outcome::BadArgument;
    }
    const std::string name =
        nameOf(reasonNames(), expected->reason) + (expected->ifname.empty() ? "" : " ") + printable(expected->ifname);
    const auto arrived = [&] { return console.takeExpected(expected->reason, expected->ifname); };
    switch (console.pass(in(expected->timeout), "waiting for " + name, arrived)) {
    case Wait::Done:
        return Outcome::Done;
    case Wait::Interrupted:
        return Outcome::Interrupted;
    case Wait::TimeUp:
        break;
    }
    console.forgetShown();
    console.complain("expected %s, not called back within %.3g s\n", name.c_str(),
                     static_cast<double>(expected->timeout.count()) / 1000);
    return Outcome::Unmet;
}

Outcome echo(Console& console, Arguments arguments)
{
    std::string text;
    for (const std::string& word : arguments) {
        text += (text.empty() ? "" : " ") + word;
    }
    console.print("%s\n", printable(text).c_str());
    return Outcome::Done;
}

Outcome log(Console& console, Arguments arguments)
{
    if (arguments.empty()) {
        const int level = __atomic_load_n(&__kest_debug_min, __ATOMIC_RELAXED);
        console.print("%s\n", nameOf(levelNames(), level).c_str());
        return Outcome::Done;
    }
    const auto level = valueOf(levelNames(), arguments[0]);
    if (!level) {
        return Outcome::BadArgument;
    }
    __atomic_store_n(&__kest_debug_min, *level, __ATOMIC_RELAXED);
    return Outcome::Done;
}

Outcome quit(Console& /*console*/, Arguments /*arguments*/)
{
    return Outcome::Quit;
}
} // namespace

std::span<const Command> scriptCommands()
{
    static constexpr Command kCommands[] = {
        {kSubject, "help", "[COMMAND|SUBJECT...]", "shows all commands, or those of a subject, or one", "", help},
        {kSubject, "watch", "[SECONDS]", "shows callbacks for so long, or until interrupted", "", watch},
        {kSubject, "sleep", "SECONDS", "lets time pass; callbacks are shown", "", watch},
        {kSubject, "expect", "REASON [IFACE] [SECONDS]",
         "waits for a callback, 30 s unless told; a script ends without it", "", expect},
        {kSubject, "echo", "[TEXT...]", "prints its words", "", echo},
        {kSubject, "log", "[LEVEL]", "shows or sets what is logged, from none to log", "", log},
        {kSubject, "?", "[COMMAND|SUBJECT...]", "the same as help", "", help},
        {kSubject, "exit", "", "the same as quit", "", quit},
        {kSubject, "quit", "", "stops the glue and leaves, as the end of the input does", "", quit},
    };
    return kCommands;
}
} // namespace shell
