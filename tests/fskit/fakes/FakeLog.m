// The system's log: renders each line as it is written, and keeps it.
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#import "Fakes.h"

static bool debugEnabled;
static NSMutableArray* lines;
static NSString* name;

@interface FakeLog : NSObject <OS_os_log>
@end

@implementation FakeLog
@end

static NSObject* guard(void) {
  static NSObject* made;
  @synchronized([NSObject class]) {
    if (made == nil) {
      made = [[NSObject alloc] init];
      lines = [[NSMutableArray alloc] init];
    }
  }
  return made;
}

os_log_t os_log_create(const char* subsystem, const char* category) {
  @synchronized(guard()) {
    name = [[NSString alloc] initWithFormat:@"%s %s", subsystem, category];
  }
  return [[FakeLog alloc] init];
}

bool os_log_type_enabled(os_log_t log, os_log_type_t type) {
  (void)log;
  return type != OS_LOG_TYPE_DEBUG || __atomic_load_n(&debugEnabled, __ATOMIC_SEQ_CST);
}

static const char* textOf(os_log_type_t type) {
  switch (type) {
    case OS_LOG_TYPE_DEFAULT:
      return "default";
    case OS_LOG_TYPE_DEBUG:
      return "debug";
    case OS_LOG_TYPE_ERROR:
      return "error";
    default:
      return "other";
  }
}

// "%{public}s" is the system's; "%s" is what everybody renders. A text that is not public would
// read "<private>", and so it does here.
static void renderable(const char* format, char* made) {
  for (const char* at = format; *at != '\0'; ++at) {
    static const char open[] = "%{public}";
    if (strncmp(at, open, sizeof open - 1) == 0) {
      *made++ = '%';
      at += sizeof open - 2;
    } else if (*at == '%') {
      made = stpcpy(made, "%%<private>");
    } else {
      *made++ = *at;
    }
  }
  *made = '\0';
}

void tarnel_test_os_log(os_log_t log, os_log_type_t type, const char* format, ...) {
  (void)log;
  char plain[1024];
  renderable(format, plain);
  char* text = NULL;
  va_list arguments;
  va_start(arguments, format);
#pragma clang diagnostic ignored "-Wformat-nonliteral"
  const int written = vasprintf(&text, plain, arguments);
  va_end(arguments);
  if (written < 0) abort();
  @autoreleasepool {
    @synchronized(guard()) {
      [lines addObject:[NSString stringWithFormat:@"%s %s", textOf(type), text]];
    }
  }
  free(text);
}

void fakeLogSetDebug(bool enabled) { __atomic_store_n(&debugEnabled, enabled, __ATOMIC_SEQ_CST); }

void fakeLogClear(void) {
  @synchronized(guard()) {
    [lines removeAllObjects];
  }
}

NSArray* fakeLogLines(void) {
  @synchronized(guard()) {
    return [[lines copy] autorelease];
  }
}

NSString* fakeLogName(void) {
  @synchronized(guard()) {
    return name;
  }
}
