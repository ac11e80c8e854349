// The children of a directory at each level.
#include "VolumeTest.h"
#include "support/MadeItem.h"

namespace tarnel::test {
namespace {

using Names = std::vector<std::string>;

class VolumeEnumeration : public VolumeTest {
 protected:
  [[nodiscard]] std::vector<PackedEntry> entries(const ItemRef& directory,
                                                 WantedAttributes wanted = allAttributes) const {
    const auto packer = std::make_shared<RecordingPacker>();
    EXPECT_EQ(std::get<1>(enumerate(directory, packer, wanted)), std::nullopt);
    return packer->entries();
  }

  [[nodiscard]] Names names(const ItemRef& directory) const {
    const auto packer = std::make_shared<RecordingPacker>();
    EXPECT_EQ(std::get<1>(enumerate(directory, packer, 0)), std::nullopt);
    return packer->names();
  }
};

TEST_F(VolumeEnumeration, ofAnItemThatIsNotTheVolumesIsAnInputOutputError) {
  const auto packer = std::make_shared<RecordingPacker>();
  EXPECT_EQ(enumerate(std::make_shared<ForeignItem>(), packer), std::tuple(0u, posixError(5)));
  EXPECT_EQ(enumerate(nullptr, packer), std::tuple(0u, posixError(5)));
  EXPECT_EQ(packer->offered(), 0u);
  EXPECT_TRUE(source->calls().empty());
}

TEST_F(VolumeEnumeration, ofTheRootListsThePeersSorted) {
  for (const char* peer : {"me", "bob", "alice", "bob"}) source->putShare(peer, "Docs");
  const auto listed = entries(root());
  ASSERT_EQ(listed.size(), 3u);
  EXPECT_EQ(names(root()), (Names{"alice", "bob", "me"}));
  EXPECT_EQ(listed[0].itemType, ItemType::directory);
  EXPECT_EQ(listed[0].attributes->parentID, 2u);
  EXPECT_EQ(listed[0].attributes->fileID, listed[0].itemID);
  EXPECT_EQ(listed[0].attributes->mode, 0555u);
  EXPECT_EQ(listed[0].attributes->size, 4096u);
  EXPECT_EQ(listed[0].attributes->modifyTime.seconds, 1'600'000'000);
}

TEST_F(VolumeEnumeration, ofAPeerListsItsSharesWithoutAskingAboutEach) {
  source->putShare("bob", "Pictures", true);
  source->putShare("bob", "Docs");
  source->putShare("me", "Own");
  const ItemRef bob = item("bob");
  const std::size_t before = source->calls().size();
  const auto listed = entries(bob);
  ASSERT_EQ(listed.size(), 2u);
  EXPECT_EQ(listed[0].name, "Docs");
  EXPECT_EQ(listed[1].name, "Pictures");
  EXPECT_EQ(listed[0].itemType, ItemType::directory);
  EXPECT_EQ(listed[0].attributes->linkCount, 1u);
  EXPECT_EQ(listed[0].attributes->parentID, 3u);
  EXPECT_EQ(source->calls().size(), before + 1);
  EXPECT_EQ(source->calls().back().kind, Call::Kind::shareListing);
}

TEST_F(VolumeEnumeration, insideAShareListsWhatTheHostSays) {
  source->putStat("me/Docs/a", {.name = "a", .size = 5000, .mode = 0644});
  source->putDirectory("me/Docs/sub");
  const auto docs = item("me/Docs");
  const auto listed = entries(docs);
  ASSERT_EQ(listed.size(), 2u);
  EXPECT_EQ(listed[0].itemType, ItemType::file);
  EXPECT_EQ(listed[0].attributes->size, 5000u);
  EXPECT_EQ(listed[0].attributes->allocSize, 8192u);
  EXPECT_EQ(listed[0].attributes->mode, 0444u);
  EXPECT_EQ(listed[0].attributes->fileID, listed[0].itemID);
  EXPECT_EQ(listed[0].attributes->parentID, docs->id);
  EXPECT_EQ(listed[1].itemType, ItemType::directory);
  EXPECT_EQ(listed[1].attributes->mode, 0555u);
  EXPECT_EQ(source->calls(Call::Kind::list),
            (std::vector<Call>{{.kind = Call::Kind::list, .path = "me/Docs"}}));
}

TEST_F(VolumeEnumeration, asksAboutTheRejoinedPath) {
  source->putDirectory("me/Docs");
  EXPECT_TRUE(entries(madeItem("/me//Docs/", 4, 3, false, std::nullopt)).empty());
  EXPECT_EQ(source->calls().back(), (Call{.kind = Call::Kind::list, .path = "me/Docs"}));
  EXPECT_EQ(names(madeItem("/me/", 3, 2, true, std::nullopt)), Names{"Docs"});
}

TEST_F(VolumeEnumeration, aSymbolicLinkOfTheHostIsListedAsAFile) {
  source->putListing("me/Docs", {{.name = "l", .isSymlink = true}});
  EXPECT_EQ(entries(item("me/Docs")).at(0).itemType, ItemType::file);
}

TEST_F(VolumeEnumeration, attributesHoldOnlyWhatWasAskedFor) {
  source->put("me/Docs/a", "12345");
  const auto listed = entries(item("me/Docs"), 0x40);
  ItemAttributes expected;
  expected.valid = 0x40;
  expected.size = 5;
  EXPECT_EQ(listed.at(0).attributes, expected);
}

TEST_F(VolumeEnumeration, leavesUnsafeNamesOutAndSortsTheRest) {
  source->putListing("me/Docs", {{.name = "b"},
                                 {.name = "a"},
                                 {.name = "a/b"},
                                 {.name = "."},
                                 {.name = ".."},
                                 {.name = ""},
                                 {.name = std::string("n\0l", 3)}});
  EXPECT_EQ(names(item("me/Docs")), (Names{"a", "b"}));
}

TEST_F(VolumeEnumeration, sortsByCodePointOfTheComposedForm) {
  // Composed, the middle one is U+00E9; by its bytes it would come before "f".
  source->putListing(
      "me/Docs",
      {{.name = "\u00ea"}, {.name = "e\u0301"}, {.name = "f"}, {.name = "a"}, {.name = "B"}});
  EXPECT_EQ(names(item("me/Docs")), (Names{"B", "a", "f", "e\u0301", "\u00ea"}));
}

TEST_F(VolumeEnumeration, equalNamesKeepTheHostsOrder) {
  source->putListing("me/Docs", {{.name = "x", .size = 3},
                                 {.name = "a", .size = 9},
                                 {.name = "x", .size = 1},
                                 {.name = "x", .size = 2}});
  const auto listed = entries(item("me/Docs"));
  ASSERT_EQ(listed.size(), 4u);
  EXPECT_EQ(listed[1].attributes->size, 3u);
  EXPECT_EQ(listed[2].attributes->size, 1u);
  EXPECT_EQ(listed[3].attributes->size, 2u);
  EXPECT_EQ(listed[1].itemID, listed[3].itemID);
}

TEST_F(VolumeEnumeration, namesThatDifferInCompositionAreTwoFiles) {
  source->putListing("me/Docs", {{.name = "\u00e9", .size = 1}, {.name = "e\u0301", .size = 2}});
  const auto listed = entries(item("me/Docs"));
  ASSERT_EQ(listed.size(), 2u);
  EXPECT_EQ(listed[0].name, "\u00e9");
  EXPECT_NE(listed[0].itemID, listed[1].itemID);
}

TEST_F(VolumeEnumeration, anEntryCarriesTheIdThatItsLookupGives) {
  source->put("me/Docs/a", "x");
  source->put("me/Docs/b", "x");
  const auto seen = item("me/Docs/b");
  const auto listed = entries(item("me/Docs"));
  EXPECT_EQ(listed.at(1).itemID, seen->id);
  EXPECT_EQ(item("me/Docs/a")->id, listed.at(0).itemID);
  EXPECT_EQ(entries(root()).at(0).itemID, item("me")->id);
  EXPECT_EQ(entries(item("me")).at(0).itemID, item("me/Docs")->id);
}

TEST_F(VolumeEnumeration, idsFollowTheSortedOrderOfNewNames) {
  source->putListing("me/Docs", {{.name = "c"}, {.name = "a"}, {.name = "b"}});
  const auto listed = entries(item("me/Docs"));
  EXPECT_EQ(listed.at(0).itemID, 5u);
  EXPECT_EQ(listed.at(1).itemID, 6u);
  EXPECT_EQ(listed.at(2).itemID, 7u);
}

TEST_F(VolumeEnumeration, doesNotChangeTheLastKnownStatusOfAnItem) {
  source->put("me/Docs/a", "x");
  const auto a = item("me/Docs/a");
  source->put("me/Docs/a", "longer");
  (void)entries(item("me/Docs"));
  EXPECT_EQ(a->lastStat()->size, 1);
}

TEST_F(VolumeEnumeration, repliesWithTheErrorOfEachFailure) {
  source->put("me/Docs/a", "x");
  const ItemRef levels[] = {root(), item("me"), item("me/Docs")};
  for (const ItemRef& directory : levels) {
    for (const auto& [thrown, number] : everyFailure()) {
      const auto packer = std::make_shared<RecordingPacker>();
      source->failNext(thrown);
      EXPECT_EQ(enumerate(directory, packer), std::tuple(0u, posixError(number)));
      EXPECT_EQ(packer->offered(), 0u);
    }
  }
}

TEST_F(VolumeEnumeration, ofAShareThatVanishedIsNotFoundThoughItsItemLives) {
  source->put("me/Docs/sub/a", "x");
  const ItemRef sub = item("me/Docs/sub");
  source->remove("me/Docs/sub");
  EXPECT_EQ(enumerate(sub, std::make_shared<RecordingPacker>()), std::tuple(0u, posixError(2)));
}

TEST_F(VolumeEnumeration, anEmptyShareListingIsAnEmptyRootAndNoError) {
  const auto packer = std::make_shared<RecordingPacker>();
  EXPECT_EQ(std::get<1>(enumerate(root(), packer)), std::nullopt);
  EXPECT_EQ(packer->names(), (Names{".", ".."}));
}

TEST_F(VolumeEnumeration, childrenLeaveAttributesOutForNamesAlone) {
  source->put("me/Docs/a", "x");
  Awaited<FabricSource::Reply<std::vector<FabricEntry>>> reply;
  volume->children(item("me/Docs"), std::nullopt, reply.reply());
  const auto [children] = reply.wait();
  ASSERT_TRUE(children);
  ASSERT_EQ(children->size(), 1u);
  EXPECT_EQ(children->at(0).name, "a");
  EXPECT_EQ(children->at(0).attributes, std::nullopt);
}

TEST_F(VolumeEnumeration, childrenPassAFailureUnchanged) {
  source->putDirectory("me/Docs");
  const auto docs = item("me/Docs");
  source->failNext(ioFailure("disk"));
  Awaited<FabricSource::Reply<std::vector<FabricEntry>>> reply;
  volume->children(docs, std::nullopt, reply.reply());
  EXPECT_EQ(std::get<0>(reply.wait()).error(), ioFailure("disk"));
}

}  // namespace
}  // namespace tarnel::test
