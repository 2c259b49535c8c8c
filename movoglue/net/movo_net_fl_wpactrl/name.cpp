#include "movo_net_fl_wpactrl/name.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace movonet {
namespace {
/** The byte itself; 0 for a control character, which neither a command nor a screen can hold. */
char textOrZero(char byte)
{
    const auto code = static_cast<unsigned char>(byte);
    return code >= 0x20 && code != 0x7F ? byte : '\0';
}

/** The byte of two hexadecimal digits; 0 when they are none. One digit alone is the code of a control character. */
char byteOf(std::string_view digits)
{
    unsigned char byte = 0;
    const char* const end = digits.data() + digits.size();
    return std::from_chars(digits.data(), end, byte, 16).ptr == end ? static_cast<char>(byte) : '\0';
}

/** The byte of the escape that `text` begins with. The letters e, t, n and r stand for control characters. */
char escapedByte(std::string_view text)
{
    const char kind = text.size() > 1 ? text[1] : '\0';
    if (kind == 'x') {
        return byteOf(text.substr(2, 2));
    }
    return kind == '\\' || kind == '"' ? kind : '\0';
}

/** Takes one byte of the name from the front; 0 for what is malformed or no text. */
char takeByte(std::string_view& rest)
{
    const bool escaped = rest[0] == '\\';
    const std::size_t length = !escaped ? 1 : (rest.starts_with("\\x") ? 4 : 2);
    const char byte = textOrZero(escaped ? escapedByte(rest) : rest[0]);
    rest.remove_prefix(std::min(length, rest.size()));
    return byte;
}
} // namespace

void decodeName(char* name)
{
    for (std::string_view rest(name); !rest.empty();) {
        if (takeByte(rest) == '\0') {
            return;
        }
    }
    char* end = name;
    for (std::string_view rest(name); !rest.empty();) {
        *end++ = takeByte(rest); // never past what has been taken
    }
    *end = '\0';
}

void decodeHexName(std::string_view digits, char (&name)[MOVO_NET_ESSID_LENGTH + 1])
{
    char decoded[sizeof(name)] = {};
    const std::size_t length = (digits.size() + 1) / 2;
    if (length == 0 || length > MOVO_NET_ESSID_LENGTH) {
        return;
    }
    for (std::size_t index = 0; index < length; ++index) {
        decoded[index] = textOrZero(byteOf(digits.substr(2 * index, 2)));
        if (decoded[index] == '\0') {
            return;
        }
    }
    std::memcpy(name, decoded, sizeof(name));
}
} // namespace movonet
