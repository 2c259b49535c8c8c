/** Characters of UTF-8, whatever locale the system has; many a television has none. */
#ifndef MOVO_NET_SHELL_CHARACTERS_H
#define MOVO_NET_SHELL_CHARACTERS_H

#include <cstddef>
#include <string>
#include <string_view>

namespace shell {
/** A character at the beginning of a text, and of how many bytes it is. */
struct Character {
    static constexpr char32_t kBroken = 0xFFFFFFFF;     ///< The first byte begins no character.
    static constexpr char32_t kUnfinished = 0xFFFFFFFE; ///< The text ends within a character.

    char32_t code;
    std::size_t length; // 1 for what is no character

    bool isWhole() const { return code < kUnfinished; }
    /** It moves the cursor, commands the terminal or turns what follows around. */
    bool isControl() const;
    /** Places of a terminal that it takes, 0 to 2. */
    std::size_t columns() const;
};

/** The character that the text begins with; the text is not empty. */
Character firstCharacter(std::string_view text);

/** The text without its last bytes if they are a piece of a character. */
std::string_view wholeCharacters(std::string_view text);

std::wstring wide(std::string_view text);
std::string narrow(std::wstring_view text);
} // namespace shell

#endif
