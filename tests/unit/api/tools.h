/** What the tests of the public interface and IP calls share. */
#ifndef UNIT_API_TOOLS_H
#define UNIT_API_TOOLS_H

#include "movo_net.h"
#include "movo_net_fg/fg.h"
#include "sim/sim.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace api {
using Lines = std::vector<std::string>;

inline constexpr const char* kConfiguration = "/data/tv/save/netconfig";

/** A dotted quad in network byte order. */
std::uint32_t address(const char* dottedQuad);

/** All that the module said since the start or the last `forget`, like "ERROR Movo_NET_SetWol: no\n". */
Lines said(const sim::Set& set);
/** The same of one function, without its name. */
Lines said(const sim::Set& set, const std::string& function);

/** The glue as the calls see it, running, with the interfaces that the test adds; nothing else happens by itself. */
class Layer {
public:
    Layer();

    /** An interface that is wanted and up, its back end ready; everything that was said and run is forgotten. */
    MovoNetIface_t& add(const std::string& name, MovoNetIfaceType_e type = _MOVO_NET_IFACE_ETHER_);

    sim::Set set;
};

/** A television that runs, the cable of eth0 in and its lease there. */
class Television {
public:
    Television();

    MovoNetIface_t& eth0() const { return *FindInterface("eth0"); }

    sim::Set set;
};
} // namespace api

#endif
