// Items, their attributes and the requests for them.
#import "Fakes.h"

@implementation FSItem
- (instancetype)init {
  if ((self = [super init])) fakeMade(fakeItem);
  return self;
}
- (void)dealloc {
  fakeGone(fakeItem);
  [super dealloc];
}
@end

// Setting marks the property as valid, as the system's classes do.
#define NUMBER(type, get, set, bit)      \
  -(type)get {                           \
    return (type)_numbers[bit];          \
  }                                      \
  -(void)set : (type)value {             \
    _numbers[bit] = (uint64_t)value;     \
    _valid |= (FSItemAttribute)1 << bit; \
  }
#define TIME(get, set, bit)              \
  -(struct timespec)get {                \
    return _times[bit - 10];             \
  }                                      \
  -(void)set : (struct timespec)value {  \
    _times[bit - 10] = value;            \
    _valid |= (FSItemAttribute)1 << bit; \
  }

@implementation FSItemAttributes
FAKE_CODING
- (void)invalidateAllProperties {
  _valid = 0;
}
- (BOOL)isValid:(FSItemAttribute)attribute {
  return (_valid & attribute) != 0;
}
NUMBER(FSItemType, type, setType, 0)
NUMBER(uint32_t, mode, setMode, 1)
NUMBER(uint32_t, linkCount, setLinkCount, 2)
NUMBER(uint32_t, uid, setUid, 3)
NUMBER(uint32_t, gid, setGid, 4)
NUMBER(uint32_t, flags, setFlags, 5)
NUMBER(uint64_t, size, setSize, 6)
NUMBER(uint64_t, allocSize, setAllocSize, 7)
NUMBER(FSItemID, fileID, setFileID, 8)
NUMBER(FSItemID, parentID, setParentID, 9)
TIME(accessTime, setAccessTime, 10)
TIME(modifyTime, setModifyTime, 11)
TIME(changeTime, setChangeTime, 12)
TIME(birthTime, setBirthTime, 13)
TIME(backupTime, setBackupTime, 14)
TIME(addedTime, setAddedTime, 15)
NUMBER(BOOL, supportsLimitedXAttrs, setSupportsLimitedXAttrs, 16)
NUMBER(BOOL, inhibitKernelOffloadedIO, setInhibitKernelOffloadedIO, 17)
@end

@implementation FSItemSetAttributesRequest
- (FSItemAttribute)consumedAttributes {
  return 0;
}
- (void)setConsumedAttributes:(FSItemAttribute)attributes {
  (void)attributes;
}
- (BOOL)wasAttributeConsumed:(FSItemAttribute)attribute {
  (void)attribute;
  return NO;
}
@end

@implementation FSItemGetAttributesRequest
FAKE_CODING
- (FSItemAttribute)wantedAttributes {
  return _wanted;
}
- (void)setWantedAttributes:(FSItemAttribute)attributes {
  _wanted = attributes;
}
- (BOOL)isAttributeWanted:(FSItemAttribute)attribute {
  return (_wanted & attribute) != 0;
}
@end
