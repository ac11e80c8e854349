#pragma once

#import <Foundation/Foundation.h>
#include <sys/types.h>
#include <time.h>

// The state of the tests' own classes, which a runtime without ARC wants to see in the interface.
#ifdef FSKIT_CLASSES_RUN
#define FSKIT_STATE(...) \
  {                      \
   @protected            \
    __VA_ARGS__          \
  }
#else
#define FSKIT_STATE(...)
#endif

#define FSKIT_API_AVAILABILITY_V1 API_AVAILABLE(macos(15.4))
#define FSKIT_API_AVAILABILITY_V2 API_AVAILABLE(macos(26.0))
#define FSKIT_API_AVAILABILITY_V2_4 API_AVAILABLE(macos(26.4))
