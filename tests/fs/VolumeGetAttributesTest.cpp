// Which status an attribute request is answered from, and what it logs.
#include "VolumeTest.h"
#include "support/MadeItem.h"

namespace tarnel::test {
namespace {

class VolumeGetAttributes : public VolumeTest {
 protected:
  [[nodiscard]] std::shared_ptr<FabricItem> file(std::int64_t size) const {
    source->putStat("me/Docs/a", {.name = "a", .size = size, .mtimeMs = 3});
    return item("me/Docs/a");
  }
};

// What a log line calls each failure.
const std::pair<FabricFailure, std::string> forbidding[] = {
    {failure(FabricSourceError::Kind::timedOut), "timedOut"},
    {failure(FabricSourceError::Kind::notADirectory), "notADirectory"},
    {failure(FabricSourceError::Kind::isDirectory), "isDirectory"},
    {ioFailure("disk"), "io(disk)"},
    {EncodingError{"name"}, "cannot be encoded: name"},
    {DecodingError{DecodingError::Kind::keyNotFound, "status"}, "key not found: status"},
};

TEST_F(VolumeGetAttributes, ofAnItemThatIsNotTheVolumesIsAnInputOutputError) {
  recording.setDebug(true);
  for (const ItemRef& foreign : {ItemRef(std::make_shared<ForeignItem>()), ItemRef()}) {
    EXPECT_EQ(getAttributes(foreign), std::tuple(std::nullopt, posixError(5)));
  }
  EXPECT_TRUE(source->calls().empty());
  EXPECT_TRUE(recording.lines().empty());
}

TEST_F(VolumeGetAttributes, asksTheHostEachTime) {
  const auto a = file(10);
  source->putStat("me/Docs/a", {.name = "a", .size = 20});
  EXPECT_EQ(std::get<0>(getAttributes(a))->size, 20u);
  source->putStat("me/Docs/a", {.name = "a", .size = 30});
  EXPECT_EQ(std::get<0>(getAttributes(a))->size, 30u);
  EXPECT_EQ(a->lastStat()->size, 30);
  EXPECT_EQ(source->calls(Call::Kind::stat).back().path, "me/Docs/a");
}

TEST_F(VolumeGetAttributes, asksAboutTheRejoinedPath) {
  source->put("me/Docs/a", "x");
  EXPECT_EQ(std::get<1>(getAttributes(madeItem("/me//Docs/a/", 5, 4, false, std::nullopt))),
            std::nullopt);
  EXPECT_EQ(source->calls().back().path, "me/Docs/a");
}

TEST_F(VolumeGetAttributes, carriesTheItemsOwnIds) {
  const auto a = file(10);
  const auto [attributes, error] = getAttributes(a);
  EXPECT_EQ(attributes->fileID, a->id);
  EXPECT_EQ(attributes->parentID, item("me/Docs")->id);
}

TEST_F(VolumeGetAttributes, servesTheLastKnownStatusWhenTheHostIsGoneOrThePathIs) {
  for (const Kind kind : {Kind::disconnected, Kind::notFound}) {
    const auto a = file(10);
    EXPECT_EQ(std::get<0>(getAttributes(a))->size, 10u);
    source->failNext(failure(kind));
    const auto [attributes, error] = getAttributes(a);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(attributes->size, 10u);
    EXPECT_EQ(attributes->valid, allAttributes);
  }
  const std::vector<LogLine> expected = {
      errorLine("getAttributes SERVED STALE relpath=me/Docs/a size=10 because=disconnected"),
      errorLine("getAttributes SERVED STALE relpath=me/Docs/a size=10 because=notFound")};
  EXPECT_EQ(recording.lines(), expected);
}

TEST_F(VolumeGetAttributes, servesTheStatusOfTheLookupWhenNothingCameSince) {
  const auto a = file(10);
  source->failNext(failure(Kind::disconnected));
  EXPECT_EQ(std::get<0>(getAttributes(a))->size, 10u);
}

TEST_F(VolumeGetAttributes, ofTheLastKnownStatusHoldOnlyWhatWasAskedFor) {
  const auto a = file(10);
  source->failNext(failure(Kind::disconnected));
  ItemAttributes expected;
  expected.valid = 0x40;
  expected.size = 10;
  EXPECT_EQ(getAttributes(a, 0x40), std::tuple(expected, std::nullopt));
}

TEST_F(VolumeGetAttributes, servingTheLastKnownStatusLeavesItAsItWas) {
  const auto a = file(10);
  source->failWith(failure(Kind::disconnected));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(std::get<0>(getAttributes(a, 0x40))->size, 10u);
  EXPECT_EQ(a->lastStat()->size, 10);
}

TEST_F(VolumeGetAttributes, failsForEveryOtherFailureThoughAStatusIsKnown) {
  const auto a = file(10);
  for (const auto& [thrown, text] : forbidding) {
    recording.clear();
    source->failNext(thrown);
    EXPECT_EQ(getAttributes(a), std::tuple(std::nullopt, posixError(fabricErrno(thrown)))) << text;
    const std::vector<LogLine> expected = {
        errorLine("getAttributes FAILED relpath=me/Docs/a error=" + text)};
    EXPECT_EQ(recording.lines(), expected);
  }
  EXPECT_EQ(a->lastStat()->size, 10);
}

TEST_F(VolumeGetAttributes, failsWithoutALastKnownStatusWhateverTheFailure) {
  const auto unseen = madeItem("me/Docs/b", 9, 8, false, std::nullopt);
  source->failNext(failure(Kind::disconnected));
  EXPECT_EQ(getAttributes(unseen), std::tuple(std::nullopt, posixError(57)));
  source->failNext(failure(Kind::notFound));
  EXPECT_EQ(getAttributes(unseen), std::tuple(std::nullopt, posixError(2)));
  const std::vector<LogLine> expected = {
      errorLine("getAttributes FAILED relpath=me/Docs/b error=disconnected"),
      errorLine("getAttributes FAILED relpath=me/Docs/b error=notFound")};
  EXPECT_EQ(recording.lines(), expected);
}

TEST_F(VolumeGetAttributes, aNewObjectOfAPathStartsFromItsOwnLookup) {
  const auto first = file(10);
  EXPECT_EQ(reclaim(first), std::nullopt);
  const auto second = file(99);
  source->failWith(failure(Kind::disconnected));
  EXPECT_EQ(std::get<0>(getAttributes(second))->size, 99u);
  EXPECT_EQ(std::get<0>(getAttributes(first))->size, 10u);
}

TEST_F(VolumeGetAttributes, logsTheRequestAndTheReplyWithTheSizeKnownBefore) {
  const auto a = file(10);
  recording.setDebug(true);
  source->putStat("me/Docs/a", {.name = "a", .size = 20, .mtimeMs = 1234});
  (void)getAttributes(a, 0x3FFF);
  (void)getAttributes(a, 0x40);
  const std::vector<LogLine> expected = {
      debugLine("getAttributes relpath=me/Docs/a wanted=0x3fff"),
      debugLine("getAttributes reply relpath=me/Docs/a size=20 mtimeMs=1234 lastKnown=10"),
      debugLine("getAttributes relpath=me/Docs/a wanted=0x40"),
      debugLine("getAttributes reply relpath=me/Docs/a size=20 mtimeMs=1234 lastKnown=20")};
  EXPECT_EQ(recording.lines(), expected);
}

TEST_F(VolumeGetAttributes, logsMinusOneWhenNoStatusWasKnownBefore) {
  source->putStat("me/Docs/b", {.name = "b", .size = 20, .mtimeMs = -5});
  const auto unseen = madeItem("me/Docs/b", 9, 8, false, std::nullopt);
  recording.setDebug(true);
  (void)getAttributes(unseen, 0);
  const std::vector<LogLine> expected = {
      debugLine("getAttributes relpath=me/Docs/b wanted=0x0"),
      debugLine("getAttributes reply relpath=me/Docs/b size=20 mtimeMs=-5 lastKnown=-1")};
  EXPECT_EQ(recording.lines(), expected);
}

TEST_F(VolumeGetAttributes, thePathTellsWhetherTheHostIsAsked) {
  source->put("me/Docs/a", "12345");
  const auto flagged = madeItem("me/Docs/a", 5, 4, true, std::nullopt);
  EXPECT_EQ(std::get<0>(getAttributes(flagged))->size, 5u);
  const auto plain = madeItem("me", 3, 2, false, std::nullopt);
  EXPECT_EQ(std::get<0>(getAttributes(plain))->type, ItemType::directory);
  EXPECT_EQ(source->calls().size(), 1u);
}

TEST_F(VolumeGetAttributes, logsTheRequestAloneForTheRoot) {
  recording.setDebug(true);
  (void)getAttributes(root(), 0xABC);
  EXPECT_EQ(recording.lines(),
            (std::vector<LogLine>{debugLine("getAttributes relpath= wanted=0xabc")}));
}

TEST_F(VolumeGetAttributes, logsNoDebugLineWhileDebugIsOff) {
  (void)getAttributes(file(10));
  EXPECT_TRUE(recording.lines().empty());
}

TEST_F(VolumeGetAttributes, ofTheRootRepliesInsideTheCallAndOfAFileLater) {
  Awaited<AttributesReply> made;
  volume->getAttributes(allAttributes, root(), made.reply());
  EXPECT_TRUE(made.hasCome());
  (void)made.wait();

  const auto a = file(10);
  source->stall();
  Awaited<AttributesReply> asked;
  volume->getAttributes(allAttributes, a, asked.reply());
  ASSERT_TRUE(source->waitForStalled(1));
  EXPECT_FALSE(asked.hasCome());
  source->release();
  EXPECT_EQ(std::get<1>(asked.wait()), std::nullopt);
  EXPECT_NE(asked.replier(), std::this_thread::get_id());
}

TEST_F(VolumeGetAttributes, theFetchThatFinishesLastLeavesItsStatus) {
  const auto a = file(1);
  source->stall();
  Awaited<AttributesReply> older;
  volume->getAttributes(allAttributes, a, older.reply());
  source->putStat("me/Docs/a", {.name = "a", .size = 2});
  Awaited<AttributesReply> newer;
  volume->getAttributes(allAttributes, a, newer.reply());
  ASSERT_TRUE(source->waitForStalled(2));

  source->releaseNewestFirst();
  EXPECT_EQ(std::get<0>(newer.wait())->size, 2u);
  EXPECT_EQ(std::get<0>(older.wait())->size, 1u);
  EXPECT_EQ(a->lastStat()->size, 1);
}

}  // namespace
}  // namespace tarnel::test
