#include "programs.h"

#include "text.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace shell {
namespace {
constexpr std::size_t kLongestHelp = 2000;

std::string s_folder; // set before the first line is read

std::string pathOf(const std::string& name)
{
    return s_folder + "/" + name;
}

/** The status as a shell tells it, -1 when the program does not start. */
int statusOf(Arguments words, int output)
{
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str())); // posix_spawn leaves them as they are
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files;
    (void)posix_spawn_file_actions_init(&files);
    (void)posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0); // a script's lines are ours
    (void)posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    pid_t child = -1;
    const int error = posix_spawn(&child, pathOf(words[0]).c_str(), &files, nullptr, arguments.data(), environ);
    (void)posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        return -1;
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
} // namespace

void setProgramFolder(const char* folder)
{
    s_folder = folder != nullptr ? folder : "";
}

bool isProgram(const std::string& word)
{
    return !s_folder.empty() && !word.starts_with('.') && word.find('/') == std::string::npos &&
           access(pathOf(word).c_str(), X_OK) == 0;
}

std::vector<std::string> programNames()
{
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(s_folder.empty() ? nullptr : opendir(s_folder.c_str()), closedir);
    while (const dirent* const entry = folder ? readdir(folder.get()) : nullptr) {
        if (isProgram(entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
    }
    std::ranges::sort(names);
    return names;
}

ProgramHelp programHelp(const std::string& name)
{
    std::string comment;
    std::ifstream script(pathOf(name));
    std::string line;
    const bool isScript = std::getline(script, line) && line.starts_with("#!");
    while (isScript && comment.size() < kLongestHelp && std::getline(script, line) && line.starts_with("# ")) {
        comment += (comment.empty() ? "" : " ") + line.substr(2);
    }
    const std::size_t colon = comment.find(": ");
    if (!comment.starts_with(name) || colon == std::string::npos) {
        return {name, comment};
    }
    return {comment.substr(0, colon), comment.substr(colon + 2)};
}

Outcome runProgram(Console& console, Arguments words)
{
    console.showArrivals();
    const int status = statusOf(words, console.outputDescriptor());
    if (status == 0) {
        return Outcome::Done;
    }
    console.complain("%s ended with status %d\n", printable(words[0]).c_str(), status);
    return Outcome::Unmet;
}
} // namespace shell
