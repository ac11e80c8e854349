#import "TarnelLog.h"

#import <Foundation/Foundation.h>
#import <os/log.h>

#include "fskit/TarnelCore.h"

// Set before the core gets the lines, and never again.
static os_log_t volumeLog;

static bool isDebugEnabled(void) { return os_log_type_enabled(volumeLog, OS_LOG_TYPE_DEBUG); }

static void loadResource(const char* typeName) {
  os_log(volumeLog, "loadResource: resource is %{public}s", typeName);
}

static void mountOptions(const char* joined) {
  os_log(volumeLog,
         "mount options are populated on this OS (they were empty on 26.5.2): %{public}s", joined);
}

static void loaded(const char* volumeName, const char* socketPath) {
  os_log(volumeLog, "loaded: serving %{public}s over %{public}s (read-only volume)", volumeName,
         socketPath);
}

static void unloaded(void) { os_log(volumeLog, "unloaded"); }

static void getAttributes(const char* relpath, const char* wantedHex) {
  os_log_debug(volumeLog, "getAttributes relpath=%{public}s wanted=0x%{public}s", relpath,
               wantedHex);
}

static void getAttributesReply(const char* relpath, int64_t size, int64_t mtimeMs,
                               int64_t lastKnown) {
  os_log_debug(volumeLog,
               "getAttributes reply relpath=%{public}s size=%{public}lld mtimeMs=%{public}lld "
               "lastKnown=%{public}lld",
               relpath, (long long)size, (long long)mtimeMs, (long long)lastKnown);
}

static void servedStale(const char* relpath, int64_t size, const char* because) {
  os_log_error(volumeLog,
               "getAttributes SERVED STALE relpath=%{public}s size=%{public}lld because=%{public}s",
               relpath, (long long)size, because);
}

static void getAttributesFailed(const char* relpath, const char* error) {
  os_log_error(volumeLog, "getAttributes FAILED relpath=%{public}s error=%{public}s", relpath,
               error);
}

static void readBytes(const char* relpath, int64_t offset, int64_t wanted, int64_t lastKnownSize) {
  os_log_debug(volumeLog,
               "readBytes relpath=%{public}s offset=%{public}lld wanted=%{public}ld "
               "lastKnownSize=%{public}lld",
               relpath, (long long)offset, (long)wanted, (long long)lastKnownSize);
}

static void reclaimItem(const char* relpath, uint64_t identifier) {
  os_log_debug(volumeLog, "reclaimItem relpath=%{public}s id=%{public}llu", relpath,
               (unsigned long long)identifier);
}

static const TarnelLogLines lines = {
    .isDebugEnabled = isDebugEnabled,
    .loadResource = loadResource,
    .mountOptions = mountOptions,
    .loaded = loaded,
    .unloaded = unloaded,
    .getAttributes = getAttributes,
    .getAttributesReply = getAttributesReply,
    .servedStale = servedStale,
    .getAttributesFailed = getAttributesFailed,
    .readBytes = readBytes,
    .reclaimItem = reclaimItem,
};

void tarnelUseSystemLog(void) {
  volumeLog = os_log_create(tarnelLogSubsystem().bytes, "volume");
  tarnelSetLog(&lines);
}
