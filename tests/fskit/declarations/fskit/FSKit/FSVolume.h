#pragma once

#import <FSKit/FSEntityIdentifier.h>
#import <FSKit/FSFileName.h>

NS_ASSUME_NONNULL_BEGIN

FSKIT_API_AVAILABILITY_V1
@interface FSVolume : NSObject
FSKIT_STATE(FSVolumeIdentifier* _volumeID; FSFileName * _name;)
- (instancetype)init NS_UNAVAILABLE;
- (instancetype)initWithVolumeID:(FSVolumeIdentifier*)volumeID
                      volumeName:(FSFileName*)volumeName NS_DESIGNATED_INITIALIZER;
@property(strong, readonly) FSVolumeIdentifier* volumeID;
@property(copy) FSFileName* name;
@end

NS_ASSUME_NONNULL_END
