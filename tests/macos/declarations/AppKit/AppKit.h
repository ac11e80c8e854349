// The little that the app uses of AppKit and of Foundation's run loop.
#pragma once

#import <Foundation/Foundation.h>
#import <Foundation/NSURL.h>

NS_ASSUME_NONNULL_BEGIN

@class NSNotification;

@interface NSObject (TarnelMainThread)
- (void)performSelectorOnMainThread:(SEL)selector
                         withObject:(nullable id)argument
                      waitUntilDone:(BOOL)wait;
@end

@interface NSNumber (TarnelInteger)
+ (NSNumber*)numberWithInteger:(NSInteger)value;
+ (NSNumber*)numberWithLong:(long)value;
@property(readonly) NSInteger integerValue;
@end

typedef NS_ENUM(NSInteger, NSApplicationActivationPolicy) {
  NSApplicationActivationPolicyRegular,
  NSApplicationActivationPolicyAccessory,
  NSApplicationActivationPolicyProhibited,
};

@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
@end

@interface NSApplication : NSObject
@property(class, readonly, strong) __kindof NSApplication* sharedApplication;
@property(nullable, weak) id<NSApplicationDelegate> delegate;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
- (void)activateIgnoringOtherApps:(BOOL)others;
- (void)run;
- (void)terminate:(nullable id)sender;
@end
FOUNDATION_EXPORT __kindof NSApplication* _Null_unspecified NSApp;

typedef NSInteger NSModalResponse;
static const NSModalResponse NSAlertFirstButtonReturn = 1000;
static const NSModalResponse NSAlertThirdButtonReturn = 1002;

@class NSButton;
@interface NSAlert : NSObject
@property(copy) NSString* messageText;
@property(copy) NSString* informativeText;
- (NSButton*)addButtonWithTitle:(NSString*)title;
- (NSModalResponse)runModal;
@end

@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
- (BOOL)openURL:(NSURL*)url;
@end

NS_ASSUME_NONNULL_END
