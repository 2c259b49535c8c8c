#include "sim/calls.h"
#include "sim/freed.h"
#include "sim/world.h"

#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <string_view>

namespace sim {
namespace {
std::string s_watched; // guarded by the world
int s_freed;
} // namespace

void watchFreed(const std::string& text)
{
    const Hold hold;
    s_watched = text;
    s_freed = 0;
}

int freedWithText()
{
    const Hold hold;
    return s_freed;
}
} // namespace sim

using namespace sim;

void sim_free(void* memory)
{
    if (active() && memory != nullptr) {
        const Hold hold;
        const std::string_view contents(static_cast<const char*>(memory), malloc_usable_size(memory));
        s_freed += !s_watched.empty() && contents.find(s_watched) != std::string_view::npos ? 1 : 0;
    }
    std::free(memory);
}

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
