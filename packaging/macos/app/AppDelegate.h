// Asks for the extension's state, shows it, and asks again until the user has had enough.
#import <AppKit/AppKit.h>

@interface AppDelegate : NSObject <NSApplicationDelegate>
@end
