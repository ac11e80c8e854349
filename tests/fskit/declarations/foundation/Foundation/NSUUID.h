#pragma once

#import <Foundation/NSString.h>

NS_ASSUME_NONNULL_BEGIN

typedef unsigned char uuid_t[16];

@interface NSUUID : NSObject <NSCopying, NSSecureCoding>
+ (instancetype)UUID;
- (instancetype)initWithUUIDBytes:(const uuid_t _Nullable)bytes;
- (void)getUUIDBytes:(uuid_t _Nonnull)bytes;
@property(readonly, copy) NSString* UUIDString;
@end

NS_ASSUME_NONNULL_END
