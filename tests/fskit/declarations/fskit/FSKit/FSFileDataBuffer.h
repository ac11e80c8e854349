#pragma once

#import <FSKit/FSKitDefines.h>

NS_ASSUME_NONNULL_BEGIN

FSKIT_API_AVAILABILITY_V1
@interface FSMutableFileDataBuffer : NSObject
FSKIT_STATE(NSUInteger _length; void* _bytes;)
- (instancetype)init NS_UNAVAILABLE;
@property(readonly) NSUInteger length;
- (void*)mutableBytes;
@end

NS_ASSUME_NONNULL_END
