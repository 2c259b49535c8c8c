#include "movo_net_fg/fg.h"

using namespace movonet;

RETURN_TYPE LoadNetConfig(void)
{
    return kFail;
}

RETURN_TYPE SaveNetConfig(void)
{
    return kFail;
}
