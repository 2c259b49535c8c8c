/** Records of files: fields at fixed offsets, the same on every machine. */
#ifndef MOVO_NET_SUPPORT_IMAGE_H
#define MOVO_NET_SUPPORT_IMAGE_H

#include "support/atomic.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace movonet {
/** What reading does with a field: takes it from the file, or leaves it as it is. */
enum class OnLoad { Kept, Cleared };

/** Puts fields into a record; has the same calls as ImageReader, so that one list of fields serves both. */
class ImageWriter {
public:
    explicit ImageWriter(std::span<std::uint8_t> to) : m_to(to) {}

    template <std::size_t N>
    void text(std::size_t offset, const char (&field)[N], OnLoad /*onLoad*/ = OnLoad::Kept)
    {
        std::memcpy(m_to.data() + offset, field, N);
    }
    /** An integer of any size, lowest byte first. */
    template <typename Integer>
    void le(std::size_t offset, const Integer& field, OnLoad /*onLoad*/ = OnLoad::Kept)
    {
        const auto value = static_cast<std::uint64_t>(load(field));
        for (std::size_t byte = 0; byte < sizeof(field); ++byte) {
            m_to[offset + byte] = static_cast<std::uint8_t>(value >> (8 * byte));
        }
    }
    /** An address, in the order in which memory has it. */
    template <typename Address>
    void bytes(std::size_t offset, const Address& field, OnLoad /*onLoad*/ = OnLoad::Kept)
    {
        const Address value = load(field);
        std::memcpy(m_to.data() + offset, &value, sizeof(value));
    }

private:
    std::span<std::uint8_t> m_to;
};

/** Takes fields out of a record; a text always gets an end mark. */
class ImageReader {
public:
    explicit ImageReader(std::span<const std::uint8_t> from) : m_from(from) {}

    template <std::size_t N>
    void text(std::size_t offset, char (&field)[N], OnLoad onLoad = OnLoad::Kept)
    {
        if (onLoad == OnLoad::Kept) {
            std::memcpy(field, m_from.data() + offset, N);
            field[N - 1] = '\0';
        }
    }
    template <typename Integer>
    void le(std::size_t offset, Integer& field, OnLoad onLoad = OnLoad::Kept)
    {
        if (onLoad == OnLoad::Kept) {
            std::uint64_t value = 0;
            for (std::size_t byte = sizeof(field); byte > 0; --byte) {
                value = value << 8 | m_from[offset + byte - 1];
            }
            field = static_cast<Integer>(value);
        }
    }
    template <typename Address>
    void bytes(std::size_t offset, Address& field, OnLoad onLoad = OnLoad::Kept)
    {
        if (onLoad == OnLoad::Kept) {
            std::memcpy(&field, m_from.data() + offset, sizeof(field));
        }
    }

private:
    std::span<const std::uint8_t> m_from;
};
} // namespace movonet

#endif
