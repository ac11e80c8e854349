// fskit_run SCENARIO: one run. Status 0 when every call had exactly one reply and every expectation
// held. fskit_run --list names the scenarios, fskit_run --plant leak|race does what a sanitizer has
// to find.
#include <stdio.h>
#include <string.h>

#import "Planted.h"
#import "Scenarios.h"
#import "SeenCounts.h"

static const struct {
  const char* name;
  Scenario run;
} scenarios[] = {
#define SCENARIO(name) {#name, name},
#include "Scenarios.def"
#undef SCENARIO
};

enum { count = sizeof scenarios / sizeof scenarios[0] };

static void* beAThread(void* argument) {
  GSRegisterCurrentThread();
  GSUnregisterCurrentThread();
  return argument;
}

// Tells the runtime that there are threads: the core's are none that it sees coming.
static void becomeThreaded(void) {
  pthread_t thread;
  if (pthread_create(&thread, NULL, beAThread, NULL) == 0) pthread_join(thread, NULL);
}

static int run(Scenario scenario) {
  @autoreleasepool {
    becomeThreaded();
    HostForRun* const host = hostMake();
    hostFile(host, "me/Docs/a.txt", "hello", 5);
    @autoreleasepool {
      scenario(host);
    }
    const bool succeeded = runSucceeded();
    const bool hostSucceeded = hostFree(host);
    printf("%lu calls, each replied to once: %s\n", callsMade(), succeeded ? "yes" : "no");
    return succeeded && hostSucceeded ? 0 : 1;
  }
}

// Of the leak sanitizer, where there is one.
void __lsan_disable(void) __attribute__((weak));
void __lsan_enable(void) __attribute__((weak));

// GNUstep loses one small object when its arrays are first used; not ours to mend, nor to report.
static void useArraysFirst(void) {
  if (__lsan_disable != NULL) __lsan_disable();
  @autoreleasepool {
    (void)[NSMutableArray arrayWithObject:@""];
  }
  if (__lsan_enable != NULL) __lsan_enable();
}

int main(int argc, char** argv) {
  useArraysFirst();
  seeCounts();
  if (argc == 2 && strcmp(argv[1], "--list") == 0) {
    for (int i = 0; i < count; ++i) puts(scenarios[i].name);
    return 0;
  }
  if (argc == 3 && strcmp(argv[1], "--plant") == 0) return plant(argv[2]);
  for (int i = 0; argc == 2 && i < count; ++i) {
    if (strcmp(argv[1], scenarios[i].name) == 0) return run(scenarios[i].run);
  }
  fputs("usage: fskit_run SCENARIO | --list | --plant leak|race\n", stderr);
  return 2;
}
