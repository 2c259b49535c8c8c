/** What the tests of the configuration file share. */
#ifndef UNIT_NETCONFIG_TOOLS_H
#define UNIT_NETCONFIG_TOOLS_H

#include "movo_net_fg/fg.h"
#include "sim/sim.h"

#include <array>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <vector>

namespace netconfig {
using Lines = std::vector<std::string>;

inline constexpr const char* kFolder = "/data/tv/save";
inline constexpr const char* kFile = "/data/tv/save/netconfig";
inline constexpr const char* kTemporary = "/data/tv/save/netconfig.tmp";
inline constexpr std::size_t kRecord = 264;

/** The bytes that a file of tests/golden stands for. */
std::string golden(const std::string& name);

/** A file of these records with the right check value before them. */
std::string fileOf(const std::string& records);

/** What of an interface outlasts a restart: name, type, mode, the five static addresses, the two retry fields. */
struct Settings {
    std::string name;
    int type = 0;
    int mode = 0;
    std::array<std::string, 5> addresses = {"0.0.0.0", "0.0.0.0", "0.0.0.0", "0.0.0.0", "0.0.0.0"};
    int lost = 0;
    int timer = 0;

    auto operator<=>(const Settings&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Settings& settings);
using Configuration = std::vector<Settings>;

Configuration reversed(Configuration configuration);

/** The interface list, in its order. */
Configuration listed();
/** The records of the interface list, in its order. */
std::vector<MovoNetIface_t*> records();

/** Those of the golden files, in the order of the file. */
Configuration goldenConfiguration(int records);

/** Puts a record into the interface list. It lives as long as the process. */
MovoNetIface_t& list(const MovoNetIface_t& record);
/** The same, of a record that has just these settings. */
MovoNetIface_t& list(const Settings& settings);
/** Takes all records off the list. */
void clearList();

/** What a function of the module said, like "ERROR no\n". */
Lines said(const sim::Set& set, const std::string& function);
} // namespace netconfig

#endif
