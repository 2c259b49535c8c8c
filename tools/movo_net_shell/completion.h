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
};

/** For the text from the line's beginning to the cursor. */
Completion completionOf(std::string_view beforeCursor);

/** The beginning that all words share. */
std::string commonBeginning(const std::vector<std::string>& words);
} // namespace shell

#endif
