#include "bench.h"

#include <cerrno>
#include <unistd.h>

using namespace dhcp;

// What the handler of the pipe does when there is nothing for it. The tests call it themselves.

namespace {
TEST(PipeHandler, IgnoresADescriptorThatIsNotTheRecords)
{
    Bench bench;
    bench.launch();
    EXPECT_EQ(OnDhcpEventRev(bench.iface.dhcpcfd + 1, &bench.iface, 0), 1);
    EXPECT_EQ(said(bench.set), Lines{});
}

TEST(PipeHandler, IgnoresADescriptorAfterThePipeWasClosed)
{
    Bench bench;
    bench.launch();
    const int fd = bench.iface.dhcpcfd;
    EXPECT_EQ(ShutdownDhcpcd(&bench.iface, movonet::kRelease), 1);
    bench.set.forget();
    EXPECT_EQ(OnDhcpEventRev(fd, &bench.iface, 0), 1);
    EXPECT_EQ(said(bench.set), Lines{});
}

TEST(PipeHandler, NeverWaitsForData)
{
    Bench bench;
    bench.launch();
    EXPECT_EQ(OnDhcpEventRev(bench.iface.dhcpcfd, &bench.iface, 0), 1);
    EXPECT_EQ(said(bench.set), Lines{"INFO OnDhcpEventRev: no data yet: Resource temporarily unavailable\n"});
}

TEST(PipeHandler, TellsOfAReadError)
{
    Bench bench;
    bench.launch();
    bench.set.fail({.call = sim::Call::Read, .on = kPipe, .error = EIO});
    EXPECT_EQ(OnDhcpEventRev(bench.iface.dhcpcfd, &bench.iface, 0), 1);
    EXPECT_EQ(said(bench.set), Lines{"ERROR OnDhcpEventRev: unknown error: Input/output error\n"});
}

TEST(PipeHandler, TellsOfAnEmptyRead)
{
    Bench bench;
    bench.launch();
    bench.set.fail({.call = sim::Call::Read, .on = kPipe, .bytes = 0});
    errno = 0;
    EXPECT_EQ(OnDhcpEventRev(bench.iface.dhcpcfd, &bench.iface, 0), 1);
    EXPECT_EQ(said(bench.set), Lines{"ERROR OnDhcpEventRev: read zero data!!!!!!: Success\n"});
}

TEST(PipeHandler, TakesAShortReadAsItsMessage)
{
    Bench bench;
    bench.launch();
    bench.set.fail({.call = sim::Call::Read, .on = kPipe, .nth = 1, .bytes = 2});
    bench.hear("down");
    EXPECT_EQ(said(bench.set),
              (Lines{"INFO OnDhcpEventRev: unknown message: do\n", "INFO OnDhcpEventRev: unknown message: wn\n"}));
}

TEST(PipeHandler, ReturnsZeroForEveryMessage)
{
    Bench bench;
    bench.launch();
    for (const char* message : {"new", "down", "rubbish"}) {
        ASSERT_EQ(ConfigIP(&bench.iface, movonet::kForce), 0);
        ASSERT_EQ(int_removeEvent(bench.iface.dhcpcEventHandle), 0); // the message is for this thread
        bench.set.settle();
        bench.hear(message);
        EXPECT_EQ(OnDhcpEventRev(bench.iface.dhcpcfd, &bench.iface, 0), 0) << message;
    }
}
} // namespace
