#pragma once

#import <FSKit/FSKitDefines.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_ENUM(NSInteger, FSContainerState) {
  FSContainerStateNotReady = 0,
  FSContainerStateBlocked,
  FSContainerStateReady,
  FSContainerStateActive,
};

FSKIT_API_AVAILABILITY_V1
@interface FSContainerStatus : NSObject <NSCopying>
FSKIT_STATE(FSContainerState _state;)
- (instancetype)init NS_UNAVAILABLE;
@property(readonly) FSContainerState state;
@property(readonly, copy, nullable) NSError* status;
@property(class, readonly) FSContainerStatus* active;
@property(class, readonly) FSContainerStatus* ready;
+ (instancetype)activeWithStatus:(NSError*)status;
+ (instancetype)blockedWithStatus:(NSError*)status;
+ (instancetype)notReadyWithStatus:(NSError*)status;
+ (instancetype)readyWithStatus:(NSError*)status;
@end

NS_ASSUME_NONNULL_END
