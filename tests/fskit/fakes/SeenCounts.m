#import "SeenCounts.h"

#import <Foundation/Foundation.h>
#import <objc/runtime.h>

void __tsan_acquire(void* address) __attribute__((weak));
void __tsan_release(void* address) __attribute__((weak));

static void (*uncountedRelease)(id, SEL);
static void (*uncountedDealloc)(id, SEL);

static void seenRelease(id self, SEL selector) {
  __tsan_acquire(self);
  __tsan_release(self);
  uncountedRelease(self, selector);
}

// After every release, since the last one calls it.
static void seenDealloc(id self, SEL selector) {
  __tsan_acquire(self);
  uncountedDealloc(self, selector);
}

// What the method was, as the function that it is.
static void (*replace(SEL selector, void (*function)(id, SEL)))(id, SEL) {
  Method const method = class_getInstanceMethod([NSObject class], selector);
  return (void (*)(id, SEL))(void*)method_setImplementation(method, (IMP)(void*)function);
}

void seeCounts(void) {
  if (__tsan_acquire == NULL || __tsan_release == NULL) return;
  uncountedRelease = replace(@selector(release), seenRelease);
  uncountedDealloc = replace(@selector(dealloc), seenDealloc);
}
