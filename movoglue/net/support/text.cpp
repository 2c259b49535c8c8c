#include "support/text.h"

#include <arpa/inet.h>
#include <cstdlib>

namespace movonet {
HeapText::HeapText(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    if (vasprintf(&m_text, format, arguments) < 0) {
        m_text = nullptr;
    }
    va_end(arguments);
}

HeapText::~HeapText()
{
    std::free(m_text);
}

void copyPadded(char* to, const char* from, std::size_t room)
{
    const std::size_t length = strnlen(from, room);
    std::memcpy(to, from, length);
    std::memset(to + length, 0, room - length);
}

std::array<int, 4> octets(std::uint32_t address)
{
    std::array<std::uint8_t, 4> bytes{};
    std::memcpy(bytes.data(), &address, bytes.size());
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

DottedQuad::DottedQuad(std::uint32_t address) : text{}
{
    (void)inet_ntop(AF_INET, &address, text, sizeof(text));
}

bool parseDottedQuad(const char* text, std::uint32_t& address)
{
    in_addr parsed{};
    if (inet_pton(AF_INET, text, &parsed) != 1) {
        return false;
    }
    address = parsed.s_addr;
    return true;
}
} // namespace movonet
