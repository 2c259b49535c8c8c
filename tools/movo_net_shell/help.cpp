#include "command.h"
#include "programs.h"
#include "text.h"

namespace shell {
namespace {
constexpr int kUsageWidth = 32;

void showRow(Console& console, const Command& command)
{
    const std::string usage = usageOf(command);
    if (usage.size() > kUsageWidth) {
        console.print("  %s\n  %-*s  %s\n", usage.c_str(), kUsageWidth, "", command.help);
        return;
    }
    console.print("  %-*s  %s\n", kUsageWidth, usage.c_str(), command.help);
}

/** The rows of one subject, or of all when it is empty; false when there are none. */
bool showSubject(Console& console, const std::string& subject)
{
    std::string shown;
    for (const Command& command : allCommands()) {
        if (!subject.empty() && subject != command.subject) {
            continue;
        }
        if (shown != command.subject) {
            shown = command.subject;
            console.print("%s\n", command.subject);
        }
        showRow(console, command);
    }
    return !shown.empty();
}

void showCommand(Console& console, const Command& command)
{
    console.print("%s\n  %s\n", usageOf(command).c_str(), command.help);
    if (command.calls[0] != '\0') {
        console.print("  calls %s\n", command.calls);
    }
}
/** Programs explain themselves. */
void showPrograms(Console& console)
{
    const std::vector<std::string> names = programNames();
    if (!names.empty()) {
        console.print("programs\n");
    }
    for (const std::string& name : names) {
        console.print("  %s\n", printable(name).c_str());
    }
}
} // namespace

Outcome help(Console& console, Arguments arguments)
{
    if (arguments.empty()) {
        (void)showSubject(console, "");
        showPrograms(console);
        return Outcome::Done;
    }
    std::size_t length = 0;
    const Command* const command = findCommand(arguments, length);
    if (command != nullptr && length == arguments.size()) {
        showCommand(console, *command);
        return Outcome::Done;
    }
    if (arguments.size() == 1 && showSubject(console, arguments[0])) {
        return Outcome::Done;
    }
    console.complain("no command and no subject: %s\n", printable(arguments[0]).c_str());
    return Outcome::BadArgument;
}
} // namespace shell
