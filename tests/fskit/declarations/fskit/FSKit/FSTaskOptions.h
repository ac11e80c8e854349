#pragma once

#import <FSKit/FSKitDefines.h>

NS_ASSUME_NONNULL_BEGIN

FSKIT_API_AVAILABILITY_V1
@interface FSTaskOptions : NSObject
FSKIT_STATE(NSArray* _texts;)
- (instancetype)init NS_UNAVAILABLE;
@property(readonly, copy) NSArray<NSString*>* taskOptions;
- (nullable NSURL*)urlForOption:(NSString*)option;
@end

NS_ASSUME_NONNULL_END
