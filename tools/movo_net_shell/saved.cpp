#include "saved.h"

#include <cerrno>
#include <cstring>
#include <sys/statvfs.h>
#include <unistd.h>

namespace shell {
namespace {
std::string s_folder;

struct stat stateOf(const std::string& path)
{
    struct stat state = {};
    (void)stat(path.c_str(), &state); // zeros for one that is not there
    return state;
}

bool isSame(const timespec& one, const timespec& other)
{
    return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

/** Why nothing can be written there; 0 when it seems that it can. */
int obstacleTo(const std::string& folder)
{
    if (access(folder.c_str(), W_OK) != 0) {
        return errno;
    }
    struct statvfs room = {};
    return statvfs(folder.c_str(), &room) == 0 && room.f_bavail == 0 ? ENOSPC : 0;
}

void warn(Console& console, const std::string& path, int error)
{
    const std::string why = error != 0 ? std::strerror(error) : "the log has more";
    const std::string text = "warning: " + path + " is not written (" + why + "); it is as before after the next start";
    console.print("%s\n", console.screen().wrapped(text, 2).c_str());
}
} // namespace

void setSavedFolder(const char* folder)
{
    s_folder = folder != nullptr ? folder : "";
}

SavedFile::SavedFile(const char* name)
    : m_path(s_folder.empty() ? "" : s_folder + "/" + name), m_before(stateOf(m_path))
{
}

void SavedFile::warnUnlessWritten(Console& console) const
{
    const struct stat now = stateOf(m_path);
    const bool same =
        now.st_ino == m_before.st_ino && isSame(now.st_mtim, m_before.st_mtim) && isSame(now.st_ctim, m_before.st_ctim);
    if (!m_path.empty() && same) {
        warn(console, m_path, obstacleTo(s_folder));
    }
}

void warnUnlessWritable(Console& console, const char* name)
{
    const int error = s_folder.empty() ? 0 : obstacleTo(s_folder);
    if (error != 0) {
        warn(console, s_folder + "/" + name, error);
    }
}
} // namespace shell
