/** Words of a command line, and values as people write them. */
#ifndef MOVO_NET_SHELL_TEXT_H
#define MOVO_NET_SHELL_TEXT_H

#include <chrono>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace shell {
/** What a line ends within. */
enum class LineEnd { Blank, Word, Quotes, Backslash, Comment };

/** The words of a line, the last one perhaps not finished. */
struct WordsRead {
    std::vector<std::string> words;
    LineEnd end;
};

/**
 * Splits a line at blanks. Double quotes keep blanks, a backslash keeps the next character, \xNN is a byte, a word that
 * begins with # ends the line.
 */
WordsRead readWords(std::string_view line);

/** The same of a finished line; nothing when a quote is not closed or a backslash stands last. */
std::optional<std::vector<std::string>> splitWords(std::string_view line);

std::optional<int> parseInt(const std::string& text);

/** Seconds, whole or with a fraction, from 0 to a year. */
std::optional<std::chrono::milliseconds> parseSeconds(const std::string& text);

/** A dotted quad, in network byte order. */
std::optional<unsigned> parseAddress(const std::string& text);

/** "on" or "off". */
std::optional<bool> parseSwitch(const std::string& text);

/** The time of day, to the second. */
std::string clockText(std::time_t time);

/** A dotted quad of an address in network byte order. */
std::string addressText(unsigned address);

/** The six lowest-addressed bytes, first octet first. */
std::string macText(long long address);

/** Text from outside that is safe on a terminal: bytes of control characters and of no character become \xNN. */
std::string printable(std::string_view text);

/** Text as a part of a word that is typed, within quotes or not. */
std::string typed(std::string_view text, bool inQuotes);

/** Text as one word of a line that is typed, in quotes if it needs them. */
std::string asWord(const std::string& text);

/** How wide a text is on a terminal. */
std::size_t shownColumns(std::string_view text);

/** The text, or as much of it as is that wide with an ellipsis at the end. */
std::string shortened(const std::string& text, std::size_t width);

/** Text with blanks after it, as wide as that on a terminal; a wider one with one blank. */
std::string padded(std::string text, std::size_t width);
} // namespace shell

#endif
