#include "bench.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

using namespace dhcp;

// What ends the process. No set lives here: the processes that end are forked off, and nothing before the end acts.

namespace {
struct Required {
    const char* function;
    const char* expression;
    void (*call)();
};

void PrintTo(const Required& required, std::ostream* out)
{
    *out << required.function;
}

class RecordRequired : public testing::TestWithParam<Required> {};

TEST_P(RecordRequired, EndsTheProcess)
{
    const std::string message = std::string("movo_net_fl_common:[0-9]+: ") + GetParam().function + ": Assertion `" +
                                GetParam().expression + "' failed";
    EXPECT_EXIT(GetParam().call(), testing::KilledBySignal(SIGABRT), message);
}

MovoNetIface_t s_record;

INSTANTIATE_TEST_SUITE_P(
    Functions, RecordRequired,
    testing::Values(Required{"int_Movo_Net_Init", "pIface", [] { (void)int_Movo_Net_Init(nullptr); }},
                    Required{"int_Movo_Net_DeInit", "pIface", [] { (void)int_Movo_Net_DeInit(nullptr); }},
                    Required{"int_Movo_Net_CanActive", "pIface", [] { (void)int_Movo_Net_CanActive(nullptr); }},
                    Required{"int_Movo_Net_Active", "pIface", [] { (void)int_Movo_Net_Active(nullptr, 1); }},
                    Required{"ifup", "pIface", [] { (void)ifup(nullptr); }},
                    Required{"ConfigIP", "pIface", [] { (void)ConfigIP(nullptr, 1); }},
                    Required{"ShutdownDhcpcd", "pIface", [] { (void)ShutdownDhcpcd(nullptr, 0); }},
                    Required{"IsDhcpcdRunning", "pIface", [] { (void)IsDhcpcdRunning(nullptr); }},
                    Required{"AddDhcpDownEvent", "pIface", [] { (void)AddDhcpDownEvent(nullptr); }},
                    Required{"OnDhcpDown", "data", [] { (void)OnDhcpDown(-1, nullptr, 1); }},
                    Required{"OnDhcpEventRev", "data", [] { (void)OnDhcpEventRev(0, nullptr, 0); }},
                    Required{"OnDhcpEventRev", "!isTimeout", [] { (void)OnDhcpEventRev(0, &s_record, 1); }}));

int s_pipe;

/** Tells, as the process ends, what became of the record's pipe. */
void tellOfPipe(int /*signal*/)
{
    const bool closed = fcntl(s_pipe, F_GETFD) == -1;
    (void)std::fprintf(stderr, "descriptor %d, event %d, pipe %s\n", s_record.dhcpcfd, s_record.dhcpcEventHandle,
                       closed ? "closed" : "open");
}

void shutDownWithPipeNamed(const char* base)
{
    s_pipe = dup(STDERR_FILENO);
    std::strcpy(s_record.name, "eth0");
    s_record.dhcpcfd = s_pipe;
    s_record.dhcpcEventHandle = 7;
    namePipes(base);
    (void)std::signal(SIGABRT, tellOfPipe);
    (void)ShutdownDhcpcd(&s_record, movonet::kRelease);
}

TEST(PipePathOf32Characters, EndsTheProcessOnceThePipeIsClosed)
{
    EXPECT_EXIT(shutDownWithPipeNamed("/tmp/abcdefghijklmnopqrstuv"), testing::KilledBySignal(SIGABRT),
                "movo_net_fl_common:[0-9]+: ShutdownDhcpcd: Assertion `path.fits\\(\\)' failed.\n"
                "descriptor -1, event 0, pipe closed");
}
} // namespace
