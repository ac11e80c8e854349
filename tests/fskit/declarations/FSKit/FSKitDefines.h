#pragma once

#import <Foundation/Foundation.h>
#include <sys/types.h>
#include <time.h>

#define FSKIT_API_AVAILABILITY_V1 API_AVAILABLE(macos(15.4))
#define FSKIT_API_AVAILABILITY_V2 API_AVAILABLE(macos(26.0))
#define FSKIT_API_AVAILABILITY_V2_4 API_AVAILABLE(macos(26.4))
