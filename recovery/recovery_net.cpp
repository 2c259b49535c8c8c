/** The daemon: brings the network up while the set runs in recovery mode. */
#include <csignal>
#include <fcntl.h>
#include <kest.h>
#include <movo_net.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
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

int main()
{
    fillStandardDescriptors();
    (void)umask(022); // what everybody reads stays so, and nobody else writes it, whoever starts us
    outliveReader();
    // An ignored SIGCHLD, as some starters leave it, would make every command seem to fail.
    (void)std::signal(SIGCHLD, SIG_DFL);
    kest_debug_init("MOVOAPP_TEST");
    if (movoglue_net_debug == nullptr) {
        movoglue_net_debug = kest_debug_category_new("RECOVERY_NET_CONNECTION", 0, "Platform Glue Net");
    }
    logEntry();
    (void)Movo_NET_Glue_Init();
    WaitForChild2Exit();
    return 0;
}
