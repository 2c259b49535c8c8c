/** Whoever waits for something that has no limit says so meanwhile. */
#ifndef MOVO_NET_SUPPORT_SLOW_H
#define MOVO_NET_SUPPORT_SLOW_H

namespace movonet {
/**
 * While it lives, somebody waits for the command or file `what`; after 5 s an error in the log names it, once. The
 * first 255 bytes count. The first of all costs libc's timer thread, which sleeps for good; of more than eight at once
 * the rest goes unseen.
 */
class [[nodiscard]] SlowWatch {
public:
    explicit SlowWatch(const char* what);
    ~SlowWatch();
    SlowWatch(const SlowWatch&) = delete;
    SlowWatch& operator=(const SlowWatch&) = delete;

private:
    struct SlowWait* m_wait;
};

/** Logs what is still waited for after 5 s; runs on a thread of libc. Not support's: movo_net_fl_common has the words.
 */
void logSlow(const char* what);
} // namespace movonet

#endif
