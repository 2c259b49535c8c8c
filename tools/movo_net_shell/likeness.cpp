#include "likeness.h"

#include "text.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace shell {
namespace {
constexpr std::size_t kLettersPerSlip = 3;

/** Letters of ASCII only: other bytes stay as they are. */
std::string lower(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

/** How many letters have to be added, taken away, changed or swapped with the next. */
std::size_t distance(const std::string& from, const std::string& to)
{
    std::vector<std::size_t> before(to.size() + 1);
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); i++) {
        std::vector<std::size_t> next(to.size() + 1, i);
        for (std::size_t j = 1; j <= to.size(); j++) {
            const bool same = from[i - 1] == to[j - 1];
            next[j] = std::min({row[j - 1] + (same ? 0 : 1), next[j - 1] + 1, row[j] + 1});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                next[j] = std::min(next[j], before[j - 2] + 1);
            }
        }
        before = std::exchange(row, std::move(next));
    }
    return row.back();
}

/** 0 is best. */
std::size_t difference(const std::string& text, const std::string& word)
{
    return word.starts_with(text) && !text.empty() ? 0 : distance(text, word);
}
} // namespace

std::string closest(const std::string& text, const std::vector<std::string>& words)
{
    std::string best;
    std::size_t least = text.size() / kLettersPerSlip + 1; // as different as that is too much
    for (const std::string& word : words) {
        const std::size_t differs = difference(lower(text), lower(word));
        if (differs < least) {
            least = differs;
            best = word;
        }
    }
    return best;
}

std::string enumerated(const std::vector<std::string>& words, const char* last)
{
    std::string text;
    for (std::size_t i = 0; i < words.size(); i++) {
        text += i == 0 ? "" : (i + 1 < words.size() ? ", " : last);
        text += printable(words[i]);
    }
    return text;
}
} // namespace shell
