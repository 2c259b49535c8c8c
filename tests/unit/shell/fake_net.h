/**
 * A library with the glue's public calls that does nothing but answer as the test says and remember who asked.
 *
 * It has two interfaces, lo and eth0. Each call returns 0 and writes a value of its own, unless the test says
 * otherwise.
 */
#ifndef TESTS_UNIT_SHELL_FAKE_NET_H
#define TESTS_UNIT_SHELL_FAKE_NET_H

#include <functional>
#include <movo_net.h>
#include <string>
#include <vector>

namespace fake {
/** What was called, with its arguments but the first, like "Movo_NET_SetIfacePriority eth0 5". */
std::vector<std::string> calls();
void forgetCalls();

/** What a call returns from now on. */
void returns(const std::string& function, int result);

/** Runs at the end of each call, on the caller's thread. */
void onCall(std::function<void(const std::string& call)> action);

/** The glue runs, or not; without a start. */
void setRunning(bool running);

/** So many interfaces more: eth1, eth2, ... */
void addInterfaces(int count);

/** One interface more, a wireless one. */
void addWireless(const std::string& ifname);

/** The scanned networks; the first one is joined. */
void setNetworks(const std::vector<std::string>& names);

/** What all networks are scanned with from now on; at first WPA2. */
void setSecurity(MovoNetWifiSecurity_e security);

/** Whether the interfaces are connected; at first they are. */
void setConnected(bool connected);

/** Whether the first network is joined; at first it is. */
void setJoined(bool joined);

/** The cipher that all networks are scanned with from now on; at first CCMP. */
void setCipher(MovoNetWifiEncryption_e cipher);

/** The IP mode of all interfaces from now on; at first static. */
void setMode(MovoNetIPMode_e mode);

/** Calls the callback, if there is one. */
void callBack(MovoNetCBReason_e reason, const char* ifname);
} // namespace fake

#endif
