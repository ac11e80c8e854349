// The blocks runtime here keeps blocks that a block holds, but not objects. The system's does, and
// the adapter relies on it; so the program brings its own way of holding an object, which the
// runtime's gives way to.
#import <Foundation/Foundation.h>
#include <dlfcn.h>

enum { fieldIsObject = 3 };

void _Block_object_assign(void* destination, const void* object, const int flags);
void _Block_object_dispose(const void* object, const int flags);

void _Block_object_assign(void* destination, const void* object, const int flags) {
  if (flags == fieldIsObject) {
    *(id*)destination = [(id)object retain];
    return;
  }
  static void (*next)(void*, const void*, const int);
  if (__atomic_load_n(&next, __ATOMIC_ACQUIRE) == NULL) {
    void* const found = dlsym(RTLD_NEXT, "_Block_object_assign");
    __atomic_store_n((void**)&next, found, __ATOMIC_RELEASE);
  }
  next(destination, object, flags);
}

void _Block_object_dispose(const void* object, const int flags) {
  if (flags == fieldIsObject) {
    [(id)object release];
    return;
  }
  static void (*next)(const void*, const int);
  if (__atomic_load_n(&next, __ATOMIC_ACQUIRE) == NULL) {
    void* const found = dlsym(RTLD_NEXT, "_Block_object_dispose");
    __atomic_store_n((void**)&next, found, __ATOMIC_RELEASE);
  }
  next(object, flags);
}
