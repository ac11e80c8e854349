// The volume's fixed answers and its life cycle.
#include "VolumeTest.h"

namespace tarnel::test {
namespace {

class VolumeSetUp : public VolumeTest {};

TEST_F(VolumeSetUp, carriesTheIdentifierAndNameItWasMadeWith) {
  EXPECT_EQ(volume->volumeID, FSIdentity::uuid());
  EXPECT_EQ(volume->volumeName, "Tarnel");
  EXPECT_EQ(FabricVolume::fileSystemTypeName, "tarnelfs");
}

TEST_F(VolumeSetUp, cannotBeMadeWithoutASource) {
  static_assert(!std::is_constructible_v<FabricVolume, Uuid, std::string>);
}

TEST_F(VolumeSetUp, announcesItsCapabilities) {
  const SupportedCapabilities capabilities = volume->supportedVolumeCapabilities();
  EXPECT_FALSE(capabilities.supportsPersistentObjectIDs);
  EXPECT_TRUE(capabilities.supports64BitObjectIDs);
  EXPECT_FALSE(capabilities.supportsHardLinks);
  EXPECT_FALSE(capabilities.supportsSymbolicLinks);
  EXPECT_TRUE(capabilities.doesNotSupportVolumeSizes);
  EXPECT_EQ(capabilities.caseFormat, SupportedCapabilities::CaseFormat::sensitive);
  EXPECT_EQ(static_cast<int>(capabilities.caseFormat), 0);
}

void expectOneFullBlock(const StatFSResult& statistics) {
  EXPECT_EQ(statistics.fileSystemTypeName, "tarnelfs");
  EXPECT_EQ(statistics.blockSize, 4096);
  EXPECT_EQ(statistics.ioSize, 4096);
  EXPECT_EQ(statistics.totalBlocks, 1u);
  EXPECT_EQ(statistics.usedBlocks, 1u);
  EXPECT_EQ(statistics.freeBlocks, 0u);
  EXPECT_EQ(statistics.availableBlocks, 0u);
  EXPECT_EQ(statistics.totalFiles, 1u);
  EXPECT_EQ(statistics.freeFiles, 0u);
}

TEST_F(VolumeSetUp, reportsOneFullBlockWhateverTheHostServes) {
  source->put("me/Docs/a.txt", std::string(100'000, 'x'));
  expectOneFullBlock(volume->volumeStatistics());
}

TEST_F(VolumeSetUp, makesItsStatisticsAnewOnEveryCall) {
  StatFSResult first = volume->volumeStatistics();
  first.totalBlocks = 77;
  first.fileSystemTypeName = "other";
  expectOneFullBlock(volume->volumeStatistics());
}

TEST_F(VolumeSetUp, announcesItsPathConfiguration) {
  EXPECT_EQ(FabricVolume::maximumLinkCount, 1);
  EXPECT_EQ(FabricVolume::maximumNameLength, 255);
  EXPECT_TRUE(FabricVolume::restrictsOwnershipChanges);
  EXPECT_FALSE(FabricVolume::truncatesLongNames);
  EXPECT_EQ(FabricVolume::maximumXattrSize, 0);
  EXPECT_EQ(FabricVolume::maximumFileSize, 9'223'372'036'854'775'807u);
}

TEST_F(VolumeSetUp, aNameLongerThanAnnouncedIsTheHostsToJudge) {
  const std::string name(300, 'n');
  source->put("me/Docs/" + name, "x");
  EXPECT_NE(item("me/Docs/" + name), nullptr);
}

TEST_F(VolumeSetUp, mountAndSynchronizeDoNothingAndSucceed) {
  for (auto operation : {&FabricVolume::mount, &FabricVolume::synchronize}) {
    Awaited<ErrorReply> reply;
    (volume.get()->*operation)(reply.reply());
    EXPECT_EQ(std::get<0>(reply.wait()), std::nullopt);
  }
  EXPECT_TRUE(source->calls().empty());
  EXPECT_EQ(source->cancels(), 0u);
}

TEST_F(VolumeSetUp, activateGivesTheSameRootEachTime) {
  Awaited<ItemReply> first;
  volume->activate(first.reply());
  const auto [rootItem, error] = first.wait();
  EXPECT_EQ(error, std::nullopt);
  const auto own = std::dynamic_pointer_cast<FabricItem>(rootItem);
  ASSERT_NE(own, nullptr);
  EXPECT_EQ(own->id, 2u);
  EXPECT_EQ(own->parentID, 1u);
  EXPECT_EQ(root(), rootItem);
  EXPECT_TRUE(source->calls().empty());
}

TEST_F(VolumeSetUp, activateGivesANewRootOnceItWasReclaimed) {
  const ItemRef first = root();
  EXPECT_EQ(reclaim(first), std::nullopt);
  EXPECT_NE(root(), first);
  EXPECT_EQ(std::dynamic_pointer_cast<FabricItem>(root())->id, 2u);
}

TEST_F(VolumeSetUp, deactivateEndsWhatWaitsForTheHost) {
  source->put("me/Docs/a", "x");
  const ItemRef docs = item("me/Docs");
  source->stall();
  Awaited<NamedItemReply> waiting;
  volume->lookupItem(textName("a"), docs, waiting.reply());

  Awaited<ErrorReply> deactivated;
  volume->deactivate(deactivated.reply());
  EXPECT_EQ(std::get<0>(deactivated.wait()), std::nullopt);
  EXPECT_EQ(std::get<2>(waiting.wait()), posixError(57));
  EXPECT_EQ(source->cancels(), 1u);
}

TEST_F(VolumeSetUp, unmountEndsWhatWaitsForTheHost) {
  source->put("me/Docs/a", "x");
  const ItemRef docs = item("me/Docs");
  source->stall();
  Awaited<NamedItemReply> waiting;
  volume->lookupItem(textName("a"), docs, waiting.reply());

  Awaited<std::function<void()>> unmounted;
  volume->unmount(unmounted.reply());
  (void)unmounted.wait();
  const auto [found, name, error] = waiting.wait();
  EXPECT_EQ(found, nullptr);
  EXPECT_EQ(name, std::nullopt);
  EXPECT_EQ(error, posixError(57));
}

TEST_F(VolumeSetUp, deactivateAndUnmountReplyOnceWhatWaitsWasEnded) {
  std::size_t cancels = 0;
  volume->deactivate([&](OptionalError) { cancels = source->cancels(); });
  EXPECT_EQ(cancels, 1u);
  volume->unmount([&] { cancels = source->cancels(); });
  EXPECT_EQ(cancels, 2u);
}

TEST_F(VolumeSetUp, deactivateAndUnmountKeepItemsAndIds) {
  source->put("me/Docs/a", "x");
  const auto before = item("me/Docs/a");
  const ItemRef rootBefore = root();
  volume->deactivate([](OptionalError) {});
  volume->unmount([] {});
  EXPECT_EQ(root(), rootBefore);
  EXPECT_EQ(item("me/Docs/a"), before);
}

}  // namespace
}  // namespace tarnel::test
