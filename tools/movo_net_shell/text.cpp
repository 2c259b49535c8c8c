#include "text.h"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <cstdio>
#include <cstring>

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
} // namespace

std::optional<std::vector<std::string>> splitWords(std::string_view line)
{
    std::vector<std::string> words;
    bool inWord = false;
    bool inQuotes = false;
    for (std::size_t i = 0; i < line.size(); i++) {
        const char c = line[i];
        if (!inQuotes && (isBlank(c) || (c == '#' && !inWord))) {
            if (c == '#') {
                break;
            }
            inWord = false;
            continue;
        }
        if (!inWord) {
            words.emplace_back();
            inWord = true;
        }
        if (c == '"') {
            inQuotes = !inQuotes;
        } else if (c != '\\') {
            words.back() += c;
        } else if (++i < line.size()) {
            words.back() += line[i];
        } else {
            return std::nullopt;
        }
    }
    if (inQuotes) {
        return std::nullopt;
    }
    return words;
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

std::string padded(std::string text, std::size_t width)
{
    const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }; // within a character
    const auto shown = text.size() - static_cast<std::size_t>(std::ranges::count_if(text, continues));
    return text.append(shown < width ? width - shown : 1, ' ');
}

std::string printable(std::string_view text)
{
    std::string safe;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            safe += c;
            continue;
        }
        char code[sizeof("\\x00")];
        (void)std::snprintf(code, sizeof(code), "\\x%02x", byte);
        safe += code;
    }
    return safe;
}
} // namespace shell
