/** What the set's network cards were told through ethtool. */
#ifndef SIM_ETHTOOL_H
#define SIM_ETHTOOL_H

#include <cstdint>
#include <string>

namespace sim {
/** The events that wake the set, as WAKE_ bits; 0 until the product says otherwise. */
std::uint32_t wakeEvents(const std::string& ifname);

/** For the set's own sources: answers an ethtool request, 0 or an errno. The world is held. */
int answerEthtool(const std::string& ifname, const void* request);
} // namespace sim

#endif
