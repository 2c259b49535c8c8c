/** The two ways of telling that something was expected and is not so. */
#ifndef MOVO_NET_SUPPORT_REPORT_H
#define MOVO_NET_SUPPORT_REPORT_H

namespace movonet {
/** A place in the source; a helper that speaks for its caller takes the caller's as its last argument. */
struct CallSite {
    const char* function;
    int line;

    static constexpr CallSite current(const char* function = __builtin_FUNCTION(), int line = __builtin_LINE())
    {
        return {function, line};
    }
};

/** Prints expression, module, line and function to standard error and aborts the process. */
[[noreturn]] void failedRequirement(const char* expression, const char* module, CallSite at);

/** Prints a backtrace of 10 frames, then the failed expression to standard output, and returns. */
void reportFailure(const char* expression, const char* module, CallSite at);
} // namespace movonet

#endif
