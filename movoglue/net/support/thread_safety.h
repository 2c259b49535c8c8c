/** What clang's -Wthread-safety checks: which lock guards what, and which function needs it. Nothing for g++. */
#ifndef MOVO_NET_SUPPORT_THREAD_SAFETY_H
#define MOVO_NET_SUPPORT_THREAD_SAFETY_H

#ifdef __clang__
#define MOVO_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define MOVO_THREAD_SAFETY(attribute)
#endif

#define MOVO_LOCK MOVO_THREAD_SAFETY(capability("mutex"))
#define MOVO_SCOPED_LOCK MOVO_THREAD_SAFETY(scoped_lockable)
#define MOVO_GUARDED_BY(lock) MOVO_THREAD_SAFETY(guarded_by(lock))
#define MOVO_REQUIRES(...) MOVO_THREAD_SAFETY(requires_capability(__VA_ARGS__))
#define MOVO_ACQUIRE(...) MOVO_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define MOVO_RELEASE(...) MOVO_THREAD_SAFETY(release_capability(__VA_ARGS__))

#endif
