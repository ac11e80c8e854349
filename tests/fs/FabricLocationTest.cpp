#include <gtest/gtest.h>

#include "fs/FabricLocation.h"

namespace tarnel {
namespace {

using InShare = FabricLocation::InShare;
using Peer = FabricLocation::Peer;
using Root = FabricLocation::Root;

FabricLocation inShare(std::string address, std::string peer, std::string share) {
  return {InShare{std::move(address), std::move(peer), std::move(share)}};
}

TEST(FabricLocation, noComponentIsTheRoot) {
  for (const char* path : {"", "/", "//", "////"}) {
    EXPECT_EQ(FabricLocation::parse(path), FabricLocation{Root{}}) << path;
    EXPECT_TRUE(FabricLocation::parse(path).isRoot());
  }
}

TEST(FabricLocation, oneComponentIsAPeer) {
  for (const char* path : {"x", "/x", "x/", "/x/", "//x//"}) {
    EXPECT_EQ(FabricLocation::parse(path), FabricLocation{Peer{"x"}}) << path;
    ASSERT_NE(FabricLocation::parse(path).peer(), nullptr);
    EXPECT_EQ(FabricLocation::parse(path).inShare(), nullptr);
  }
}

TEST(FabricLocation, twoComponentsAreTheTopOfAShare) {
  EXPECT_EQ(FabricLocation::parse("x/y"), inShare("x/y", "x", "y"));
  EXPECT_EQ(FabricLocation::parse("x/y").peer(), nullptr);
  EXPECT_FALSE(FabricLocation::parse("x/y").isRoot());
}

TEST(FabricLocation, moreComponentsAreInsideAShareWithTheWholePathAsAddress) {
  EXPECT_EQ(FabricLocation::parse("x/y/z/w"), inShare("x/y/z/w", "x", "y"));
}

TEST(FabricLocation, leadingTrailingAndRepeatedSlashesVanish) {
  EXPECT_EQ(FabricLocation::parse("a//b/"), inShare("a/b", "a", "b"));
  EXPECT_EQ(FabricLocation::parse("/a//b/c/"), inShare("a/b/c", "a", "b"));
  EXPECT_EQ(FabricLocation::parse("x//y///z"), inShare("x/y/z", "x", "y"));
}

TEST(FabricLocation, doesNotTestItsComponents) {
  EXPECT_EQ(FabricLocation::parse("../."), inShare("../.", "..", "."));
  EXPECT_EQ(FabricLocation::parse("."), FabricLocation{Peer{"."}});
}

TEST(FabricLocation, locationsThatDifferInTheAddressAloneAreUnequal) {
  EXPECT_NE(FabricLocation::parse("x/y/a"), FabricLocation::parse("x/y/b"));
  EXPECT_NE(inShare("x/y", "x", "y"), inShare("x/y", "x", "z"));
  EXPECT_NE(inShare("x/y", "x", "y"), inShare("x/y", "z", "y"));
}

TEST(FabricLocation, locationsOfDifferentLevelsAreUnequal) {
  EXPECT_NE(FabricLocation::parse("x"), FabricLocation::parse("x/y"));
  EXPECT_NE(FabricLocation::parse("x"), FabricLocation::parse(""));
  EXPECT_NE(FabricLocation::parse("x"), FabricLocation::parse("y"));
}

TEST(FabricLocation, textsAreEqualByCanonicalEquivalence) {
  const std::string composed = "\u00e9";
  const std::string decomposed = "e\u0301";
  EXPECT_EQ(FabricLocation::parse(composed), FabricLocation::parse(decomposed));
  EXPECT_EQ(FabricLocation::parse("p/" + composed), FabricLocation::parse("p/" + decomposed));
}

TEST(ChildPath, isTheNameAloneBelowTheRoot) {
  EXPECT_EQ(childPath("", "me"), "me");
  EXPECT_EQ(childPath("me", "Docs"), "me/Docs");
  EXPECT_EQ(childPath("me/Docs", "a b"), "me/Docs/a b");
}

}  // namespace
}  // namespace tarnel
