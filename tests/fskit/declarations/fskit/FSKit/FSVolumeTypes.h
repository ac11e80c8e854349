// The enumerations and fixed answers of a volume.
#pragma once

#import <FSKit/FSKitDefines.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_OPTIONS(NSInteger, FSDeactivateOptions) {
  FSDeactivateOptionsForce = 1 << 0,
};

typedef NS_ENUM(NSInteger, FSSyncFlags) {
  FSSyncFlagsWait = 1,
  FSSyncFlagsNoWait = 2,
  FSSyncFlagsDWait = 4,
};

typedef NS_OPTIONS(NSUInteger, FSMountOptions) {
  FSMountOptionsReadOnly = 1 << 0,
} FSKIT_API_AVAILABILITY_V2_4;

typedef NS_ENUM(NSInteger, FSVolumeCaseFormat) {
  FSVolumeCaseFormatSensitive = 0,
  FSVolumeCaseFormatInsensitive,
  FSVolumeCaseFormatInsensitiveCasePreserving,
};

FSKIT_API_AVAILABILITY_V1
@interface FSVolumeSupportedCapabilities : NSObject <NSSecureCoding>
FSKIT_STATE(uint32_t _flags; FSVolumeCaseFormat _caseFormat;)
@property(nonatomic) BOOL supportsPersistentObjectIDs;
@property(nonatomic) BOOL supportsSymbolicLinks;
@property(nonatomic) BOOL supportsHardLinks;
@property(nonatomic) BOOL supportsJournal;
@property(nonatomic) BOOL supportsActiveJournal;
@property(nonatomic) BOOL doesNotSupportRootTimes;
@property(nonatomic) BOOL supportsSparseFiles;
@property(nonatomic) BOOL supportsZeroRuns;
@property(nonatomic) BOOL supportsFastStatFS;
@property(nonatomic) BOOL supports2TBFiles;
@property(nonatomic) BOOL supportsOpenDenyModes;
@property(nonatomic) BOOL supportsHiddenFiles;
@property(nonatomic) BOOL doesNotSupportVolumeSizes;
@property(nonatomic) BOOL supports64BitObjectIDs;
@property(nonatomic) BOOL supportsDocumentID;
@property(nonatomic) BOOL doesNotSupportImmutableFiles;
@property(nonatomic) BOOL doesNotSupportSettingFilePermissions;
@property(nonatomic) BOOL supportsSharedSpace;
@property(nonatomic) BOOL supportsVolumeGroups;
@property(nonatomic) FSVolumeCaseFormat caseFormat;
@end

FSKIT_API_AVAILABILITY_V1
@interface FSStatFSResult : NSObject <NSSecureCoding>
FSKIT_STATE(NSString* _typeName; uint64_t _numbers[13];)
- (instancetype)init NS_UNAVAILABLE;
- (instancetype)initWithFileSystemTypeName:(NSString*)fileSystemTypeName;
@property(nonatomic) NSInteger blockSize;
@property(nonatomic) NSInteger ioSize;
@property(nonatomic) uint64_t totalBlocks;
@property(nonatomic) uint64_t availableBlocks;
@property(nonatomic) uint64_t freeBlocks;
@property(nonatomic) uint64_t usedBlocks;
@property(nonatomic) uint64_t totalBytes;
@property(nonatomic) uint64_t availableBytes;
@property(nonatomic) uint64_t freeBytes;
@property(nonatomic) uint64_t usedBytes;
@property(nonatomic) uint64_t totalFiles;
@property(nonatomic) uint64_t freeFiles;
@property(nonatomic) NSInteger fileSystemSubType;
@property(nonatomic, readonly, copy) NSString* fileSystemTypeName;
@end

NS_ASSUME_NONNULL_END
