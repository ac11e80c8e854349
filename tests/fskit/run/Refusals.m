// Everything that a read-only volume refuses, and items that are not its own.
#import "Replies.h"
#import "Scenarios.h"

@interface Call (Making)
+ (Call*)of:(const char*)what;
- (void)replied:(id)result and:(id)other number:(uint64_t)count error:(NSError*)failure;
@end

NSArray* refusedChanges(TarnelVolume* volume, FSItem* item, FSItem* directory) {
  FSFileName* const name = [FSFileName nameWithString:@"new"];
  FSItemSetAttributesRequest* const set = [[[FSItemSetAttributesRequest alloc] init] autorelease];
  NSMutableArray* const all = [NSMutableArray array];

  Call* call = [Call of:"create"];
  [all addObject:call];
  [volume createItemNamed:name
                     type:FSItemTypeFile
              inDirectory:directory
               attributes:set
             replyHandler:^(FSItem* made, FSFileName* given, NSError* error) {
               [call replied:made and:given number:0 error:error];
             }];
  call = [Call of:"create symbolic link"];
  [all addObject:call];
  [volume createSymbolicLinkNamed:name
                      inDirectory:directory
                       attributes:set
                     linkContents:name
                     replyHandler:^(FSItem* made, FSFileName* given, NSError* error) {
                       [call replied:made and:given number:0 error:error];
                     }];
  call = [Call of:"create link"];
  [all addObject:call];
  [volume createLinkToItem:item
                     named:name
               inDirectory:directory
              replyHandler:^(FSFileName* given, NSError* error) {
                [call replied:given and:nil number:0 error:error];
              }];
  call = [Call of:"remove"];
  [all addObject:call];
  [volume removeItem:item
               named:name
       fromDirectory:directory
        replyHandler:^(NSError* error) {
          [call replied:nil and:nil number:0 error:error];
        }];
  call = [Call of:"rename"];
  [all addObject:call];
  [volume renameItem:item
         inDirectory:directory
               named:name
           toNewName:name
         inDirectory:directory
            overItem:nil
        replyHandler:^(FSFileName* given, NSError* error) {
          [call replied:given and:nil number:0 error:error];
        }];
  call = [Call of:"set attributes"];
  [all addObject:call];
  [volume setAttributes:set
                 onItem:item
           replyHandler:^(FSItemAttributes* attributes, NSError* error) {
             [call replied:attributes and:nil number:0 error:error];
           }];
  call = [Call of:"write"];
  [all addObject:call];
  [volume writeContents:[NSData dataWithBytes:"xyz" length:3]
                 toFile:item
               atOffset:0
           replyHandler:^(size_t written, NSError* error) {
             [call replied:nil and:nil number:written error:error];
           }];
  return all;
}

Call* readLink(TarnelVolume* volume, FSItem* item) {
  Call* const call = [Call of:"read link"];
  [volume readSymbolicLink:item
              replyHandler:^(FSFileName* contents, NSError* error) {
                [call replied:contents and:nil number:0 error:error];
              }];
  return call;
}

void everyChangeIsRefusedInsideTheCall(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const file = itemAt(volume, @"me/Docs/a.txt");
  FSItem* const root = itemAt(volume, @"me");
  for (FSItem* item in @[ file, root, strangeItem() ]) {
    NSArray* const refused = refusedChanges(volume, item, root);
    EXPECT([refused count] == 7);
    for (Call* call in refused) {
      EXPECT([call hasCome]);
      expectPosixError(call, 30);
    }
    Call* const link = readLink(volume, item);
    EXPECT([link hasCome]);
    expectPosixError(link, 22);
  }
}

void everyErrorKeepsItsDomainAndNumber(HostForRun* host) {
  (void)host;
  const TarnelError none = {.domain = tarnelNoError};
  EXPECT(tarnelNSError(none) == nil);
  // Of both kinds one that no operation makes: neither number is known by heart.
  for (int32_t code = 4505; code <= 4506; ++code) {
    const TarnelError own = {.domain = tarnelFileSystemKitError, .code = code};
    EXPECT([[tarnelNSError(own) domain] isEqualToString:FSKitErrorDomain]);
    EXPECT([tarnelNSError(own) code] == code);
    EXPECT([[tarnelNSError(own) userInfo] count] == 0);
  }
  for (int32_t code = 1; code <= 106; ++code) {
    const TarnelError posix = {.domain = tarnelPosixError, .code = code};
    EXPECT([[tarnelNSError(posix) domain] isEqualToString:@"NSPOSIXErrorDomain"]);
    EXPECT([tarnelNSError(posix) code] == code);
  }
}

void aForeignItemIsRefusedInEveryOperation(HostForRun* host) {
  TarnelVolume* const volume = loadedVolume(host);
  FSItem* const strange = strangeItem();
  expectPosixError(lookUp(volume, @"Docs", strange), 5);
  expectPosixError(attributesOf(volume, strange, FSItemAttributeSize), 5);
  expectPosixError(enumerate(volume, strange, FSDirectoryCookieInitial, FSDirectoryVerifierInitial,
                             -1, packerOf(10)),
                   5);
  expectPosixError(readBytes(volume, strange, 0, 4, bufferOf(4)), 5);
  expectPosixError(reclaim(volume, strange), 5);
  EXPECT(hostAsked(host, "stat", "Docs") == 0);
}
