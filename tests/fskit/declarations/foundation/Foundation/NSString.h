#pragma once

#import <Foundation/NSObject.h>

NS_ASSUME_NONNULL_BEGIN

typedef NSUInteger NSStringEncoding;
enum : NSStringEncoding { NSASCIIStringEncoding = 1, NSUTF8StringEncoding = 4 };

@interface NSString : NSObject <NSCopying, NSSecureCoding>
@property(readonly) NSUInteger length;
@property(nullable, readonly) const char* UTF8String NS_RETURNS_INNER_POINTER;
+ (instancetype)string;
+ (nullable instancetype)stringWithUTF8String:(const char*)text;
+ (instancetype)stringWithFormat:(NSString*)format, ... __attribute__((format(__NSString__, 1, 2)));
- (nullable instancetype)initWithBytes:(const void*)bytes
                                length:(NSUInteger)length
                              encoding:(NSStringEncoding)encoding;
- (BOOL)isEqualToString:(NSString*)other;
- (BOOL)hasPrefix:(NSString*)prefix;
- (BOOL)hasSuffix:(NSString*)suffix;
- (NSString*)stringByAppendingString:(NSString*)other;
- (NSString*)stringByAppendingPathComponent:(NSString*)name;
@end

// What a literal is.
@interface NSConstantString : NSString
@end

FOUNDATION_EXPORT NSString* NSHomeDirectory(void);

NS_ASSUME_NONNULL_END
