#include "sim/calls.h"
#include "sim/sim.h"
#include "support/command.h"
#include "support/fd.h"
#include "support/file.h"
#include "support/ifreq.h"
#include "support/text.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>

using namespace movonet;

namespace {
using Lines = std::vector<std::string>;

TEST(InterfaceRequest, NamesItsInterfaceAndNothingElse)
{
    const ifreq request = ifreqFor("eth0");
    EXPECT_STREQ(request.ifr_name, "eth0");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&request) + 4, sizeof(request) - 4),
              std::string(sizeof(request) - 4, '\0'));
}

TEST(InterfaceRequest, CutsALongerName)
{
    EXPECT_STREQ(ifreqFor("0123456789abcdefgh").ifr_name, "0123456789abcde");
}

TEST(InterfaceRequest, CarriesAnAddress)
{
    const ifreq request = ifreqFor("eth0", 0x0302000a);
    EXPECT_STREQ(request.ifr_name, "eth0");
    EXPECT_EQ(request.ifr_addr.sa_family, AF_INET);
    EXPECT_EQ(std::string(request.ifr_addr.sa_data, 2), std::string(2, '\0'));
    EXPECT_EQ(ipv4Of(request), 0x0302000aU);
}

TEST(InterfaceRequest, GoesThroughASocketOfItsOwn)
{
    sim::Set set;
    set.iface("eth0").setAddress("10.0.2.15");
    ifreq request = ifreqFor("eth0");
    EXPECT_EQ(issueIfreq(SIOCGIFADDR, request), IfreqError::None);
    EXPECT_STREQ(DottedQuad(ipv4Of(request)).c_str(), "10.0.2.15");
    EXPECT_EQ(set.openDescriptors(), Lines{});
}

TEST(InterfaceRequest, TellsWhichStepFailedAndWhy)
{
    sim::Set set;
    ifreq request = ifreqFor("nothere");
    EXPECT_EQ(issueIfreq(SIOCGIFADDR, request), IfreqError::Ioctl);
    EXPECT_EQ(errno, ENODEV);
    EXPECT_EQ(set.openDescriptors(), Lines{});
    set.fail({.call = sim::Call::Socket, .error = EMFILE});
    EXPECT_EQ(issueIfreq(SIOCGIFADDR, request), IfreqError::Socket);
    EXPECT_EQ(errno, EMFILE);
}

TEST(ShellCommand, HasItsWaitStatus)
{
    EXPECT_EQ(runShell("exit 0"), 0);
    EXPECT_EQ(runShell(FixedText<16>("exit %d", 3)), 3 << 8);
}

TEST(ShellCommand, IsMinusOneWithoutAShell)
{
    sim::Set set;
    set.fail({.call = sim::Call::System});
    EXPECT_EQ(runShell("true"), -1);
}

TEST(ShellCommand, IsMinusOneWhenThereIsNone)
{
    sim::Set set;
    EXPECT_EQ(runShell(""), -1);
    EXPECT_TRUE(set.commands().empty());
}

TEST(OwnedDescriptor, IsClosedAtTheEndOfItsScope)
{
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    {
        const UniqueFd owned(fd);
        EXPECT_TRUE(owned);
        EXPECT_EQ(owned.get(), fd);
    }
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
}

TEST(OwnedDescriptor, MayBeNone)
{
    const UniqueFd none(-1);
    EXPECT_FALSE(none);
}

TEST(OwnedFile, IsClosedAtTheEndOfItsScopeAndNotInherited)
{
    int fd = -1;
    {
        const UniqueFile file("/dev/null", "re");
        ASSERT_TRUE(file);
        fd = fileno(file.get());
        EXPECT_EQ(fcntl(fd, F_GETFD), FD_CLOEXEC);
    }
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
}

TEST(OwnedFile, MayBeNone)
{
    const UniqueFile file("/nowhere/at/all", "re");
    EXPECT_FALSE(file);
}
} // namespace
