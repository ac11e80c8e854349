#import "Planted.h"

#include <pthread.h>
#include <string.h>

#import "System.h"

static void leak(void) {
  @autoreleasepool {
    HostForRun* const host = hostMake();
    NSString* const home = [NSString stringWithUTF8String:hostHome(host)];
    (void)[[TarnelFileSystem alloc] initWithHome:home];
    hostFree(host);
  }
}

static long shared;

static void* change(void* argument) {
  for (int i = 0; i < 1000; ++i) ++shared;
  return argument;
}

static void race(void) {
  pthread_t other;
  if (pthread_create(&other, NULL, change, NULL) != 0) return;
  change(NULL);
  pthread_join(other, NULL);
}

int plant(const char* fault) {
  if (strcmp(fault, "leak") == 0) {
    leak();
    return 0;
  }
  if (strcmp(fault, "race") == 0) {
    race();
    return 0;
  }
  return 2;
}
