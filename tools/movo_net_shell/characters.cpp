#include "characters.h"

#include <algorithm>
#include <clocale>
#include <cwchar>
#include <locale.h>

namespace shell {
namespace {
struct Range {
    char32_t first;
    char32_t last;
};

template <std::size_t N>
bool isIn(const Range (&ranges)[N], char32_t code)
{
    return std::ranges::any_of(ranges,
                               [code](const Range& range) { return code >= range.first && code <= range.last; });
}

/** As the C library knows it, if the system has a locale for that; else -1. */
int knownColumns(char32_t code)
{
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    const locale_t before = uselocale(utf8);
    const int columns = wcwidth(static_cast<wchar_t>(code));
    (void)uselocale(before);
    return columns;
}

bool continues(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/** Bytes of a character that begins so; 0 when none does. */
std::size_t lengthFrom(unsigned char lead)
{
    if (lead < 0x80) {
        return 1;
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return 0;
    }
    return lead >= 0xF0 ? 4 : (lead >= 0xE0 ? 3 : 2);
}

/** Not written with more bytes than needed, no half of a pair, not beyond the last one. */
bool isRight(char32_t code, std::size_t length)
{
    static constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    return code >= kLeast[length] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}
} // namespace

bool Character::isControl() const
{
    static constexpr Range kControls[] = {{0x00, 0x1F}, {0x7F, 0x9F}, {0x2028, 0x202E}, {0x2066, 0x2069}};
    return isIn(kControls, code);
}

std::size_t Character::columns() const
{
    static constexpr Range kWide[] = {{0x1100, 0x115F},   {0x2E80, 0xA4CF},   {0xAC00, 0xD7A3},
                                      {0xF900, 0xFAFF},   {0xFF01, 0xFF60},   {0x1F300, 0x1F64F},
                                      {0x1F680, 0x1F6FF}, {0x1F900, 0x1FAFF}, {0x20000, 0x3FFFD}};
    const int known = knownColumns(code);
    if (known >= 0) {
        return static_cast<std::size_t>(known);
    }
    return isIn(kWide, code) ? 2 : 1;
}

Character firstCharacter(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lengthFrom(lead);
    if (length <= 1) {
        return {length == 1 ? lead : Character::kBroken, 1};
    }
    char32_t code = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; i++) {
        if (i == text.size()) {
            return {Character::kUnfinished, 1};
        }
        if (!continues(text[i])) {
            return {Character::kBroken, 1};
        }
        code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    return isRight(code, length) ? Character{code, length} : Character{Character::kBroken, 1};
}

std::string_view wholeCharacters(std::string_view text)
{
    for (std::size_t at = 0; at < text.size(); at += firstCharacter(text.substr(at)).length) {
        if (firstCharacter(text.substr(at)).code == Character::kUnfinished) {
            return text.substr(0, at);
        }
    }
    return text;
}

std::wstring wide(std::string_view text)
{
    std::wstring characters;
    while (!text.empty()) {
        const Character first = firstCharacter(text);
        characters += first.isWhole() ? static_cast<wchar_t>(first.code) : L'\uFFFD';
        text.remove_prefix(first.length);
    }
    return characters;
}

std::string narrow(std::wstring_view text)
{
    std::string bytes;
    for (const wchar_t each : text) {
        const auto code = static_cast<char32_t>(each);
        if (code < 0x80) {
            bytes += static_cast<char>(code);
            continue;
        }
        const int more = code < 0x800 ? 1 : (code < 0x10000 ? 2 : 3);
        bytes += static_cast<char>((0xFF00U >> (more + 1) & 0xFFU) | code >> 6 * more);
        for (int i = more - 1; i >= 0; i--) {
            bytes += static_cast<char>(0x80U | (code >> 6 * i & 0x3FU));
        }
    }
    return bytes;
}
} // namespace shell
