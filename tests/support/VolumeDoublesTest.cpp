// The small doubles around a volume: log, packer, buffer, and waiting for a reply.
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <thread>

#include "control/Thread.h"
#include "fs/VolumeReplies.h"
#include "support/Awaited.h"
#include "support/ByteBuffer.h"
#include "support/RecordingLog.h"
#include "support/RecordingPacker.h"

namespace tarnel::test {
namespace {

TEST(RecordingLog, keepsLinesWithTheirLevels) {
  RecordingLog recording;
  recording.unloaded();
  recording.getAttributesFailed("a", "b");
  const std::vector<LogLine> expected = {noticeLine("unloaded"),
                                         errorLine("getAttributes FAILED relpath=a error=b")};
  EXPECT_EQ(recording.lines(), expected);
  recording.clear();
  EXPECT_TRUE(recording.lines().empty());
}

TEST(RecordingLog, keepsADebugLineThatNobodyShouldHaveSent) {
  RecordingLog recording;
  EXPECT_FALSE(recording.isDebugEnabled());
  recording.getAttributes("a", 1);
  EXPECT_EQ(recording.lines().at(0).level, VolumeLog::Level::debug);
  recording.setDebug(true);
  EXPECT_TRUE(recording.isDebugEnabled());
}

TEST(RecordingLog, becomesTheLogOfTheProcess) {
  RecordingLog& recording = RecordingLog::installed();
  recording.clear();
  log().unloaded();
  EXPECT_EQ(recording.lines().size(), 1u);
}

TEST(RecordingPacker, takesEntriesUntilItIsFull) {
  RecordingPacker packer(1);
  EXPECT_TRUE(packer.packEntry("a", ItemType::file, 3, 1, std::nullopt));
  EXPECT_FALSE(packer.packEntry("b", ItemType::directory, 4, 2, ItemAttributes{}));
  const std::vector<PackedEntry> expected = {
      {.name = "a", .itemType = ItemType::file, .itemID = 3, .nextCookie = 1}};
  EXPECT_EQ(packer.entries(), expected);
  EXPECT_EQ(packer.names(), std::vector<std::string>{"a"});
  EXPECT_EQ(packer.offered(), 2u);
}

TEST(ByteBuffer, showsWhichBytesWereWritten) {
  ByteBuffer buffer(4);
  buffer.withUnsafeMutableBytes([](std::span<char> bytes) { bytes[1] = 'x'; });
  EXPECT_EQ(buffer.length(), 4);
  EXPECT_EQ(buffer.bytes(), "~x~~");
  EXPECT_EQ(buffer.first(2), "~x");
}

TEST(Awaited, bringsTheValuesOfAReplyFromAnotherThread) {
  Awaited<CountReply> awaited;
  EXPECT_FALSE(awaited.hasCome());
  std::thread other = startThread("other", [reply = awaited.reply()] { reply(7, posixError(2)); });
  const auto [count, error] = awaited.wait();
  EXPECT_EQ(awaited.replier(), other.get_id());
  other.join();
  EXPECT_EQ(count, 7);
  EXPECT_EQ(error, posixError(2));
}

TEST(Awaited, failsTheTestOnASecondReply) {
  Awaited<ErrorReply> awaited;
  const auto reply = awaited.reply();
  reply(std::nullopt);
  EXPECT_NONFATAL_FAILURE(reply(std::nullopt), "a second reply");
}

}  // namespace
}  // namespace tarnel::test
