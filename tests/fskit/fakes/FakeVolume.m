// The volume's base class and its fixed answers.
#import "Fakes.h"

@implementation FSVolume
- (instancetype)initWithVolumeID:(FSVolumeIdentifier*)volumeID volumeName:(FSFileName*)volumeName {
  if ((self = [super init])) {
    fakeMade(fakeVolume);
    _volumeID = [volumeID retain];
    _name = [volumeName copy];
  }
  return self;
}
- (void)dealloc {
  fakeGone(fakeVolume);
  [_volumeID release];
  [_name release];
  [super dealloc];
}
- (FSVolumeIdentifier*)volumeID {
  return _volumeID;
}
- (FSFileName*)name {
  return _name;
}
- (void)setName:(FSFileName*)name {
  [_name autorelease];
  _name = [name copy];
}
@end

#define FLAG(get, set, bit)                                      \
  -(BOOL)get {                                                   \
    return (_flags & (1u << bit)) != 0;                          \
  }                                                              \
  -(void)set : (BOOL)value {                                     \
    _flags = (_flags & ~(1u << bit)) | (value ? 1u << bit : 0u); \
  }

@implementation FSVolumeSupportedCapabilities
FAKE_CODING
FLAG(supportsPersistentObjectIDs, setSupportsPersistentObjectIDs, 0)
FLAG(supportsSymbolicLinks, setSupportsSymbolicLinks, 1)
FLAG(supportsHardLinks, setSupportsHardLinks, 2)
FLAG(supportsJournal, setSupportsJournal, 3)
FLAG(supportsActiveJournal, setSupportsActiveJournal, 4)
FLAG(doesNotSupportRootTimes, setDoesNotSupportRootTimes, 5)
FLAG(supportsSparseFiles, setSupportsSparseFiles, 6)
FLAG(supportsZeroRuns, setSupportsZeroRuns, 7)
FLAG(supportsFastStatFS, setSupportsFastStatFS, 8)
FLAG(supports2TBFiles, setSupports2TBFiles, 9)
FLAG(supportsOpenDenyModes, setSupportsOpenDenyModes, 10)
FLAG(supportsHiddenFiles, setSupportsHiddenFiles, 11)
FLAG(doesNotSupportVolumeSizes, setDoesNotSupportVolumeSizes, 12)
FLAG(supports64BitObjectIDs, setSupports64BitObjectIDs, 13)
FLAG(supportsDocumentID, setSupportsDocumentID, 14)
FLAG(doesNotSupportImmutableFiles, setDoesNotSupportImmutableFiles, 15)
FLAG(doesNotSupportSettingFilePermissions, setDoesNotSupportSettingFilePermissions, 16)
FLAG(supportsSharedSpace, setSupportsSharedSpace, 17)
FLAG(supportsVolumeGroups, setSupportsVolumeGroups, 18)
- (instancetype)init {
  if ((self = [super init])) _caseFormat = FSVolumeCaseFormatInsensitive;  // a value to be changed
  return self;
}
- (FSVolumeCaseFormat)caseFormat {
  return _caseFormat;
}
- (void)setCaseFormat:(FSVolumeCaseFormat)format {
  _caseFormat = format;
}
@end

#define FIGURE(type, get, set, place)  \
  -(type)get {                         \
    return (type)_numbers[place];      \
  }                                    \
  -(void)set : (type)value {           \
    _numbers[place] = (uint64_t)value; \
  }

@implementation FSStatFSResult
FAKE_CODING
- (instancetype)init {
  return [self initWithFileSystemTypeName:@""];
}
- (instancetype)initWithFileSystemTypeName:(NSString*)name {
  if ((self = [super init])) _typeName = [name copy];
  return self;
}
- (void)dealloc {
  [_typeName release];
  [super dealloc];
}
- (NSString*)fileSystemTypeName {
  return _typeName;
}
FIGURE(NSInteger, blockSize, setBlockSize, 0)
FIGURE(NSInteger, ioSize, setIoSize, 1)
FIGURE(uint64_t, totalBlocks, setTotalBlocks, 2)
FIGURE(uint64_t, availableBlocks, setAvailableBlocks, 3)
FIGURE(uint64_t, freeBlocks, setFreeBlocks, 4)
FIGURE(uint64_t, usedBlocks, setUsedBlocks, 5)
FIGURE(uint64_t, totalBytes, setTotalBytes, 6)
FIGURE(uint64_t, availableBytes, setAvailableBytes, 7)
FIGURE(uint64_t, freeBytes, setFreeBytes, 8)
FIGURE(uint64_t, usedBytes, setUsedBytes, 9)
FIGURE(uint64_t, totalFiles, setTotalFiles, 10)
FIGURE(uint64_t, freeFiles, setFreeFiles, 11)
FIGURE(NSInteger, fileSystemSubType, setFileSystemSubType, 12)
@end
