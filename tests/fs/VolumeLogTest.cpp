// The ten lines of the log, letter by letter, and the log of the process.
#include <gtest/gtest.h>

#include <limits>

#include "seam/VolumeLog.h"
#include "support/RecordingLog.h"

namespace tarnel::test {
namespace {

class VolumeLogLines : public testing::Test {
 protected:
  VolumeLogLines() { lines.setDebug(true); }
  void expect(const LogLine& line) const { EXPECT_EQ(lines.lines(), std::vector<LogLine>{line}); }
  RecordingLog lines;
};

TEST_F(VolumeLogLines, loadResource) {
  lines.loadResource("FSGenericURLResource");
  expect(noticeLine("loadResource: resource is FSGenericURLResource"));
}

TEST_F(VolumeLogLines, mountOptions) {
  lines.mountOptions("-o rdonly");
  expect(
      noticeLine("mount options are populated on this OS (they were empty on 26.5.2): -o rdonly"));
}

TEST_F(VolumeLogLines, loaded) {
  lines.loaded("Tarnel", "/home/x/tarnel-control.sock");
  expect(noticeLine("loaded: serving Tarnel over /home/x/tarnel-control.sock (read-only volume)"));
}

TEST_F(VolumeLogLines, unloaded) {
  lines.unloaded();
  expect(noticeLine("unloaded"));
}

TEST_F(VolumeLogLines, getAttributes) {
  lines.getAttributes("me/Docs", 0xABCDEF0123456789);
  expect(debugLine("getAttributes relpath=me/Docs wanted=0xabcdef0123456789"));
}

TEST_F(VolumeLogLines, getAttributesOfNothing) {
  lines.getAttributes("", 0);
  expect(debugLine("getAttributes relpath= wanted=0x0"));
}

TEST_F(VolumeLogLines, getAttributesReply) {
  lines.getAttributesReply("a/b", std::numeric_limits<std::int64_t>::max(), -5, -1);
  expect(debugLine(
      "getAttributes reply relpath=a/b size=9223372036854775807 mtimeMs=-5 lastKnown=-1"));
}

TEST_F(VolumeLogLines, servedStale) {
  lines.servedStale("a/b", 10, "disconnected");
  expect(errorLine("getAttributes SERVED STALE relpath=a/b size=10 because=disconnected"));
}

TEST_F(VolumeLogLines, getAttributesFailed) {
  lines.getAttributesFailed("a/b", "timedOut");
  expect(errorLine("getAttributes FAILED relpath=a/b error=timedOut"));
}

TEST_F(VolumeLogLines, readBytes) {
  lines.readBytes("a/b", 1, 2, -1);
  expect(debugLine("readBytes relpath=a/b offset=1 wanted=2 lastKnownSize=-1"));
}

TEST_F(VolumeLogLines, reclaimItem) {
  lines.reclaimItem("a/b", std::numeric_limits<std::uint64_t>::max());
  expect(debugLine("reclaimItem relpath=a/b id=18446744073709551615"));
}

TEST(VolumeLog, isTheOneThatWasSetLast) {
  RecordingLog& installed = RecordingLog::installed();
  EXPECT_EQ(&log(), &installed);
}

}  // namespace
}  // namespace tarnel::test
