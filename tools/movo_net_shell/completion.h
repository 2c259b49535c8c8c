/** What the word at the cursor may become. */
#ifndef MOVO_NET_SHELL_COMPLETION_H
#define MOVO_NET_SHELL_COMPLETION_H

#include <string>
#include <string_view>
#include <vector>

namespace shell {
struct Completion {
    std::string begun;                   // the word that stands before the cursor, as far as it goes
    std::vector<std::string> candidates; // words that begin so
    bool inQuotes = false;
};

/** For the text from the line's beginning to the cursor. */
Completion completionOf(std::string_view beforeCursor);

/** The values of an argument that the glue has names for; none of any other. */
std::vector<std::string> namedValues(const std::string& parameter);

/** The beginning that all words share, in whole characters. */
std::string commonBeginning(const std::vector<std::string>& words);

/** What brings the word as far as all candidates agree, as it is typed; of a single one also the end of the word. */
std::string keysFor(const Completion& completion);
} // namespace shell

#endif
