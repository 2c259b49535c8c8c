#include "completion.h"

#include "characters.h"
#include "command.h"
#include "glue.h"
#include "names.h"
#include "networks.h"
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

/** Arguments that have named values. */
struct Named {
    const char* parameter;
    std::span<const Name> (*values)();
};
constexpr Named kNamed[] = {
    {"MODE", modeNames}, {"WAY", wpsNames}, {"WISH", wishNames}, {"REASON", reasonNames}, {"LEVEL", levelNames}};

Words valuesFor(const std::string& parameter)
{
    if (parameter == "IFACE") {
        return interfaceNames();
    }
    if (parameter == "NAME") {
        return networkNames();
    }
    if (parameter == "COMMAND|SUBJECT") {
        return nameWords({});
    }
    const Words values = namedValues(parameter);
    return values.empty() ? alternatives(parameter) : values;
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

std::vector<std::string> namedValues(const std::string& parameter)
{
    for (const auto& [name, values] : kNamed) {
        if (parameter == name) {
            return textsOf(values());
        }
    }
    return {};
}

Completion completionOf(std::string_view beforeCursor)
{
    auto [before, end] = readWords(beforeCursor);
    if (end == LineEnd::Backslash || end == LineEnd::Comment) {
        return {};
    }
    Completion completion = {"", {}, end == LineEnd::Quotes};
    if (end != LineEnd::Blank) {
        completion.begun = before.back();
        before.pop_back();
    }
    Words& words = completion.candidates;
    words = following(before);
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
    return words.size() == 1 ? common : std::string(wholeCharacters(common));
}

std::string keysFor(const Completion& completion)
{
    const std::string common = commonBeginning(completion.candidates);
    std::string keys = typed(common.substr(std::min(common.size(), completion.begun.size())), completion.inQuotes);
    if (completion.candidates.size() == 1) {
        keys += completion.inQuotes ? "\" " : " ";
    }
    return keys;
}
} // namespace shell
