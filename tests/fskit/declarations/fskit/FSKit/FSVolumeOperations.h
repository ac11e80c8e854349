// What a volume answers: required in each protocol unless marked optional.
#pragma once

#import <FSKit/FSDirectory.h>
#import <FSKit/FSFileDataBuffer.h>
#import <FSKit/FSTaskOptions.h>
#import <FSKit/FSVolume.h>
#import <FSKit/FSVolumeTypes.h>

NS_ASSUME_NONNULL_BEGIN

FSKIT_API_AVAILABILITY_V1
@protocol FSVolumePathConfOperations <NSObject>
@property(readonly) NSInteger maximumLinkCount;
@property(readonly) NSInteger maximumNameLength;
@property(readonly) BOOL restrictsOwnershipChanges;
@property(readonly) BOOL truncatesLongNames;
// At least one of each pair; bits win.
@optional
@property(readonly) NSInteger maximumXattrSize;
@property(readonly) NSInteger maximumXattrSizeInBits;
@property(readonly) uint64_t maximumFileSize;
@property(readonly) NSInteger maximumFileSizeInBits;
@end

FSKIT_API_AVAILABILITY_V1
@protocol FSVolumeOperations <NSObject, FSVolumePathConfOperations>
@property(readonly, nonatomic) FSVolumeSupportedCapabilities* supportedVolumeCapabilities;
@property(readonly, nonatomic) FSStatFSResult* volumeStatistics;
- (void)mountWithOptions:(FSTaskOptions*)options
            replyHandler:(void (^)(NSError* _Nullable error))reply;
- (void)unmountWithReplyHandler:(void (^)(void))reply;
- (void)synchronizeWithFlags:(FSSyncFlags)flags
                replyHandler:(void (^)(NSError* _Nullable error))reply;
- (void)getAttributes:(FSItemGetAttributesRequest*)desiredAttributes
               ofItem:(FSItem*)item
         replyHandler:
             (void (^)(FSItemAttributes* _Nullable attributes, NSError* _Nullable error))reply;
- (void)setAttributes:(FSItemSetAttributesRequest*)newAttributes
               onItem:(FSItem*)item
         replyHandler:
             (void (^)(FSItemAttributes* _Nullable attributes, NSError* _Nullable error))reply;
- (void)lookupItemNamed:(FSFileName*)name
            inDirectory:(FSItem*)directory
           replyHandler:(void (^)(FSItem* _Nullable theItem, FSFileName* _Nullable itemName,
                                  NSError* _Nullable error))reply;
- (void)reclaimItem:(FSItem*)item replyHandler:(void (^)(NSError* _Nullable error))reply;
- (void)readSymbolicLink:(FSItem*)item
            replyHandler:(void (^)(FSFileName* _Nullable contents, NSError* _Nullable error))reply;
- (void)createItemNamed:(FSFileName*)name
                   type:(FSItemType)type
            inDirectory:(FSItem*)directory
             attributes:(FSItemSetAttributesRequest*)newAttributes
           replyHandler:(void (^)(FSItem* _Nullable newItem, FSFileName* _Nullable newItemName,
                                  NSError* _Nullable error))reply;
- (void)createSymbolicLinkNamed:(FSFileName*)name
                    inDirectory:(FSItem*)directory
                     attributes:(FSItemSetAttributesRequest*)newAttributes
                   linkContents:(FSFileName*)contents
                   replyHandler:(void (^)(FSItem* _Nullable newItem,
                                          FSFileName* _Nullable newItemName,
                                          NSError* _Nullable error))reply;
- (void)createLinkToItem:(FSItem*)item
                   named:(FSFileName*)name
             inDirectory:(FSItem*)directory
            replyHandler:(void (^)(FSFileName* _Nullable linkName, NSError* _Nullable error))reply;
- (void)removeItem:(FSItem*)item
             named:(FSFileName*)name
     fromDirectory:(FSItem*)directory
      replyHandler:(void (^)(NSError* _Nullable error))reply;
- (void)renameItem:(FSItem*)item
       inDirectory:(FSItem*)sourceDirectory
             named:(FSFileName*)sourceName
         toNewName:(FSFileName*)destinationName
       inDirectory:(FSItem*)destinationDirectory
          overItem:(nullable FSItem*)overItem
      replyHandler:(void (^)(FSFileName* _Nullable newName, NSError* _Nullable error))reply;
- (void)enumerateDirectory:(FSItem*)directory
          startingAtCookie:(FSDirectoryCookie)cookie
                  verifier:(FSDirectoryVerifier)verifier
       providingAttributes:(nullable FSItemGetAttributesRequest*)attributes
               usingPacker:(FSDirectoryEntryPacker*)packer
              replyHandler:
                  (void (^)(FSDirectoryVerifier currentVerifier, NSError* _Nullable error))reply;
- (void)activateWithOptions:(FSTaskOptions*)options
               replyHandler:(void (^)(FSItem* _Nullable rootItem, NSError* _Nullable error))reply;
- (void)deactivateWithOptions:(FSDeactivateOptions)options
                 replyHandler:(void (^)(NSError* _Nullable error))reply;
@optional
@property BOOL enableOpenUnlinkEmulation FSKIT_API_AVAILABILITY_V2;
@property FSMountOptions requestedMountOptions FSKIT_API_AVAILABILITY_V2_4;
@end

FSKIT_API_AVAILABILITY_V1
@protocol FSVolumeReadWriteOperations <NSObject>
- (void)readFromFile:(FSItem*)item
              offset:(off_t)offset
              length:(size_t)length
          intoBuffer:(FSMutableFileDataBuffer*)buffer
        replyHandler:(void (^)(size_t actuallyRead, NSError* _Nullable error))reply;
- (void)writeContents:(NSData*)contents
               toFile:(FSItem*)item
             atOffset:(off_t)offset
         replyHandler:(void (^)(size_t actuallyWritten, NSError* _Nullable error))reply;
@end

NS_ASSUME_NONNULL_END
