// Probe, load, the volume's fixed answers and its life cycle.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#import "Scenarios.h"

static NSString* const identity = @"6D2E9A14-7C3B-4F58-9E01-2A5B8C4D6E7F";

TarnelVolume* loadedBy(TarnelFileSystem* fileSystem) {
  Call* const loaded = load(fileSystem, @[]);
  expectSuccess(loaded);
  TarnelVolume* const volume = loaded->first;
  EXPECT([volume isKindOfClass:[TarnelVolume class]]);
  expectSuccess(mountVolume(volume));
  return volume;
}

TarnelVolume* loadedVolume(HostForRun* host) { return loadedBy(fileSystemAt(host)); }

FSItem* strangeItem(void) { return [[[FSItem alloc] init] autorelease]; }

bool logHas(NSString* line) { return [fakeLogLines() containsObject:line]; }

void aCopiedBlockIsAnotherObjectAndKeepsWhatItHolds(HostForRun* host) {
  (void)host;
  NSObject* const held = [[NSObject alloc] init];
  void (^const onStack)(void) = ^{
    (void)held;
  };
  void (^const copied)(void) = Block_copy(onStack);
  EXPECT((void*)copied != (void*)onStack);
  EXPECT([held retainCount] == 2);
  Block_release(copied);
  EXPECT([held retainCount] == 1);
  [held release];
}

void probingAnythingIsUsable(HostForRun* host) {
  Call* const probed = probe(fileSystemAt(host));
  EXPECT([probed hasCome]);
  expectSuccess(probed);
  FSProbeResult* const result = probed->first;
  EXPECT(result.result == FSMatchResultUsable);
  EXPECT([result.name isEqualToString:@"tarnelfs"]);
  EXPECT([[result.containerID.uuid UUIDString] isEqualToString:identity]);
}

void loadingLogsTwoLinesAndOptionsAThird(HostForRun* host) {
  TarnelFileSystem* const fileSystem = fileSystemAt(host);
  NSString* const loaded = [NSString
      stringWithFormat:
          @"default loaded: serving Tarnel over %s/tarnel-control.sock (read-only volume)",
          hostHome(host)];
  NSString* const resource = @"default loadResource: resource is FSGenericURLResource";
  fakeLogClear();
  expectSuccess(load(fileSystem, @[]));
  EXPECT([fakeLogLines() isEqual:(@[ resource, loaded ])]);
  fakeLogClear();
  NSArray* const options = @[ @"-o", @"rdonly" ];
  expectSuccess(load(fileSystem, options));
  NSString* const populated = @"default mount options are populated on this OS (they were empty "
                              @"on 26.5.2): -o rdonly";
  EXPECT([fakeLogLines() isEqual:(@[ resource, populated, loaded ])]);
  EXPECT([fakeLogName() isEqualToString:@"com.tarnel.desktop.fskitext volume"]);
}

void loadingMakesTheContainerReadyBeforeItReplies(HostForRun* host) {
  TarnelFileSystem* const fileSystem = fileSystemAt(host);
  EXPECT(fileSystem.containerStatus == nil);
  Call* const loaded = load(fileSystem, @[]);
  EXPECT([loaded hasCome]);
  EXPECT(fileSystem.containerStatus.state == FSContainerStateReady);
  expectSuccess(unload(fileSystem));
  EXPECT(fileSystem.containerStatus.state == FSContainerStateReady);
}

void twoLoadsReplaceTheVolumeUnderOneIdentity(HostForRun* host) {
  TarnelFileSystem* const fileSystem = fileSystemAt(host);
  TarnelVolume* const one = loadedBy(fileSystem);
  TarnelVolume* const other = loadedBy(fileSystem);
  EXPECT(one != other);
  for (TarnelVolume* volume in @[ one, other ]) {
    EXPECT([[volume.volumeID.uuid UUIDString] isEqualToString:identity]);
    EXPECT([[volume.name string] isEqualToString:@"Tarnel"]);
  }
  // Replaced, but neither unloaded nor cancelled.
  expectSuccess(attributesOf(one, itemAt(one, @"me/Docs/a.txt"), allWanted));
  expectSuccess(unload(fileSystem));
  expectSuccess(unload(fileSystem));
}

void theSocketLiesInTheHome(HostForRun* host) {
  (void)host;
  fakeLogClear();
  TarnelFileSystem* const fileSystem = [[[TarnelFileSystem alloc] init] autorelease];
  expectSuccess(load(fileSystem, @[]));
  NSString* const line = [NSString
      stringWithFormat:
          @"default loaded: serving Tarnel over %@/tarnel-control.sock (read-only volume)",
          NSHomeDirectory()];
  EXPECT(logHas(line));
}

void theFixedAnswersAreTheCores(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSVolumeSupportedCapabilities* const capabilities = volume.supportedVolumeCapabilities;
  EXPECT(!capabilities.supportsPersistentObjectIDs);
  EXPECT(capabilities.supports64BitObjectIDs);
  EXPECT(!capabilities.supportsHardLinks);
  EXPECT(!capabilities.supportsSymbolicLinks);
  EXPECT(capabilities.doesNotSupportVolumeSizes);
  EXPECT(capabilities.caseFormat == FSVolumeCaseFormatSensitive);
  EXPECT(!capabilities.supportsJournal);
  FSStatFSResult* const statistics = volume.volumeStatistics;
  EXPECT(statistics != volume.volumeStatistics);
  EXPECT([statistics.fileSystemTypeName isEqualToString:@"tarnelfs"]);
  EXPECT(statistics.blockSize == 4096 && statistics.ioSize == 4096);
  EXPECT(statistics.totalBlocks == 1 && statistics.usedBlocks == 1);
  EXPECT(statistics.freeBlocks == 0 && statistics.availableBlocks == 0);
  EXPECT(statistics.totalFiles == 1 && statistics.freeFiles == 0);
  EXPECT(volume.maximumLinkCount == 1 && volume.maximumNameLength == 255);
  EXPECT(volume.restrictsOwnershipChanges && !volume.truncatesLongNames);
  EXPECT(volume.maximumXattrSize == 0 && volume.maximumFileSize == 9223372036854775807ull);
  EXPECT(volume.requestedMountOptions == FSMountOptionsReadOnly);
  // Optional members that would change how the system goes about with the volume.
  EXPECT(![volume respondsToSelector:@selector(enableOpenUnlinkEmulation)]);
  EXPECT(![volume respondsToSelector:@selector(maximumFileSizeInBits)]);
  EXPECT(![volume respondsToSelector:@selector(maximumXattrSizeInBits)]);
}

void aVolumeWithoutACoreEndsTheProcess(HostForRun* host) {
  (void)host;
  FSVolumeIdentifier* const identifier = [[[FSVolumeIdentifier alloc] init] autorelease];
  FSFileName* const name = [FSFileName nameWithString:@"Tarnel"];
  const pid_t child = fork();
  if (child == 0) {
    (void)[(FSVolume*)[TarnelVolume alloc] initWithVolumeID:identifier volumeName:name];
    _exit(0);
  }
  int status = 0;
  EXPECT(waitpid(child, &status, 0) == child);
  EXPECT(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT);
}

void lifeCycleOperationsReplyInsideTheCall(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  NSMutableArray* const all = [NSMutableArray array];
  [all addObject:mountVolume(volume)];
  Call* const root = activate(volume);
  [all addObject:root];
  Call* const again = activate(volume);
  [all addObject:again];
  [all addObject:synchronize(volume)];
  [all addObject:deactivate(volume)];
  [all addObject:unmountVolume(volume)];
  for (Call* call in all) {
    EXPECT([call hasCome]);
    expectSuccess(call);
  }
  EXPECT(root->first != nil && root->first == again->first);
  EXPECT(hostAsked(host, "shares", "") == 0);
}
