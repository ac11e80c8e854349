// What the extension's entry does with the class, with nothing else in sight.
#import "TarnelFileSystem.h"

TarnelFileSystem* entryFileSystem(void);
TarnelFileSystem* entryFileSystem(void) { return [[TarnelFileSystem alloc] init]; }
