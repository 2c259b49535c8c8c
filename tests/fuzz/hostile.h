/** Bytes that nobody would send: random ones, and good ones with a few of them changed. The same in every run. */
#ifndef FUZZ_HOSTILE_H
#define FUZZ_HOSTILE_H

#include <random>
#include <string>
#include <vector>

namespace fuzz {
class Hostile {
public:
    explicit Hostile(unsigned seed) : m_random(seed) {}

    /** 0 to `most`. */
    std::size_t upTo(std::size_t most) { return m_random() % (most + 1); }

    std::string bytes(std::size_t size)
    {
        std::string text(size, '\0');
        for (char& byte : text) {
            byte = static_cast<char>(m_random());
        }
        return text;
    }

    /** Changes a few bytes, some of them to what lengths and counts trip over. */
    std::string spoiled(std::string text)
    {
        static constexpr unsigned char kEdges[] = {0, 1, 3, 4, 7, 8, 0x7f, 0x80, 0xff};
        for (std::size_t count = upTo(4); count > 0 && !text.empty(); --count) {
            char& byte = text[upTo(text.size() - 1)];
            byte = static_cast<char>(upTo(1) == 0 ? kEdges[upTo(std::size(kEdges) - 1)] : m_random());
        }
        return upTo(3) == 0 ? text.substr(0, upTo(text.size())) : text;
    }

    /** Some of these words one after the other. */
    std::string words(const std::vector<std::string>& choice, std::size_t most)
    {
        std::string text;
        for (std::size_t count = upTo(most); count > 0; --count) {
            text += choice[upTo(choice.size() - 1)];
        }
        return text;
    }

private:
    std::minstd_rand m_random;
};
} // namespace fuzz

#endif
