/** Bounded texts and the text forms of IPv4 addresses. */
#ifndef MOVO_NET_SUPPORT_TEXT_H
#define MOVO_NET_SUPPORT_TEXT_H

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace movonet {
/** A formatted text of at most N - 1 characters; what does not fit is cut, `fits` tells. */
template <std::size_t N>
class FixedText {
public:
    __attribute__((format(printf, 2, 3))) explicit FixedText(const char* format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        const int length = std::vsnprintf(m_text, N, format, arguments);
        va_end(arguments);
        m_fits = length >= 0 && static_cast<std::size_t>(length) < N;
    }

    const char* c_str() const { return m_text; }
    bool fits() const { return m_fits; }

private:
    char m_text[N] = {};
    bool m_fits = false;
};

/** A formatted text of any length, for what the environment makes longer than anyone foresaw. Empty without memory. */
class HeapText {
public:
    __attribute__((format(printf, 2, 3))) explicit HeapText(const char* format, ...);
    HeapText(const HeapText&) = delete;
    HeapText& operator=(const HeapText&) = delete;
    ~HeapText();

    const char* c_str() const { return m_text != nullptr ? m_text : ""; }

private:
    char* m_text = nullptr;
};

/** Copies as much of `from` as fits and ends it; the rest of `to` is zero. */
template <std::size_t N>
void copyText(char (&to)[N], const char* from)
{
    const std::size_t length = std::min(std::strlen(from), N - 1);
    std::memcpy(to, from, length);
    std::memset(to + length, 0, N - length);
}

/** Copies `from` up to its end, at most `room` bytes, and fills the rest of the `room` bytes with zeros; adds no end
 * mark. */
void copyPadded(char* to, const char* from, std::size_t room);

/** The four octets of an address in network byte order, first octet first. */
std::array<int, 4> octets(std::uint32_t address);

/** An address in network byte order as a dotted quad. */
struct DottedQuad {
    explicit DottedQuad(std::uint32_t address);
    const char* c_str() const { return text; }
    char text[16];
};

/** Reads exactly four decimal parts; false for anything else, `address` is then untouched. */
bool parseDottedQuad(const char* text, std::uint32_t& address);
} // namespace movonet

#endif
