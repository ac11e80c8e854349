#pragma once

#import <FSKit/FSKitDefines.h>

NS_ASSUME_NONNULL_BEGIN

FSKIT_API_AVAILABILITY_V1
@interface FSFileName : NSObject <NSSecureCoding, NSCopying>
FSKIT_STATE(NSData* _data;)
- (instancetype)init NS_UNAVAILABLE;
@property(readonly) NSData* data;
@property(readonly, nullable) NSString* string;  // nil unless the bytes are UTF-8
@property(readonly, copy) NSString* debugDescription;
- (instancetype)initWithCString:(const char*)name NS_DESIGNATED_INITIALIZER;
// Ends at a zero byte.
- (instancetype)initWithBytes:(const char*)bytes
                       length:(NSUInteger)length NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithData:(NSData*)name;
- (instancetype)initWithString:(NSString*)name;
+ (instancetype)nameWithCString:(const char*)name;
+ (instancetype)nameWithBytes:(const char*)bytes length:(NSUInteger)length;
+ (instancetype)nameWithData:(NSData*)name;
+ (instancetype)nameWithString:(NSString*)name;
@end

NS_ASSUME_NONNULL_END
