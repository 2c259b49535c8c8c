/** The daemon in the simulated set, with a logger and a host's lock that remember what they were asked. */
#pragma once

#include "fg_test.h"

#include <movo_net_tools.h>

/** What the platform's logger was told. */
struct Told {
    std::string program = {};
    std::string category = {};
    int colour = -1;
    std::string description = {};
};
extern Told g_told;

/** What the host's lock answers, and what it was asked. */
struct HostLock {
    RETURN_TYPE answer = 0;
    MovoNetHost_t holder = {};
    int error = 0;
    int times = 0;
    std::string name = {};
    bool usualFile = false;
    bool beforeTheGlue = false;
};
extern HostLock g_hostLock;

/** The daemon with these words on its command line, to its end. */
int daemonWith(std::vector<std::string> words);

/** What a daemon that ends at once leaves behind. */
struct Ended {
    int status;
    std::string output;
    std::string errors;
};

/** The daemon runs on a thread of its own until the glue is stopped. */
class Recovery : public testing::Test {
protected:
    sim::Set set;
    int status = -1;

    Recovery() { set.cable("eth0").plug(); }

    void run(const std::vector<std::string>& words = {})
    {
        set.background([this, words] { status = daemonWith(words); });
        set.settle();
    }
    Ended endsWith(const std::vector<std::string>& words)
    {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        status = -1;
        run(words);
        if (status == -1) {
            ADD_FAILURE() << "it has begun";
            (void)set.stop();
        }
        set.joinBackground();
        (void)std::fflush(stdout);
        const std::string output = testing::internal::GetCapturedStdout();
        return {status, output, testing::internal::GetCapturedStderr()};
    }
    void end()
    {
        EXPECT_EQ(status, -1) << "it runs as long as the glue";
        EXPECT_EQ(set.stop(), 0);
        set.joinBackground();
        EXPECT_EQ(status, 0);
    }
};
