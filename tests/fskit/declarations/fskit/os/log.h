// The system's log, as far as it is used. Formats are literals, and the compiler checks them.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

@protocol OS_os_log <NSObject>
@end
typedef NSObject<OS_os_log>* os_log_t;

typedef uint8_t os_log_type_t;
enum {
  OS_LOG_TYPE_DEFAULT = 0x00,
  OS_LOG_TYPE_INFO = 0x01,
  OS_LOG_TYPE_DEBUG = 0x02,
  OS_LOG_TYPE_ERROR = 0x10,
  OS_LOG_TYPE_FAULT = 0x11,
};

FOUNDATION_EXPORT os_log_t os_log_create(const char* subsystem, const char* category)
    __attribute__((ns_returns_retained));
FOUNDATION_EXPORT bool os_log_type_enabled(os_log_t log, os_log_type_t type);
FOUNDATION_EXPORT void tarnel_test_os_log(os_log_t log, os_log_type_t type, const char* format, ...)
    __attribute__((format(os_log, 3, 4)));

#define os_log(log, ...) tarnel_test_os_log(log, OS_LOG_TYPE_DEFAULT, "" __VA_ARGS__)
#define os_log_debug(log, ...) tarnel_test_os_log(log, OS_LOG_TYPE_DEBUG, "" __VA_ARGS__)
#define os_log_error(log, ...) tarnel_test_os_log(log, OS_LOG_TYPE_ERROR, "" __VA_ARGS__)

NS_ASSUME_NONNULL_END
