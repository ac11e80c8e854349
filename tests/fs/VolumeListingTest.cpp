// One listing for a whole enumeration, and entries that count as their lookups.
#include "VolumeTest.h"

namespace tarnel::test {
namespace {

class VolumeListing : public VolumeTest {
 protected:
  [[nodiscard]] std::vector<FabricChild> list(const std::shared_ptr<FabricItem>& directory) const {
    Awaited<FabricSource::Reply<std::vector<FabricChild>>> reply;
    volume->listing(directory, reply.reply());
    const auto [children] = reply.wait();
    EXPECT_TRUE(children);
    return children.value_or(std::vector<FabricChild>());
  }
};

TEST_F(VolumeListing, holdsTheStatusAndTheIdOfEachChild) {
  source->put("me/Docs/b", "12");
  source->put("me/Docs/a", "1");
  const auto children = list(item("me/Docs"));
  ASSERT_EQ(children.size(), 2u);
  EXPECT_EQ(children[0].status.name, "a");
  EXPECT_EQ(children[1].status.size, 2);
  EXPECT_FALSE(children[0].isSynthesized);
  EXPECT_EQ(item("me/Docs/a")->id, children[0].id);
}

TEST_F(VolumeListing, passesAFailureUnchanged) {
  source->failNext(ioFailure("disk"));
  Awaited<FabricSource::Reply<std::vector<FabricChild>>> reply;
  volume->listing(item(""), reply.reply());
  EXPECT_EQ(std::get<0>(reply.wait()).error(), ioFailure("disk"));
}

TEST_F(VolumeListing, aChildsAttributesAreThoseOfItsEntry) {
  source->put("me/Docs/a", "12345");
  const auto docs = item("me/Docs");
  const auto child = list(docs).at(0);
  const auto packer = std::make_shared<RecordingPacker>();
  (void)enumerate(docs, packer, allAttributes);
  EXPECT_EQ(volume->childAttributes(*docs, child, allAttributes),
            packer->entries().at(0).attributes);
}

TEST_F(VolumeListing, registeringAChildIsItsLookupWithoutTheHost) {
  source->put("me/Docs/a", "12345");
  const auto docs = item("me/Docs");
  const auto child = list(docs).at(0);
  const std::size_t before = source->calls().size();
  const auto registered = volume->registerChild(*docs, child);
  EXPECT_EQ(source->calls().size(), before);
  ASSERT_NE(registered, nullptr);
  EXPECT_EQ(registered->relpath, "me/Docs/a");
  EXPECT_EQ(registered->id, child.id);
  EXPECT_EQ(registered->parentID, docs->id);
  EXPECT_FALSE(registered->isSynthesizedDirectory);
  EXPECT_EQ(registered->lastStat(), child.status);
  EXPECT_EQ(item("me/Docs/a"), registered);
}

TEST_F(VolumeListing, registeringALiveChildStoresTheListingsStatusInIt) {
  source->put("me/Docs/a", "1");
  const auto live = item("me/Docs/a");
  source->put("me/Docs/a", "12345");
  const auto docs = item("me/Docs");
  EXPECT_EQ(volume->registerChild(*docs, list(docs).at(0)), live);
  EXPECT_EQ(live->lastStat()->size, 5);
}

TEST_F(VolumeListing, registeringAPeerMakesItsSynthesizedDirectory) {
  source->putShare("me", "Docs");
  const auto top = item("");
  const auto child = list(top).at(0);
  EXPECT_TRUE(child.isSynthesized);
  const auto peer = volume->registerChild(*top, child);
  ASSERT_NE(peer, nullptr);
  EXPECT_EQ(peer->relpath, "me");
  EXPECT_TRUE(peer->isSynthesizedDirectory);
  EXPECT_EQ(peer->lastStat(), std::nullopt);
  EXPECT_EQ(peer->parentID, 2u);
}

TEST_F(VolumeListing, aShareInItsPeersListingHasToBeLookedUp) {
  source->putShare("me", "Docs");
  const auto peer = item("me");
  const auto child = list(peer).at(0);
  EXPECT_TRUE(child.isSynthesized);
  EXPECT_EQ(volume->registerChild(*peer, child), nullptr);
}

}  // namespace
}  // namespace tarnel::test
