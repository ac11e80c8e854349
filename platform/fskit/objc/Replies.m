#import "Replies.h"

#import <FSKit/FSKit.h>

// The context takes the block on; the surface's one call of `send` is the block's.
#define TARNEL_REPLY(Kind, parameters, arguments)                               \
  void* tarnelKeep##Kind(Tarnel##Kind done) { return TARNEL_KEEP_BLOCK(done); } \
  void tarnelSend##Kind parameters {                                            \
    @autoreleasepool {                                                          \
      Tarnel##Kind const done = TARNEL_TAKE_BLOCK(Tarnel##Kind, context);       \
      done arguments;                                                           \
      TARNEL_DROP_BLOCK(done);                                                  \
    }                                                                           \
  }

TARNEL_REPLY(Done, (void* context, TarnelError error), (error))
TARNEL_REPLY(ProbeDone,
             (void* context, TarnelError error, TarnelText name, const uint8_t* containerID),
             (error, name, containerID))
TARNEL_REPLY(VolumeDone, (void* context, TarnelError error, TarnelCoreVolume* volume),
             (error, volume))
TARNEL_REPLY(ItemDone, (void* context, TarnelError error, TarnelCoreItem* item), (error, item))
TARNEL_REPLY(AttributesDone, (void* context, TarnelError error, const TarnelAttributes* attributes),
             (error, attributes))
TARNEL_REPLY(VerifierDone, (void* context, TarnelError error, uint64_t verifier), (error, verifier))
TARNEL_REPLY(CountDone, (void* context, TarnelError error, int64_t count), (error, count))

NSError* tarnelNSError(TarnelError error) {
  switch (error.domain) {
    case tarnelNoError:
      return nil;
    case tarnelFileSystemKitError:
      return [NSError errorWithDomain:FSKitErrorDomain code:error.code userInfo:@{}];
    default:
      return fs_errorForPOSIXError(error.code);
  }
}
