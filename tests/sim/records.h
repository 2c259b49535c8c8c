/** What the simulated set writes down of the product's doings. */
#ifndef SIM_RECORDS_H
#define SIM_RECORDS_H

#include "sim/faults.h"

#include <cstdint>
#include <movo_net_types.h>
#include <ostream>
#include <string>

namespace sim {
/** The callback reasons by the short names that stories use. */
inline constexpr auto IFFOUND = _MOVO_NET_CALLBACK_IFFOUND_;
inline constexpr auto IFREMOVED = _MOVO_NET_CALLBACK_IFREMOVED_;
inline constexpr auto IFDISCONNECTED = _MOVO_NET_CALLBACK_IFDISCONNECTED_;
inline constexpr auto IFCONNECTED = _MOVO_NET_CALLBACK_IFCONNECTED_;
inline constexpr auto IFACTIVED = _MOVO_NET_CALLBACK_IFACTIVED_;
inline constexpr auto IFDEACTIVED = _MOVO_NET_CALLBACK_IFDEACTIVED_;
inline constexpr auto IPCHANGED = _MOVO_NET_CALLBACK_IPCHANGED_;
inline constexpr auto WIFISCANDONE = _MOVO_NET_CALLBACK_WIFISCANDONE_;
inline constexpr auto WIFIESSSUPDATED = _MOVO_NET_CALLBACK_WIFIESSSUPDATED_;
inline constexpr auto WIFIBADKEY = _MOVO_NET_CALLBACK_WIFIBADKEY_;
inline constexpr auto WIFITIMEOUT = _MOVO_NET_CALLBACK_WIFITIMEOUT_;
inline constexpr auto SOFTAPSCAN = _MOVO_NET_CALLBACK_SOFTAPSCAN_;
inline constexpr auto SOFTAPCONNECTED = _MOVO_NET_CALLBACK_SOFTAPCONNECTED_;
inline constexpr auto SOFTAPDISCONNECTED = _MOVO_NET_CALLBACK_SOFTAPDISCONNECTED_;
inline constexpr auto STATICIP_SUCCESS = _MOVO_NET_CALLBACK_STATICIP_SUCCESS_;
inline constexpr auto STATICIP_FAILED = _MOVO_NET_CALLBACK_STATICIP_FAILED_;
inline constexpr auto DHCP_SUCCESS = _MOVO_NET_CALLBACK_DHCP_SUCCESS_;
inline constexpr auto DHCP_FAILED = _MOVO_NET_CALLBACK_DHCP_FAILED_;

/** One call of the application callback. */
struct Called {
    MovoNetCBReason_e reason;
    std::string ifname = {};
    ThreadKind thread = ThreadKind::Any; ///< Not compared.

    bool operator==(const Called& other) const { return reason == other.reason && ifname == other.ifname; }
};
std::ostream& operator<<(std::ostream& out, const Called& called);

/** One log message. */
struct LogLine {
    int level;
    std::string category;
    std::string module;
    std::string function;
    int line;
    std::string text;
    ThreadKind thread;
};
std::ostream& operator<<(std::ostream& out, const LogLine& line);

/** One shell command, run or opened for reading. */
struct Command {
    std::string text;
    int status;
    bool opened; ///< By popen.
    ThreadKind thread;
    std::int64_t at; ///< Virtual milliseconds.
};

/** One signal, by kill() or by the command. */
struct Signal {
    int pid;
    int number;
    int result; ///< 0 or the errno.

    bool operator==(const Signal&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Signal& signal);
} // namespace sim

#endif
