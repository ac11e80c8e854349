// GNUstep's Foundation with the macros and types that it lacks, for declarations written for the
// system's own.
#pragma once

#include_next <Foundation/Foundation.h>
#include <stdbool.h>
#include <stdint.h>

#ifndef NS_ERROR_ENUM
#define NS_ERROR_ENUM(domain, name) NS_ENUM(NSInteger, name)
#endif
#ifndef NS_TYPED_EXTENSIBLE_ENUM
#define NS_TYPED_EXTENSIBLE_ENUM
#endif
#ifndef NS_UNAVAILABLE
#define NS_UNAVAILABLE __attribute__((unavailable))
#endif
#ifndef NS_RETURNS_INNER_POINTER
#define NS_RETURNS_INNER_POINTER
#endif
#ifndef FOUNDATION_EXPORT
#define FOUNDATION_EXPORT extern
#endif
#ifndef API_AVAILABLE
#define API_AVAILABLE(...)
#endif

typedef uint64_t UInt64;
typedef NSString* NSErrorUserInfoKey;
