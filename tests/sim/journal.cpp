#include "sim/sim.h"
#include "sim/world.h"

#include <algorithm>

namespace sim {
std::vector<Command> Set::commands() const
{
    const Hold hold;
    return world().records.commands;
}

std::vector<std::string> Set::problems() const
{
    const Hold hold;
    return world().problems;
}

void Set::forget()
{
    const Hold hold;
    Records& records = world().records;
    records.commands.clear();
    records.log.clear();
    records.callbacks.clear();
    records.callbacksTaken = 0;
    records.signals.clear();
    records.netlinkRequests.clear();
}

testing::AssertionResult Set::ran(const std::string& command) const
{
    return ranInOrder({command});
}

testing::AssertionResult Set::ranInOrder(const std::vector<std::string>& expected) const
{
    const std::vector<Command> happened = commands();
    auto next = expected.begin();
    for (const Command& command : happened) {
        if (next != expected.end() && command.text == *next) {
            ++next;
        }
    }
    auto result = next == expected.end() ? testing::AssertionSuccess() : testing::AssertionFailure();
    if (next != expected.end()) {
        result << "\"" << *next << "\" was not run"
               << (next == expected.begin() ? "" : " after \"" + *(next - 1) + "\"");
    }
    result << "\ncommands:\n";
    for (const Command& command : happened) {
        result << "  \"" << command.text << "\" (" << command.status << ")\n";
    }
    return result;
}

testing::AssertionResult Set::logged(int level, const std::string& module, const std::string& function,
                                     const std::string& text) const
{
    const std::vector<LogLine> happened = log();
    const bool found = std::ranges::any_of(happened, [&](const LogLine& line) {
        return line.level == level && line.module == module && line.function == function && line.text == text;
    });
    auto result = found ? testing::AssertionSuccess() : testing::AssertionFailure();
    result << "log:\n";
    for (const LogLine& line : happened) {
        result << "  " << line << "\n";
    }
    return result;
}
} // namespace sim
