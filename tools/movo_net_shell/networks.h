/** The wireless interface that commands are for, and what the glue tells of its networks. */
#ifndef MOVO_NET_SHELL_NETWORKS_H
#define MOVO_NET_SHELL_NETWORKS_H

#include "command.h"

#include <string>
#include <vector>

namespace shell {
/** The interface that `wifi use` has chosen, else the first wireless one; empty when there is none. */
std::string wifiName();

/** Chooses it; an empty name goes back to the first wireless one. */
void chooseWifi(const std::string& ifname);

/** The name of the joined network; empty when there is none. */
std::string joinedName(const char* ifname);

/** The names of the table, as they come. */
std::vector<std::string> tableNames(const std::string& ifname);

/** The networks of the table; none, without a word in the log, where they cannot be read. */
std::vector<std::string> networkNames();

/** A fact of a network: its name in `wifi info`, and its column in `wifi list`. */
struct Fact {
    static constexpr int kAlways = 100; ///< The column stays however narrow the terminal is.
    static constexpr int kMarked = 101; ///< On a terminal a mark stands for the column.

    const char* label;
    std::size_t width; // of the column in a file or a pipe; 0: there is none
    int importance;    // on a narrow terminal the column of the lowest goes first
    std::string (*value)(const char* ifname, const char* essid);
    bool isSignal = false;
};
std::span<const Fact> networkFacts();

/** `wifi list`, `wifi info NAME` and `wifi status`. */
Outcome listNetworks(Console& console, Arguments arguments);
Outcome showNetwork(Console& console, Arguments arguments);
Outcome showConnection(Console& console, Arguments arguments);
} // namespace shell

#endif
