#include "fake_locale.h"

#include <clocale>
#include <locale.h>

namespace {
bool s_removed = false;
} // namespace

void fake::removeLocales()
{
    s_removed = true;
}

extern "C" {
char* __real_setlocale(int category, const char* name);
locale_t __real_newlocale(int mask, const char* name, locale_t base);

char* __wrap_setlocale(int category, const char* name)
{
    return s_removed ? nullptr : __real_setlocale(category, name);
}

locale_t __wrap_newlocale(int mask, const char* name, locale_t base)
{
    return s_removed ? nullptr : __real_newlocale(mask, name, base);
}
}
