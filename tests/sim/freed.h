/** What the product leaves in memory that it gives back. */
#ifndef SIM_FREED_H
#define SIM_FREED_H

#include <string>

namespace sim {
/** From now on looks for `text` in whatever the product frees. */
void watchFreed(const std::string& text);
/** How often the text was there. */
int freedWithText();
} // namespace sim

#endif
