/** movo_net_shell: a person's way into every public call of the network glue. */
#include "shell.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <kest.h>
#include <movo_net.h>
#include <movo_net_tools.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr char kUsage[] =
    "usage: movo_net_shell [--no-start] [--programs FOLDER] [--play SCRIPT]\n"
    "       movo_net_shell --help | --version\n"
    "\n"
    "Runs the network glue and the commands that it reads from standard input; the command help\n"
    "lists them. With --no-start the glue waits for the command start. The programs of FOLDER are\n"
    "commands too. The commands of SCRIPT are shown and run first.\n";

/** True unless another process hosts the glue, which is reported. */
bool becomeHost()
{
    static bool s_isHost;
    MovoNetHost_t other;
    const RETURN_TYPE result = s_isHost ? 0 : Movo_NET_TakeHostLock(nullptr, "movo_net_shell", &other);
    if (result == 1) {
        (void)std::fprintf(stderr, "movo_net_shell: the network glue runs already: %s, pid %d\n",
                           other.name[0] != '\0' ? other.name : "an unknown program", other.pid);
        return false;
    }
    if (result != 0) {
        (void)std::fprintf(stderr, "movo_net_shell: another host of the network glue would not be noticed: %s: %s\n",
                           MOVO_NET_HOST_FILE, std::strerror(errno));
    }
    s_isHost = true;
    return true;
}

/**
 * The shell's own way to standard output. What the glue and its commands print there goes to standard error from now
 * on, to the log.
 */
std::FILE* takeOutput()
{
    const int own = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    std::FILE* const output = own < 0 ? nullptr : fdopen(own, "w");
    if (output == nullptr || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        return stdout;
    }
    return output;
}

bool isFolder(const char* path)
{
    struct stat found = {};
    return stat(path, &found) == 0 && S_ISDIR(found.st_mode);
}

/** What the platform does for a program that hosts the glue. */
void setUp()
{
    // An ignored SIGCHLD, as some starters leave it, would make every command of the glue seem to fail.
    (void)std::signal(SIGCHLD, SIG_DFL);
    kest_debug_init("movo_net_shell");
    movoglue_net_debug = kest_debug_category_new("MOVO_NET_SHELL", 0, "Platform Glue Net");
}
} // namespace

int main(int argc, char** argv)
{
    shell::Options options = {STDIN_FILENO, stdout, stderr, true};
    for (int i = 1; i < argc; i++) {
        if (std::strcmp(argv[i], "--no-start") == 0) {
            options.startGlue = false;
        } else if (std::strcmp(argv[i], "--programs") == 0 && i + 1 < argc) {
            options.programs = argv[++i];
            if (!isFolder(options.programs)) {
                (void)std::fprintf(stderr, "no folder of programs: %s\n", options.programs);
                return shell::kStatusNotUnderstood;
            }
        } else if (std::strcmp(argv[i], "--play") == 0 && i + 1 < argc) {
            options.play = open(argv[++i], O_RDONLY | O_CLOEXEC);
            if (options.play < 0) {
                (void)std::fprintf(stderr, "cannot read %s\n", argv[i]);
                return shell::kStatusNotUnderstood;
            }
        } else if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            (void)std::fputs(kUsage, stdout);
            return shell::kStatusGood;
        } else if (std::strcmp(argv[i], "--version") == 0) {
            (void)std::puts("movo_net_shell " MOVO_NET_VERSION);
            return shell::kStatusGood;
        } else {
            (void)std::fputs(kUsage, stderr);
            return shell::kStatusNotUnderstood;
        }
    }
    if (options.startGlue && !becomeHost()) {
        return shell::kStatusUnmet;
    }
    options.becomeHost = becomeHost;
    setUp();
    options.output = takeOutput();
    options.saved = "/data/tv/save";
    return shell::run(options);
}
