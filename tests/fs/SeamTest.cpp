// The plain types between the volume and a system's adapter.
#include <gtest/gtest.h>

#include "seam/FileName.h"
#include "seam/ItemAttributes.h"
#include "seam/VolumeError.h"

namespace tarnel {
namespace {

TEST(FileName, hasATextOnlyWhenItsBytesAreOne) {
  EXPECT_EQ(FileName("a", true).string(), "a");
  EXPECT_EQ(FileName("\xff", false).string(), std::nullopt);
  EXPECT_EQ(FileName("\xff", false).data(), "\xff");
}

TEST(FileName, isEqualByBytes) {
  EXPECT_EQ(FileName("a", true), FileName("a", true));
  EXPECT_NE(FileName("\u00e9", true), FileName("e\u0301", true));
}

TEST(ItemAttribute, hasTheSystemsBits) {
  using enum ItemAttribute;
  WantedAttributes expected = 1;
  WantedAttributes all = 0;
  for (const ItemAttribute attribute :
       {type, mode, linkCount, uid, gid, flags, size, allocSize, fileID, parentID, accessTime,
        modifyTime, changeTime, birthTime}) {
    EXPECT_EQ(bit(attribute), expected);
    all |= bit(attribute);
    expected *= 2;
  }
  EXPECT_EQ(all, allAttributes);
}

TEST(ItemType, hasTheSystemsNumbers) {
  EXPECT_EQ(static_cast<int>(ItemType::file), 1);
  EXPECT_EQ(static_cast<int>(ItemType::directory), 2);
}

TEST(VolumeError, numbersAreTheSameOnEverySystem) {
  EXPECT_EQ(darwin::noEntry, 2);
  EXPECT_EQ(darwin::inputOutput, 5);
  EXPECT_EQ(darwin::notADirectory, 20);
  EXPECT_EQ(darwin::isADirectory, 21);
  EXPECT_EQ(darwin::invalidArgument, 22);
  EXPECT_EQ(darwin::readOnly, 30);
  EXPECT_EQ(darwin::notConnected, 57);
  EXPECT_EQ(darwin::timedOut, 60);
}

TEST(VolumeError, theStaleCookieIsNoPosixError) {
  EXPECT_EQ(invalidDirectoryCookie.code, 4506);
  EXPECT_NE(invalidDirectoryCookie, posixError(4506));
}

}  // namespace
}  // namespace tarnel
