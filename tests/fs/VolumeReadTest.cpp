#include <csignal>
#include <limits>
#include <utility>

#include "VolumeTest.h"
#include "support/MadeItem.h"
#include "support/SomeBytes.h"

namespace tarnel::test {
namespace {

class VolumeRead : public VolumeTest {
 protected:
  [[nodiscard]] std::shared_ptr<FabricItem> file(Bytes content) const {
    source->put("me/Docs/a", std::move(content));
    return item("me/Docs/a");
  }

  [[nodiscard]] static Call chunk(std::int64_t offset, std::int64_t length) {
    return {.kind = Call::Kind::read, .path = "me/Docs/a", .offset = offset, .length = length};
  }

  [[nodiscard]] std::vector<Call> reads() const { return source->calls(Call::Kind::read); }
};

TEST_F(VolumeRead, copiesTheBytesToTheStartOfTheBuffer) {
  const auto a = file("0123456789");
  const auto buffer = std::make_shared<ByteBuffer>(4);
  EXPECT_EQ(read(a, 3, 4, buffer), std::tuple(4, std::nullopt));
  EXPECT_EQ(buffer->bytes(), "3456");
  EXPECT_EQ(reads(), std::vector<Call>{chunk(3, 4)});
}

TEST_F(VolumeRead, asksForChunksOfAtMost256KiBAtTheFollowingOffsets) {
  const Bytes content = someBytes(700'000);
  const auto a = file(content);
  const auto buffer = std::make_shared<ByteBuffer>(600'000);
  constexpr std::int64_t o = 1000;
  EXPECT_EQ(read(a, o, 600'000, buffer), std::tuple(600'000, std::nullopt));
  EXPECT_EQ(reads(), (std::vector<Call>{chunk(o, 262'144), chunk(o + 262'144, 262'144),
                                        chunk(o + 524'288, 75'712)}));
  EXPECT_TRUE(buffer->bytes() == std::string_view(content).substr(o, 600'000));
}

TEST_F(VolumeRead, aReadOfExactlyOneChunkAsksOnce) {
  const auto a = file(someBytes(300'000));
  const auto buffer = std::make_shared<ByteBuffer>(262'144);
  EXPECT_EQ(read(a, 0, 262'144, buffer), std::tuple(262'144, std::nullopt));
  EXPECT_EQ(reads(), std::vector<Call>{chunk(0, 262'144)});
}

TEST_F(VolumeRead, aShortChunkIsNotTheEnd) {
  const Bytes content = someBytes(300);
  const auto a = file(content);
  source->limitChunks(100);
  const auto buffer = std::make_shared<ByteBuffer>(262'144);
  EXPECT_EQ(read(a, 50, 262'144, buffer), std::tuple(250, std::nullopt));
  EXPECT_EQ(reads(), (std::vector<Call>{chunk(50, 262'144), chunk(150, 262'044),
                                        chunk(250, 261'944), chunk(300, 261'894)}));
  EXPECT_EQ(buffer->first(250), std::string_view(content).substr(50));
}

TEST_F(VolumeRead, onlyAnEmptyChunkIsTheEnd) {
  const auto a = file("hello");
  const auto buffer = std::make_shared<ByteBuffer>(100);
  EXPECT_EQ(read(a, 0, 100, buffer), std::tuple(5, std::nullopt));
  EXPECT_EQ(reads(), (std::vector<Call>{chunk(0, 100), chunk(5, 95)}));
  EXPECT_EQ(buffer->first(6), "hello~");
}

TEST_F(VolumeRead, atOrPastTheEndGivesNothingAndNoError) {
  const auto a = file("hello");
  for (const std::int64_t offset : {std::int64_t{5}, std::int64_t{6}, std::int64_t{1} << 40}) {
    const auto buffer = std::make_shared<ByteBuffer>(8);
    EXPECT_EQ(read(a, offset, 8, buffer), std::tuple(0, std::nullopt)) << offset;
    EXPECT_EQ(buffer->bytes(), "~~~~~~~~");
  }
}

TEST_F(VolumeRead, theLastKnownSizeNeverShortensARead) {
  source->put("me/Docs/a", "0123456789");
  source->putStat("me/Docs/a", {.name = "a", .size = 3});
  const auto a = item("me/Docs/a");
  const auto buffer = std::make_shared<ByteBuffer>(10);
  EXPECT_EQ(read(a, 0, 10, buffer), std::tuple(10, std::nullopt));
  EXPECT_EQ(buffer->bytes(), "0123456789");
  EXPECT_EQ(read(a, 7, 3, std::make_shared<ByteBuffer>(3)), std::tuple(3, std::nullopt));
  EXPECT_EQ(a->lastStat()->size, 3);
}

TEST_F(VolumeRead, asksForTheSmallerOfBufferAndLength) {
  const auto a = file(someBytes(10'000));
  (void)read(a, 0, 1'000'000, std::make_shared<ByteBuffer>(4096));
  EXPECT_EQ(reads(), std::vector<Call>{chunk(0, 4096)});

  const auto large = std::make_shared<ByteBuffer>(4096);
  EXPECT_EQ(read(a, 0, 10, large), std::tuple(10, std::nullopt));
  EXPECT_EQ(reads().back(), chunk(0, 10));
  EXPECT_EQ(large->bytes()[10], ByteBuffer::untouched);
}

TEST_F(VolumeRead, ofNothingAsksNobody) {
  const auto a = file("hello");
  EXPECT_EQ(read(a, 0, 0, std::make_shared<ByteBuffer>(8)), std::tuple(0, std::nullopt));
  EXPECT_EQ(read(a, 0, -1, std::make_shared<ByteBuffer>(8)), std::tuple(0, std::nullopt));
  EXPECT_EQ(read(a, 0, 8, std::make_shared<ByteBuffer>(0)), std::tuple(0, std::nullopt));
  EXPECT_TRUE(reads().empty());
}

TEST_F(VolumeRead, neverWritesPastTheBufferHoweverMuchTheHostSends) {
  const auto a = file("hello");
  source->answerNextRead(std::string(1000, 'x'));
  const auto buffer = std::make_shared<ByteBuffer>(8);
  EXPECT_EQ(read(a, 0, 8, buffer), std::tuple(8, std::nullopt));
  EXPECT_EQ(buffer->bytes(), "xxxxxxxx");
  EXPECT_EQ(reads().size(), 1u);
}

TEST_F(VolumeRead, aChunkLargerThanAskedEndsTheRead) {
  const auto a = file("hello");
  source->answerNextRead(std::string(6, 'x'));
  const auto buffer = std::make_shared<ByteBuffer>(8);
  EXPECT_EQ(read(a, 0, 4, buffer), std::tuple(6, std::nullopt));
  EXPECT_EQ(buffer->bytes(), "xxxxxx~~");
  EXPECT_EQ(reads(), std::vector<Call>{chunk(0, 4)});
}

TEST_F(VolumeRead, nothingIsCached) {
  const auto a = file("old");
  const auto buffer = std::make_shared<ByteBuffer>(3);
  (void)read(a, 0, 3, buffer);
  source->put("me/Docs/a", "new");
  (void)read(a, 0, 3, buffer);
  EXPECT_EQ(buffer->bytes(), "new");
  EXPECT_EQ(reads().size(), 2u);
}

TEST_F(VolumeRead, ofAnItemThatIsNotTheVolumesIsAnInputOutputError) {
  const auto buffer = std::make_shared<ByteBuffer>(3);
  EXPECT_EQ(read(std::make_shared<ForeignItem>(), 0, 3, buffer), std::tuple(0, posixError(5)));
  EXPECT_EQ(read(nullptr, 0, 3, buffer), std::tuple(0, posixError(5)));
}

TEST_F(VolumeRead, ofADirectoryIsRefusedWithoutTheHost) {
  source->putDirectory("me/Docs/sub");
  const auto buffer = std::make_shared<ByteBuffer>(3);
  for (const char* path : {"", "me", "me/Docs", "me/Docs/sub"}) {
    EXPECT_EQ(read(item(path), 0, 3, buffer), std::tuple(0, posixError(21))) << path;
  }
  EXPECT_TRUE(reads().empty());
}

TEST_F(VolumeRead, ofADirectoryIsRefusedBeforeItsOffsetIsLookedAt) {
  source->putDirectory("me/Docs");
  for (const char* path : {"", "me/Docs"}) {
    EXPECT_EQ(read(item(path), -1, 3, std::make_shared<ByteBuffer>(3)),
              std::tuple(0, posixError(21)));
  }
}

TEST_F(VolumeRead, ofAnItemWithoutAStatusIsTheHostsToJudge) {
  source->putDirectory("me/Docs/sub");
  const auto unseen = madeItem("me/Docs/sub", 9, 8, false, std::nullopt);
  EXPECT_EQ(read(unseen, 0, 3, std::make_shared<ByteBuffer>(3)), std::tuple(0, posixError(21)));
  EXPECT_EQ(reads().size(), 1u);
}

TEST_F(VolumeRead, atANegativeOffsetIsAnInvalidArgument) {
  const auto a = file("hello");
  for (const std::int64_t offset : {std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()}) {
    EXPECT_EQ(read(a, offset, 3, std::make_shared<ByteBuffer>(3)), std::tuple(0, posixError(22)));
  }
  EXPECT_EQ(read(a, -1, 0, std::make_shared<ByteBuffer>(3)), std::tuple(0, posixError(22)));
  EXPECT_TRUE(reads().empty());
}

TEST_F(VolumeRead, atTheLargestOffsetAsksTheHost) {
  const auto a = file("hello");
  constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(read(a, last, 3, std::make_shared<ByteBuffer>(3)), std::tuple(0, std::nullopt));
  EXPECT_EQ(reads(), std::vector<Call>{chunk(last, 3)});
}

TEST_F(VolumeRead, repliesWithTheErrorOfEachFailure) {
  const auto a = file("hello");
  for (const auto& [thrown, number] : everyFailure()) {
    source->failNext(thrown);
    EXPECT_EQ(read(a, 0, 5, std::make_shared<ByteBuffer>(5)), std::tuple(0, posixError(number)));
  }
}

TEST_F(VolumeRead, aFailureInMidReadDiscardsTheCount) {
  const auto a = file("0123456789");
  source->limitChunks(4);
  source->failNext(failure(Kind::disconnected), 2);
  const auto buffer = std::make_shared<ByteBuffer>(10);
  EXPECT_EQ(read(a, 0, 10, buffer), std::tuple(0, posixError(57)));
  EXPECT_EQ(reads(), (std::vector<Call>{chunk(0, 10), chunk(4, 6), chunk(8, 2)}));
}

TEST_F(VolumeRead, chunksOfOneReadComeOneAfterAnother) {
  const auto a = file(someBytes(300'000));
  source->stall();
  Awaited<CountReply> reply;
  volume->read(a, 0, 300'000, std::make_shared<ByteBuffer>(300'000), reply.reply());
  ASSERT_TRUE(source->waitForStalled(1));
  EXPECT_EQ(reads().size(), 1u);
  EXPECT_FALSE(reply.hasCome());
  source->release();
  EXPECT_EQ(reply.wait(), std::tuple(300'000, std::nullopt));
  EXPECT_EQ(reads().size(), 2u);
}

TEST_F(VolumeRead, readsOverlap) {
  const auto a = file("hello");
  source->stall();
  Awaited<CountReply> first;
  Awaited<CountReply> second;
  volume->read(a, 0, 5, std::make_shared<ByteBuffer>(5), first.reply());
  volume->read(a, 0, 5, std::make_shared<ByteBuffer>(5), second.reply());
  EXPECT_TRUE(source->waitForStalled(2));
  source->release();
  EXPECT_EQ(first.wait(), std::tuple(5, std::nullopt));
  EXPECT_EQ(second.wait(), std::tuple(5, std::nullopt));
  EXPECT_NE(second.replier(), std::this_thread::get_id());
}

// Answers a read when the test says so, whatever cancelAll did meanwhile.
class LateSource final : public FabricSource {
 public:
  void shareListing(Reply<std::vector<FabricShare>>) override {}
  void stat(const std::string&, Reply<FileStat>) override {}
  void list(const std::string&, Reply<std::vector<FileStat>>) override {}
  void read(const std::string&, std::int64_t, std::int64_t, Reply<Bytes> reply) override {
    replies.push_back(std::move(reply));
  }
  void cancelAll() override {
    if (whileCancelled) whileCancelled();
  }
  std::vector<Reply<Bytes>> replies;
  std::function<void()> whileCancelled;
};

TEST_F(VolumeRead, aReadBetweenTwoChunksEndsWhenTheVolumeIsUnmounted) {
  const auto late = std::make_shared<LateSource>();
  const auto unmounted = FabricVolume::make(Uuid{}, "Tarnel", late, 0, 0, 0);
  Awaited<CountReply> answer;
  unmounted->read(madeItem("me/Docs/a", 5, 4, false, std::nullopt), 0, 10,
                  std::make_shared<ByteBuffer>(10), answer.reply());
  ASSERT_EQ(late->replies.size(), 1u);
  const auto replies = std::exchange(late->replies, {});  // each keeps the source
  unmounted->unmount([] {});
  replies[0](Bytes("12345"));
  EXPECT_EQ(answer.wait(), std::tuple(0, posixError(57)));
  EXPECT_TRUE(late->replies.empty());
}

TEST_F(VolumeRead, aVolumeThatWasDeactivatedReadsOnWhenItIsAskedAgain) {
  const auto a = file("0123456789");
  source->limitChunks(4);
  volume->deactivate([](OptionalError) {});
  EXPECT_EQ(read(a, 0, 10, std::make_shared<ByteBuffer>(10)), std::tuple(10, std::nullopt));
}

TEST_F(VolumeRead, aChunkThatComesWhileTheVolumeIsUnmountedIsTheLast) {
  const auto late = std::make_shared<LateSource>();
  const auto unmounted = FabricVolume::make(Uuid{}, "Tarnel", late, 0, 0, 0);
  Awaited<CountReply> answer;
  unmounted->read(madeItem("me/Docs/a", 5, 4, false, std::nullopt), 0, 10,
                  std::make_shared<ByteBuffer>(10), answer.reply());
  late->whileCancelled = [&late = *late] { std::exchange(late.replies, {})[0](Bytes("12345")); };
  unmounted->unmount([] {});
  EXPECT_EQ(answer.wait(), std::tuple(0, posixError(57)));
  EXPECT_TRUE(late->replies.empty());
}

TEST_F(VolumeRead, asksAboutTheRejoinedPath) {
  source->put("me/Docs/a", "hello");
  const auto a = madeItem("/me//Docs/a/", 5, 4, false, std::nullopt);
  EXPECT_EQ(read(a, 0, 5, std::make_shared<ByteBuffer>(5)), std::tuple(5, std::nullopt));
  EXPECT_EQ(reads(), std::vector<Call>{chunk(0, 5)});
}

TEST_F(VolumeRead, logsWhatIsWantedWithTheLastKnownSize) {
  const auto a = file("hello");
  recording.setDebug(true);
  (void)read(a, 2, 1000, std::make_shared<ByteBuffer>(100));
  const auto unseen = madeItem("me/Docs/a", 9, 8, false, std::nullopt);
  (void)read(unseen, 0, 3, std::make_shared<ByteBuffer>(100));
  (void)read(a, 0, 0, std::make_shared<ByteBuffer>(100));
  (void)read(a, -1, 3, std::make_shared<ByteBuffer>(100));
  const std::vector<LogLine> expected = {
      debugLine("readBytes relpath=me/Docs/a offset=2 wanted=100 lastKnownSize=5"),
      debugLine("readBytes relpath=me/Docs/a offset=0 wanted=3 lastKnownSize=-1")};
  EXPECT_EQ(recording.lines(), expected);
}

TEST(VolumeReadDeathTest, anOffsetThatCannotBeCountedEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto readPastTheLargestOffset = [] {
    const auto source = std::make_shared<FakeSource>();
    source->answerNextRead("xy");
    const auto volume = FabricVolume::make(Uuid{}, "Tarnel", source, 0, 0, 0);
    const auto item = madeItem("me/Docs/a", 5, 4, false, std::nullopt);
    Awaited<CountReply> reply;
    volume->read(item, std::numeric_limits<std::int64_t>::max(), 4, std::make_shared<ByteBuffer>(4),
                 reply.reply());
    (void)reply.wait();
  };
  EXPECT_EXIT(readPastTheLargestOffset(), testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace tarnel::test
