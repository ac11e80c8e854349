// fskit_run SCENARIO: one run. Status 0 when every call had exactly one reply and every expectation
// held. fskit_run --list names the scenarios, fskit_run --plant leak|race does what a sanitizer has
// to find.
#include <stdio.h>
#include <string.h>

#import "Planted.h"
#import "Scenarios.h"

static const struct {
  const char* name;
  Scenario run;
} scenarios[] = {
#define SCENARIO(name) {#name, name},
#include "Scenarios.def"
#undef SCENARIO
};

enum { count = sizeof scenarios / sizeof scenarios[0] };

@interface Idle : NSObject
+ (void)nothing:(id)argument;
@end

@implementation Idle
+ (void)nothing:(id)argument {
  (void)argument;
}
@end

static int run(Scenario scenario) {
  @autoreleasepool {
    // Tells the runtime that there are threads: the core's are none that it would see coming.
    [NSThread detachNewThreadSelector:@selector(nothing:) toTarget:[Idle class] withObject:nil];
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

int main(int argc, char** argv) {
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
