// Cookies, verifiers and the packer of an enumeration.
#pragma once

#import <FSKit/FSFileName.h>
#import <FSKit/FSItem.h>

NS_ASSUME_NONNULL_BEGIN

typedef uint64_t FSDirectoryCookie NS_TYPED_EXTENSIBLE_ENUM;
typedef uint64_t FSDirectoryVerifier NS_TYPED_EXTENSIBLE_ENUM;

FOUNDATION_EXPORT FSDirectoryCookie const FSDirectoryCookieInitial FSKIT_API_AVAILABILITY_V1;
FOUNDATION_EXPORT FSDirectoryVerifier const FSDirectoryVerifierInitial FSKIT_API_AVAILABILITY_V1;

FSKIT_API_AVAILABILITY_V1
@interface FSDirectoryEntryPacker : NSObject
FSKIT_STATE(NSUInteger _room; NSMutableArray * _entries;)
- (instancetype)init NS_UNAVAILABLE;
// NO: there is no room for the entry.
- (BOOL)packEntryWithName:(FSFileName*)name
                 itemType:(FSItemType)itemType
                   itemID:(FSItemID)itemID
               nextCookie:(FSDirectoryCookie)nextCookie
               attributes:(nullable FSItemAttributes*)attributes;
@end

NS_ASSUME_NONNULL_END
