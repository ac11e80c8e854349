#import "ExtensionState.h"

static NSString* const extensionID = @"com.tarnel.desktop.fskitext";

TarnelExtensionState tarnelExtensionState(NSArray<FSModuleIdentity*>* installed, NSError* error) {
  if (installed == nil || error != nil) return TarnelExtensionStateUnknown;
  TarnelExtensionState state = TarnelExtensionStateMissing;
  for (FSModuleIdentity* module in installed) {
    if (![module.bundleIdentifier isEqualToString:extensionID]) continue;
    if (module.isEnabled) return TarnelExtensionStateEnabled;
    state = TarnelExtensionStateDisabled;
  }
  return state;
}

NSString* tarnelStateTitle(TarnelExtensionState state) {
  switch (state) {
    case TarnelExtensionStateUnknown:
      return @"The system does not say whether Tarnel's file system is installed.";
    case TarnelExtensionStateMissing:
      return @"Tarnel's file system is not installed.";
    case TarnelExtensionStateDisabled:
      return @"Tarnel's file system is switched off.";
    case TarnelExtensionStateEnabled:
      return @"Tarnel's file system is ready.";
  }
  return @"";
}

NSString* tarnelStateAdvice(TarnelExtensionState state) {
  switch (state) {
    case TarnelExtensionStateUnknown:
      return @"Check again in a moment. If nothing changes, log out and in.";
    case TarnelExtensionStateMissing:
      return @"Move this app to the Applications folder, remove other copies of it, and open it "
             @"again.";
    case TarnelExtensionStateDisabled:
      return @"In System Settings open General > Login Items & Extensions > Extensions > By "
             @"Category > File System Extensions, and switch Tarnel on.";
    case TarnelExtensionStateEnabled:
      return @"In Terminal:\n\n"
             @"mkdir -p ~/volume && tarnel mount ~/volume\n"
             @"tarnel host ~/Pictures";
  }
  return @"";
}

NSString* tarnelSettingsURL(void) {
  return @"x-apple.systempreferences:com.apple.LoginItems-Settings.extension";
}
