/** The networks of one scan, gathered before they replace the interface's table. */
#ifndef MOVO_NET_FL_WPACTRL_SCAN_TABLE_H
#define MOVO_NET_FL_WPACTRL_SCAN_TABLE_H

#include "movo_net_fl_wifi/ess.h"

#include <cstdio>

namespace movonet {
/** The fields of one line of a scan's result. */
struct ScanLine;

/** One network a name, the strongest access point's; at most 50, the first ones. */
class ScanTable {
public:
    /** Reads a whole result, header included. */
    void read(std::FILE* file);

    const MovNetWifiEssItem_t (&esss() const)[MOVO_NET_MAX_ESSS] { return m_esss; }
    int count() const { return m_count; }

private:
    void add(const ScanLine& line);
    MovNetWifiEssItem_t* find(const char* essid);

    MovNetWifiEssItem_t m_esss[MOVO_NET_MAX_ESSS] = {};
    int m_count = 0;
};
} // namespace movonet

#endif
