// What the app makes of each answer of the system's. Status 0 when every expectation held.
#include <stdio.h>

#import "ExtensionState.h"

static NSString* const ours = @"com.tarnel.desktop.fskitext";

@interface TestModule : FSModuleIdentity {
  NSString* _identifier;
  BOOL _isOn;
}
+ (TestModule*)moduleWithIdentifier:(NSString*)identifier isOn:(BOOL)isOn;
@end

@implementation FSModuleIdentity
- (NSString*)bundleIdentifier {
  return @"";
}
- (NSURL*)url {
  return [NSURL fileURLWithPath:@"/"];
}
- (BOOL)isEnabled {
  return NO;
}
@end

@implementation TestModule
+ (TestModule*)moduleWithIdentifier:(NSString*)identifier isOn:(BOOL)isOn {
  TestModule* made = [[[TestModule alloc] init] autorelease];
  made->_identifier = identifier;
  made->_isOn = isOn;
  return made;
}
- (NSString*)bundleIdentifier {
  return _identifier;
}
- (BOOL)isEnabled {
  return _isOn;
}
@end

static int failures = 0;

static void expect(const char* what, BOOL held) {
  if (held) return;
  ++failures;
  fprintf(stderr, "failed: %s\n", what);
}

static TarnelExtensionState stateOf(NSArray* modules) { return tarnelExtensionState(modules, nil); }

int main(void) {
  @autoreleasepool {
    TestModule* other = [TestModule moduleWithIdentifier:@"com.apple.fskit.msdos" isOn:YES];
    TestModule* off = [TestModule moduleWithIdentifier:ours isOn:NO];
    TestModule* on = [TestModule moduleWithIdentifier:ours isOn:YES];
    NSError* error = [NSError errorWithDomain:NSPOSIXErrorDomain code:5 userInfo:nil];

    expect("no answer tells nothing", stateOf(nil) == TarnelExtensionStateUnknown);
    expect(
        "an error tells nothing, whatever comes with it",
        tarnelExtensionState([NSArray arrayWithObject:on], error) == TarnelExtensionStateUnknown);
    expect("no module is ours", stateOf([NSArray array]) == TarnelExtensionStateMissing);
    expect("another's module is not ours",
           stateOf([NSArray arrayWithObject:other]) == TarnelExtensionStateMissing);
    expect("ours is found among others",
           stateOf([NSArray arrayWithObjects:other, off, nil]) == TarnelExtensionStateDisabled);
    expect("ours is on", stateOf([NSArray arrayWithObject:on]) == TarnelExtensionStateEnabled);
    expect("one copy that is on is enough",
           stateOf([NSArray arrayWithObjects:off, on, nil]) == TarnelExtensionStateEnabled &&
               stateOf([NSArray arrayWithObjects:on, off, nil]) == TarnelExtensionStateEnabled);

    for (NSInteger state = TarnelExtensionStateUnknown; state <= TarnelExtensionStateEnabled;
         ++state) {
      expect("each state has a title and an advice",
             [tarnelStateTitle((TarnelExtensionState)state) length] > 0 &&
                 [tarnelStateAdvice((TarnelExtensionState)state) length] > 0);
    }
    expect("what is off says where to switch it on",
           [tarnelStateAdvice(TarnelExtensionStateDisabled) rangeOfString:@"File System Extensions"]
                   .length > 0);
    expect("the settings' address is one", [NSURL URLWithString:tarnelSettingsURL()] != nil);
  }
  return failures == 0 ? 0 : 1;
}
