// How long things live, and what ends those who wait.
#import "BadCoreForRun.h"
#import "Scenarios.h"

void aReclaimedItemComesBackAsANewObject(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const file = itemAt(volume, @"me/Docs/a.txt");
  Call* const before = attributesOf(volume, file, FSItemAttributeFileID);
  expectSuccess(before);
  expectSuccess(reclaim(volume, file));
  EXPECT(volume.liveItems == 3);
  // The system still holds this object, and may still ask about it.
  expectSuccess(attributesOf(volume, file, allWanted));
  FSItem* const again = itemAt(volume, @"me/Docs/a.txt");
  EXPECT(again != file);
  Call* const after = attributesOf(volume, again, FSItemAttributeFileID);
  expectSuccess(after);
  EXPECT(((FSItemAttributes*)before->first).fileID == ((FSItemAttributes*)after->first).fileID);
  // Given back once more: the newer object stays.
  expectSuccess(reclaim(volume, file));
  EXPECT(itemAt(volume, @"me/Docs/a.txt") == again);
  EXPECT(volume.liveItems == 4);
}

static void keepHandle(void* context, TarnelError error, TarnelCoreItem* item) {
  EXPECT(error.domain == tarnelNoError);
  *(TarnelCoreItem**)context = item;
}

// What a lookup does that had its answer from the core just before the item was reclaimed.
void aLateReclaimForgetsOnlyItsOwnObject(HostForRun* host) {
  (void)host;
  TarnelCoreVolume* const core = badCore();
  TarnelCoreItem* early = NULL;
  TarnelCoreItem* late = NULL;
  tarnelVolumeActivate(core, keepHandle, &early);
  tarnelVolumeActivate(core, keepHandle, &late);
  TarnelItemTable* const table = [[[TarnelItemTable alloc] init] autorelease];
  TarnelItem* const reclaimed = [table itemForCore:early];
  [table forget:reclaimed];
  EXPECT([table count] == 0);
  TarnelItem* const made = [table itemForCore:late];
  EXPECT(made != reclaimed);
  [table forget:reclaimed];
  EXPECT([table count] == 1);
  [table forget:made];
  EXPECT([table count] == 0);
  tarnelVolumeRelease(core);
}

static NSArray* waitingCalls(HostForRun* host, TarnelVolume* volume) {
  FSItem* const docs = itemAt(volume, @"me/Docs");
  FSItem* const file = itemAt(volume, @"me/Docs/a.txt");
  hostStall(host, "list", "me/Docs");
  hostStall(host, "read", "me/Docs/a.txt");
  NSMutableArray* const waiting = [NSMutableArray array];
  [waiting addObject:enumerate(volume, docs, 0, 0, allWanted, packerOf(9))];
  [waiting addObject:readBytes(volume, file, 0, 8, bufferOf(8))];
  // Behind those two, so that the host never hears of them.
  [waiting addObject:lookUp(volume, @"b", docs)];
  [waiting addObject:readBytes(volume, file, 4, 8, bufferOf(8))];
  EXPECT(hostWaitUntilAsked(host, "list", "me/Docs", 1));
  EXPECT(hostWaitUntilAsked(host, "read", "me/Docs/a.txt", 1));
  for (Call* call in waiting) EXPECT(![call hasCome]);
  return waiting;
}

void deactivatingEndsWhatWaits(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  NSArray* const waiting = waitingCalls(host, volume);
  expectSuccess(deactivate(volume));
  for (Call* call in waiting) expectPosixError(call, 57);
}

void unmountingEndsWhatWaits(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  NSArray* const waiting = waitingCalls(host, volume);
  expectSuccess(unmountVolume(volume));
  for (Call* call in waiting) expectPosixError(call, 57);
}

void mountingActivatingAndSynchronizingLeaveWhatWaits(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const docs = itemAt(volume, @"me/Docs");
  FSItem* const file = itemAt(volume, @"me/Docs/a.txt");
  hostDelayList(host, "me/Docs", "a.txt");
  hostDelayRead(host, "me/Docs/a.txt", "aGVsbG8=");
  Call* const listed = enumerate(volume, docs, 0, 0, -1, packerOf(9));
  Call* const read = readBytes(volume, file, 0, 5, bufferOf(5));
  EXPECT(hostWaitUntilAsked(host, "list", "me/Docs", 1));
  EXPECT(hostWaitUntilAsked(host, "read", "me/Docs/a.txt", 1));
  expectSuccess(mountVolume(volume));
  expectSuccess(activate(volume));
  expectSuccess(synchronize(volume));
  EXPECT(![listed hasCome] && ![read hasCome]);
  hostRelease(host);
  expectSuccess(listed);
  expectSuccess(read);
}

void unloadingEndsWhatWaitsAndRepliesComeAfterwards(HostForRun* host) {
  NSArray* waiting = nil;
  @autoreleasepool {
    TarnelFileSystem* const fileSystem = fileSystemAt(host);
    TarnelVolume* const volume = loadedBy(fileSystem);
    waiting = [waitingCalls(host, volume) retain];
    expectSuccess(unload(fileSystem));
  }
  // The file system is gone, and the volume is held by its replies alone.
  for (Call* call in waiting) expectPosixError(call, 57);
  [waiting release];
  EXPECT(eventually(^{
    return (bool)(fakeLiving(fakeVolume) == 0 && fakeLiving(fakeFileSystem) == 0);
  }));
}

void aBufferAndAPackerLiveUntilTheirReplies(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const docs = itemAt(volume, @"me/Docs");
  FSItem* const file = itemAt(volume, @"me/Docs/a.txt");
  hostDelayList(host, "me/Docs", "a.txt");
  hostDelayRead(host, "me/Docs/a.txt", "aGVsbG8=");
  Call* listed = nil;
  Call* read = nil;
  @autoreleasepool {
    listed = [enumerate(volume, docs, 0, 0, -1, packerOf(9)) retain];
    read = [readBytes(volume, file, 0, 5, bufferOf(5)) retain];
  }
  // The caller has let go of both.
  EXPECT(hostWaitUntilAsked(host, "list", "me/Docs", 1));
  EXPECT(hostWaitUntilAsked(host, "read", "me/Docs/a.txt", 1));
  EXPECT(fakeLiving(fakePacker) == 1 && fakeLiving(fakeBuffer) == 1);
  hostRelease(host);
  expectSuccess(listed);
  expectSuccess(read);
  EXPECT(listed->number != 0 && read->number == 5);
  [listed release];
  [read release];
  EXPECT(eventually(^{
    return (bool)(fakeLiving(fakePacker) == 0 && fakeLiving(fakeBuffer) == 0);
  }));
}

void nothingIsLeftOfAVolume(HostForRun* host) {
  @autoreleasepool {
    TarnelFileSystem* const fileSystem = fileSystemAt(host);
    TarnelVolume* const volume = loadedBy(fileSystem);
    FSItem* const file = itemAt(volume, @"me/Docs/a.txt");
    expectSuccess(attributesOf(volume, file, allWanted));
    expectSuccess(enumerate(volume, itemAt(volume, @"me/Docs"), 0, 0, allWanted, packerOf(9)));
    expectSuccess(readBytes(volume, file, 0, 8, bufferOf(8)));
    expectPosixError(lookUp(volume, @"missing", itemAt(volume, @"me/Docs")), 2);
    EXPECT(fakeLiving(fakeItem) == 4);
    expectSuccess(unmountVolume(volume));
    expectSuccess(deactivate(volume));
    expectSuccess(unload(fileSystem));
  }
  // The thread of the last reply may still be letting go.
  EXPECT(eventually(^{
    bool nothing = true;
    for (int kind = 0; kind < fakeKinds; ++kind) nothing = nothing && fakeLiving(kind) == 0;
    return nothing;
  }));
}

void aHostThatIsGoneIsNotConnected(HostForRun* host) {
  (void)host;
  TarnelFileSystem* const fileSystem =
      [[[TarnelFileSystem alloc] initWithHome:@"/nowhere"] autorelease];
  TarnelVolume* const volume = loadedBy(fileSystem);
  Call* const root = activate(volume);
  expectSuccess(attributesOf(volume, root->first, allWanted));
  expectPosixError(lookUp(volume, @"me", root->first), 57);
  expectPosixError(enumerate(volume, root->first, 0, 0, -1, packerOf(3)), 57);
}

void aCoreThatThrowsIsInputOutputOnce(HostForRun* host) {
  TarnelVolume* const good = loadedVolume(host);
  FSItem* const docs = itemAt(good, @"me/Docs");
  FSItem* const file = itemAt(good, @"me/Docs/a.txt");
  TarnelVolume* const bad = [[[TarnelVolume alloc] initWithCore:badCore()] autorelease];
  expectPosixError(lookUp(bad, @"a.txt", docs), 5);
  expectPosixError(attributesOf(bad, file, allWanted), 5);
  expectPosixError(enumerate(bad, docs, 0, 0, -1, packerOf(3)), 5);
  expectPosixError(readBytes(bad, file, 0, 8, bufferOf(8)), 5);
  expectPosixError(deactivate(bad), 5);
  EXPECT([unmountVolume(bad) wait]);
}
