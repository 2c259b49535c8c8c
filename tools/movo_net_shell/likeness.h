/** Which of some words a person may have meant. */
#ifndef MOVO_NET_SHELL_LIKENESS_H
#define MOVO_NET_SHELL_LIKENESS_H

#include <string>
#include <vector>

namespace shell {
/**
 * The word that is most like the text: the same but for capitals, the text and more, or with so few letters changed
 * that it may be a slip. Empty when none is.
 */
std::string closest(const std::string& text, const std::vector<std::string>& words);

/** "lo, eth0 and mlan0". */
std::string enumerated(const std::vector<std::string>& words, const char* last = " and ");
} // namespace shell

#endif
