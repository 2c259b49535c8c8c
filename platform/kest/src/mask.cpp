#include "mask.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace kest {
namespace {

struct Marker {
    std::string_view before;
    char after;
};
constexpr Marker kMarkers[] = {{"psk \"", '"'}, {"wep_key0 ", ']'}, {"key-\"", '"'}};
constexpr std::string_view kMask = "***";

/** Replaces text[from, to); what does not fit any more is cut. */
std::size_t replaceByMask(char* text, std::size_t length, std::size_t room, std::size_t from, std::size_t to)
{
    const std::size_t masked = std::min(kMask.size(), room - from);
    const std::size_t kept = std::min(length - to, room - from - masked);
    std::memmove(text + from + masked, text + to, kept);
    std::memcpy(text + from, kMask.data(), masked);
    return from + masked + kept;
}

} // namespace

std::size_t maskKeys(char* text, std::size_t length, std::size_t room)
{
    for (const Marker& marker : kMarkers) {
        const std::string_view line(text, length);
        const std::size_t found = line.find(marker.before);
        if (found == std::string_view::npos) {
            continue;
        }
        const std::size_t from = found + marker.before.size();
        const std::size_t last = line.rfind(marker.after);
        const std::size_t to = last != std::string_view::npos && last >= from ? last : length;
        length = replaceByMask(text, length, room, from, to);
    }
    return length;
}

} // namespace kest
