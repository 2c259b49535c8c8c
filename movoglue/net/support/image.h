/** Records of files: fields at fixed offsets, lowest byte first, whatever the machine. */
#ifndef MOVO_NET_SUPPORT_IMAGE_H
#define MOVO_NET_SUPPORT_IMAGE_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace movonet {
/** Puts fields into a record; has the same calls as ImageReader, so that one list of fields serves both. */
class ImageWriter {
public:
    explicit ImageWriter(std::span<std::uint8_t> to) : m_to(to) {}

    template <std::size_t N>
    void text(std::size_t offset, const char (&field)[N])
    {
        std::memcpy(m_to.data() + offset, field, N);
    }
    template <typename Integer>
    void le(std::size_t offset, const Integer& field)
    {
        const auto value = static_cast<std::uint64_t>(field);
        for (std::size_t byte = 0; byte < sizeof(field); ++byte) {
            m_to[offset + byte] = static_cast<std::uint8_t>(value >> (8 * byte));
        }
    }

private:
    std::span<std::uint8_t> m_to;
};

/** Takes fields out of a record; a text always gets an end mark. */
class ImageReader {
public:
    explicit ImageReader(std::span<const std::uint8_t> from) : m_from(from) {}

    template <std::size_t N>
    void text(std::size_t offset, char (&field)[N])
    {
        std::memcpy(field, m_from.data() + offset, N);
        field[N - 1] = '\0';
    }
    template <typename Integer>
    void le(std::size_t offset, Integer& field)
    {
        std::uint64_t value = 0;
        for (std::size_t byte = sizeof(field); byte > 0; --byte) {
            value = value << 8 | m_from[offset + byte - 1];
        }
        field = static_cast<Integer>(value);
    }

private:
    std::span<const std::uint8_t> m_from;
};
} // namespace movonet

#endif
