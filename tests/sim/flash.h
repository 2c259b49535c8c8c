/** The flash under one folder of the set: what a power cut leaves of what the product wrote. */
#ifndef SIM_FLASH_H
#define SIM_FLASH_H

#include "sim/faults.h"
#include "sim/sim.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace sim {
/** Contents by file name. */
using Folder = std::map<std::string, std::string>;

/**
 * Follows the product's file calls in a folder of the set for as long as it lives; one at a time.
 *
 * Contents are on the flash when they were written to a file opened for synchronous writes, or after fsync or sync;
 * other contents may be or not, file by file. Creations, renames and removals are on the flash after sync; before, the
 * first so many of them may be, in their order. A write or rename is on the flash as a whole or not at all.
 */
class Flash {
public:
    /** All that `folder` holds now is on the flash. */
    explicit Flash(const Set& set, std::string folder);
    ~Flash();
    Flash(const Flash&) = delete;
    Flash& operator=(const Flash&) = delete;

    /** The product's calls in the folder, and sync, that did what they should; like "write netconfig.tmp". */
    std::vector<std::string> calls() const;

    /** Everything that the folder may hold after the power was cut right after so many of the calls. */
    std::set<Folder> leftAfter(std::size_t calls) const;

private:
    friend void noteFileCall(Call call, int fd, const std::string& path, const std::string& to);
    void note(Call call, int fd, const std::string& path, const std::string& to);
    bool isInside(const std::string& path) const;
    std::string nameOf(const std::string& path) const;

    struct Inode {
        std::string written;
        std::string stored;
    };
    using Names = std::map<std::string, std::size_t>;
    /** After one call: the names on the flash, then those after each unstored creation, renaming and removal. */
    struct State {
        std::vector<Names> names;
        std::vector<Inode> inodes;
    };

    void opened(State& state, int fd, const std::string& name);
    void renamed(State& state, const std::string& from, const std::string& to);

    std::string m_folder;
    std::vector<std::string> m_calls;
    std::vector<State> m_states;
    std::map<int, std::size_t> m_open;
};

/** For the set's own sources: a file call of the product that has succeeded. */
void noteFileCall(Call call, int fd, const std::string& path, const std::string& to = {});
} // namespace sim

#endif
