#pragma once

#import <FSKit/FSEntityIdentifier.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_ENUM(NSInteger, FSMatchResult) {
  FSMatchResultNotRecognized = 0,
  FSMatchResultRecognized,
  FSMatchResultUsableButLimited,
  FSMatchResultUsable,
};

FSKIT_API_AVAILABILITY_V1
@interface FSProbeResult : NSObject <NSSecureCoding>
FSKIT_STATE(NSString* _name; FSContainerIdentifier * _containerID;)
- (instancetype)init NS_UNAVAILABLE;
@property(readonly) FSMatchResult result;
@property(readonly, copy, nullable) NSString* name;
@property(readonly, nullable) FSContainerIdentifier* containerID;
@property(class, readonly) FSProbeResult* notRecognizedProbeResult;
@property(class, readonly) FSProbeResult* usableButLimitedProbeResult;
+ (instancetype)recognizedProbeResultWithName:(NSString*)name
                                  containerID:(FSContainerIdentifier*)containerID;
+ (instancetype)usableButLimitedProbeResultWithName:(NSString*)name
                                        containerID:(FSContainerIdentifier*)containerID;
+ (instancetype)usableProbeResultWithName:(NSString*)name
                              containerID:(FSContainerIdentifier*)containerID;
@end

NS_ASSUME_NONNULL_END
