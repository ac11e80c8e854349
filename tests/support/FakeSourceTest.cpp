#include <gtest/gtest.h>

#include <thread>

#include "support/Awaited.h"
#include "support/FakeSource.h"

namespace tarnel::test {
namespace {

using Kind = FabricSourceError::Kind;
using Call = SourceCall;
using StatReply = FabricSource::Reply<FileStat>;
using ListReply = FabricSource::Reply<std::vector<FileStat>>;
using ReadReply = FabricSource::Reply<Bytes>;
using ShareReply = FabricSource::Reply<std::vector<FabricShare>>;

FabricSource::Result<FileStat> stat(FakeSource& source, const std::string& path) {
  Awaited<StatReply> reply;
  source.stat(path, reply.reply());
  return std::get<0>(reply.wait());
}

FabricSource::Result<std::vector<FileStat>> list(FakeSource& source, const std::string& path) {
  Awaited<ListReply> reply;
  source.list(path, reply.reply());
  return std::get<0>(reply.wait());
}

FabricSource::Result<Bytes> read(FakeSource& source, const std::string& path, std::int64_t offset,
                                 std::int64_t length) {
  Awaited<ReadReply> reply;
  source.read(path, offset, length, reply.reply());
  return std::get<0>(reply.wait());
}

TEST(FakeSource, answersFromATreeThatComesWithItsFoldersAndItsShare) {
  FakeSource source;
  source.put("me/Docs/deep/a.txt", "hello");

  EXPECT_EQ(stat(source, "me/Docs/deep/a.txt")->size, 5);
  EXPECT_TRUE(stat(source, "me/Docs/deep")->isDirectory);
  EXPECT_EQ(list(source, "me/Docs")->at(0).name, "deep");
  EXPECT_EQ(read(source, "me/Docs/deep/a.txt", 1, 3), "ell");
  EXPECT_EQ(read(source, "me/Docs/deep/a.txt", 9, 3), "");
  Awaited<ShareReply> shares;
  source.shareListing(shares.reply());
  const std::vector<FabricShare> expected = {{.peer = "me", .name = "Docs"}};
  EXPECT_EQ(std::get<0>(shares.wait()), expected);
}

TEST(FakeSource, listsInTheOrderOfPuttingAndRemovesWhatLiesBelow) {
  FakeSource source;
  source.put("me/Docs/b", "");
  source.put("me/Docs/a", "");
  source.put("me/Docs/a2/c", "");
  EXPECT_EQ(list(source, "me/Docs")->at(0).name, "b");
  EXPECT_EQ(list(source, "me/Docs")->size(), 3u);

  source.remove("me/Docs/a2");
  EXPECT_EQ(list(source, "me/Docs")->size(), 2u);
  EXPECT_EQ(stat(source, "me/Docs/a2/c").error(), failure(Kind::notFound));
}

TEST(FakeSource, failsAsAHostDoes) {
  FakeSource source;
  source.put("me/Docs/a", "x");
  EXPECT_EQ(stat(source, "me/none").error(), failure(Kind::notFound));
  EXPECT_EQ(list(source, "me/Docs/a").error(), failure(Kind::notADirectory));
  EXPECT_EQ(read(source, "me/Docs", 0, 1).error(), failure(Kind::isDirectory));
}

TEST(FakeSource, failsTheCallsThatWereChosen) {
  FakeSource source;
  source.put("me/Docs/a", "x");
  source.failNext(failure(Kind::timedOut), 1);
  EXPECT_TRUE(stat(source, "me/Docs/a"));
  EXPECT_EQ(stat(source, "me/Docs/a").error(), failure(Kind::timedOut));
  EXPECT_TRUE(stat(source, "me/Docs/a"));

  source.failWith(ioFailure("disk"));
  EXPECT_EQ(stat(source, "me/Docs/a").error(), ioFailure("disk"));
  EXPECT_EQ(stat(source, "me/Docs/a").error(), ioFailure("disk"));
  source.succeed();
  EXPECT_TRUE(stat(source, "me/Docs/a"));
}

TEST(FakeSource, recordsCallsWithTheirArguments) {
  FakeSource source;
  (void)stat(source, "a/b");
  (void)read(source, "a/c", 7, 9);
  const std::vector<Call> expected = {
      {.kind = Call::Kind::stat, .path = "a/b"},
      {.kind = Call::Kind::read, .path = "a/c", .offset = 7, .length = 9}};
  EXPECT_EQ(source.calls(), expected);
  EXPECT_EQ(source.calls(Call::Kind::read).size(), 1u);
  EXPECT_TRUE(source.calls(Call::Kind::list).empty());
}

TEST(FakeSource, repliesFromAThreadOfItsOwn) {
  FakeSource source;
  Awaited<StatReply> reply;
  source.stat("a/b", reply.reply());
  (void)reply.wait();
  EXPECT_NE(reply.replier(), std::this_thread::get_id());
}

TEST(FakeSource, holdsAnswersBackUntilTheyAreReleasedInEitherOrder) {
  FakeSource source;
  source.put("me/Docs/a", "old");
  source.stall();
  std::vector<std::int64_t> sizes;
  Awaited<std::function<void()>> both;
  const auto note = [&sizes, done = both.reply()](FabricSource::Result<FileStat> stat) {
    sizes.push_back(stat->size);
    if (sizes.size() == 2) done();
  };
  source.stat("me/Docs/a", note);
  source.put("me/Docs/a", "newer");
  source.stat("me/Docs/a", note);
  ASSERT_TRUE(source.waitForStalled(2));
  EXPECT_FALSE(both.hasCome());

  source.releaseNewestFirst();
  (void)both.wait();
  EXPECT_EQ(sizes, (std::vector<std::int64_t>{5, 3}));
}

TEST(FakeSource, endsWhatIsHeldBackWhenItIsCancelled) {
  FakeSource source;
  source.put("me/Docs/a", "x");
  source.stall();
  Awaited<StatReply> reply;
  source.stat("me/Docs/a", reply.reply());
  source.cancelAll();
  EXPECT_EQ(std::get<0>(reply.wait()).error(), failure(Kind::disconnected));
  EXPECT_EQ(source.cancels(), 1u);
}

TEST(FakeSource, answersReadsInSmallChunksOrWithAnything) {
  FakeSource source;
  source.put("me/Docs/a", "0123456789");
  source.limitChunks(4);
  EXPECT_EQ(read(source, "me/Docs/a", 2, 8), "2345");
  source.answerNextRead("more than was asked for");
  EXPECT_EQ(read(source, "me/Docs/a", 0, 1), "more than was asked for");
  EXPECT_EQ(read(source, "me/Docs/a", 9, 8), "9");
}

TEST(FakeSource, answersWithGivenStatusesAndListings) {
  FakeSource source;
  source.putStat("me/Docs/odd", {.name = "another", .size = -3});
  EXPECT_EQ(stat(source, "me/Docs/odd")->size, -3);
  EXPECT_EQ(list(source, "me/Docs")->at(0).name, "another");
  source.putListing("me/Docs", {{.name = "a/b"}, {.name = ""}});
  EXPECT_EQ(list(source, "me/Docs")->at(0).name, "a/b");
  EXPECT_EQ(list(source, "me/Docs")->size(), 2u);
}

}  // namespace
}  // namespace tarnel::test
