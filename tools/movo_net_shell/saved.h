/** Whether the glue's files are written: its calls succeed all the same. */
#ifndef MOVO_NET_SHELL_SAVED_H
#define MOVO_NET_SHELL_SAVED_H

#include "console.h"

#include <string>
#include <sys/stat.h>

namespace shell {
/** The files of the glue that outlive it. */
constexpr const char* kSettings = "netconfig";
constexpr const char* kNetworks = "saved_esss";

/** Names the folder of the files; until then, and with NULL, nobody looks. */
void setSavedFolder(const char* folder);

/** A file as it is before a call that writes it anew. */
class SavedFile {
public:
    explicit SavedFile(const char* name);
    /** Warns if it is still the one of before. */
    void warnUnlessWritten(Console& console) const;

private:
    std::string m_path; // empty: nobody looks
    struct stat m_before = {};
};

/** Warns if the folder cannot be written to, for a call that saves on another thread. */
void warnUnlessWritable(Console& console, const char* name);
} // namespace shell

#endif
