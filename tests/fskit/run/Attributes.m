#include <unistd.h>

#import "ItemAttributes.h"
#import "Scenarios.h"

static int countOfValid(FSItemAttributes* attributes) {
  int count = 0;
  for (int bit = 0; bit < 63; ++bit) {
    count += [attributes isValid:(FSItemAttribute)1 << bit] ? 1 : 0;
  }
  return count;
}

static bool isTime(struct timespec time, time_t seconds) {
  return time.tv_sec == seconds && time.tv_nsec == 0;
}

static void checkFile(FSItemAttributes* attributes) {
  EXPECT(attributes.type == FSItemTypeFile);
  EXPECT(attributes.linkCount == 1);
  EXPECT(attributes.uid == getuid() && attributes.gid == getgid());
  EXPECT(attributes.flags == 0);
  EXPECT(attributes.size == 5 && attributes.allocSize == 4096);
  EXPECT(attributes.fileID > 2 && attributes.parentID > 2);
  EXPECT((attributes.mode & 0222) == 0 && (attributes.mode & 0444) == 0444);
  // The host's own time for all of them.
  EXPECT(isTime(attributes.accessTime, 1600000000) && isTime(attributes.modifyTime, 1600000000));
  EXPECT(isTime(attributes.changeTime, 1600000000) && isTime(attributes.birthTime, 1600000000));
}

void everySingleBitIsAnsweredAlone(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const file = itemAt(volume, @"me/Docs/a.txt");
  FSItem* const peer = itemAt(volume, @"me");
  for (FSItem* item in @[ file, peer, activate(volume)->first ]) {
    for (int bit = 0; bit < 18; ++bit) {
      Call* const answered = attributesOf(volume, item, (FSItemAttribute)1 << bit);
      expectSuccess(answered);
      EXPECT(countOfValid(answered->first) == (bit < 14 ? 1 : 0));
      EXPECT([answered->first isValid:(FSItemAttribute)1 << bit] == (bit < 14));
    }
    Call* const none = attributesOf(volume, item, 0);
    expectSuccess(none);
    EXPECT(none->first != nil && countOfValid(none->first) == 0);
  }
  Call* const all = attributesOf(volume, file, allWanted);
  expectSuccess(all);
  EXPECT(countOfValid(all->first) == 14);
  checkFile(all->first);
  Call* const root = attributesOf(volume, activate(volume)->first, allWanted);
  EXPECT([root hasCome]);
  expectSuccess(root);
  FSItemAttributes* const attributes = root->first;
  EXPECT(attributes.type == FSItemTypeDirectory && attributes.mode == 0555);
  EXPECT(attributes.fileID == FSItemIDRootDirectory);
  EXPECT(attributes.parentID == FSItemIDParentOfRoot);
  EXPECT(attributes.size == 4096 && attributes.allocSize == 4096);
}

static bool isMoment(struct timespec time, TarnelTime given) {
  return time.tv_sec == given.seconds && time.tv_nsec == given.nanoseconds;
}

// A volume's own values hide one that stands in another's place: its times are one, and its owner
// and group may have one number.
void everyAttributeHasItsOwnPlace(HostForRun* host) {
  (void)host;
  const TarnelAttributes given = {.valid = allWanted,
                                  .type = FSItemTypeDirectory,
                                  .mode = 0751,
                                  .linkCount = 3,
                                  .uid = 501,
                                  .gid = 20,
                                  .flags = 7,
                                  .size = 5000,
                                  .allocSize = 8192,
                                  .fileID = 11,
                                  .parentID = 10,
                                  .accessTime = {-1, -500000000},
                                  .modifyTime = {1700000000, 123000000},
                                  .changeTime = {2, 2000000},
                                  .birthTime = {3, 3000000}};
  FSItemAttributes* const made = tarnelItemAttributes(&given);
  EXPECT(countOfValid(made) == 14);
  EXPECT(made.type == FSItemTypeDirectory && made.mode == 0751 && made.linkCount == 3);
  EXPECT(made.uid == 501 && made.gid == 20 && made.flags == 7);
  EXPECT(made.size == 5000 && made.allocSize == 8192);
  EXPECT(made.fileID == 11 && made.parentID == 10);
  EXPECT(isMoment(made.accessTime, given.accessTime));
  EXPECT(isMoment(made.modifyTime, given.modifyTime));
  EXPECT(isMoment(made.changeTime, given.changeTime));
  EXPECT(isMoment(made.birthTime, given.birthTime));
  EXPECT(tarnelItemAttributes(NULL) == nil);
}

void bitsThatNobodyKnowsAreLoggedUnmasked(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  fakeLogSetDebug(true);
  Call* const answered =
      attributesOf(volume, activate(volume)->first, (FSItemAttribute)0xdeadbeef00003fffull);
  expectSuccess(answered);
  EXPECT(countOfValid(answered->first) == 14);
  EXPECT(logHas(@"debug getAttributes relpath= wanted=0xdeadbeef00003fff"));
}

void lastKnownAttributesAreServedAndLogged(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const file = itemAt(volume, @"me/Docs/a.txt");
  hostRemove(host, "me/Docs/a.txt");
  Call* const stale = attributesOf(volume, file, allWanted);
  expectSuccess(stale);
  checkFile(stale->first);
  EXPECT(logHas(@"error getAttributes SERVED STALE relpath=me/Docs/a.txt size=5 because=notFound"));
}
