#include "hints.h"

#include "completion.h"
#include "likeness.h"
#include "networks.h"
#include "text.h"

#include <algorithm>
#include <strings.h>

namespace shell {
namespace {
/** The second words of commands that begin with a word. */
std::vector<std::string> subCommands(const std::string& word)
{
    std::vector<std::string> seconds;
    for (const Command& command : allCommands()) {
        const std::string name = command.name;
        if (name.starts_with(word + " ")) {
            seconds.push_back(name.substr(word.size() + 1));
        }
    }
    return seconds;
}

std::vector<std::string> firstWords()
{
    std::vector<std::string> words = completionOf("").candidates;
    std::erase(words, "?");
    return words;
}

bool isOneOf(const std::string& word, const std::vector<std::string>& words)
{
    return std::ranges::any_of(words,
                               [&](const std::string& each) { return strcasecmp(each.c_str(), word.c_str()) == 0; });
}

/** The first word that is none of the values that its place has. */
std::string wrongValue(const std::vector<std::string>& parameters, Arguments arguments)
{
    for (std::size_t i = 0; i < std::min(parameters.size(), arguments.size()); i++) {
        const std::vector<std::string> values = namedValues(parameters[i]);
        if (!values.empty() && !isOneOf(arguments[i], values)) {
            return "; " + parameters[i] + " is " + enumerated(values, " or ");
        }
    }
    return "";
}

/** Words that are too many may be a name of the table without its quotes. */
std::string missingQuotes(const Command& command, Arguments arguments)
{
    std::string joined;
    const std::vector<std::string> names = networkNames();
    for (const std::string& word : arguments) {
        joined += (joined.empty() ? "" : " ") + word;
        if (joined != arguments[0] && std::ranges::find(names, joined) != names.end()) {
            return "; a name with blanks has quotes: " + std::string(command.name) + " " + asWord(joined);
        }
    }
    return "; a name with blanks has quotes, as in " + std::string(command.name) + " \"My Network\"";
}
} // namespace

std::string unknownCommand(Arguments words)
{
    const std::vector<std::string> seconds = subCommands(words[0]);
    if (!seconds.empty()) {
        const std::string whole = words.size() > 1 ? " " + words[1] : "";
        return "unknown command: " + printable(words[0] + whole) + "; after " + words[0] + " comes " +
               enumerated(seconds, " or ");
    }
    const std::string meant = closest(words[0], firstWords());
    return "unknown command: " + printable(words[0]) + "; " +
           (meant.empty() ? "help lists them" : "did you mean " + printable(meant) + "?");
}

std::string wrongArguments(const Command& command, Arguments arguments)
{
    const Parameters parameters = parametersOf(command);
    std::string hint;
    if (arguments.size() <= parameters.most) {
        hint = wrongValue(parameters.names, arguments);
    } else if (!parameters.names.empty() && parameters.names[0] == "NAME") {
        hint = missingQuotes(command, arguments);
    }
    return "usage: " + usageOf(command) + hint;
}
} // namespace shell
