// What the extension's entry does with the class, with nothing else in sight.
#import "TarnelFileSystem.h"

FSUnaryFileSystem<FSUnaryFileSystemOperations>* entryFileSystem(void);
FSUnaryFileSystem<FSUnaryFileSystemOperations>* entryFileSystem(void) {
  return [[TarnelFileSystem alloc] init];
}
