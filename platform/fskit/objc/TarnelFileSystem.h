// The unary file system as the system knows it: probes, loads and unloads its resource. It decodes,
// asks the core and replies; every answer is the core's.
//
// Plain Objective-C and annotated throughout: the extension's entry, which is Swift, imports it.
#pragma once

#import <FSKit/FSKit.h>

NS_ASSUME_NONNULL_BEGIN

@interface TarnelFileSystem : FSUnaryFileSystem <FSUnaryFileSystemOperations> {
 @private
  struct TarnelCoreFileSystem* _core;
}

// The control socket lies in the process's home: for the extension that is its container.
- (instancetype)init;
// The control socket lies in `home`. To go by an application group's container instead of the
// extension's own, -init hands that container's path to this.
- (instancetype)initWithHome:(NSString*)home NS_DESIGNATED_INITIALIZER;

@end

NS_ASSUME_NONNULL_END
