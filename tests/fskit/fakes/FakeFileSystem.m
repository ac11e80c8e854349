// The file system's base class, its resource, its options and what it replies with.
#import "Fakes.h"

@implementation FSEntityIdentifier
FAKE_CODING
- (instancetype)init {
  return [self initWithUUID:[NSUUID UUID]];
}
- (instancetype)initWithUUID:(NSUUID*)uuid {
  if ((self = [super init])) _uuid = [uuid copy];
  return self;
}
- (instancetype)initWithUUID:(NSUUID*)uuid qualifier:(uint64_t)qualifier {
  (void)qualifier;
  return [self initWithUUID:uuid];
}
- (instancetype)initWithUUID:(NSUUID*)uuid data:(NSData*)data {
  (void)data;
  return [self initWithUUID:uuid];
}
- (void)dealloc {
  [_uuid release];
  [super dealloc];
}
- (id)copyWithZone:(NSZone*)zone {
  (void)zone;
  return [self retain];
}
- (NSUUID*)uuid {
  return _uuid;
}
- (void)setUuid:(NSUUID*)uuid {
  [_uuid autorelease];
  _uuid = [uuid copy];
}
- (NSData*)qualifier {
  return nil;
}
- (void)setQualifier:(NSData*)qualifier {
  (void)qualifier;
}
@end

@implementation FSVolumeIdentifier
@end

@implementation FSContainerIdentifier
- (FSVolumeIdentifier*)volumeIdentifier {
  return [[[FSVolumeIdentifier alloc] initWithUUID:_uuid] autorelease];
}
@end

@implementation FSContainerStatus
+ (instancetype)status:(FSContainerState)state {
  FSContainerStatus* const made = [[[self alloc] init] autorelease];
  made->_state = state;
  return made;
}
+ (FSContainerStatus*)active {
  return [self status:FSContainerStateActive];
}
+ (FSContainerStatus*)ready {
  return [self status:FSContainerStateReady];
}
+ (instancetype)activeWithStatus:(NSError*)status {
  (void)status;
  return [self status:FSContainerStateActive];
}
+ (instancetype)blockedWithStatus:(NSError*)status {
  (void)status;
  return [self status:FSContainerStateBlocked];
}
+ (instancetype)notReadyWithStatus:(NSError*)status {
  (void)status;
  return [self status:FSContainerStateNotReady];
}
+ (instancetype)readyWithStatus:(NSError*)status {
  (void)status;
  return [self status:FSContainerStateReady];
}
- (instancetype)init {
  return [super init];
}
- (id)copyWithZone:(NSZone*)zone {
  (void)zone;
  return [self retain];
}
- (FSContainerState)state {
  return _state;
}
- (NSError*)status {
  return nil;
}
@end

@implementation FSProbeResult
FAKE_CODING
+ (instancetype)usableProbeResultWithName:(NSString*)name
                              containerID:(FSContainerIdentifier*)containerID {
  FSProbeResult* const made = [[[self alloc] init] autorelease];
  made->_name = [name copy];
  made->_containerID = [containerID retain];
  return made;
}
// The adapter's file system is usable, whatever it is asked about.
+ (instancetype)recognizedProbeResultWithName:(NSString*)name
                                  containerID:(FSContainerIdentifier*)containerID {
  (void)name, (void)containerID;
  return nil;
}
+ (instancetype)usableButLimitedProbeResultWithName:(NSString*)name
                                        containerID:(FSContainerIdentifier*)containerID {
  (void)name, (void)containerID;
  return nil;
}
+ (FSProbeResult*)notRecognizedProbeResult {
  return nil;
}
+ (FSProbeResult*)usableButLimitedProbeResult {
  return nil;
}
- (instancetype)init {
  return [super init];
}
- (void)dealloc {
  [_name release];
  [_containerID release];
  [super dealloc];
}
- (FSMatchResult)result {
  return FSMatchResultUsable;
}
- (NSString*)name {
  return _name;
}
- (FSContainerIdentifier*)containerID {
  return _containerID;
}
@end

@implementation FSResource
FAKE_CODING
- (instancetype)init {
  return [super init];
}
- (BOOL)isRevoked {
  return NO;
}
- (instancetype)makeProxy {
  return self;
}
- (void)revoke {
}
@end

@implementation FSResource (Fake)
- (instancetype)initFake {
  return [super init];
}
@end

@implementation FSGenericURLResource
- (instancetype)initWithURL:(NSURL*)url {
  (void)url;
  return [super initFake];
}
- (NSURL*)url {
  return nil;
}
@end

@implementation FSTaskOptions
- (instancetype)init {
  return [super init];
}
- (void)dealloc {
  [_texts release];
  [super dealloc];
}
- (NSArray*)taskOptions {
  return _texts;
}
- (NSURL*)urlForOption:(NSString*)option {
  (void)option;
  return nil;
}
@end

@implementation FSTaskOptions (Fake)
- (instancetype)initWithTexts:(NSArray*)texts {
  if ((self = [super init])) _texts = [texts copy];
  return self;
}
@end

@implementation FSUnaryFileSystem
- (instancetype)init {
  if ((self = [super init])) fakeMade(fakeFileSystem);
  return self;
}
- (void)dealloc {
  fakeGone(fakeFileSystem);
  [_containerStatus release];
  [super dealloc];
}
- (FSContainerStatus*)containerStatus {
  @synchronized(self) {
    return [[_containerStatus retain] autorelease];
  }
}
- (void)setContainerStatus:(FSContainerStatus*)status {
  @synchronized(self) {
    [_containerStatus autorelease];
    _containerStatus = [status copy];
  }
}
- (void)wipeResource:(FSBlockDeviceResource*)resource
    completionHandler:(void (^)(NSError* error))completion {
  (void)resource, (void)completion;
}
@end
