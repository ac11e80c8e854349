// What an app sees of FSKit besides what an extension sees. Since macOS 15.4.
#pragma once

#include_next <FSKit/FSKit.h>
#import <Foundation/NSURL.h>

NS_ASSUME_NONNULL_BEGIN

FSKIT_API_AVAILABILITY_V1
@interface FSModuleIdentity : NSObject
@property(readonly, copy) NSString* bundleIdentifier;
@property(readonly, copy) NSURL* url;
@property(readonly, getter=isEnabled) BOOL enabled;
@end

FSKIT_API_AVAILABILITY_V1
@interface FSClient : NSObject
@property(class, readonly) FSClient* sharedInstance;
- (void)fetchInstalledExtensionsWithCompletionHandler:
    (void (^)(NSArray<FSModuleIdentity*>* _Nullable installed, NSError* _Nullable error))handler;
@end

NS_ASSUME_NONNULL_END
