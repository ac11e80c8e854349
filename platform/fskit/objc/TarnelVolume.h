// The volume as the system knows it: decodes, asks the core and replies, exactly once for each
// reply; every answer is the core's. Read-only in every operation.
#pragma once

#import <FSKit/FSKit.h>

#import "TarnelItem.h"
#include "fskit/TarnelCore.h"

NS_ASSUME_NONNULL_BEGIN

@interface TarnelVolume : FSVolume <FSVolumeOperations, FSVolumeReadWriteOperations> {
 @private
  TarnelCoreVolume* _core;
  TarnelItemTable* _items;
}

// Takes the handle, which carries the identifier and the name.
- (instancetype)initWithCore:(TarnelCoreVolume*)core NS_DESIGNATED_INITIALIZER;
// Ends the process: there is no volume without a core.
- (instancetype)initWithVolumeID:(FSVolumeIdentifier*)volumeID
                      volumeName:(FSFileName*)volumeName NS_UNAVAILABLE;

// How many items the system holds.
- (NSUInteger)liveItems;

@end

NS_ASSUME_NONNULL_END
