#include "command.h"
#include "glue.h"
#include "saved.h"
#include "text.h"

#include <atomic>
#include <cstdint>
#include <limits>
#include <pthread.h>

namespace shell {
namespace {
constexpr auto kSubject = "glue";

std::atomic<bool> s_ended; // the event thread, as somebody who waited for its end has seen

void* waitForEnd(void* /*argument*/)
{
    WaitForChild2Exit();
    s_ended = true;
    wake();
    return nullptr;
}

/** The public call cannot be interrupted, so another thread makes it; when the person gives up, that thread stays. */
Outcome join(Console& console, Arguments arguments)
{
    const auto time = arguments.empty() ? std::nullopt : parseSeconds(arguments[0]);
    if (!arguments.empty() && !time) {
        return Outcome::BadArgument;
    }
    s_ended = false;
    pthread_t waiter;
    if (pthread_create(&waiter, nullptr, waitForEnd, nullptr) != 0) {
        console.complain("no thread to wait on\n");
        return Outcome::Done;
    }
    (void)pthread_detach(waiter);
    const Wait wait = console.pass(time ? in(*time) : kNoDeadline, "waiting for the end of the event thread",
                                   [] { return s_ended.load(); });
    if (wait == Wait::Interrupted) {
        return Outcome::Interrupted;
    }
    console.print("%s\n", wait == Wait::Done ? "the event thread has ended" : "the event thread still runs");
    return Outcome::Done;
}

Outcome start(Console& console, Arguments /*arguments*/)
{
    console.result(startGlue());
    return Outcome::Done;
}

Outcome stop(Console& console, Arguments /*arguments*/)
{
    console.result(stopGlue());
    return Outcome::Done;
}

Outcome running(Console& console, Arguments /*arguments*/)
{
    console.answer(Movo_NET_IsInitializationDone(kAppId));
    return Outcome::Done;
}

Outcome callback(Console& console, Arguments arguments)
{
    const auto wanted = parseSwitch(arguments[0]);
    if (!wanted) {
        return Outcome::BadArgument;
    }
    int id = 0;
    console.result(*wanted ? Movo_NET_InstallCallback(kAppId, onCallback, nullptr, &id)
                           : Movo_NET_UnInstallCallback(kAppId, id));
    return Outcome::Done;
}

Outcome limits(Console& console, Arguments /*arguments*/)
{
    int interfaces = 0;
    int networks = 0;
    const RETURN_TYPE first = Movo_NET_GetMaxNumOfIfacesSupported(kAppId, &interfaces);
    const RETURN_TYPE second = Movo_NET_GetMaxNumOfWifiEssSupported(kAppId, &networks);
    console.result(first, std::to_string(interfaces) + " interfaces");
    console.result(second, std::to_string(networks) + " Wi-Fi networks");
    return Outcome::Done;
}

Outcome virgin(Console& console, Arguments /*arguments*/)
{
    console.answer(Movo_NET_IsNetworkModeVirgin(kAppId));
    return Outcome::Done;
}

Outcome setVirgin(Console& console, Arguments /*arguments*/)
{
    const SavedFile settings(kSettings);
    const RETURN_TYPE code = Movo_NET_SetNetworkToModeVirgin(kAppId);
    console.result(code);
    if (code == 0) {
        settings.warnUnlessWritten(console);
    }
    return Outcome::Done;
}

Outcome linkType(Console& console, Arguments arguments)
{
    if (arguments.empty()) {
        console.print("%d\n", g_NetworkLinkType);
        return Outcome::Done;
    }
    const auto type = parseInt(arguments[0]);
    if (!type || *type < 0 || *type > std::numeric_limits<kest_uint8>::max()) {
        return Outcome::BadArgument;
    }
    g_NetworkLinkType = static_cast<kest_uint8>(*type);
    return Outcome::Done;
}

using Allot = RETURN_TYPE (*)(kest_sint32, kest_sint32, kest_sint32*);

Outcome allot(Console& console, Arguments arguments, Allot call)
{
    const auto resource = parseInt(arguments[0]);
    const auto clients = parseInt(arguments[1]);
    auto client = parseInt(arguments.size() > 2 ? arguments[2] : "0");
    if (!resource || !clients || !client) {
        return Outcome::BadArgument;
    }
    console.result(call(*resource, *clients, &*client));
    return Outcome::Done;
}

Outcome resourceSet(Console& console, Arguments arguments)
{
    return allot(console, arguments, Movo_NET_SetResourceAllocation);
}

Outcome resourceAdd(Console& console, Arguments arguments)
{
    return allot(console, arguments, Movo_NET_SetClientResourceAllocation);
}
} // namespace

std::span<const Command> glueCommands()
{
    static constexpr Command kCommands[] = {
        {kSubject, "start", "", "starts the glue, or counts one more user",
         "Movo_NET_Glue_Init Movo_NET_InstallCallback Movo_NET_IsInitializationDone", start},
        {kSubject, "stop", "", "takes one user away; the last one's stops the glue", "Movo_NET_Glue_Exit", stop},
        {kSubject, "join", "[SECONDS]", "waits until the event thread has ended", "WaitForChild2Exit", join},
        {kSubject, "running", "", "tells whether the glue runs", "Movo_NET_IsInitializationDone", running},
        {kSubject, "callback", "on|off", "has callbacks shown, or not",
         "Movo_NET_InstallCallback Movo_NET_UnInstallCallback", callback},
        {kSubject, "limits", "", "tells how many interfaces and networks are handled",
         "Movo_NET_GetMaxNumOfIfacesSupported Movo_NET_GetMaxNumOfWifiEssSupported", limits},
        {kSubject, "virgin", "", "tells whether the network was never configured", "Movo_NET_IsNetworkModeVirgin",
         virgin},
        {kSubject, "virgin set", "", "writes the configuration file", "Movo_NET_SetNetworkToModeVirgin", setVirgin},
        {kSubject, "link-type", "[NUMBER]", "shows or sets the network link type, before the start", "", linkType},
        {kSubject, "resource set", "RESOURCE CLIENTS [CLIENT]", "allots the glue, resource 65536, to clients",
         "Movo_NET_SetResourceAllocation", resourceSet},
        {kSubject, "resource add", "RESOURCE CLIENTS [CLIENT]", "allots the glue to more clients",
         "Movo_NET_SetClientResourceAllocation", resourceAdd},
    };
    return kCommands;
}
} // namespace shell
