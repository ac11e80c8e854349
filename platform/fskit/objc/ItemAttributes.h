// The core's attributes as the system's: valid in one is valid in the other, and nothing else is.
#pragma once

#import <FSKit/FSKit.h>

#include "fskit/TarnelCore.h"

NS_ASSUME_NONNULL_BEGIN

FSItemAttributes* _Nullable tarnelItemAttributes(const TarnelAttributes* _Nullable given);

NS_ASSUME_NONNULL_END
