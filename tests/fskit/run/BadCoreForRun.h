// A core whose every question to the host throws.
#pragma once

#include "fskit/TarnelCore.h"

#ifdef __cplusplus
extern "C" {
#endif

TarnelCoreVolume* badCore(void);

#ifdef __cplusplus
}
#endif
