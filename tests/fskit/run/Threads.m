// The system calls from several threads at once.
#import "Scenarios.h"

enum { threads = 4, rounds = 60 };

typedef struct {
  TarnelVolume* volume;
  FSItem* docs;
  FSItem* shared;
  void (*round)(TarnelVolume* volume, FSItem* docs, FSItem* shared, int number);
} Work;

static void* work(void* argument) {
  const Work* const given = argument;
  for (int i = 0; i < rounds; ++i) {
    @autoreleasepool {
      given->round(given->volume, given->docs, given->shared, i);
    }
  }
  return NULL;
}

static void together(Work given) {
  pthread_t all[threads];
  int started = 0;
  while (started < threads && pthread_create(&all[started], NULL, work, &given) == 0) ++started;
  EXPECT(started == threads);
  for (int i = 0; i < started; ++i) pthread_join(all[i], NULL);
}

static void lookUpAndReclaim(TarnelVolume* volume, FSItem* docs, FSItem* shared, int number) {
  (void)shared, (void)number;
  Call* const found = lookUp(volume, @"a.txt", docs);
  expectSuccess(found);
  Call* const attributes = attributesOf(volume, found->first, FSItemAttributeSize);
  expectSuccess(attributes);
  EXPECT(((FSItemAttributes*)attributes->first).size == 5);
  expectSuccess(reclaim(volume, found->first));
}

void lookupsRaceWithReclaims(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  const Work given = {
      .volume = volume, .docs = itemAt(volume, @"me/Docs"), .round = lookUpAndReclaim};
  together(given);
  // Each object that a lookup gave out has been given back.
  EXPECT(volume.liveItems == 3);
}

static void everything(TarnelVolume* volume, FSItem* docs, FSItem* shared, int number) {
  NSMutableArray* const calls = [NSMutableArray array];
  FSMutableFileDataBuffer* const buffer = bufferOf(5);
  FSDirectoryEntryPacker* const packer = packerOf((NSUInteger)number % 3);
  [calls addObject:lookUp(volume, @"a.txt", docs)];
  [calls addObject:attributesOf(volume, shared, allWanted)];
  [calls addObject:readBytes(volume, shared, 0, 5, buffer)];
  [calls addObject:enumerate(volume, docs, FSDirectoryCookieInitial, FSDirectoryVerifierInitial,
                             number % 2 == 0 ? -1 : allWanted, packer)];
  [calls addObject:activate(volume)];
  [calls addObject:synchronize(volume)];
  for (Call* call in calls) expectSuccess(call);
  EXPECT([[buffer first:5] isEqualToString:@"hello"]);
  for (Call* call in refusedChanges(volume, shared, docs)) expectPosixError(call, 30);
  expectPosixError(readLink(volume, shared), 22);
  expectPosixError(lookUp(volume, @"..", docs), 2);
  (void)volume.volumeStatistics;
  (void)volume.supportedVolumeCapabilities;
}

void severalThreadsGetOneReplyToEachCall(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  const Work given = {.volume = volume,
                      .docs = itemAt(volume, @"me/Docs"),
                      .shared = itemAt(volume, @"me/Docs/a.txt"),
                      .round = everything};
  together(given);
  EXPECT(callsMade() > threads * rounds * 15);
}
