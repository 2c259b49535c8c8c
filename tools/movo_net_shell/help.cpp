#include "command.h"
#include "programs.h"
#include "text.h"

namespace shell {
namespace {
constexpr std::size_t kUsageWidth = 32;

constexpr std::size_t kIndent = 2 + kUsageWidth + 2;

std::string rowOf(const Screen& screen, const std::string& usage, const std::string& text)
{
    const std::string blanks(kIndent, ' ');
    const std::string begin = usage.size() > kUsageWidth ? usage + "\n" + blanks : padded(usage, kUsageWidth) + "  ";
    return "  " + begin + screen.wrapped(text, kIndent) + "\n";
}

/** The rows of one subject, or of all when it is empty; empty when there are none. */
std::string rowsOf(const Screen& screen, const std::string& subject)
{
    std::string rows;
    std::string shown;
    for (const Command& command : allCommands()) {
        if (!subject.empty() && subject != command.subject) {
            continue;
        }
        if (shown != command.subject) {
            shown = command.subject;
            rows += screen.styled(Style::Head, shown) + "\n";
        }
        rows += rowOf(screen, usageOf(command), command.help);
    }
    return rows;
}

void showCommand(Console& console, const Command& command)
{
    const std::string calls = command.calls;
    const Screen& screen = console.screen();
    console.print("%s\n  %s\n", usageOf(command).c_str(), screen.wrapped(command.help, 2).c_str());
    if (!calls.empty()) {
        console.print("  %s\n", screen.wrapped("calls " + calls, 4).c_str());
    }
}

/** Programs explain themselves. */
std::string rowsOfPrograms(const Screen& screen)
{
    const std::vector<std::string> names = programNames();
    std::string rows = names.empty() ? "" : screen.styled(Style::Head, "programs") + "\n";
    for (const std::string& name : names) {
        const ProgramHelp own = programHelp(name);
        std::string row = rowOf(screen, printable(own.usage), printable(own.text));
        row.erase(row.find_last_not_of(" \n") + 1);
        rows += row + "\n";
    }
    return rows;
}

void showProgram(Console& console, const std::string& name)
{
    const ProgramHelp own = programHelp(name);
    const std::string text = own.text.empty() ? "it says nothing of itself" : printable(own.text);
    console.print("%s\n  %s\n", printable(own.usage).c_str(), console.screen().wrapped(text, 2).c_str());
}
} // namespace

Outcome help(Console& console, Arguments arguments)
{
    if (arguments.empty()) {
        console.print("%s%s", rowsOf(console.screen(), "").c_str(), rowsOfPrograms(console.screen()).c_str());
        return Outcome::Done;
    }
    std::size_t length = 0;
    const Command* const command = findCommand(arguments, length);
    if (command != nullptr && length == arguments.size()) {
        showCommand(console, *command);
        return Outcome::Done;
    }
    if (command == nullptr && arguments.size() == 1 && isProgram(arguments[0])) {
        showProgram(console, arguments[0]);
        return Outcome::Done;
    }
    const std::string rows = arguments.size() == 1 ? rowsOf(console.screen(), arguments[0]) : "";
    if (!rows.empty()) {
        console.print("%s", rows.c_str());
        return Outcome::Done;
    }
    console.complain("no command and no subject: %s\n", printable(arguments[0]).c_str());
    return Outcome::BadArgument;
}
} // namespace shell
