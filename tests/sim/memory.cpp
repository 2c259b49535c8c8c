#include "sim/calls.h"
#include "sim/world.h"

#include <cstdlib>
#include <cstring>

using namespace sim;

void* sim_malloc(size_t size)
{
    if (active()) {
        if (const auto strike = enter(Call::Malloc, {})) {
            errno = ENOMEM;
            return nullptr;
        }
    }
    return std::malloc(size);
}

void* sim_calloc(size_t count, size_t size)
{
    if (active()) {
        if (const auto strike = enter(Call::Calloc, {})) {
            errno = ENOMEM;
            return nullptr;
        }
    }
    return std::calloc(count, size);
}

char* sim_strdup(const char* text)
{
    if (active()) {
        if (const auto strike = enter(Call::Strdup, {})) {
            errno = ENOMEM;
            return nullptr;
        }
    }
    return strdup(text);
}

int sim_vasprintf(char** text, const char* format, va_list arguments)
{
    if (active()) {
        if (const auto strike = enter(Call::Vasprintf, {})) {
            errno = ENOMEM;
            return -1;
        }
    }
    return vasprintf(text, format, arguments);
}
