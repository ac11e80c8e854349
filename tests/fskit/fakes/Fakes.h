// What a test makes and reads of the system's classes, beyond what the adapter sees of them.
#pragma once

#import <FSKit/FSKit.h>
#import <Foundation/Foundation.h>

// A resource, options, a buffer and a packer come from the system; here from the test.
@interface FSResource (Fake)
- (instancetype)initFake;
@end

@interface FSTaskOptions (Fake)
- (instancetype)initWithTexts:(NSArray*)texts;
@end

@interface FSMutableFileDataBuffer (Fake)
// Full of '~', so that a byte that nobody wrote shows.
- (instancetype)initWithLength:(NSUInteger)length;
- (NSString*)first:(NSUInteger)count;
@end

// One entry as it was packed. All fields are constant.
@interface FakeEntry : NSObject {
 @public
  FSFileName* name;
  FSItemType type;
  uint64_t itemID;
  FSDirectoryCookie nextCookie;
  FSItemAttributes* attributes;  // nil: names alone
}
@end

@interface FSDirectoryEntryPacker (Fake)
- (instancetype)initWithRoom:(NSUInteger)room;
- (NSArray*)entries;  // of FakeEntry
@end

// How many objects of the adapter's and of the system's classes live: the leaks that no reference
// count shows. Threads: any.
typedef enum { fakeItem, fakeVolume, fakeFileSystem, fakeBuffer, fakePacker, fakeKinds } FakeKind;
void fakeMade(FakeKind kind);
void fakeGone(FakeKind kind);
long fakeLiving(FakeKind kind);

// The log as it was written: levels and rendered lines. Threads: any.
#import <os/log.h>
void fakeLogSetDebug(bool enabled);
void fakeLogClear(void);
NSArray* fakeLogLines(void);  // "<type> <text>"
NSString* fakeLogName(void);  // "<subsystem> <category>" of the one log

// What no test needs of a class that could be archived.
#define FAKE_CODING                          \
  +(BOOL)supportsSecureCoding {              \
    return YES;                              \
  }                                          \
  -(void)encodeWithCoder : (NSCoder*)coder { \
    (void)coder;                             \
  }                                          \
  -(id)initWithCoder : (NSCoder*)coder {     \
    (void)coder;                             \
    [self release];                          \
    return nil;                              \
  }
