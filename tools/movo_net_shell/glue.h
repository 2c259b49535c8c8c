/** Starting and stopping the glue, and its interfaces, for more than one command. */
#ifndef MOVO_NET_SHELL_GLUE_H
#define MOVO_NET_SHELL_GLUE_H

#include <movo_net.h>
#include <string>
#include <vector>

namespace shell {
/** Every public call takes one and ignores it. */
constexpr kest_sint32 kAppId = 0;

/** What has to be true for a start; NULL: nothing. */
void setHostCheck(bool (*becomeHost)());

/** Starts the glue with the callback in place for what the first look finds, or counts one more user. */
RETURN_TYPE startGlue();

/** Takes one user away. */
RETURN_TYPE stopGlue();

/** Whether the last user was taken away. */
bool wasStopped();

/** Takes away the users that are left. */
void leaveGlue();

/** The names of the interfaces, none while the glue does not run. */
std::vector<std::string> interfaceNames();
} // namespace shell

#endif
