// The macros and plain types of Foundation.
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#define NS_ASSUME_NONNULL_BEGIN _Pragma("clang assume_nonnull begin")
#define NS_ASSUME_NONNULL_END _Pragma("clang assume_nonnull end")
#define NS_ENUM(type, name) \
  enum name : type name;    \
  enum name : type
#define NS_OPTIONS(type, name) \
  enum name : type name;       \
  enum __attribute__((flag_enum)) name : type
#define NS_ERROR_ENUM(domain, name) \
  enum name : NSInteger name;       \
  enum name : NSInteger
#define NS_TYPED_EXTENSIBLE_ENUM
#define NS_DESIGNATED_INITIALIZER __attribute__((objc_designated_initializer))
#define NS_RETURNS_INNER_POINTER __attribute__((objc_returns_inner_pointer))
#define NS_VALID_UNTIL_END_OF_SCOPE __attribute__((objc_precise_lifetime))
#define NS_UNAVAILABLE __attribute__((unavailable))
#define NS_SWIFT_NAME(name) __attribute__((swift_name(#name)))
#define NS_REFINED_FOR_SWIFT __attribute__((swift_private))
#define FOUNDATION_EXPORT extern
#define API_UNAVAILABLE(...)
// One platform is all that is declared for: API_AVAILABLE(macos(26.4)).
#define TARNEL_AVAILABLE_macos(version) __attribute__((availability(macos, introduced = version)))
#define API_AVAILABLE(platform) TARNEL_AVAILABLE_##platform

// As the compiler has it for the target: a bool on arm64, a signed char on x86_64.
#if __OBJC_BOOL_IS_BOOL
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif
#define YES __objc_yes
#define NO __objc_no
#ifndef nil
#define nil ((id)0)
#endif

typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef unsigned long long UInt64;
