// Whether the system knows the extension and lets it run, and what to tell the user about it.
#import <FSKit/FSKit.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_ENUM(NSInteger, TarnelExtensionState) {
  TarnelExtensionStateUnknown,   // the system did not say
  TarnelExtensionStateMissing,   // it has not found the extension
  TarnelExtensionStateDisabled,  // found, and switched off
  TarnelExtensionStateEnabled,
};

// From what the system answers when it is asked for the installed extensions. Of several copies one
// that is enabled counts.
TarnelExtensionState tarnelExtensionState(NSArray<FSModuleIdentity*>* _Nullable installed,
                                          NSError* _Nullable error);

// One short line, and what to do.
NSString* tarnelStateTitle(TarnelExtensionState state);
NSString* tarnelStateAdvice(TarnelExtensionState state);

// Where the user switches it on, for the system's settings to open.
NSString* tarnelSettingsURL(void);

NS_ASSUME_NONNULL_END
