// The system's objects for the volume's items: one for each item, the same one as long as the
// system holds it.
#pragma once

#import <FSKit/FSKit.h>

#include "fskit/TarnelCore.h"

NS_ASSUME_NONNULL_BEGIN

@interface TarnelItem : FSItem {
 @private
  TarnelCoreItem* _core;
}
// Takes the handle.
- (instancetype)initWithCore:(TarnelCoreItem*)core NS_DESIGNATED_INITIALIZER;
- (instancetype)init NS_UNAVAILABLE;
- (const TarnelCoreItem*)core;
@end

// The item's handle; null for an object that is not one of ours.
const TarnelCoreItem* _Nullable tarnelCoreItem(FSItem* item);

// The objects that the system holds, by item. An object is kept until it is reclaimed, or until the
// table's end; it knows neither the table nor the volume. Threads: any.
@interface TarnelItemTable : NSObject {
 @private
  NSLock* _lock;  // guards _live
  NSMutableDictionary<NSNumber*, TarnelItem*>* _live;
}
// The object of this item, made if there is none. Takes the handle.
- (TarnelItem*)itemForCore:(TarnelCoreItem*)core;
// Forgets this very object. A lookup that raced with the reclaim may have made another one for the
// same item since; that one stays.
- (void)forget:(FSItem*)item;
- (NSUInteger)count;
@end

NS_ASSUME_NONNULL_END
