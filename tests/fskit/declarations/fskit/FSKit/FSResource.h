#pragma once

#import <FSKit/FSKitDefines.h>

NS_ASSUME_NONNULL_BEGIN

FSKIT_API_AVAILABILITY_V1
@interface FSResource : NSObject <NSSecureCoding>
- (instancetype)init NS_UNAVAILABLE;
@property(nonatomic, readonly, getter=isRevoked) BOOL revoked;
- (instancetype)makeProxy;
- (void)revoke;
@end

@class FSBlockDeviceResource;

FSKIT_API_AVAILABILITY_V2
@interface FSGenericURLResource : FSResource
@property(readonly, copy) NSURL* url;
- (instancetype)initWithURL:(NSURL*)url;
@end

FSKIT_API_AVAILABILITY_V2
@interface FSPathURLResource : FSResource
@property(readonly, copy) NSURL* url;
@property(readonly, getter=isWritable) BOOL writable;
- (instancetype)initWithURL:(NSURL*)url writable:(BOOL)writable;
@end

NS_ASSUME_NONNULL_END
