#import "Scenarios.h"

void everyLogLineIsTheSystemsOwn(HostForRun* host) {
  fakeLogClear();
  TarnelFileSystem* const fileSystem = fileSystemAt(host);
  Call* const loaded = load(fileSystem, @[ @"-o", @"ro" ]);
  expectSuccess(loaded);
  TarnelVolume* const volume = loaded->first;
  FSItem* const file = itemAt(volume, @"me/Docs/a.txt");
  // Without debug none of the per-request lines.
  expectSuccess(attributesOf(volume, file, allWanted));
  expectSuccess(readBytes(volume, file, 0, 4, bufferOf(4)));
  EXPECT([fakeLogLines() count] == 3);

  fakeLogSetDebug(true);
  fakeLogClear();
  hostFile(host, "me/Docs/a.txt", "hello, world", 12);
  expectSuccess(attributesOf(volume, file, FSItemAttributeSize));
  expectSuccess(readBytes(volume, file, 2, 4, bufferOf(4)));
  hostRefuse(host, "stat", "me/Docs/a.txt", "is a directory");
  expectPosixError(attributesOf(volume, file, FSItemAttributeSize), 21);
  hostAnswerAsUsual(host);
  hostRemove(host, "me/Docs/a.txt");
  expectSuccess(attributesOf(volume, file, FSItemAttributeSize));
  expectSuccess(reclaim(volume, file));
  expectSuccess(unload(fileSystem));
  NSArray* const lines = fakeLogLines();
  NSString* const asked = @"debug getAttributes relpath=me/Docs/a.txt wanted=0x40";
  NSArray* const expected = @[
    asked,
    @"debug getAttributes reply relpath=me/Docs/a.txt size=12 mtimeMs=1600000000000 lastKnown=5",
    @"debug readBytes relpath=me/Docs/a.txt offset=2 wanted=4 lastKnownSize=12", asked,
    @"error getAttributes FAILED relpath=me/Docs/a.txt error=isDirectory", asked,
    @"error getAttributes SERVED STALE relpath=me/Docs/a.txt size=12 because=notFound",
    @"debug reclaimItem relpath=me/Docs/a.txt id=5", @"default unloaded"
  ];
  EXPECT([lines isEqual:expected]);
  if (![lines isEqual:expected]) fprintf(stderr, "%s\n", [[lines description] UTF8String]);
}
