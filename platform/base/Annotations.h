// Names for clang's thread-safety attributes; other compilers see nothing.
#pragma once

#if defined(__clang__)
#define CUTROOM_CAPABILITY(name) __attribute__((capability(name)))
#define CUTROOM_SCOPED_CAPABILITY __attribute__((scoped_lockable))
#define CUTROOM_GUARDED_BY(lock) __attribute__((guarded_by(lock)))
#define CUTROOM_REQUIRES(...) __attribute__((requires_capability(__VA_ARGS__)))
#define CUTROOM_REQUIRES_SHARED(...) __attribute__((requires_shared_capability(__VA_ARGS__)))
#define CUTROOM_ACQUIRE(...) __attribute__((acquire_capability(__VA_ARGS__)))
#define CUTROOM_ACQUIRE_SHARED(...) __attribute__((acquire_shared_capability(__VA_ARGS__)))
#define CUTROOM_TRY_ACQUIRE(...) __attribute__((try_acquire_capability(__VA_ARGS__)))
#define CUTROOM_RELEASE(...) __attribute__((release_capability(__VA_ARGS__)))
#define CUTROOM_RELEASE_SHARED(...) __attribute__((release_shared_capability(__VA_ARGS__)))
#define CUTROOM_NO_THREAD_SAFETY __attribute__((no_thread_safety_analysis))
#else
#define CUTROOM_CAPABILITY(name)
#define CUTROOM_SCOPED_CAPABILITY
#define CUTROOM_GUARDED_BY(lock)
#define CUTROOM_REQUIRES(...)
#define CUTROOM_REQUIRES_SHARED(...)
#define CUTROOM_ACQUIRE(...)
#define CUTROOM_ACQUIRE_SHARED(...)
#define CUTROOM_TRY_ACQUIRE(...)
#define CUTROOM_RELEASE(...)
#define CUTROOM_RELEASE_SHARED(...)
#define CUTROOM_NO_THREAD_SAFETY
#endif
