#pragma once

#import <FSKit/FSKitDefines.h>

NS_ASSUME_NONNULL_BEGIN

FSKIT_API_AVAILABILITY_V1
@interface FSEntityIdentifier : NSObject <NSCopying, NSSecureCoding>
FSKIT_STATE(NSUUID* _uuid;)
- (instancetype)init;
- (instancetype)initWithUUID:(NSUUID*)uuid;
- (instancetype)initWithUUID:(NSUUID*)uuid qualifier:(uint64_t)qualifier;
- (instancetype)initWithUUID:(NSUUID*)uuid data:(NSData*)qualifierData;
@property(copy) NSUUID* uuid;
@property(copy, nullable) NSData* qualifier;
@end

FSKIT_API_AVAILABILITY_V1
@interface FSVolumeIdentifier : FSEntityIdentifier
@end

FSKIT_API_AVAILABILITY_V1
@interface FSContainerIdentifier : FSEntityIdentifier
@property(readonly, copy) FSVolumeIdentifier* volumeIdentifier;
@end

NS_ASSUME_NONNULL_END
