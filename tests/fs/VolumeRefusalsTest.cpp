// Everything that would change the tree is refused, unseen and unlogged.
#include "VolumeTest.h"

namespace tarnel::test {
namespace {

constexpr VolumeError readOnly{.domain = VolumeError::Domain::posix, .code = 30};

class VolumeRefusals : public VolumeTest {
 protected:
  VolumeRefusals() { recording.setDebug(true); }
  ~VolumeRefusals() override {
    EXPECT_TRUE(source->calls().empty());
    EXPECT_TRUE(recording.lines().empty());
  }
};

TEST_F(VolumeRefusals, createItemGivesNoItemNoNameAndReadOnly) {
  Awaited<NamedItemReply> reply;
  volume->createItem(reply.reply());
  EXPECT_EQ(reply.wait(), std::tuple(ItemRef(), std::optional<FileName>(), readOnly));
}

TEST_F(VolumeRefusals, createSymbolicLinkGivesNoItemNoNameAndReadOnly) {
  Awaited<NamedItemReply> reply;
  volume->createSymbolicLink(reply.reply());
  EXPECT_EQ(reply.wait(), std::tuple(ItemRef(), std::optional<FileName>(), readOnly));
}

TEST_F(VolumeRefusals, createLinkGivesNoNameAndReadOnly) {
  Awaited<NameReply> reply;
  volume->createLink(reply.reply());
  EXPECT_EQ(reply.wait(), std::tuple(std::optional<FileName>(), readOnly));
}

TEST_F(VolumeRefusals, removeItemGivesReadOnly) {
  Awaited<ErrorReply> reply;
  volume->removeItem(reply.reply());
  EXPECT_EQ(reply.wait(), std::tuple(OptionalError(readOnly)));
}

TEST_F(VolumeRefusals, renameItemGivesNoNameAndReadOnly) {
  Awaited<NameReply> reply;
  volume->renameItem(reply.reply());
  EXPECT_EQ(reply.wait(), std::tuple(std::optional<FileName>(), readOnly));
}

TEST_F(VolumeRefusals, setAttributesGivesNoAttributesAndReadOnly) {
  Awaited<AttributesReply> reply;
  volume->setAttributes(reply.reply());
  EXPECT_EQ(reply.wait(), std::tuple(std::optional<ItemAttributes>(), readOnly));
}

TEST_F(VolumeRefusals, writeGivesNoBytesAndReadOnly) {
  Awaited<CountReply> reply;
  volume->write(reply.reply());
  EXPECT_EQ(reply.wait(), std::tuple(0, readOnly));
}

TEST_F(VolumeRefusals, readSymbolicLinkGivesInvalidArgumentSinceNothingIsALink) {
  Awaited<NameReply> reply;
  volume->readSymbolicLink(reply.reply());
  EXPECT_EQ(reply.wait(), std::tuple(std::optional<FileName>(), posixError(22)));
}

}  // namespace
}  // namespace tarnel::test
