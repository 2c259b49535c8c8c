#include "command.h"

#include <limits>

namespace shell {
namespace {
std::vector<std::string> wordsOf(const std::string& text)
{
    std::vector<std::string> words;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return words;
}
} // namespace

const std::vector<Command>& allCommands()
{
    static const std::vector<Command> commands = [] {
        std::vector<Command> all;
        for (const auto part : {scriptCommands(), glueCommands(), statusCommands(), ifaceCommands(), ipCommands(),
                                wifiCommands(), apCommands()}) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }();
    return commands;
}

const Command* findCommand(std::span<const std::string> words, std::size_t& length)
{
    for (length = std::min<std::size_t>(words.size(), 2); length > 0; length--) {
        const std::string name = length == 2 ? words[0] + " " + words[1] : words[0];
        for (const Command& command : allCommands()) {
            if (name == command.name) {
                return &command;
            }
        }
    }
    return nullptr;
}

Parameters parametersOf(const Command& command)
{
    Parameters parameters;
    bool optional = false;
    for (std::string word : wordsOf(command.arguments)) {
        optional = optional || word.front() == '[';
        std::erase_if(word, [](char c) { return c == '[' || c == ']'; });
        parameters.least += optional ? 0 : 1;
        parameters.most++;
        if (word.ends_with("...")) {
            word.resize(word.size() - 3);
            parameters.most = std::numeric_limits<std::size_t>::max();
        }
        parameters.names.push_back(word);
    }
    return parameters;
}

std::string usageOf(const Command& command)
{
    const std::string name = command.name;
    return command.arguments[0] == '\0' ? name : name + " " + command.arguments;
}
} // namespace shell
