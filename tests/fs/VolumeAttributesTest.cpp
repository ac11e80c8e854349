// From a status to an item's attributes.
#include <limits>

#include "VolumeTest.h"
#include "support/MadeItem.h"

namespace tarnel::test {
namespace {

class VolumeAttributes : public VolumeTest {
 protected:
  [[nodiscard]] ItemAttributes of(const FileStat& stat,
                                  WantedAttributes wanted = allAttributes) const {
    const auto file = madeItem("me/Docs/a", 77, 66, false, std::nullopt);
    return volume->attributes(*file, stat, wanted);
  }
};

constexpr ItemTime mountTime{.seconds = 1'600'000'000, .nanoseconds = 500'000'000};

TEST_F(VolumeAttributes, ofTheRootAreMadeUpWithoutTheHost) {
  const auto [attributes, error] = getAttributes(root());
  EXPECT_EQ(error, std::nullopt);
  const ItemAttributes expected{.valid = 0x3FFF,
                                .type = ItemType::directory,
                                .mode = 0555,
                                .linkCount = 1,
                                .uid = 501,
                                .gid = 20,
                                .flags = 0,
                                .size = 4096,
                                .allocSize = 4096,
                                .fileID = 2,
                                .parentID = 1,
                                .accessTime = mountTime,
                                .modifyTime = mountTime,
                                .changeTime = mountTime,
                                .birthTime = mountTime};
  EXPECT_EQ(attributes, expected);
  EXPECT_TRUE(source->calls().empty());
}

TEST_F(VolumeAttributes, ofAPeerAreMadeUpWithoutTheHost) {
  source->putShare("me", "Docs");
  const auto peer = item("me");
  const std::size_t before = source->calls().size();
  source->failWith(failure(Kind::disconnected));
  const auto [attributes, error] = getAttributes(peer);
  EXPECT_EQ(error, std::nullopt);
  EXPECT_EQ(attributes->type, ItemType::directory);
  EXPECT_EQ(attributes->mode, 0555u);
  EXPECT_EQ(attributes->fileID, 3u);
  EXPECT_EQ(attributes->parentID, 2u);
  EXPECT_EQ(attributes->birthTime, mountTime);
  EXPECT_EQ(source->calls().size(), before);
  EXPECT_EQ(peer->lastStat(), std::nullopt);
}

TEST_F(VolumeAttributes, theMadeUpStatusNamesTheRootAfterTheFileSystem) {
  const FileStat expected{.name = "tarnelfs", .mtimeMs = mountTimeMs, .isDirectory = true};
  EXPECT_EQ(volume->synthesizedStat(*item("")), expected);
}

TEST_F(VolumeAttributes, theMadeUpStatusNamesAPeerAfterItsPath) {
  source->putShare("me", "Docs");
  const FileStat expected{.name = "me", .mtimeMs = mountTimeMs, .isDirectory = true};
  EXPECT_EQ(volume->synthesizedStat(*item("me")), expected);
}

TEST_F(VolumeAttributes, theMadeUpStatusNamesAnythingElseAfterTheEndOfItsPath) {
  const auto deep = madeItem("me/Docs", 4, 3, true, std::nullopt);
  EXPECT_EQ(volume->synthesizedStat(*deep).name, "Docs");
}

TEST_F(VolumeAttributes, ofAFileOfTheHost) {
  const ItemAttributes made = of({.name = "a",
                                  .size = 5000,
                                  .mtimeMs = 1'700'000'000'123,
                                  .mode = 0100644,
                                  .nlink = 0,
                                  .owner = "somebody",
                                  .group = "else"});
  constexpr ItemTime time{.seconds = 1'700'000'000, .nanoseconds = 123'000'000};
  const ItemAttributes expected{.valid = 0x3FFF,
                                .type = ItemType::file,
                                .mode = 0444,
                                .linkCount = 1,
                                .uid = 501,
                                .gid = 20,
                                .flags = 0,
                                .size = 5000,
                                .allocSize = 8192,
                                .fileID = 77,
                                .parentID = 66,
                                .accessTime = time,
                                .modifyTime = time,
                                .changeTime = time,
                                .birthTime = time};
  EXPECT_EQ(made, expected);
}

TEST_F(VolumeAttributes, sizeOfADirectoryIsOneBlockWhateverTheHostSays) {
  const ItemAttributes made = of({.name = "d", .size = 123'456, .isDirectory = true});
  EXPECT_EQ(made.size, 4096u);
  EXPECT_EQ(made.allocSize, 4096u);
}

TEST_F(VolumeAttributes, aNegativeSizeIsZero) {
  const ItemAttributes made = of({.name = "a", .size = -5});
  EXPECT_EQ(made.size, 0u);
  EXPECT_EQ(made.allocSize, 0u);
}

TEST_F(VolumeAttributes, theAllocatedSizeIsRoundedUpToBlocks) {
  const std::pair<std::int64_t, std::uint64_t> sizes[] = {
      {0, 0}, {1, 4096}, {4095, 4096}, {4096, 4096}, {4097, 8192}};
  for (const auto& [size, allocated] : sizes) {
    EXPECT_EQ(of({.name = "a", .size = size}).allocSize, allocated) << size;
  }
  const ItemAttributes largest =
      of({.name = "a", .size = std::numeric_limits<std::int64_t>::max()});
  EXPECT_EQ(largest.size, 9'223'372'036'854'775'807u);
  EXPECT_EQ(largest.allocSize, 9'223'372'036'854'775'808u);
}

TEST_F(VolumeAttributes, aSymbolicLinkOfTheHostIsARegularFile) {
  EXPECT_EQ(of({.name = "l", .mode = 0120777, .isSymlink = true}).type, ItemType::file);
  EXPECT_EQ(of({.name = "l", .isDirectory = true, .isSymlink = true}).type, ItemType::directory);
}

TEST_F(VolumeAttributes, aModeThatIsNotReportedIsReadableByAll) {
  EXPECT_EQ(of({.name = "d", .isDirectory = true, .mode = 0}).mode, 0555u);
  EXPECT_EQ(of({.name = "a", .mode = 0}).mode, 0444u);
}

TEST_F(VolumeAttributes, aModeLosesItsWriteBitsAndItsTypeBitsAlone) {
  EXPECT_EQ(of({.name = "a", .mode = 0107777}).mode, 07555u);
  EXPECT_EQ(of({.name = "a", .mode = 0xFFFFFFFF}).mode, 0xF6Du);
  EXPECT_EQ(of({.name = "a", .mode = 04755}).mode, 04555u);
  EXPECT_EQ(of({.name = "a", .mode = 0100000}).mode, 0u);
  EXPECT_EQ(of({.name = "d", .isDirectory = true, .mode = 040700}).mode, 0500u);
}

TEST_F(VolumeAttributes, theLinkCountIsTheHostsOrOne) {
  EXPECT_EQ(of({.name = "a", .nlink = 0}).linkCount, 1u);
  EXPECT_EQ(of({.name = "a", .nlink = 1}).linkCount, 1u);
  EXPECT_EQ(of({.name = "a", .nlink = 7}).linkCount, 7u);
}

TEST_F(VolumeAttributes, timesBefore1970AreNegativeInBothParts) {
  const std::pair<std::int64_t, ItemTime> times[] = {
      {-1500, {.seconds = -1, .nanoseconds = -500'000'000}},
      {-1, {.seconds = 0, .nanoseconds = -1'000'000}},
      {-1000, {.seconds = -1, .nanoseconds = 0}},
      {0, {}},
      {999, {.seconds = 0, .nanoseconds = 999'000'000}},
      {std::numeric_limits<std::int64_t>::min(),
       {.seconds = -9'223'372'036'854'775, .nanoseconds = -808'000'000}},
      {std::numeric_limits<std::int64_t>::max(),
       {.seconds = 9'223'372'036'854'775, .nanoseconds = 807'000'000}}};
  for (const auto& [ms, time] : times) {
    const ItemAttributes made = of({.name = "a", .mtimeMs = ms});
    EXPECT_EQ(made.accessTime, time) << ms;
    EXPECT_EQ(made.modifyTime, time) << ms;
    EXPECT_EQ(made.changeTime, time) << ms;
    EXPECT_EQ(made.birthTime, time) << ms;
  }
}

TEST_F(VolumeAttributes, onlyWhatWasAskedForIsValid) {
  ItemAttributes expected;
  expected.valid = 0x40;
  expected.size = 5000;
  EXPECT_EQ(of({.name = "a", .size = 5000, .mtimeMs = 5, .mode = 0644, .nlink = 3}, 0x40),
            expected);
  EXPECT_EQ(of({.name = "a", .size = 5000}, 0), ItemAttributes{});
}

TEST_F(VolumeAttributes, eachBitSelectsItsOwnAttribute) {
  const ItemAttributes all = of({.name = "a", .size = 1, .mtimeMs = 1, .mode = 0777, .nlink = 9});
  for (WantedAttributes one = 1; one <= 0x2000; one <<= 1) {
    const ItemAttributes made =
        of({.name = "a", .size = 1, .mtimeMs = 1, .mode = 0777, .nlink = 9}, one);
    EXPECT_EQ(made.valid, one);
    EXPECT_EQ(made.type == all.type, one == 0x1);
    EXPECT_EQ(made.mode == all.mode, one == 0x2);
    EXPECT_EQ(made.linkCount == all.linkCount, one == 0x4);
    EXPECT_EQ(made.uid == all.uid, one == 0x8);
    EXPECT_EQ(made.gid == all.gid, one == 0x10);
    EXPECT_EQ(made.isValid(ItemAttribute::flags), one == 0x20);
    EXPECT_EQ(made.size == all.size, one == 0x40);
    EXPECT_EQ(made.allocSize == all.allocSize, one == 0x80);
    EXPECT_EQ(made.fileID == all.fileID, one == 0x100);
    EXPECT_EQ(made.parentID == all.parentID, one == 0x200);
    EXPECT_EQ(made.accessTime == all.accessTime, one == 0x400);
    EXPECT_EQ(made.modifyTime == all.modifyTime, one == 0x800);
    EXPECT_EQ(made.changeTime == all.changeTime, one == 0x1000);
    EXPECT_EQ(made.birthTime == all.birthTime, one == 0x2000);
  }
}

TEST_F(VolumeAttributes, bitsThatAreNoAttributeStayUnset) {
  EXPECT_EQ(of({.name = "a"}, ~WantedAttributes{0}).valid, 0x3FFFu);
  EXPECT_EQ(of({.name = "a"}, 0xFFFF'FFFF'FFFF'C000), ItemAttributes{});
}

}  // namespace
}  // namespace tarnel::test
