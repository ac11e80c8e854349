// The system's part: calls the adapter as the system does and counts every reply.
//
//   Call *found = lookUp(volume, @"Docs", directory);
//   expectSuccess(found);          // waits for the reply, with a bound
//   FSItem *docs = found->first;
//
// A second reply to any call, a call without one and an expectation that does not hold fail the
// run. The reply blocks stand on the caller's stack, as the compiler makes them: an adapter that
// does not keep them shows.
#pragma once

#import <FSKit/FSKit.h>
#import <Foundation/Foundation.h>
#include <pthread.h>

#import "Fakes.h"
#import "HostForRun.h"
#import "TarnelFileSystem.h"
#import "TarnelVolume.h"

@interface Call : NSObject {
 @public
  // What the reply said; after expect...().
  id first;
  id second;
  NSError* error;
  uint64_t number;

 @private
  const char* _what;
  pthread_mutex_t _lock;  // guards all above and _replies
  pthread_cond_t _came;
  int _replies;
}
- (bool)wait;  // false after the bound
- (bool)hasCome;
@end

// Why this run has failed so far: how many expectations did not hold.
void fail(const char* file, int line, const char* what);
#define EXPECT(condition)                                   \
  do {                                                      \
    if (!(condition)) fail(__FILE__, __LINE__, #condition); \
  } while (0)
// Every call of the run has had exactly one reply, and the run has no failure. Waits, with a bound.
bool runSucceeded(void);
unsigned long callsMade(void);

void expectSuccessAt(const char* file, int line, Call* call);
void expectErrorAt(const char* file, int line, Call* call, NSString* domain, NSInteger code);
#define expectSuccess(call) expectSuccessAt(__FILE__, __LINE__, call)
#define expectPosixError(call, code) \
  expectErrorAt(__FILE__, __LINE__, call, @"NSPOSIXErrorDomain", code)
#define expectKitError(call, code) \
  expectErrorAt(__FILE__, __LINE__, call, @"FSKitErrorDomain", code)

TarnelFileSystem* fileSystemAt(HostForRun* host);  // autoreleased
Call* probe(TarnelFileSystem* fileSystem);
Call* load(TarnelFileSystem* fileSystem, NSArray* options);  // first: the volume
Call* unload(TarnelFileSystem* fileSystem);

Call* mountVolume(TarnelVolume* volume);
Call* unmountVolume(TarnelVolume* volume);
Call* synchronize(TarnelVolume* volume);
Call* activate(TarnelVolume* volume);  // first: the root
Call* deactivate(TarnelVolume* volume);

Call* lookUp(TarnelVolume* volume, NSString* name, FSItem* directory);
Call* lookUpName(TarnelVolume* volume, FSFileName* name, FSItem* directory);  // item, name
Call* attributesOf(TarnelVolume* volume, FSItem* item, FSItemAttribute wanted);
// wanted below 0: names alone. number: the verifier.
Call* enumerate(TarnelVolume* volume, FSItem* directory, FSDirectoryCookie cookie,
                FSDirectoryVerifier verifier, long wanted, FSDirectoryEntryPacker* packer);
Call* readBytes(TarnelVolume* volume, FSItem* item, off_t offset, size_t length,
                FSMutableFileDataBuffer* buffer);
Call* reclaim(TarnelVolume* volume, FSItem* item);

// Every operation that changes or reads a link, once each. first: the results' emptiness is told by
// being nil; number: 0.
NSArray* refusedChanges(TarnelVolume* volume, FSItem* item, FSItem* directory);
Call* readLink(TarnelVolume* volume, FSItem* item);

// The item of a path whose every step succeeds.
FSItem* itemAt(TarnelVolume* volume, NSString* path);
FSMutableFileDataBuffer* bufferOf(NSUInteger length);  // autoreleased
FSDirectoryEntryPacker* packerOf(NSUInteger room);     // autoreleased
bool eventually(bool (^condition)(void));              // with a bound
