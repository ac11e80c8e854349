// Blocks as replies of the C surface: `keep` makes the context, `send` is the function.
//
//   tarnelVolumeMount(core, tarnelSendDone, tarnelKeepDone(^(TarnelError error) { ... }));
//
// The surface calls each pair exactly once, which ends the block. Threads: any; a pool of its own
// stands around each call.
#pragma once

#import <Foundation/Foundation.h>

#import "Ownership.h"
#include "fskit/TarnelCore.h"

NS_ASSUME_NONNULL_BEGIN

typedef void (^TarnelDone)(TarnelError error);
typedef void (^TarnelProbeDone)(TarnelError error, TarnelText name,
                                const uint8_t* _Nullable containerID);
typedef void (^TarnelVolumeDone)(TarnelError error, TarnelCoreVolume* _Nullable volume);
typedef void (^TarnelItemDone)(TarnelError error, TarnelCoreItem* _Nullable item);
typedef void (^TarnelAttributesDone)(TarnelError error,
                                     const TarnelAttributes* _Nullable attributes);
typedef void (^TarnelVerifierDone)(TarnelError error, uint64_t verifier);
typedef void (^TarnelCountDone)(TarnelError error, int64_t count);

void* tarnelKeepDone(TarnelDone TARNEL_CALLED_ONCE done);
void* tarnelKeepProbeDone(TarnelProbeDone TARNEL_CALLED_ONCE done);
void* tarnelKeepVolumeDone(TarnelVolumeDone TARNEL_CALLED_ONCE done);
void* tarnelKeepItemDone(TarnelItemDone TARNEL_CALLED_ONCE done);
void* tarnelKeepAttributesDone(TarnelAttributesDone TARNEL_CALLED_ONCE done);
void* tarnelKeepVerifierDone(TarnelVerifierDone TARNEL_CALLED_ONCE done);
void* tarnelKeepCountDone(TarnelCountDone TARNEL_CALLED_ONCE done);

void tarnelSendDone(void* context, TarnelError error);
void tarnelSendProbeDone(void* context, TarnelError error, TarnelText name,
                         const uint8_t* _Nullable containerID);
void tarnelSendVolumeDone(void* context, TarnelError error, TarnelCoreVolume* _Nullable volume);
void tarnelSendItemDone(void* context, TarnelError error, TarnelCoreItem* _Nullable item);
void tarnelSendAttributesDone(void* context, TarnelError error,
                              const TarnelAttributes* _Nullable attributes);
void tarnelSendVerifierDone(void* context, TarnelError error, uint64_t verifier);
void tarnelSendCountDone(void* context, TarnelError error, int64_t count);

// nil for no error.
NSError* _Nullable tarnelNSError(TarnelError error);

NS_ASSUME_NONNULL_END
