// Names, the read buffer, the directory packer and the errors.
#import "Fakes.h"

// Not 0, so that an adapter that passes them on shows.
FSDirectoryCookie const FSDirectoryCookieInitial = 0xC00C1E00C00C1E00ull;
FSDirectoryVerifier const FSDirectoryVerifierInitial = 0x7E21F1E27E21F1E2ull;

NSErrorDomain const FSKitErrorDomain = @"FSKitErrorDomain";

NSError* fs_errorForPOSIXError(int errorCode) {
  return [NSError errorWithDomain:@"NSPOSIXErrorDomain" code:errorCode userInfo:nil];
}

@implementation FSFileName
FAKE_CODING
- (instancetype)init {
  return [self initWithBytes:"" length:0];
}
- (instancetype)initWithCString:(const char*)name {
  return [self initWithBytes:name length:strlen(name)];
}
- (instancetype)initWithBytes:(const char*)bytes length:(NSUInteger)length {
  if ((self = [super init]))
    _data = [[NSData alloc] initWithBytes:bytes length:strnlen(bytes, length)];
  return self;
}
- (instancetype)initWithData:(NSData*)name {
  if ((self = [super init])) _data = [name copy];
  return self;
}
- (instancetype)initWithString:(NSString*)name {
  return [self initWithCString:[name UTF8String]];
}
+ (instancetype)nameWithCString:(const char*)name {
  return [[[self alloc] initWithCString:name] autorelease];
}
+ (instancetype)nameWithBytes:(const char*)bytes length:(NSUInteger)length {
  return [[[self alloc] initWithBytes:bytes length:length] autorelease];
}
+ (instancetype)nameWithData:(NSData*)name {
  return [[[self alloc] initWithData:name] autorelease];
}
+ (instancetype)nameWithString:(NSString*)name {
  return [[[self alloc] initWithString:name] autorelease];
}
- (void)dealloc {
  [_data release];
  [super dealloc];
}
- (id)copyWithZone:(NSZone*)zone {
  (void)zone;
  return [self retain];
}
- (NSData*)data {
  return _data;
}
- (NSString*)string {
  return [[[NSString alloc] initWithData:_data encoding:NSUTF8StringEncoding] autorelease];
}
- (NSString*)debugDescription {
  return [self string];
}
@end

@implementation FSMutableFileDataBuffer
- (instancetype)init {
  return [self initWithLength:0];
}
- (void)dealloc {
  fakeGone(fakeBuffer);
  free(_bytes);
  [super dealloc];
}
- (NSUInteger)length {
  return _length;
}
// Keeps itself until the caller's pool goes, as what lends its inside may, and as ARC may do for
// it.
- (void*)mutableBytes {
  [[self retain] autorelease];
  return _bytes;
}
@end

@implementation FSMutableFileDataBuffer (Fake)
- (instancetype)initWithLength:(NSUInteger)length {
  if ((self = [super init])) {
    fakeMade(fakeBuffer);
    _length = length;
    _bytes = malloc(length + 1);
    memset(_bytes, '~', length + 1);
  }
  return self;
}
- (NSString*)first:(NSUInteger)count {
  return [[[NSString alloc] initWithBytes:_bytes length:count
                                 encoding:NSUTF8StringEncoding] autorelease];
}
@end

@implementation FakeEntry
- (void)dealloc {
  [name release];
  [attributes release];
  [super dealloc];
}
@end

@implementation FSDirectoryEntryPacker
- (instancetype)init {
  return [self initWithRoom:0];
}
- (void)dealloc {
  fakeGone(fakePacker);
  [_entries release];
  [super dealloc];
}
- (BOOL)packEntryWithName:(FSFileName*)name
                 itemType:(FSItemType)itemType
                   itemID:(FSItemID)itemID
               nextCookie:(FSDirectoryCookie)nextCookie
               attributes:(FSItemAttributes*)attributes {
  if ([_entries count] == _room) return NO;
  FakeEntry* const entry = [[[FakeEntry alloc] init] autorelease];
  entry->name = [name retain];
  entry->type = itemType;
  entry->itemID = itemID;
  entry->nextCookie = nextCookie;
  entry->attributes = [attributes retain];
  [_entries addObject:entry];
  return YES;
}
@end

@implementation FSDirectoryEntryPacker (Fake)
- (instancetype)initWithRoom:(NSUInteger)room {
  if ((self = [super init])) {
    fakeMade(fakePacker);
    _room = room;
    _entries = [[NSMutableArray alloc] init];
  }
  return self;
}
- (NSArray*)entries {
  return _entries;
}
@end
