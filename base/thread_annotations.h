// Names for clang's thread-safety analysis, empty for other compilers. They say which mutex guards
// a field, and which mutex the caller of a function must hold; `-Wthread-safety` checks both.
#pragma once

#if defined(__clang__)
#define NS_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define NS_THREAD_ATTRIBUTE(x)
#endif

#define CAPABILITY(x) NS_THREAD_ATTRIBUTE(capability(x))
#define SCOPED_CAPABILITY NS_THREAD_ATTRIBUTE(scoped_lockable)
#define GUARDED_BY(x) NS_THREAD_ATTRIBUTE(guarded_by(x))
#define REQUIRES(...) NS_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define REQUIRES_SHARED(...) NS_THREAD_ATTRIBUTE(requires_shared_capability(__VA_ARGS__))
#define EXCLUDES(...) NS_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ACQUIRE(...) NS_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define ACQUIRE_SHARED(...) NS_THREAD_ATTRIBUTE(acquire_shared_capability(__VA_ARGS__))
#define RELEASE(...) NS_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define RELEASE_SHARED(...) NS_THREAD_ATTRIBUTE(release_shared_capability(__VA_ARGS__))
#define NO_THREAD_SAFETY_ANALYSIS NS_THREAD_ATTRIBUTE(no_thread_safety_analysis)
