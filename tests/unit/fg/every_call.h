/** The public functions, all in one place: what is added to the headers is added here. */
#pragma once

#include "sim/sim.h"

#include <functional>
#include <string>
#include <vector>

struct PublicCall {
    const char* name;
    /** Calls it with arguments that make it do its work on that interface. */
    std::function<void(sim::Set& set, const char* ifname)> call;
};

/** Every public function that a callback may call. */
const std::vector<PublicCall>& everyCall();

/** The ones that it may not. */
inline const std::vector<std::string> kNotInsideACallback = {"Movo_NET_Glue_Init", "Movo_NET_Glue_Exit",
                                                             "WaitForChild2Exit"};

/** Calls them all, in their order. */
void callEverything(sim::Set& set, const char* ifname);

/** The functions that the public headers declare. */
std::vector<std::string> declaredCalls();
