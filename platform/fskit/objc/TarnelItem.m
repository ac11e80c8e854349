#import "TarnelItem.h"

#import "Ownership.h"

@implementation TarnelItem

- (instancetype)initWithCore:(TarnelCoreItem*)core {
  self = [super init];
  if (self == nil) {
    tarnelItemRelease(core);
    return nil;
  }
  _core = core;
  return self;
}

- (void)dealloc {
  tarnelItemRelease(_core);
  TARNEL_SUPER_DEALLOC();
}

- (const TarnelCoreItem*)core {
  return _core;
}

@end

const TarnelCoreItem* tarnelCoreItem(FSItem* item) {
  return [item isKindOfClass:[TarnelItem class]] ? [(TarnelItem*)item core] : NULL;
}

// While an object is in the table, its item lives, so that no other can have the same identity.
static NSNumber* keyOf(const TarnelCoreItem* core) {
  return [NSNumber numberWithUnsignedLongLong:(uintptr_t)tarnelItemIdentity(core)];
}

@implementation TarnelItemTable

- (instancetype)init {
  self = [super init];
  if (self == nil) return nil;
  _lock = [[NSLock alloc] init];
  _live = [[NSMutableDictionary alloc] init];
  return self;
}

- (void)dealloc {
  TARNEL_RELEASE(_live);
  TARNEL_RELEASE(_lock);
  TARNEL_SUPER_DEALLOC();
}

- (TarnelItem*)itemForCore:(TarnelCoreItem*)core {
  NSNumber* const key = keyOf(core);
  TarnelCoreItem* unused = NULL;
  [_lock lock];
  TarnelItem* item = TARNEL_RETAINED([_live objectForKey:key]);
  if (item == nil) {
    item = [[TarnelItem alloc] initWithCore:core];
    [_live setObject:item forKey:key];
  } else {
    unused = core;
  }
  [_lock unlock];
  tarnelItemRelease(unused);
  return TARNEL_AUTORELEASED(item);
}

- (void)forget:(FSItem*)item {
  const TarnelCoreItem* const core = tarnelCoreItem(item);
  if (core == NULL) return;
  NSNumber* const key = keyOf(core);
  [_lock lock];
  if ([_live objectForKey:key] == item) [_live removeObjectForKey:key];
  [_lock unlock];
}

- (NSUInteger)count {
  [_lock lock];
  const NSUInteger count = [_live count];
  [_lock unlock];
  return count;
}

@end
