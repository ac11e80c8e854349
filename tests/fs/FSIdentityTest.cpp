#include <gtest/gtest.h>

#include "fs/FSIdentity.h"
#include "fs/FabricVolume.h"

namespace tarnel {
namespace {

TEST(FSIdentity, isNamedAfterTheFileSystemType) {
  EXPECT_EQ(FSIdentity::shortName(), "tarnelfs");
  EXPECT_EQ(FSIdentity::shortName(), FabricVolume::fileSystemTypeName);
}

TEST(FSIdentity, hasItsFixedIdentifier) {
  // 6D2E9A14-7C3B-4F58-9E01-2A5B8C4D6E7F
  const Uuid expected = {0x6D, 0x2E, 0x9A, 0x14, 0x7C, 0x3B, 0x4F, 0x58,
                         0x9E, 0x01, 0x2A, 0x5B, 0x8C, 0x4D, 0x6E, 0x7F};
  EXPECT_EQ(FSIdentity::uuid(), expected);
  EXPECT_EQ(&FSIdentity::uuid(), &FSIdentity::uuid());
}

}  // namespace
}  // namespace tarnel
