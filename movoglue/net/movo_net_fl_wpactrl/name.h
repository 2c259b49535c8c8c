/** Networks' names as the supplicant writes them. */
#ifndef MOVO_NET_FL_WPACTRL_NAME_H
#define MOVO_NET_FL_WPACTRL_NAME_H

#include "movo_net_fl_wifi/ess.h"

#include <string_view>

namespace movonet {
/**
 * Replaces the escapes of replies and events by the bytes they stand for. A name with a malformed escape, or with a
 * control character, stays as it is.
 */
void decodeName(char* name);

/** Takes a name in hexadecimal digits, as the configuration has it; `name` keeps what it holds when they are none. */
void decodeHexName(std::string_view digits, char (&name)[MOVO_NET_ESSID_LENGTH + 1]);
} // namespace movonet

#endif
