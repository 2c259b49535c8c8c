/** The lines of earlier sessions: $XDG_STATE_HOME/movo_net_shell/history, or ~/.local/state in place of the first. */
#ifndef MOVO_NET_SHELL_HISTORY_H
#define MOVO_NET_SHELL_HISTORY_H

#include <string>
#include <vector>

namespace shell {
constexpr int kHistorySize = 200;

/** The newest lines, the oldest first; none where there is no file. A file that has become long is made short. */
std::vector<std::string> keptLines();

/** Adds a line to the file, which is the person's alone. A line with a key of a network is not kept. */
void keepLine(const std::string& line);

/** The line, without the key that it gives to a network. */
std::string withoutKey(const std::string& line);
} // namespace shell

#endif
