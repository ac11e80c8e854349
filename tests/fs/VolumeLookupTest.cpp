#include "VolumeTest.h"

namespace tarnel::test {
namespace {

constexpr VolumeError noEntry{.domain = VolumeError::Domain::posix, .code = 2};

class VolumeLookup : public VolumeTest {
 protected:
  void expectError(const ItemRef& directory, const FileName& name, VolumeError expected) const {
    const auto [found, foundName, error] = lookUp(directory, name);
    EXPECT_EQ(found, nullptr) << name.data();
    EXPECT_EQ(foundName, std::nullopt) << name.data();
    EXPECT_EQ(error, expected) << name.data();
  }
};

TEST_F(VolumeLookup, ofADirectoryThatIsNotTheVolumesIsAnInputOutputError) {
  expectError(std::make_shared<ForeignItem>(), textName("me"), posixError(5));
  expectError(nullptr, textName("me"), posixError(5));
  EXPECT_TRUE(source->calls().empty());
}

TEST_F(VolumeLookup, ofANameThatIsNotTextFindsNothing) {
  expectError(root(), FileName("me", false), noEntry);
  EXPECT_TRUE(source->calls().empty());
}

TEST_F(VolumeLookup, ofAnUnsafeNameFindsNothingWithoutAskingTheHost) {
  source->put("me/Docs/a", "x");
  const ItemRef docs = item("me/Docs");
  const std::size_t before = source->calls().size();
  for (const std::string& name : {std::string(), std::string("."), std::string(".."),
                                  std::string("a/b"), std::string("/"), std::string("a\0b", 3)}) {
    expectError(root(), textName(name), noEntry);
    expectError(docs, textName(name), noEntry);
  }
  EXPECT_EQ(source->calls().size(), before);
}

TEST_F(VolumeLookup, findsAPeerThatOffersAShare) {
  source->putShare("me", "Docs");
  source->putShare("alice", "Music", true);
  const auto [found, name, error] = lookUp(root(), textName("alice"));
  EXPECT_EQ(error, std::nullopt);
  EXPECT_EQ(name, textName("alice"));
  const auto peer = std::dynamic_pointer_cast<FabricItem>(found);
  ASSERT_NE(peer, nullptr);
  EXPECT_EQ(peer->relpath, "alice");
  EXPECT_EQ(peer->id, 3u);
  EXPECT_EQ(peer->parentID, 2u);
  EXPECT_TRUE(peer->isSynthesizedDirectory);
  EXPECT_EQ(peer->lastStat(), std::nullopt);
  EXPECT_EQ(source->calls(), (std::vector<Call>{{.kind = Call::Kind::shareListing}}));
}

TEST_F(VolumeLookup, doesNotFindAPeerThatIsNotListed) {
  source->putShare("Alice", "Music");
  expectError(root(), textName("alice"), noEntry);
  expectError(root(), textName("Alice "), noEntry);
}

TEST_F(VolumeLookup, comparesPeersByExactBytes) {
  source->putShare("\u00e9", "Music");
  expectError(root(), textName("e\u0301"), noEntry);
  EXPECT_NE(item("\u00e9"), nullptr);
}

TEST_F(VolumeLookup, ofAPeerRepliesWithTheSourcesFailure) {
  source->failNext(failure(Kind::timedOut));
  expectError(root(), textName("me"), posixError(60));
}

TEST_F(VolumeLookup, asksTheHostAboutAShareAndEverythingBelowIt) {
  source->putStat("me/Docs/sub/a", {.name = "a", .size = 12, .mtimeMs = 9});
  const auto peer = item("me");
  const auto share = item("me/Docs");
  const auto file = item("me/Docs/sub/a");
  EXPECT_FALSE(share->isSynthesizedDirectory);
  EXPECT_EQ(share->parentID, peer->id);
  EXPECT_EQ(file->relpath, "me/Docs/sub/a");
  EXPECT_EQ(file->parentID, item("me/Docs/sub")->id);
  EXPECT_EQ(file->lastStat(), (FileStat{.name = "a", .size = 12, .mtimeMs = 9}));
  EXPECT_EQ(source->calls(Call::Kind::stat).front().path, "me/Docs");
}

TEST_F(VolumeLookup, repliesWithTheNameItWasGivenNotTheHosts) {
  source->putStat("me/Docs/a", {.name = "another"});
  const auto [found, name, error] = lookUp(item("me/Docs"), textName("a"));
  EXPECT_EQ(error, std::nullopt);
  EXPECT_EQ(name, textName("a"));
  EXPECT_EQ(std::dynamic_pointer_cast<FabricItem>(found)->relpath, "me/Docs/a");
}

TEST_F(VolumeLookup, doesNotFindAShareThatTheHostDoesNotDescribe) {
  source->putShare("me", "Gone");
  const ItemRef peer = item("me");
  expectError(peer, textName("Gone"), noEntry);
}

TEST_F(VolumeLookup, findsWhatTheHostDescribesThoughItIsNotListed) {
  source->putShare("me", "Docs");
  source->putStat("me/hidden", {.name = "hidden", .isDirectory = true});
  EXPECT_NE(item("me/hidden"), nullptr);
}

TEST_F(VolumeLookup, repliesWithTheErrorOfEachFailure) {
  source->put("me/Docs/a", "x");
  const ItemRef docs = item("me/Docs");
  for (const auto& [thrown, number] : everyFailure()) {
    source->failNext(thrown);
    expectError(docs, textName("a"), posixError(number));
  }
}

TEST_F(VolumeLookup, doesNotServeAKnownItemWhenTheHostIsGone) {
  source->put("me/Docs/a", "x");
  const ItemRef docs = item("me/Docs");
  EXPECT_NE(item("me/Docs/a"), nullptr);
  source->failNext(failure(Kind::disconnected));
  expectError(docs, textName("a"), posixError(57));
}

TEST_F(VolumeLookup, ofAKnownPathGivesTheSameObject) {
  source->put("me/Docs/a", "x");
  const auto first = item("me/Docs/a");
  EXPECT_EQ(item("me/Docs/a"), first);
}

TEST_F(VolumeLookup, storesTheFreshStatusAlsoInAnItemThatExisted) {
  source->put("me/Docs/a", "x");
  const auto first = item("me/Docs/a");
  source->put("me/Docs/a", "longer");
  EXPECT_EQ(item("me/Docs/a"), first);
  EXPECT_EQ(first->lastStat()->size, 6);
}

TEST_F(VolumeLookup, ofAPathThatVanishedAndCameAgainGivesItsOldId) {
  source->put("me/Docs/a", "x");
  const std::uint64_t id = item("me/Docs/a")->id;
  source->remove("me/Docs/a");
  expectError(item("me/Docs"), textName("a"), noEntry);
  EXPECT_EQ(reclaim(item("me/Docs")), std::nullopt);
  source->put("me/Docs/b", "new");
  source->put("me/Docs/a", "back");
  EXPECT_NE(item("me/Docs/b")->id, id);
  EXPECT_EQ(item("me/Docs/a")->id, id);
}

TEST_F(VolumeLookup, givesIdsInTheOrderOfFirstSight) {
  source->put("me/Docs/a", "x");
  EXPECT_EQ(item("me/Docs/a")->id, 5u);
  EXPECT_EQ(item("me")->id, 3u);
  EXPECT_EQ(item("me/Docs")->id, 4u);
}

TEST_F(VolumeLookup, repliesFromAnotherThreadAndLogsNothing) {
  recording.setDebug(true);
  source->putShare("me", "Docs");
  Awaited<NamedItemReply> reply;
  volume->lookupItem(textName("me"), root(), reply.reply());
  (void)reply.wait();
  EXPECT_NE(reply.replier(), std::this_thread::get_id());
  EXPECT_TRUE(recording.lines().empty());
}

TEST_F(VolumeLookup, returnsWhileTheHostIsSilent) {
  source->putShare("me", "Docs");
  source->stall();
  Awaited<NamedItemReply> reply;
  volume->lookupItem(textName("me"), root(), reply.reply());
  ASSERT_TRUE(source->waitForStalled(1));
  EXPECT_FALSE(reply.hasCome());
  source->release();
  EXPECT_NE(std::get<0>(reply.wait()), nullptr);
}

}  // namespace
}  // namespace tarnel::test
