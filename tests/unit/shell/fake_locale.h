/** The locales of the system, which many a television has none of. */
#ifndef TESTS_UNIT_SHELL_FAKE_LOCALE_H
#define TESTS_UNIT_SHELL_FAKE_LOCALE_H

namespace fake {
/** None can be set from now on, in this process and its children. */
void removeLocales();
} // namespace fake

#endif
