#include <gtest/gtest.h>

#include <string>

#include "host/SharePath.h"

namespace tarnel {
namespace {

using namespace std::string_literals;

TEST(SharePath, twoComponentsAreTheSharesOwnFolder) {
  EXPECT_EQ(SharePath::parse("me/Docs"), (SharePath{"me", "Docs", ""}));
}

TEST(SharePath, everythingBehindTheShareIsTheRest) {
  EXPECT_EQ(SharePath::parse("bob/Docs/a/b c/d.txt"), (SharePath{"bob", "Docs", "a/b c/d.txt"}));
}

TEST(SharePath, rootAndPeerAreNoLocationInAShare) {
  EXPECT_FALSE(SharePath::parse(""));
  EXPECT_FALSE(SharePath::parse("me"));
}

TEST(SharePath, unsafeComponentsAreNoLocation) {
  for (const auto& location :
       {"/me/Docs"s, "me/Docs/"s, "me//Docs"s, "me/Docs//a"s, "me/Docs/./a"s, "me/Docs/a/.."s,
        "me/../a"s, "../Docs"s, "me/Docs/a\0b"s, "me/"s, "/"s, "//"s, "./Docs"s}) {
    EXPECT_FALSE(SharePath::parse(location)) << location;
  }
}

TEST(SharePath, namesThatOnlyBeginWithDotsAreSafe) {
  EXPECT_EQ(SharePath::parse("me/Docs/...")->rest, "...");
  EXPECT_EQ(SharePath::parse("me/.Docs/..a/.b")->rest, "..a/.b");
}

TEST(SharePath, lastNameIsTheShareOrTheLastComponent) {
  EXPECT_EQ(SharePath::parse("me/Docs")->lastName(), "Docs");
  EXPECT_EQ(SharePath::parse("me/Docs/a")->lastName(), "a");
  EXPECT_EQ(SharePath::parse("me/Docs/a/b")->lastName(), "b");
}

TEST(SharePath, componentsAreTakenUntilNothingIsLeft) {
  std::string_view path = "a//b/";
  EXPECT_EQ(takeComponent(path), "a");
  EXPECT_EQ(takeComponent(path), "");
  EXPECT_EQ(takeComponent(path), "b");
  EXPECT_EQ(path, "");
  EXPECT_EQ(takeComponent(path), "");
}

}  // namespace
}  // namespace tarnel
