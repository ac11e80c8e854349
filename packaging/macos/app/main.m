#import "AppDelegate.h"

int main(void) {
  @autoreleasepool {
    NSApplication* app = [NSApplication sharedApplication];
    // Kept here: an application does not keep its delegate.
    AppDelegate* delegate = [[AppDelegate alloc] init];
    [app setActivationPolicy:NSApplicationActivationPolicyRegular];
    app.delegate = delegate;
    [app run];
  }
  return 0;
}
