// Keys of Wi-Fi networks in lines of the log.
#pragma once

#include <cstddef>

namespace kest {

/**
 * Puts "***" in the place of each key: of what follows `psk "`, `wep_key0 ` and `key-"`.
 *
 * A key may hold any character, so that it ends before the last quote or bracket of the line, or with the line.
 *
 * @param[in,out] text    The line, without a terminator.
 * @param[in]     length  Bytes of the line.
 * @param[in]     room    Bytes that it may grow to.
 *
 * @return The new length.
 */
std::size_t maskKeys(char* text, std::size_t length, std::size_t room);

} // namespace kest
