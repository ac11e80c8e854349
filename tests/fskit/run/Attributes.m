#include <unistd.h>

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
