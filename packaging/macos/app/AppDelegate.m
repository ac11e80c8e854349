#import "AppDelegate.h"

#import "ExtensionState.h"

@implementation AppDelegate

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
  (void)notification;
  [self look];
}

- (void)look {
  [[FSClient sharedInstance] fetchInstalledExtensionsWithCompletionHandler:^(
                                 NSArray<FSModuleIdentity*>* installed, NSError* error) {
    // The answer comes on a thread of the system's; windows belong to the main one.
    [self performSelectorOnMainThread:@selector(show:)
                           withObject:@(tarnelExtensionState(installed, error))
                        waitUntilDone:NO];
  }];
}

- (void)show:(NSNumber*)number {
  const TarnelExtensionState state = (TarnelExtensionState)[number integerValue];
  NSAlert* alert = [[NSAlert alloc] init];
  alert.messageText = tarnelStateTitle(state);
  alert.informativeText = tarnelStateAdvice(state);
  [alert addButtonWithTitle:@"Quit"];
  [alert addButtonWithTitle:@"Check Again"];
  if (state == TarnelExtensionStateDisabled) [alert addButtonWithTitle:@"Open System Settings"];
  [NSApp activateIgnoringOtherApps:YES];
  const NSModalResponse answer = [alert runModal];
  if (answer == NSAlertFirstButtonReturn) {
    [NSApp terminate:nil];
    return;
  }
  if (answer == NSAlertThirdButtonReturn) {
    NSURL* settings = [NSURL URLWithString:tarnelSettingsURL()];
    if (settings != nil) [[NSWorkspace sharedWorkspace] openURL:settings];
  }
  [self look];
}

@end
