#include <gtest/gtest.h>

#include "fs/FabricShare.h"

namespace tarnel {
namespace {

TEST(FabricShare, isEqualFieldByField) {
  const FabricShare share{.peer = "p", .name = "n", .isRemote = true};
  EXPECT_EQ(share, (FabricShare{.peer = "p", .name = "n", .isRemote = true}));
  EXPECT_NE(share, (FabricShare{.peer = "q", .name = "n", .isRemote = true}));
  EXPECT_NE(share, (FabricShare{.peer = "p", .name = "m", .isRemote = true}));
  EXPECT_NE(share, (FabricShare{.peer = "p", .name = "n", .isRemote = false}));
}

TEST(FabricShare, isEqualAcrossCompositionOfItsTexts) {
  EXPECT_EQ((FabricShare{.peer = "\u00e9", .name = "n"}),
            (FabricShare{.peer = "e\u0301", .name = "n"}));
}

}  // namespace
}  // namespace tarnel
