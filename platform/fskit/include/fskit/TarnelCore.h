// The core as a C surface: what the Objective-C adapter calls, and what calls it back.
//
// Objective-C and C++ never share a frame that unwinds: every function here is noexcept, and what
// the core throws becomes EIO. Plain C, so that the adapter stays plain Objective-C, where the
// compiler can tell a reply that is forgotten or made twice.
//
// Replies: each operation takes a function and a context and calls the function exactly once, with
// that context, inside the call or later from a thread of the core's: the core's own answer, or EIO
// when the core threw or dropped the reply. An error comes with empty results. A reply must not
// block, least of all wait for another operation.
// Handles: made here, released by the function of the same kind, from any thread. What a reply
// hands over is the receiver's. A null handle is one that could not be made: its operations reply
// EIO, and as an item it is foreign to every volume.
// Texts: bytes with a length, without a terminating zero, valid during the call that carries them.
// Threads: every function from any thread.
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define TARNEL_NOEXCEPT noexcept
extern "C" {
#else
#define TARNEL_NOEXCEPT
#endif

typedef struct TarnelCoreFileSystem TarnelCoreFileSystem;
typedef struct TarnelCoreVolume TarnelCoreVolume;
typedef struct TarnelCoreItem TarnelCoreItem;

typedef struct {
  const char* bytes;
  size_t length;
} TarnelText;

enum { tarnelNoError = 0, tarnelPosixError = 1, tarnelFileSystemKitError = 2 };

typedef struct {
  int32_t domain;  // one of the three above
  int32_t code;    // Darwin's number, or the system's own code
} TarnelError;

typedef struct {
  int64_t seconds;
  int64_t nanoseconds;
} TarnelTime;

typedef struct {
  uint64_t valid;  // the system's attribute bits: which of the fields below were set
  int64_t type;    // the system's item type
  uint32_t mode;
  uint32_t linkCount;
  uint32_t uid;
  uint32_t gid;
  uint32_t flags;
  uint64_t size;
  uint64_t allocSize;
  uint64_t fileID;
  uint64_t parentID;
  TarnelTime accessTime;
  TarnelTime modifyTime;
  TarnelTime changeTime;
  TarnelTime birthTime;
} TarnelAttributes;

typedef struct {
  bool supportsPersistentObjectIDs;
  bool supports64BitObjectIDs;
  bool supportsHardLinks;
  bool supportsSymbolicLinks;
  bool doesNotSupportVolumeSizes;
  int64_t caseFormat;
} TarnelCapabilities;

typedef struct {
  TarnelText fileSystemTypeName;  // constant
  int64_t blockSize;
  int64_t ioSize;
  uint64_t totalBlocks;
  uint64_t usedBlocks;
  uint64_t freeBlocks;
  uint64_t availableBlocks;
  uint64_t totalFiles;
  uint64_t freeFiles;
} TarnelStatistics;

typedef struct {
  int64_t maximumLinkCount;
  int64_t maximumNameLength;
  bool restrictsOwnershipChanges;
  bool truncatesLongNames;
  int64_t maximumXattrSize;
  uint64_t maximumFileSize;
} TarnelPathConfiguration;

// The replies. The error comes first and decides; everything else is empty beside one.
typedef void (*TarnelReply)(void* context, TarnelError error);
typedef void (*TarnelProbeReply)(void* context, TarnelError error, TarnelText name,
                                 const uint8_t* containerID);
typedef void (*TarnelVolumeReply)(void* context, TarnelError error, TarnelCoreVolume* volume);
typedef void (*TarnelItemReply)(void* context, TarnelError error, TarnelCoreItem* item);
typedef void (*TarnelAttributesReply)(void* context, TarnelError error,
                                      const TarnelAttributes* attributes);
typedef void (*TarnelVerifierReply)(void* context, TarnelError error, uint64_t verifier);
typedef void (*TarnelCountReply)(void* context, TarnelError error, int64_t count);

// What the core asks the adapter during an operation, on whatever thread works on it, never after
// the reply.
typedef struct {
  void* context;
  size_t count;
  const char* (*textAt)(void* context, size_t index);  // ends with a zero; null is empty
} TarnelOptions;

typedef struct {
  void* context;
  // False: there is no room. attributes is null when names alone were asked for.
  bool (*packEntry)(void* context, TarnelText name, int64_t itemType, uint64_t itemID,
                    uint64_t nextCookie, const TarnelAttributes* attributes);
} TarnelPacker;

typedef struct {
  void* context;
  size_t length;
  void* (*mutableBytes)(void* context);  // `length` bytes, good until the next call
} TarnelBuffer;

// The log: one function a line. Texts end with a zero. Any thread.
typedef struct {
  bool (*isDebugEnabled)(void);
  void (*loadResource)(const char* typeName);
  void (*mountOptions)(const char* joined);
  void (*loaded)(const char* volumeName, const char* socketPath);
  void (*unloaded)(void);
  void (*getAttributes)(const char* relpath, const char* wantedHex);
  void (*getAttributesReply)(const char* relpath, int64_t size, int64_t mtimeMs, int64_t lastKnown);
  void (*servedStale)(const char* relpath, int64_t size, const char* because);
  void (*getAttributesFailed)(const char* relpath, const char* error);
  void (*readBytes)(const char* relpath, int64_t offset, int64_t wanted, int64_t lastKnownSize);
  void (*reclaimItem)(const char* relpath, uint64_t id);
} TarnelLogLines;

// Before the first file system is made. `lines` is kept for the rest of the process.
void tarnelSetLog(const TarnelLogLines* lines) TARNEL_NOEXCEPT;
TarnelText tarnelLogSubsystem(void) TARNEL_NOEXCEPT;  // constant, ends with a zero

// The file system. Its socket lies in `home`. becameReady is called by each load, before its reply.
TarnelCoreFileSystem* tarnelFileSystemMake(TarnelText home, void (*becameReady)(void* context),
                                           void* context) TARNEL_NOEXCEPT;
void tarnelFileSystemRelease(TarnelCoreFileSystem* fileSystem) TARNEL_NOEXCEPT;
void tarnelFileSystemProbe(TarnelCoreFileSystem* fileSystem, TarnelText resourceType,
                           TarnelProbeReply reply, void* context) TARNEL_NOEXCEPT;
void tarnelFileSystemLoad(TarnelCoreFileSystem* fileSystem, TarnelText resourceType,
                          TarnelOptions options, TarnelVolumeReply reply,
                          void* context) TARNEL_NOEXCEPT;
void tarnelFileSystemUnload(TarnelCoreFileSystem* fileSystem, TarnelText resourceType,
                            TarnelOptions options, TarnelReply reply,
                            void* context) TARNEL_NOEXCEPT;

// The volume's fixed answers.
void tarnelVolumeRelease(TarnelCoreVolume* volume) TARNEL_NOEXCEPT;
const uint8_t* tarnelVolumeIdentifier(const TarnelCoreVolume* volume) TARNEL_NOEXCEPT;  // 16 bytes
TarnelText tarnelVolumeName(const TarnelCoreVolume* volume) TARNEL_NOEXCEPT;  // as long as it
TarnelCapabilities tarnelVolumeCapabilities(const TarnelCoreVolume* volume) TARNEL_NOEXCEPT;
TarnelStatistics tarnelVolumeStatistics(const TarnelCoreVolume* volume) TARNEL_NOEXCEPT;
TarnelPathConfiguration tarnelVolumePathConfiguration(void) TARNEL_NOEXCEPT;
// Ends the process: a volume without a source cannot be made.
__attribute__((noreturn)) void tarnelVolumeUnimplementedInitializer(void) TARNEL_NOEXCEPT;

// Life cycle.
void tarnelVolumeMount(TarnelCoreVolume* volume, TarnelReply reply, void* context) TARNEL_NOEXCEPT;
void tarnelVolumeUnmount(TarnelCoreVolume* volume, TarnelReply reply,
                         void* context) TARNEL_NOEXCEPT;
void tarnelVolumeActivate(TarnelCoreVolume* volume, TarnelItemReply reply,
                          void* context) TARNEL_NOEXCEPT;
void tarnelVolumeDeactivate(TarnelCoreVolume* volume, TarnelReply reply,
                            void* context) TARNEL_NOEXCEPT;
void tarnelVolumeSynchronize(TarnelCoreVolume* volume, TarnelReply reply,
                             void* context) TARNEL_NOEXCEPT;

// Items. isText says whether the name's bytes are valid UTF-8. wanted: the system's bits, as they
// are; in an enumeration null for names alone. Cookie and verifier: 0 at the start.
void tarnelVolumeLookupItem(TarnelCoreVolume* volume, TarnelText name, bool isText,
                            const TarnelCoreItem* directory, TarnelItemReply reply,
                            void* context) TARNEL_NOEXCEPT;
void tarnelVolumeGetAttributes(TarnelCoreVolume* volume, uint64_t wanted,
                               const TarnelCoreItem* item, TarnelAttributesReply reply,
                               void* context) TARNEL_NOEXCEPT;
void tarnelVolumeEnumerate(TarnelCoreVolume* volume, const TarnelCoreItem* directory,
                           uint64_t cookie, uint64_t verifier, const uint64_t* wanted,
                           TarnelPacker packer, TarnelVerifierReply reply,
                           void* context) TARNEL_NOEXCEPT;
void tarnelVolumeRead(TarnelCoreVolume* volume, const TarnelCoreItem* item, int64_t offset,
                      size_t length, TarnelBuffer buffer, TarnelCountReply reply,
                      void* context) TARNEL_NOEXCEPT;
void tarnelVolumeReclaimItem(TarnelCoreVolume* volume, const TarnelCoreItem* item,
                             TarnelReply reply, void* context) TARNEL_NOEXCEPT;
void tarnelItemRelease(TarnelCoreItem* item) TARNEL_NOEXCEPT;
// The same for two handles of one item, as long as one of them lives; null for null.
const void* tarnelItemIdentity(const TarnelCoreItem* item) TARNEL_NOEXCEPT;

// Refusals: they always reply with an error.
void tarnelVolumeRefuseCreateItem(TarnelCoreVolume* volume, TarnelReply reply,
                                  void* context) TARNEL_NOEXCEPT;
void tarnelVolumeRefuseCreateSymbolicLink(TarnelCoreVolume* volume, TarnelReply reply,
                                          void* context) TARNEL_NOEXCEPT;
void tarnelVolumeRefuseCreateLink(TarnelCoreVolume* volume, TarnelReply reply,
                                  void* context) TARNEL_NOEXCEPT;
void tarnelVolumeRefuseRemoveItem(TarnelCoreVolume* volume, TarnelReply reply,
                                  void* context) TARNEL_NOEXCEPT;
void tarnelVolumeRefuseRenameItem(TarnelCoreVolume* volume, TarnelReply reply,
                                  void* context) TARNEL_NOEXCEPT;
void tarnelVolumeRefuseSetAttributes(TarnelCoreVolume* volume, TarnelReply reply,
                                     void* context) TARNEL_NOEXCEPT;
void tarnelVolumeRefuseWrite(TarnelCoreVolume* volume, TarnelReply reply,
                             void* context) TARNEL_NOEXCEPT;
void tarnelVolumeRefuseReadSymbolicLink(TarnelCoreVolume* volume, TarnelReply reply,
                                        void* context) TARNEL_NOEXCEPT;

#ifdef __cplusplus
}
#endif
