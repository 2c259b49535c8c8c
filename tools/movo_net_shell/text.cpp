#include "text.h"

#include "characters.h"

#include <arpa/inet.h>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <utility>

namespace shell {
namespace {
constexpr double kLongestSeconds = 365.0 * 24 * 3600;

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

/** The number that the whole text is. */
template <typename Number>
std::optional<Number> parseNumber(const std::string& text)
{
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc{} || stop != end) {
        return std::nullopt;
    }
    return number;
}

/** Takes what a backslash keeps: a byte of two hexadecimal digits or the next character. Returns its length. */
std::size_t takeEscaped(std::string_view rest, std::string& word)
{
    unsigned char byte = 0;
    const char* const digits = rest.data() + 1;
    if (rest.size() > 2 && rest[0] == 'x' && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2 &&
        byte != 0) {
        word += static_cast<char>(byte);
        return 3;
    }
    word += rest[0];
    return 1;
}

/** Takes one character from the front of the text, as it is shown. */
std::string shownCharacter(std::string_view& text)
{
    const Character first = firstCharacter(text);
    const std::string_view bytes = text.substr(0, first.length);
    text.remove_prefix(first.length);
    if (first.isWhole() && !first.isControl()) {
        return std::string(bytes);
    }
    std::string codes;
    for (const char byte : bytes) {
        char code[sizeof("\\x00")];
        (void)std::snprintf(code, sizeof(code), "\\x%02x", static_cast<unsigned char>(byte));
        codes += code;
    }
    return codes;
}
} // namespace

WordsRead readWords(std::string_view line)
{
    WordsRead read = {{}, LineEnd::Blank};
    for (std::size_t i = 0; i < line.size(); i++) {
        const char c = line[i];
        if (read.end != LineEnd::Quotes && isBlank(c)) {
            read.end = LineEnd::Blank;
            continue;
        }
        if (read.end == LineEnd::Blank) {
            if (c == '#') {
                read.end = LineEnd::Comment;
                break;
            }
            read.words.emplace_back();
            read.end = LineEnd::Word;
        }
        if (c == '"') {
            read.end = read.end == LineEnd::Quotes ? LineEnd::Word : LineEnd::Quotes;
        } else if (c != '\\') {
            read.words.back() += c;
        } else if (i + 1 < line.size()) {
            i += takeEscaped(line.substr(i + 1), read.words.back());
        } else {
            read.end = LineEnd::Backslash;
        }
    }
    return read;
}

std::optional<std::vector<std::string>> splitWords(std::string_view line)
{
    WordsRead read = readWords(line);
    if (read.end == LineEnd::Quotes || read.end == LineEnd::Backslash) {
        return std::nullopt;
    }
    return std::move(read.words);
}

std::optional<int> parseInt(const std::string& text)
{
    return parseNumber<int>(text);
}

std::optional<std::chrono::milliseconds> parseSeconds(const std::string& text)
{
    const auto seconds = parseNumber<double>(text);
    if (!seconds || !(*seconds >= 0 && *seconds <= kLongestSeconds)) {
        return std::nullopt;
    }
    return std::chrono::milliseconds(static_cast<long long>(*seconds * 1000));
}

std::optional<unsigned> parseAddress(const std::string& text)
{
    in_addr address{};
    if (inet_pton(AF_INET, text.c_str(), &address) != 1) {
        return std::nullopt;
    }
    return address.s_addr;
}

std::optional<bool> parseSwitch(const std::string& text)
{
    if (text != "on" && text != "off") {
        return std::nullopt;
    }
    return text == "on";
}

std::string clockText(std::time_t time)
{
    std::tm parts = {};
    char text[sizeof("00:00:00")] = "";
    (void)localtime_r(&time, &parts);
    (void)std::strftime(text, sizeof(text), "%H:%M:%S", &parts);
    return text;
}

std::string addressText(unsigned address)
{
    char text[INET_ADDRSTRLEN] = "";
    const in_addr binary{address};
    (void)inet_ntop(AF_INET, &binary, text, sizeof(text));
    return text;
}

std::string macText(long long address)
{
    unsigned char octets[sizeof(address)];
    std::memcpy(octets, &address, sizeof(octets));
    char text[sizeof("00:00:00:00:00:00")];
    (void)std::snprintf(text, sizeof(text), "%02x:%02x:%02x:%02x:%02x:%02x", octets[0], octets[1], octets[2], octets[3],
                        octets[4], octets[5]);
    return text;
}

std::size_t shownColumns(std::string_view text)
{
    std::size_t shown = 0;
    while (!text.empty()) {
        const Character first = firstCharacter(text);
        shown += first.columns();
        text.remove_prefix(first.length);
    }
    return shown;
}

std::string shortened(const std::string& text, std::size_t width)
{
    if (shownColumns(text) <= width) {
        return text;
    }
    std::size_t shown = 1; // the ellipsis
    std::size_t at = 0;
    while (at < text.size()) {
        const Character each = firstCharacter(std::string_view(text).substr(at));
        if (shown + each.columns() > width) {
            break;
        }
        shown += each.columns();
        at += each.length;
    }
    return text.substr(0, at) + "…";
}

std::string padded(std::string text, std::size_t width)
{
    const std::size_t shown = shownColumns(text);
    return text.append(shown < width ? width - shown : 1, ' ');
}

std::string printable(std::string_view text)
{
    std::string safe;
    while (!text.empty()) {
        safe += shownCharacter(text);
    }
    return safe;
}

std::string asWord(const std::string& text)
{
    return !text.empty() && typed(text, false) == text ? text : "\"" + typed(text, true) + "\"";
}

std::string typed(std::string_view text, bool inQuotes)
{
    const std::string_view special = inQuotes ? "\"\\" : "\"\\ #";
    std::string keys;
    while (!text.empty()) {
        if (special.find(text[0]) != std::string_view::npos) {
            keys += '\\';
        }
        keys += shownCharacter(text);
    }
    return keys;
}
} // namespace shell
