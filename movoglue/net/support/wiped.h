/** Memory that held keys. */
#ifndef MOVO_NET_SUPPORT_WIPED_H
#define MOVO_NET_SUPPORT_WIPED_H

#include <cstdlib>
#include <cstring>

namespace movonet {
/** Frees a record from malloc; nothing of it stays in memory. NULL is passed over. */
template <typename Record>
void freeWiped(Record* record)
{
    if (record != nullptr) {
        explicit_bzero(record, sizeof(Record));
        std::free(record);
    }
}
} // namespace movonet

#endif
