/** Commands that are one public call of a common shape; a row of the table names the call. */
#ifndef MOVO_NET_SHELL_CALLS_H
#define MOVO_NET_SHELL_CALLS_H

#include "command.h"
#include "glue.h"
#include "names.h"

namespace shell {
/** A call on an interface that does something. */
template <RETURN_TYPE (*call)(kest_sint32, const char*)>
Outcome act(Console& console, Arguments arguments)
{
    console.result(call(kAppId, arguments[0].c_str()));
    return Outcome::Done;
}

/** A call on an interface that answers yes or no. */
template <kest_bool (*call)(kest_sint32, const char*)>
Outcome ask(Console& console, Arguments arguments)
{
    console.answer(call(kAppId, arguments[0].c_str()));
    return Outcome::Done;
}

/** A call that reads something of the whole glue. */
template <typename Value, RETURN_TYPE (*call)(kest_sint32, Value*)>
Outcome readGlue(Console& console, Arguments /*arguments*/)
{
    Value value{};
    const RETURN_TYPE code = call(kAppId, &value);
    console.result(code, textOf(value));
    return Outcome::Done;
}

/** A call that reads something of an interface. */
template <typename Value, RETURN_TYPE (*call)(kest_sint32, const char*, Value*)>
Outcome readIface(Console& console, Arguments arguments)
{
    Value value{};
    const RETURN_TYPE code = call(kAppId, arguments[0].c_str(), &value);
    console.result(code, textOf(value));
    return Outcome::Done;
}
} // namespace shell

#endif
