/** The words in which stories tell what they expect. */
#ifndef SIM_EXPECT_H
#define SIM_EXPECT_H

#include <gtest/gtest.h>

/** The command was run, to the letter, since the start or the last `forget`. */
#define EXPECT_RAN(set, command) EXPECT_TRUE((set).ran(command))
#define EXPECT_NOT_RAN(set, command) EXPECT_FALSE((set).ran(command))
/** All were run, in this order, others between them or not: EXPECT_RAN_IN_ORDER(set, {"a", "b"}). */
#define EXPECT_RAN_IN_ORDER(set, ...) EXPECT_TRUE((set).ranInOrder(std::vector<std::string> __VA_ARGS__))
/** The message was logged, to the letter, since the start or the last `forget`. */
#define EXPECT_LOGGED(set, level, module, function, text) EXPECT_TRUE((set).logged(level, module, function, text))
#define EXPECT_NOT_LOGGED(set, level, module, function, text) EXPECT_FALSE((set).logged(level, module, function, text))
/** Exactly these callbacks came since the last time: EXPECT_CALLBACKS(set, {{IFFOUND, "eth0"}}). */
#define EXPECT_CALLBACKS(set, ...) EXPECT_TRUE((set).calledBack(std::vector<sim::Called> __VA_ARGS__))

#endif
