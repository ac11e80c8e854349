#import "ItemAttributes.h"

#import "Ownership.h"

static struct timespec timeOf(TarnelTime time) {
  struct timespec given;
  given.tv_sec = (time_t)time.seconds;
  given.tv_nsec = (long)time.nanoseconds;
  return given;
}

FSItemAttributes* tarnelItemAttributes(const TarnelAttributes* given) {
  if (given == NULL) return nil;
  FSItemAttributes* const made = [[FSItemAttributes alloc] init];
  [made invalidateAllProperties];
  const FSItemAttribute valid = (FSItemAttribute)given->valid;
  // Setting a property makes it valid.
  if ((valid & FSItemAttributeType) != 0) made.type = (FSItemType)given->type;
  if ((valid & FSItemAttributeMode) != 0) made.mode = given->mode;
  if ((valid & FSItemAttributeLinkCount) != 0) made.linkCount = given->linkCount;
  if ((valid & FSItemAttributeUID) != 0) made.uid = given->uid;
  if ((valid & FSItemAttributeGID) != 0) made.gid = given->gid;
  if ((valid & FSItemAttributeFlags) != 0) made.flags = given->flags;
  if ((valid & FSItemAttributeSize) != 0) made.size = given->size;
  if ((valid & FSItemAttributeAllocSize) != 0) made.allocSize = given->allocSize;
  if ((valid & FSItemAttributeFileID) != 0) made.fileID = (FSItemID)given->fileID;
  if ((valid & FSItemAttributeParentID) != 0) made.parentID = (FSItemID)given->parentID;
  if ((valid & FSItemAttributeAccessTime) != 0) made.accessTime = timeOf(given->accessTime);
  if ((valid & FSItemAttributeModifyTime) != 0) made.modifyTime = timeOf(given->modifyTime);
  if ((valid & FSItemAttributeChangeTime) != 0) made.changeTime = timeOf(given->changeTime);
  if ((valid & FSItemAttributeBirthTime) != 0) made.birthTime = timeOf(given->birthTime);
  return TARNEL_AUTORELEASED(made);
}
