#include "VolumeTest.h"

namespace tarnel::test {
namespace {

class VolumeReclaim : public VolumeTest {};

TEST_F(VolumeReclaim, ofAnItemThatIsNotTheVolumesIsAnInputOutputError) {
  recording.setDebug(true);
  EXPECT_EQ(reclaim(std::make_shared<ForeignItem>()), posixError(5));
  EXPECT_EQ(reclaim(nullptr), posixError(5));
  EXPECT_TRUE(recording.lines().empty());
}

TEST_F(VolumeReclaim, forgetsTheObjectButNotTheId) {
  source->put("me/Docs/a", "x");
  const auto first = item("me/Docs/a");
  EXPECT_EQ(reclaim(first), std::nullopt);
  const auto second = item("me/Docs/a");
  EXPECT_NE(second, first);
  EXPECT_EQ(second->id, first->id);
}

TEST_F(VolumeReclaim, hasForgottenTheObjectWhenItReplies) {
  const ItemRef first = root();
  ItemRef second;
  volume->reclaimItem(first, [&](OptionalError) { second = root(); });
  EXPECT_NE(second, nullptr);
  EXPECT_NE(second, first);
}

TEST_F(VolumeReclaim, ofAnOlderObjectKeepsTheNewerOne) {
  source->put("me/Docs/a", "x");
  const auto older = item("me/Docs/a");
  EXPECT_EQ(reclaim(older), std::nullopt);
  const auto newer = item("me/Docs/a");
  EXPECT_EQ(reclaim(older), std::nullopt);
  EXPECT_EQ(item("me/Docs/a"), newer);
}

TEST_F(VolumeReclaim, neverAsksTheHost) {
  source->put("me/Docs/a", "x");
  const auto a = item("me/Docs/a");
  const std::size_t before = source->calls().size();
  source->failWith(failure(Kind::disconnected));
  EXPECT_EQ(reclaim(a), std::nullopt);
  EXPECT_EQ(reclaim(root()), std::nullopt);
  EXPECT_EQ(source->calls().size(), before);
}

TEST_F(VolumeReclaim, logsThePathAndTheIdWhileDebugIsOn) {
  source->put("me/Docs/a", "x");
  const auto a = item("me/Docs/a");
  EXPECT_EQ(reclaim(a), std::nullopt);
  EXPECT_TRUE(recording.lines().empty());
  recording.setDebug(true);
  EXPECT_EQ(reclaim(a), std::nullopt);
  EXPECT_EQ(recording.lines(),
            (std::vector<LogLine>{debugLine("reclaimItem relpath=me/Docs/a id=5")}));
}

TEST_F(VolumeReclaim, ofAnItemWithARequestUnderWayDoesNotDisturbIt) {
  source->put("me/Docs/a", "x");
  auto a = item("me/Docs/a");
  source->stall();
  Awaited<AttributesReply> waiting;
  volume->getAttributes(allAttributes, a, waiting.reply());
  EXPECT_EQ(reclaim(a), std::nullopt);
  a.reset();
  source->release();
  EXPECT_EQ(std::get<0>(waiting.wait())->size, 1u);
}

TEST_F(VolumeReclaim, aReplyMayComeAfterItsVolumeWasLetGo) {
  source->put("me/Docs/a", "x");
  source->stall();
  Awaited<NamedItemReply> waiting;
  {
    const auto other = FabricVolume::make(Uuid{}, "Tarnel", source, uid, gid, mountTimeMs);
    other->activate([&](ItemRef top, OptionalError) {
      other->lookupItem(textName("me"), top, waiting.reply());
    });
  }
  source->release();
  EXPECT_EQ(std::get<2>(waiting.wait()), std::nullopt);
}

}  // namespace
}  // namespace tarnel::test
