/** The simulated set's hostile local user, who plants what is not the product's where the product expects its file. */
#ifndef SIM_PLANTS_H
#define SIM_PLANTS_H

#include "sim/sim.h"

#include <string>

namespace sim {
enum class Plant {
    Link,         ///< A symbolic link to the victim.
    DanglingLink, ///< A symbolic link to the victim, which does not exist.
    HardLink,     ///< A second name of the victim.
    Fifo,         ///< A FIFO that nobody writes to.
    ForeignFifo,  ///< The same, another user's.
    ForeignFile,  ///< A regular file of another user.
};

/** A file of the product's own user, of which the hostile user wants to make use. */
inline constexpr const char* kVictim = "/etc/victim";

/** Puts a plant in the place of `path`; the victim or the foreign file gets the contents. */
void plant(Set& set, const std::string& path, Plant kind, const std::string& contents = "");

/** For the names of parameterised tests. */
std::string nameOf(Plant kind);
void PrintTo(Plant kind, std::ostream* out);
} // namespace sim

#endif
