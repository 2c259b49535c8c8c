#include "history.h"

#include "lines.h"
#include "text.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace shell {
namespace {
constexpr mode_t kFolderMode = 0700;
constexpr mode_t kFileMode = 0600;

/** Empty where nobody lives. */
std::string stateFolder()
{
    const char* const state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && state[0] == '/') {
        return state;
    }
    const char* const home = std::getenv("HOME");
    return home != nullptr && home[0] == '/' ? std::string(home) + "/.local/state" : "";
}

std::string fileName()
{
    const std::string folder = stateFolder();
    return folder.empty() ? "" : folder + "/movo_net_shell/history";
}

/** Makes the folders that a file stands in. */
void makeFolders(const std::string& file)
{
    for (std::size_t end = file.find('/', 1); end != std::string::npos; end = file.find('/', end + 1)) {
        (void)mkdir(file.substr(0, end).c_str(), kFolderMode);
    }
}

/** Writes with one call, so that lines of two shells stay whole. */
void writeFile(const std::string& file, int flags, const std::string& text)
{
    const int opened = open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | flags, kFileMode);
    if (opened >= 0) {
        (void)!write(opened, text.data(), text.size());
        (void)close(opened);
    }
}

std::vector<std::string> linesOf(const std::string& file)
{
    std::vector<std::string> lines;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.size() <= kLongestLine) {
            lines.push_back(line);
        }
    }
    return lines;
}

void replaceFile(const std::string& file, const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    const std::string made = file + "." + std::to_string(getpid());
    writeFile(made, O_EXCL, text);
    (void)rename(made.c_str(), file.c_str());
}
} // namespace

std::vector<std::string> keptLines()
{
    const std::string file = fileName();
    std::vector<std::string> lines = linesOf(file);
    const std::size_t excess = lines.size() - std::min<std::size_t>(lines.size(), kHistorySize);
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(excess));
    if (excess > kHistorySize) {
        replaceFile(file, lines);
    }
    return lines;
}

void keepLine(const std::string& line)
{
    const std::string file = fileName();
    if (!file.empty() && withoutKey(line) == line) {
        makeFolders(file);
        writeFile(file, O_APPEND, line + "\n");
    }
}

std::string withoutKey(const std::string& line)
{
    const std::vector<std::string> words = readWords(line).words;
    const bool gives =
        words.size() > 3 && words[0] == "wifi" && (words[1] == "join" || words[1] == "connect" || words[1] == "key");
    return gives ? words[0] + " " + words[1] + " " + asWord(words[2]) + " KEY" : line;
}
} // namespace shell
