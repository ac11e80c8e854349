#import "Scenarios.h"

void aLookupRepliesWithTheCallersOwnName(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const docs = itemAt(volume, @"me/Docs");
  FSFileName* const name = [FSFileName nameWithString:@"a.txt"];
  Call* const found = lookUpName(volume, name, docs);
  expectSuccess(found);
  EXPECT([found->first isKindOfClass:[TarnelItem class]]);
  EXPECT(found->second == name);
}

void oneItemIsOneObject(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const docs = itemAt(volume, @"me/Docs");
  EXPECT(docs == itemAt(volume, @"me/Docs"));
  Call* const one = lookUp(volume, @"a.txt", docs);
  Call* const other = lookUp(volume, @"a.txt", docs);
  expectSuccess(one);
  expectSuccess(other);
  EXPECT(one->first == other->first);
  EXPECT(volume.liveItems == 4);  // the root, me, Docs, a.txt
}

void namesThatAreNoTextsOrUnsafeAreNotFound(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const docs = itemAt(volume, @"me/Docs");
  const char badUtf8[] = {'a', (char)0xff, '.', 't'};
  Call* const bad =
      lookUpName(volume, [FSFileName nameWithBytes:badUtf8 length:sizeof badUtf8], docs);
  EXPECT([bad hasCome]);
  expectPosixError(bad, 2);
  for (NSString* name in @[ @".", @"..", @"", @"a/b" ]) {
    Call* const unsafe = lookUp(volume, name, docs);
    EXPECT([unsafe hasCome]);
    expectPosixError(unsafe, 2);
  }
  expectPosixError(lookUp(volume, @"nobody", activate(volume)->first), 2);
  expectPosixError(lookUp(volume, @"missing", docs), 2);
  // Valid, and longer than one byte a character: the bytes arrive.
  hostFile(host, "me/Docs/gr\xc3\xbc\xc3\x9f.txt", "x", 1);
  expectSuccess(lookUp(volume, [NSString stringWithUTF8String:"gr\xc3\xbc\xc3\x9f.txt"], docs));
}
