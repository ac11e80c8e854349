#import "System.h"

#include <stdio.h>
#include <time.h>

enum { boundSeconds = 30 };

static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;  // guards all below
static unsigned long calls;
static unsigned long replies;
static unsigned long failures;

void fail(const char* file, int line, const char* what) {
  fprintf(stderr, "%s:%d: %s\n", file, line, what);
  pthread_mutex_lock(&lock);
  ++failures;
  pthread_mutex_unlock(&lock);
}

bool eventually(bool (^condition)(void)) {
  const struct timespec moment = {.tv_sec = 0, .tv_nsec = 1000000};
  for (int i = 0; i < boundSeconds * 1000; ++i) {
    if (condition()) return true;
    nanosleep(&moment, NULL);
  }
  return false;
}

unsigned long callsMade(void) {
  pthread_mutex_lock(&lock);
  const unsigned long made = calls;
  pthread_mutex_unlock(&lock);
  return made;
}

bool runSucceeded(void) {
  const bool all = eventually(^{
    pthread_mutex_lock(&lock);
    const bool equal = calls == replies;
    pthread_mutex_unlock(&lock);
    return equal;
  });
  pthread_mutex_lock(&lock);
  if (!all) fprintf(stderr, "%lu calls, %lu replies\n", calls, replies);
  const bool succeeded = all && failures == 0;
  pthread_mutex_unlock(&lock);
  return succeeded;
}

@implementation Call

+ (Call*)of:(const char*)what {
  Call* const made = [[[self alloc] init] autorelease];
  made->_what = what;
  pthread_mutex_lock(&lock);
  ++calls;
  pthread_mutex_unlock(&lock);
  return made;
}

- (instancetype)init {
  if ((self = [super init])) {
    pthread_mutex_init(&_lock, NULL);
    pthread_cond_init(&_came, NULL);
  }
  return self;
}

- (void)dealloc {
  pthread_cond_destroy(&_came);
  pthread_mutex_destroy(&_lock);
  [first release];
  [second release];
  [error release];
  [super dealloc];
}

- (void)replied:(id)result and:(id)other number:(uint64_t)count error:(NSError*)failure {
  pthread_mutex_lock(&_lock);
  const bool again = _replies++ > 0;
  if (!again) {
    first = [result retain];
    second = [other retain];
    number = count;
    error = [failure retain];
  }
  pthread_cond_broadcast(&_came);
  pthread_mutex_unlock(&_lock);
  if (again) fail(_what, 0, "a second reply");
  pthread_mutex_lock(&lock);
  ++replies;
  pthread_mutex_unlock(&lock);
}

- (bool)wait {
  struct timespec end;
  clock_gettime(CLOCK_REALTIME, &end);
  end.tv_sec += boundSeconds;
  pthread_mutex_lock(&_lock);
  int outcome = 0;
  while (_replies == 0 && outcome == 0) outcome = pthread_cond_timedwait(&_came, &_lock, &end);
  const bool came = _replies > 0;
  pthread_mutex_unlock(&_lock);
  return came;
}

- (bool)hasCome {
  pthread_mutex_lock(&_lock);
  const bool came = _replies > 0;
  pthread_mutex_unlock(&_lock);
  return came;
}

@end

void expectSuccessAt(const char* file, int line, Call* call) {
  if (![call wait]) return fail(file, line, "no reply");
  if (call->error != nil) fail(file, line, [[call->error description] UTF8String]);
}

void expectErrorAt(const char* file, int line, Call* call, NSString* domain, NSInteger code) {
  if (![call wait]) return fail(file, line, "no reply");
  if (call->error == nil) return fail(file, line, "no error");
  if (![[call->error domain] isEqualToString:domain] || [call->error code] != code ||
      [[call->error userInfo] count] != 0) {
    fail(file, line, [[call->error description] UTF8String]);
  }
  if (call->first != nil || call->second != nil || call->number != 0) {
    fail(file, line, "a result beside the error");
  }
}

TarnelFileSystem* fileSystemAt(HostForRun* host) {
  NSString* const home = [NSString stringWithUTF8String:hostHome(host)];
  return [[[TarnelFileSystem alloc] initWithHome:home] autorelease];
}

static FSResource* anyResource(void) {
  NSURL* const url = [NSURL URLWithString:@"tarnel://local"];
  return [[[FSGenericURLResource alloc] initWithURL:url] autorelease];
}

static FSTaskOptions* options(NSArray* texts) {
  return [[[FSTaskOptions alloc] initWithTexts:texts] autorelease];
}

Call* probe(TarnelFileSystem* fileSystem) {
  Call* const call = [Call of:"probe"];
  [fileSystem probeResource:anyResource()
               replyHandler:^(FSProbeResult* result, NSError* error) {
                 [call replied:result and:nil number:0 error:error];
               }];
  return call;
}

Call* load(TarnelFileSystem* fileSystem, NSArray* texts) {
  Call* const call = [Call of:"load"];
  [fileSystem loadResource:anyResource()
                   options:options(texts)
              replyHandler:^(FSVolume* volume, NSError* error) {
                [call replied:volume and:nil number:0 error:error];
              }];
  return call;
}

Call* unload(TarnelFileSystem* fileSystem) {
  Call* const call = [Call of:"unload"];
  [fileSystem unloadResource:anyResource()
                     options:options(@[])
                replyHandler:^(NSError* error) {
                  [call replied:nil and:nil number:0 error:error];
                }];
  return call;
}

Call* mountVolume(TarnelVolume* volume) {
  Call* const call = [Call of:"mount"];
  [volume mountWithOptions:options(@[])
              replyHandler:^(NSError* error) {
                [call replied:nil and:nil number:0 error:error];
              }];
  return call;
}

Call* unmountVolume(TarnelVolume* volume) {
  Call* const call = [Call of:"unmount"];
  [volume unmountWithReplyHandler:^{
    [call replied:nil and:nil number:0 error:nil];
  }];
  return call;
}

Call* synchronize(TarnelVolume* volume) {
  Call* const call = [Call of:"synchronize"];
  [volume synchronizeWithFlags:FSSyncFlagsWait
                  replyHandler:^(NSError* error) {
                    [call replied:nil and:nil number:0 error:error];
                  }];
  return call;
}

Call* activate(TarnelVolume* volume) {
  Call* const call = [Call of:"activate"];
  [volume activateWithOptions:options(@[])
                 replyHandler:^(FSItem* root, NSError* error) {
                   [call replied:root and:nil number:0 error:error];
                 }];
  return call;
}

Call* deactivate(TarnelVolume* volume) {
  Call* const call = [Call of:"deactivate"];
  [volume deactivateWithOptions:0
                   replyHandler:^(NSError* error) {
                     [call replied:nil and:nil number:0 error:error];
                   }];
  return call;
}

Call* lookUpName(TarnelVolume* volume, FSFileName* name, FSItem* directory) {
  Call* const call = [Call of:"lookup"];
  [volume lookupItemNamed:name
              inDirectory:directory
             replyHandler:^(FSItem* item, FSFileName* itemName, NSError* error) {
               [call replied:item and:itemName number:0 error:error];
             }];
  return call;
}

Call* lookUp(TarnelVolume* volume, NSString* name, FSItem* directory) {
  return lookUpName(volume, [FSFileName nameWithString:name], directory);
}

Call* attributesOf(TarnelVolume* volume, FSItem* item, FSItemAttribute wanted) {
  Call* const call = [Call of:"attributes"];
  FSItemGetAttributesRequest* const request =
      [[[FSItemGetAttributesRequest alloc] init] autorelease];
  request.wantedAttributes = wanted;
  [volume getAttributes:request
                 ofItem:item
           replyHandler:^(FSItemAttributes* attributes, NSError* error) {
             [call replied:attributes and:nil number:0 error:error];
           }];
  return call;
}

Call* enumerate(TarnelVolume* volume, FSItem* directory, FSDirectoryCookie cookie,
                FSDirectoryVerifier verifier, long wanted, FSDirectoryEntryPacker* packer) {
  Call* const call = [Call of:"enumerate"];
  FSItemGetAttributesRequest* request = nil;
  if (wanted >= 0) {
    request = [[[FSItemGetAttributesRequest alloc] init] autorelease];
    request.wantedAttributes = wanted;
  }
  [volume enumerateDirectory:directory
            startingAtCookie:cookie
                    verifier:verifier
         providingAttributes:request
                 usingPacker:packer
                replyHandler:^(FSDirectoryVerifier current, NSError* error) {
                  [call replied:nil and:nil number:current error:error];
                }];
  return call;
}

Call* readBytes(TarnelVolume* volume, FSItem* item, off_t offset, size_t length,
                FSMutableFileDataBuffer* buffer) {
  Call* const call = [Call of:"read"];
  [volume readFromFile:item
                offset:offset
                length:length
            intoBuffer:buffer
          replyHandler:^(size_t count, NSError* error) {
            [call replied:nil and:nil number:count error:error];
          }];
  return call;
}

Call* reclaim(TarnelVolume* volume, FSItem* item) {
  Call* const call = [Call of:"reclaim"];
  [volume reclaimItem:item
         replyHandler:^(NSError* error) {
           [call replied:nil and:nil number:0 error:error];
         }];
  return call;
}

FSItem* itemAt(TarnelVolume* volume, NSString* path) {
  Call* const root = activate(volume);
  expectSuccess(root);
  FSItem* item = root->first;
  for (NSString* name in [path componentsSeparatedByString:@"/"]) {
    Call* const found = lookUp(volume, name, item);
    expectSuccess(found);
    item = found->first;
  }
  return item;
}

FSMutableFileDataBuffer* bufferOf(NSUInteger length) {
  return [[[FSMutableFileDataBuffer alloc] initWithLength:length] autorelease];
}

FSDirectoryEntryPacker* packerOf(NSUInteger room) {
  return [[[FSDirectoryEntryPacker alloc] initWithRoom:room] autorelease];
}
