#import "TarnelVolume.h"

#import "ItemAttributes.h"
#import "Ownership.h"
#import "Replies.h"

static FSFileName* nameOf(TarnelText text) {
  return [FSFileName nameWithBytes:text.bytes length:text.length];
}

// The system's start, whatever number it has, is the core's 0.
static uint64_t cookieOf(FSDirectoryCookie cookie) {
  return cookie == FSDirectoryCookieInitial ? 0 : cookie;
}

static uint64_t verifierOf(FSDirectoryVerifier verifier) {
  return verifier == FSDirectoryVerifierInitial ? 0 : verifier;
}

static bool packEntry(void* context, TarnelText name, int64_t itemType, uint64_t itemID,
                      uint64_t nextCookie, const TarnelAttributes* attributes) {
  @autoreleasepool {
    FSDirectoryEntryPacker* const packer = TARNEL_LENT(FSDirectoryEntryPacker*, context);
    return [packer packEntryWithName:nameOf(name)
                            itemType:(FSItemType)itemType
                              itemID:(FSItemID)itemID
                          nextCookie:nextCookie
                          attributes:tarnelItemAttributes(attributes)]
               ? true
               : false;
  }
}

// The core's threads have no pool, and live as long as the volume: what this leaves in one would
// stay.
static void* mutableBytes(void* context) {
  @autoreleasepool {
    return [TARNEL_LENT(FSMutableFileDataBuffer*, context) mutableBytes];
  }
}

@implementation TarnelVolume

- (instancetype)initWithCore:(TarnelCoreVolume*)core {
  NSUUID* const uuid =
      TARNEL_AUTORELEASED([[NSUUID alloc] initWithUUIDBytes:tarnelVolumeIdentifier(core)]);
  FSVolumeIdentifier* const identifier =
      TARNEL_AUTORELEASED([[FSVolumeIdentifier alloc] initWithUUID:uuid]);
  self = [super initWithVolumeID:identifier volumeName:nameOf(tarnelVolumeName(core))];
  if (self == nil) {
    tarnelVolumeRelease(core);
    return nil;
  }
  _core = core;
  _items = [[TarnelItemTable alloc] init];
  return self;
}

- (instancetype)initWithVolumeID:(FSVolumeIdentifier*)volumeID volumeName:(FSFileName*)volumeName {
  (void)volumeID, (void)volumeName;
  tarnelVolumeUnimplementedInitializer();
}

- (void)dealloc {
  TARNEL_RELEASE(_items);
  tarnelVolumeRelease(_core);
  TARNEL_SUPER_DEALLOC();
}

- (NSUInteger)liveItems {
  return [_items count];
}

#pragma mark Fixed answers

- (FSVolumeSupportedCapabilities*)supportedVolumeCapabilities {
  const TarnelCapabilities given = tarnelVolumeCapabilities(_core);
  FSVolumeSupportedCapabilities* const made = [[FSVolumeSupportedCapabilities alloc] init];
  made.supportsPersistentObjectIDs = given.supportsPersistentObjectIDs;
  made.supports64BitObjectIDs = given.supports64BitObjectIDs;
  made.supportsHardLinks = given.supportsHardLinks;
  made.supportsSymbolicLinks = given.supportsSymbolicLinks;
  made.doesNotSupportVolumeSizes = given.doesNotSupportVolumeSizes;
  made.caseFormat = (FSVolumeCaseFormat)given.caseFormat;
  return TARNEL_AUTORELEASED(made);
}

- (FSStatFSResult*)volumeStatistics {
  const TarnelStatistics given = tarnelVolumeStatistics(_core);
  NSString* const type =
      TARNEL_AUTORELEASED([[NSString alloc] initWithBytes:given.fileSystemTypeName.bytes
                                                   length:given.fileSystemTypeName.length
                                                 encoding:NSUTF8StringEncoding]);
  FSStatFSResult* const made = [[FSStatFSResult alloc] initWithFileSystemTypeName:type];
  made.blockSize = (NSInteger)given.blockSize;
  made.ioSize = (NSInteger)given.ioSize;
  made.totalBlocks = given.totalBlocks;
  made.usedBlocks = given.usedBlocks;
  made.freeBlocks = given.freeBlocks;
  made.availableBlocks = given.availableBlocks;
  made.totalFiles = given.totalFiles;
  made.freeFiles = given.freeFiles;
  return TARNEL_AUTORELEASED(made);
}

- (NSInteger)maximumLinkCount {
  return (NSInteger)tarnelVolumePathConfiguration().maximumLinkCount;
}

- (NSInteger)maximumNameLength {
  return (NSInteger)tarnelVolumePathConfiguration().maximumNameLength;
}

- (BOOL)restrictsOwnershipChanges {
  return tarnelVolumePathConfiguration().restrictsOwnershipChanges;
}

- (BOOL)truncatesLongNames {
  return tarnelVolumePathConfiguration().truncatesLongNames;
}

- (NSInteger)maximumXattrSize {
  return (NSInteger)tarnelVolumePathConfiguration().maximumXattrSize;
}

- (uint64_t)maximumFileSize {
  return tarnelVolumePathConfiguration().maximumFileSize;
}

- (FSMountOptions)requestedMountOptions API_AVAILABLE(macos(26.4)) {
  return FSMountOptionsReadOnly;
}

#pragma mark Life cycle

- (void)mountWithOptions:(FSTaskOptions*)options
            replyHandler:(void (^)(NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  (void)options;
  tarnelVolumeMount(_core, tarnelSendDone, tarnelKeepDone(^(TarnelError error) {
                      reply(tarnelNSError(error));
                    }));
}

- (void)unmountWithReplyHandler:(void (^)(void))TARNEL_CALLED_ONCE reply {
  tarnelVolumeUnmount(_core, tarnelSendDone, tarnelKeepDone(^(TarnelError error) {
                        (void)error;
                        reply();
                      }));
}

- (void)synchronizeWithFlags:(FSSyncFlags)flags
                replyHandler:(void (^)(NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  (void)flags;
  tarnelVolumeSynchronize(_core, tarnelSendDone, tarnelKeepDone(^(TarnelError error) {
                            reply(tarnelNSError(error));
                          }));
}

- (void)activateWithOptions:(FSTaskOptions*)options
               replyHandler:(void (^)(FSItem* _Nullable root,
                                      NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  (void)options;
  tarnelVolumeActivate(_core, tarnelSendItemDone,
                       tarnelKeepItemDone(^(TarnelError error, TarnelCoreItem* item) {
                         if (item == NULL) {
                           reply(nil, tarnelNSError(error));
                           return;
                         }
                         reply([self->_items itemForCore:item], nil);
                       }));
}

- (void)deactivateWithOptions:(FSDeactivateOptions)options
                 replyHandler:(void (^)(NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  (void)options;
  tarnelVolumeDeactivate(_core, tarnelSendDone, tarnelKeepDone(^(TarnelError error) {
                           reply(tarnelNSError(error));
                         }));
}

#pragma mark Items

- (void)lookupItemNamed:(FSFileName*)name
            inDirectory:(FSItem*)directory
           replyHandler:(void (^)(FSItem* _Nullable item, FSFileName* _Nullable itemName,
                                  NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  NSData* const data = name.data;
  const TarnelText bytes = {.bytes = [data bytes], .length = [data length]};
  tarnelVolumeLookupItem(_core, bytes, name.string != nil, tarnelCoreItem(directory),
                         tarnelSendItemDone,
                         tarnelKeepItemDone(^(TarnelError error, TarnelCoreItem* item) {
                           if (item == NULL) {
                             reply(nil, nil, tarnelNSError(error));
                             return;
                           }
                           reply([self->_items itemForCore:item], name, nil);
                         }));
}

- (void)getAttributes:(FSItemGetAttributesRequest*)request
               ofItem:(FSItem*)item
         replyHandler:(void (^)(FSItemAttributes* _Nullable attributes,
                                NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  tarnelVolumeGetAttributes(
      _core, (uint64_t)request.wantedAttributes, tarnelCoreItem(item), tarnelSendAttributesDone,
      tarnelKeepAttributesDone(^(TarnelError error, const TarnelAttributes* attributes) {
        reply(tarnelItemAttributes(attributes), tarnelNSError(error));
      }));
}

- (void)enumerateDirectory:(FSItem*)directory
          startingAtCookie:(FSDirectoryCookie)cookie
                  verifier:(FSDirectoryVerifier)verifier
       providingAttributes:(FSItemGetAttributesRequest* _Nullable)request
               usingPacker:(FSDirectoryEntryPacker*)packer
              replyHandler:(void (^)(FSDirectoryVerifier currentVerifier,
                                     NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  const uint64_t wanted = (uint64_t)request.wantedAttributes;
  const TarnelPacker lent = {.context = TARNEL_LEND(packer), .packEntry = packEntry};
  tarnelVolumeEnumerate(_core, tarnelCoreItem(directory), cookieOf(cookie), verifierOf(verifier),
                        request != nil ? &wanted : NULL, lent, tarnelSendVerifierDone,
                        tarnelKeepVerifierDone(^(TarnelError error, uint64_t current) {
                          (void)packer;  // kept until here
                          reply(current, tarnelNSError(error));
                        }));
}

- (void)readFromFile:(FSItem*)item
              offset:(off_t)offset
              length:(size_t)length
          intoBuffer:(FSMutableFileDataBuffer*)buffer
        replyHandler:(void (^)(size_t actuallyRead, NSError* _Nullable error))TARNEL_CALLED_ONCE
    reply {
  const TarnelBuffer lent = {
      .context = TARNEL_LEND(buffer), .length = buffer.length, .mutableBytes = mutableBytes};
  tarnelVolumeRead(_core, tarnelCoreItem(item), offset, length, lent, tarnelSendCountDone,
                   tarnelKeepCountDone(^(TarnelError error, int64_t count) {
                     (void)buffer;  // kept until here
                     reply((size_t)count, tarnelNSError(error));
                   }));
}

- (void)reclaimItem:(FSItem*)item
       replyHandler:(void (^)(NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  tarnelVolumeReclaimItem(_core, tarnelCoreItem(item), tarnelSendDone,
                          tarnelKeepDone(^(TarnelError error) {
                            [self->_items forget:item];
                            reply(tarnelNSError(error));
                          }));
}

#pragma mark Refusals

- (void)setAttributes:(FSItemSetAttributesRequest*)newAttributes
               onItem:(FSItem*)item
         replyHandler:(void (^)(FSItemAttributes* _Nullable attributes,
                                NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  (void)newAttributes, (void)item;
  tarnelVolumeRefuseSetAttributes(_core, tarnelSendDone, tarnelKeepDone(^(TarnelError error) {
                                    reply(nil, tarnelNSError(error));
                                  }));
}

- (void)readSymbolicLink:(FSItem*)item
            replyHandler:(void (^)(FSFileName* _Nullable contents,
                                   NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  (void)item;
  tarnelVolumeRefuseReadSymbolicLink(_core, tarnelSendDone, tarnelKeepDone(^(TarnelError error) {
                                       reply(nil, tarnelNSError(error));
                                     }));
}

- (void)createItemNamed:(FSFileName*)name
                   type:(FSItemType)type
            inDirectory:(FSItem*)directory
             attributes:(FSItemSetAttributesRequest*)newAttributes
           replyHandler:(void (^)(FSItem* _Nullable item, FSFileName* _Nullable itemName,
                                  NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  (void)name, (void)type, (void)directory, (void)newAttributes;
  tarnelVolumeRefuseCreateItem(_core, tarnelSendDone, tarnelKeepDone(^(TarnelError error) {
                                 reply(nil, nil, tarnelNSError(error));
                               }));
}

- (void)createSymbolicLinkNamed:(FSFileName*)name
                    inDirectory:(FSItem*)directory
                     attributes:(FSItemSetAttributesRequest*)newAttributes
                   linkContents:(FSFileName*)contents
                   replyHandler:(void (^)(FSItem* _Nullable item, FSFileName* _Nullable itemName,
                                          NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  (void)name, (void)directory, (void)newAttributes, (void)contents;
  tarnelVolumeRefuseCreateSymbolicLink(_core, tarnelSendDone, tarnelKeepDone(^(TarnelError error) {
                                         reply(nil, nil, tarnelNSError(error));
                                       }));
}

- (void)createLinkToItem:(FSItem*)item
                   named:(FSFileName*)name
             inDirectory:(FSItem*)directory
            replyHandler:(void (^)(FSFileName* _Nullable linkName,
                                   NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  (void)item, (void)name, (void)directory;
  tarnelVolumeRefuseCreateLink(_core, tarnelSendDone, tarnelKeepDone(^(TarnelError error) {
                                 reply(nil, tarnelNSError(error));
                               }));
}

- (void)removeItem:(FSItem*)item
             named:(FSFileName*)name
     fromDirectory:(FSItem*)directory
      replyHandler:(void (^)(NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  (void)item, (void)name, (void)directory;
  tarnelVolumeRefuseRemoveItem(_core, tarnelSendDone, tarnelKeepDone(^(TarnelError error) {
                                 reply(tarnelNSError(error));
                               }));
}

- (void)renameItem:(FSItem*)item
       inDirectory:(FSItem*)sourceDirectory
             named:(FSFileName*)sourceName
         toNewName:(FSFileName*)destinationName
       inDirectory:(FSItem*)destinationDirectory
          overItem:(FSItem* _Nullable)overItem
      replyHandler:(void (^)(FSFileName* _Nullable newName,
                             NSError* _Nullable error))TARNEL_CALLED_ONCE reply {
  (void)item, (void)sourceDirectory, (void)sourceName;
  (void)destinationName, (void)destinationDirectory, (void)overItem;
  tarnelVolumeRefuseRenameItem(_core, tarnelSendDone, tarnelKeepDone(^(TarnelError error) {
                                 reply(nil, tarnelNSError(error));
                               }));
}

- (void)writeContents:(NSData*)contents
               toFile:(FSItem*)item
             atOffset:(off_t)offset
         replyHandler:(void (^)(size_t actuallyWritten, NSError* _Nullable error))TARNEL_CALLED_ONCE
    reply {
  (void)contents, (void)item, (void)offset;
  tarnelVolumeRefuseWrite(_core, tarnelSendDone, tarnelKeepDone(^(TarnelError error) {
                            reply(0, tarnelNSError(error));
                          }));
}

@end
