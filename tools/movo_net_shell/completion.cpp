#include "completion.h"

#include "command.h"
#include "glue.h"
#include "names.h"
#include "programs.h"
#include "text.h"

#include <algorithm>

namespace shell {
namespace {
using Words = std::vector<std::string>;

Words textsOf(std::span<const Name> names)
{
    Words texts;
    for (const Name& name : names) {
        texts.emplace_back(name.text);
    }
    return texts;
}

/** The words of the commands' and programs' names that may follow what stands there already. */
Words nameWords(const Words& before)
{
    Words words = before.empty() ? programNames() : Words{};
    for (const Command& command : allCommands()) {
        const Words name = *splitWords(command.name);
        if (name.size() > before.size() && std::equal(before.begin(), before.end(), name.begin())) {
            words.push_back(name[before.size()]);
        }
    }
    return words;
}

Words alternatives(const std::string& parameter)
{
    const std::size_t bar = parameter.find('|');
    return bar == std::string::npos ? Words{} : Words{parameter.substr(0, bar), parameter.substr(bar + 1)};
}

Words valuesFor(const std::string& parameter)
{
    if (parameter == "IFACE") {
        return interfaceNames();
    }
    if (parameter == "MODE") {
        return textsOf(modeNames());
    }
    if (parameter == "WAY") {
        return textsOf(wpsNames());
    }
    if (parameter == "WISH") {
        return textsOf(wishNames());
    }
    if (parameter == "REASON") {
        return textsOf(reasonNames());
    }
    if (parameter == "LEVEL") {
        return textsOf(levelNames());
    }
    return parameter == "COMMAND|SUBJECT" ? nameWords({}) : alternatives(parameter);
}

/** What may stand after the words before. */
Words following(const Words& before)
{
    Words words = nameWords(before);
    std::size_t length = 0;
    const Command* const command = findCommand(before, length);
    if (command != nullptr) {
        const Words parameters = parametersOf(*command).names;
        const std::size_t position = before.size() - length;
        if (position < parameters.size()) {
            const Words values = valuesFor(parameters[position]);
            words.insert(words.end(), values.begin(), values.end());
        }
    }
    return words;
}
} // namespace

Completion completionOf(std::string_view beforeCursor)
{
    const std::size_t start = beforeCursor.find_last_of(" \t") + 1; // npos + 1 is the line's beginning
    const auto before = splitWords(beforeCursor.substr(0, start));
    if (!before) {
        return {};
    }
    Completion completion = {std::string(beforeCursor.substr(start)), following(*before)};
    Words& words = completion.candidates;
    std::erase_if(words, [&](const std::string& word) { return !word.starts_with(completion.begun); });
    std::ranges::sort(words);
    words.erase(std::unique(words.begin(), words.end()), words.end());
    return completion;
}

std::string commonBeginning(const std::vector<std::string>& words)
{
    std::string common = words.empty() ? "" : words.front();
    for (const std::string& word : words) {
        const auto differing = std::ranges::mismatch(common, word).in1;
        common.erase(differing, common.end());
    }
    return common;
}
} // namespace shell
