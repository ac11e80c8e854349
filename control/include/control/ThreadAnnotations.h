// The names of clang's thread-safety attributes that this project uses; nothing elsewhere.
#pragma once

#if defined(__clang__)
#define TARNEL_TSA(x) __attribute__((x))
#else
#define TARNEL_TSA(x)
#endif

#define CAPABILITY(x) TARNEL_TSA(capability(x))
#define SCOPED_CAPABILITY TARNEL_TSA(scoped_lockable)
#define GUARDED_BY(x) TARNEL_TSA(guarded_by(x))
#define ACQUIRE(...) TARNEL_TSA(acquire_capability(__VA_ARGS__))
#define RELEASE(...) TARNEL_TSA(release_capability(__VA_ARGS__))
#define REQUIRES(...) TARNEL_TSA(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) TARNEL_TSA(locks_excluded(__VA_ARGS__))
