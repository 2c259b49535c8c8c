/** The daemon: brings the network up while the set runs in recovery mode. */
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <kest.h>
#include <movo_net.h>
#include <movo_net_tools.h>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr char kUsage[] = "usage: recovery_net [--help | --version]\n"
                          "\n"
                          "Brings the network up and stays. Words that are no options are ignored.\n";

constexpr int kStatusAnotherHost = 1;
constexpr int kStatusNotUnderstood = 2;

/** Answers options; the status with which the daemon leaves, nothing when it has to begin. */
std::optional<int> answerOptions(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--help") {
            (void)std::fputs(kUsage, stdout);
            return 0;
        }
        if (word == "--version") {
            (void)std::puts("recovery_net " MOVO_NET_VERSION);
            return 0;
        }
        if (word.starts_with('-')) {
            (void)std::fprintf(stderr, "recovery_net: unknown option %s\n%s", argv[i], kUsage);
            return kStatusNotUnderstood;
        }
    }
    return std::nullopt;
}

/** True unless another process hosts the glue. */
bool becomeHost()
{
    MovoNetHost_t other;
    switch (Movo_NET_TakeHostLock(nullptr, "recovery_net", &other)) {
    case 0:
        return true;
    case 1:
        (void)std::fprintf(stderr, "recovery_net: the network glue runs already: %s, pid %d\n",
                           other.name[0] != '\0' ? other.name : "an unknown program", other.pid);
        return false;
    default:
        (void)std::fprintf(stderr, "recovery_net: another host of the network glue would not be noticed: %s: %s\n",
                           MOVO_NET_HOST_FILE, std::strerror(errno));
        return true;
    }
}

void logEntry()
{
    if (__atomic_load_n(&__kest_debug_min, __ATOMIC_RELAXED) >= KEST_LEVEL_INFO) {
        kest_debug_log(KEST_CAT_DEFAULT, KEST_LEVEL_INFO, "recovery_net", "main", __LINE__, "Enter recovery network\n");
    }
}

/** What is written to standard error must never go into a file of the glue that took its place. */
void fillStandardDescriptors()
{
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        if (fcntl(fd, F_GETFD) == -1) {
            (void)open("/dev/null", O_RDWR); // the lowest free one; commands need it, too
        }
    }
}
/** When the reader of our output ends, output is lost. A handler, since commands would inherit an ignored signal. */
void outliveReader()
{
    struct sigaction nothing {};
    nothing.sa_handler = [](int) {};
    nothing.sa_flags = SA_RESTART;
    (void)sigaction(SIGPIPE, &nothing, nullptr);
}
} // namespace

int main(int argc, char** argv)
{
    if (const auto status = answerOptions(argc, argv)) {
        return *status;
    }
    fillStandardDescriptors();
    (void)umask(022); // what everybody reads stays so, and nobody else writes it, whoever starts us
    outliveReader();
    // An ignored SIGCHLD, as some starters leave it, would make every command seem to fail.
    (void)std::signal(SIGCHLD, SIG_DFL);
    if (!becomeHost()) {
        return kStatusAnotherHost;
    }
    kest_debug_init("MOVOAPP_TEST");
    if (movoglue_net_debug == nullptr) {
        movoglue_net_debug = kest_debug_category_new("RECOVERY_NET_CONNECTION", 0, "Platform Glue Net");
    }
    logEntry();
    (void)Movo_NET_Glue_Init();
    WaitForChild2Exit();
    return 0;
}
