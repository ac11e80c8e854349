#import "Scenarios.h"
#import "SurfaceSpy.h"

enum { files = 7 };

static FSItem* filledDirectory(HostForRun* host, TarnelVolume* volume) {
  for (int i = 1; i < files; ++i) {
    char path[] = "me/Docs/b0";
    path[sizeof path - 2] = (char)('0' + i);
    hostFile(host, path, "bytes", 5);
  }
  return itemAt(volume, @"me/Docs");
}

static FSItemID idOf(TarnelVolume* volume, FSItem* item) {
  Call* const answered = attributesOf(volume, item, FSItemAttributeFileID);
  expectSuccess(answered);
  return ((FSItemAttributes*)answered->first).fileID;
}

static NSArray* namesIn(FSDirectoryEntryPacker* packer) {
  NSMutableArray* const names = [NSMutableArray array];
  for (FakeEntry* entry in [packer entries]) [names addObject:[entry->name string]];
  return names;
}

static NSArray* expectedNames(void) {
  return @[ @"a.txt", @"b1", @"b2", @"b3", @"b4", @"b5", @"b6" ];
}

// As the system goes on: from the last entry that was taken, until a call brings none.
static NSArray* namesWithRoom(TarnelVolume* volume, FSItem* directory, NSUInteger room) {
  NSMutableArray* const names = [NSMutableArray array];
  FSDirectoryCookie cookie = FSDirectoryCookieInitial;
  FSDirectoryVerifier verifier = FSDirectoryVerifierInitial;
  for (int calls = 0; calls < 20; ++calls) {
    FSDirectoryEntryPacker* const packer = packerOf(room);
    Call* const some = enumerate(volume, directory, cookie, verifier, FSItemAttributeSize, packer);
    expectSuccess(some);
    EXPECT(some->number != 0);
    if ([[packer entries] count] == 0) return names;
    [names addObjectsFromArray:namesIn(packer)];
    for (FakeEntry* entry in [packer entries]) {
      EXPECT(entry->type == FSItemTypeFile);
      EXPECT(entry->attributes.size == 5 && [entry->attributes isValid:FSItemAttributeSize]);
      EXPECT(![entry->attributes isValid:FSItemAttributeMode]);
    }
    cookie = ((FakeEntry*)[[packer entries] lastObject])->nextCookie;
    verifier = some->number;
  }
  EXPECT(false);  // no end
  return names;
}

void packersOfAnySizeSeeEveryEntryOnce(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const directory = filledDirectory(host, volume);
  for (NSUInteger room = 1; room <= files + 1; ++room) {
    EXPECT([namesWithRoom(volume, directory, room) isEqual:expectedNames()]);
  }
  FSDirectoryEntryPacker* const none = packerOf(0);
  expectSuccess(enumerate(volume, directory, FSDirectoryCookieInitial, FSDirectoryVerifierInitial,
                          FSItemAttributeSize, none));
  EXPECT([[none entries] count] == 0);
}

void namesAloneBringTheDotEntries(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const directory = itemAt(volume, @"me/Docs");
  FSDirectoryEntryPacker* const packer = packerOf(10);
  Call* const listed = enumerate(volume, directory, FSDirectoryCookieInitial,
                                 FSDirectoryVerifierInitial, -1, packer);
  expectSuccess(listed);
  EXPECT([namesIn(packer) isEqual:(@[ @".", @"..", @"a.txt" ])]);
  FSDirectoryCookie next = 1;
  for (FakeEntry* entry in [packer entries]) {
    EXPECT(entry->attributes == nil);
    EXPECT(entry->nextCookie == next++);
  }
  // With attributes: the children alone, under the same verifier. No bit wanted is still a request.
  FSDirectoryEntryPacker* const children = packerOf(10);
  Call* const again = enumerate(volume, directory, 0, 0, 0, children);
  expectSuccess(again);
  EXPECT([namesIn(children) isEqual:(@[ @"a.txt" ])]);
  EXPECT(again->number == listed->number);
  // The root and its peer, without the host's listing.
  for (NSString* path in @[ @"", @"me" ]) {
    FSItem* const item = [path length] == 0 ? activate(volume)->first : itemAt(volume, path);
    FSDirectoryEntryPacker* const made = packerOf(10);
    expectSuccess(enumerate(volume, item, 0, 0, allWanted, made));
    EXPECT([namesIn(made) isEqual:([path length] == 0 ? @[ @"me" ] : @[ @"Docs" ])]);
  }
}

void entriesAreOfTheTypesAndIdsThatLookupsFind(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const root = activate(volume)->first;
  FSItem* const peer = itemAt(volume, @"me");
  FSItem* const docs = itemAt(volume, @"me/Docs");
  FSItem* const file = itemAt(volume, @"me/Docs/a.txt");
  const struct {
    FSItem* directory;
    FSItem* parent;
    FSItem* child;
    FSItemType type;
  } cases[] = {{peer, root, docs, FSItemTypeDirectory}, {docs, peer, file, FSItemTypeFile}};
  for (int i = 0; i < 2; ++i) {
    FSDirectoryEntryPacker* const packer = packerOf(9);
    expectSuccess(enumerate(volume, cases[i].directory, 0, 0, -1, packer));
    EXPECT([[packer entries] count] == 3);
    FakeEntry* const own = [[packer entries] objectAtIndex:0];
    FakeEntry* const above = [[packer entries] objectAtIndex:1];
    FakeEntry* const child = [[packer entries] objectAtIndex:2];
    EXPECT(own->type == FSItemTypeDirectory && above->type == FSItemTypeDirectory);
    EXPECT(child->type == cases[i].type);
    EXPECT(own->itemID == idOf(volume, cases[i].directory));
    EXPECT(above->itemID == idOf(volume, cases[i].parent));
    EXPECT(child->itemID == idOf(volume, cases[i].child));
  }
}

void theInitialConstantsAreTheCoresZero(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const directory = itemAt(volume, @"me/Docs");
  expectSuccess(enumerate(volume, directory, FSDirectoryCookieInitial, FSDirectoryVerifierInitial,
                          -1, packerOf(9)));
  EXPECT(spiedCookie() == 0 && spiedVerifier() == 0);
  // Nothing else is.
  expectKitError(enumerate(volume, directory, FSDirectoryVerifierInitial, FSDirectoryCookieInitial,
                           -1, packerOf(9)),
                 4506);
  EXPECT(spiedCookie() == FSDirectoryVerifierInitial);
  EXPECT(spiedVerifier() == FSDirectoryCookieInitial);
}

void aStaleCookieIsTheSystemsOwnError(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const directory = filledDirectory(host, volume);
  Call* const listed = enumerate(volume, directory, FSDirectoryCookieInitial,
                                 FSDirectoryVerifierInitial, allWanted, packerOf(3));
  expectSuccess(listed);
  const FSDirectoryVerifier current = listed->number;
  const FSDirectoryVerifier stale = current + 1;
  expectKitError(enumerate(volume, directory, 3, stale, allWanted, packerOf(3)), 4506);
  expectKitError(
      enumerate(volume, directory, 3, FSDirectoryVerifierInitial, allWanted, packerOf(3)), 4506);
  expectKitError(enumerate(volume, directory, files + 1, current, allWanted, packerOf(3)), 4506);
  expectSuccess(enumerate(volume, directory, files, current, allWanted, packerOf(3)));
  // The start, under either number, never asks for the verifier.
  expectSuccess(
      enumerate(volume, directory, FSDirectoryCookieInitial, stale, allWanted, packerOf(3)));
  expectSuccess(enumerate(volume, directory, 0, stale, allWanted, packerOf(3)));
  hostFile(host, "me/Docs/new", "x", 1);
  expectKitError(enumerate(volume, directory, 3, current, allWanted, packerOf(3)), 4506);
}
