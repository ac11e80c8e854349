#import "TarnelFileSystem.h"

#include <string.h>

#import "Ownership.h"
#import "Replies.h"
#import "TarnelLog.h"
#import "TarnelVolume.h"
#include "fskit/TarnelCore.h"

static TarnelText textOf(const char* text) {
  const TarnelText all = {.bytes = text, .length = strlen(text)};
  return all;
}

// All that is ever asked of a resource: the name of its class.
static TarnelText typeOf(FSResource* resource) {
  return textOf([NSStringFromClass([resource class]) UTF8String]);
}

static const char* optionAt(void* context, size_t index) {
  return [[TARNEL_LENT(NSArray<NSString*>*, context) objectAtIndex:index] UTF8String];
}

// Lends the list: whoever hands these on keeps it until the reply.
static TarnelOptions optionsOf(NSArray<NSString*>* texts) {
  const TarnelOptions options = {
      .context = TARNEL_LEND(texts), .count = [texts count], .textAt = optionAt};
  return options;
}

static void becameReady(void* context) {
  TARNEL_LENT(TarnelFileSystem*, context).containerStatus = FSContainerStatus.ready;
}

@implementation TarnelFileSystem

+ (void)initialize {
  if (self == [TarnelFileSystem class]) tarnelUseSystemLog();
}

- (instancetype)init {
  return [self initWithHome:NSHomeDirectory()];
}

- (instancetype)initWithHome:(NSString*)home {
  self = [super init];
  if (self == nil) return nil;
  // Lends self: the core calls back inside a load only, which is a call of self's.
  _core = tarnelFileSystemMake(textOf([home UTF8String]), becameReady, TARNEL_LEND(self));
  return self;
}

- (void)dealloc {
  tarnelFileSystemRelease(_core);
  TARNEL_SUPER_DEALLOC();
}

- (void)probeResource:(FSResource*)resource
         replyHandler:(void (^)(FSProbeResult* _Nullable result,
                                NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  tarnelFileSystemProbe(
      _core, typeOf(resource), tarnelSendProbeDone,
      tarnelKeepProbeDone(^(TarnelError error, TarnelText name, const uint8_t* containerID) {
        if (containerID == NULL) {
          reply(nil, tarnelNSError(error));
          return;
        }
        NSUUID* const uuid = TARNEL_AUTORELEASED([[NSUUID alloc] initWithUUIDBytes:containerID]);
        FSContainerIdentifier* const container =
            TARNEL_AUTORELEASED([[FSContainerIdentifier alloc] initWithUUID:uuid]);
        NSString* const text =
            TARNEL_AUTORELEASED([[NSString alloc] initWithBytes:name.bytes
                                                         length:name.length
                                                       encoding:NSUTF8StringEncoding]);
        reply([FSProbeResult usableProbeResultWithName:text containerID:container], nil);
      }));
}

- (void)loadResource:(FSResource*)resource
             options:(FSTaskOptions*)options
        replyHandler:(void (^)(FSVolume* _Nullable volume,
                               NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  NSArray<NSString*>* const texts = options.taskOptions;
  tarnelFileSystemLoad(_core, typeOf(resource), optionsOf(texts), tarnelSendVolumeDone,
                       tarnelKeepVolumeDone(^(TarnelError error, TarnelCoreVolume* core) {
                         (void)texts;  // kept until here
                         if (core == NULL) {
                           reply(nil, tarnelNSError(error));
                           return;
                         }
                         reply(TARNEL_AUTORELEASED([[TarnelVolume alloc] initWithCore:core]), nil);
                       }));
}

- (void)unloadResource:(FSResource*)resource
               options:(FSTaskOptions*)options
          replyHandler:(void (^)(NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  NSArray<NSString*>* const texts = options.taskOptions;
  tarnelFileSystemUnload(_core, typeOf(resource), optionsOf(texts), tarnelSendDone,
                         tarnelKeepDone(^(TarnelError error) {
                           (void)texts;  // kept until here
                           reply(tarnelNSError(error));
                         }));
}

@end
