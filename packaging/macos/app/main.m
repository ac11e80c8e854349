#import "AppDelegate.h"

int main(void) {
  @autoreleasepool {
    NSApplication* app = [NSApplication sharedApplication];
    // Kept here until the end: an application does not keep its delegate, and a variable alone
    // keeps its object only as long as the compiler sees it used.
    NS_VALID_UNTIL_END_OF_SCOPE AppDelegate* delegate = [[AppDelegate alloc] init];
    [app setActivationPolicy:NSApplicationActivationPolicyRegular];
    app.delegate = delegate;
    [app run];
  }
  return 0;
}
