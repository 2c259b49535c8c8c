/** The keys of networks: which one joins, and whether it can. A join with a wrong one takes the joined network away. */
#ifndef MOVO_NET_SHELL_KEYS_H
#define MOVO_NET_SHELL_KEYS_H

#include <movo_net.h>
#include <optional>
#include <string>

namespace shell {
enum class KeyKind { None, Wep, Wpa, Unknown };

inline bool wantsKey(KeyKind kind)
{
    return kind == KeyKind::Wep || kind == KeyKind::Wpa;
}

/** What the glue will send for a network, by its table and by the choice below; unknown when it is not in the table. */
KeyKind keyKindOf(const std::string& ifname, const std::string& essid);

/** The person's choice for all networks, MovoNetWifiUISecurity_e. */
void noteSecurityChoice(int wish);

/** Why no network of that kind takes the key; empty when one may. */
std::string faultOf(KeyKind kind, const std::string& key);

/** Gives a network of the table its key. */
RETURN_TYPE setKey(const std::string& ifname, const std::string& essid, const std::string& key);

/** The table is new: the keys that were set are forgotten. */
void forgetKeys();

/** The remembered key; nothing when there is none. Nothing is logged. */
std::optional<std::string> rememberedKey(const std::string& ifname, const std::string& essid);

/** The key to join with when none is typed: the one that was set in this table, else the remembered one. */
std::optional<std::string> keyOf(const std::string& ifname, const std::string& essid);
} // namespace shell

#endif
