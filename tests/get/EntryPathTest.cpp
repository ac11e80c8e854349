#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "get/EntryPath.h"

namespace tarnel::test {
namespace {

int verdict(std::string_view relpath) {
  EntryPath path;
  const auto parsed = parseEntryPath(relpath, path);
  return parsed ? 0 : parsed.error().error;
}

TEST(EntryPath, namesAreTheComponents) {
  EntryPath path;
  ASSERT_TRUE(parseEntryPath("a/b c/...", path));
  EXPECT_THAT(path, testing::ElementsAre("a", "b c", "..."));
  ASSERT_TRUE(parseEntryPath("x", path));
  EXPECT_THAT(path, testing::ElementsAre("x"));
}

TEST(EntryPath, whatCouldLeadElsewhereIsUnsafe) {
  using namespace std::string_view_literals;
  for (const std::string_view relpath : {""sv, "/"sv, "/a"sv, "a/"sv, "a//b"sv, "."sv, ".."sv,
                                         "a/.."sv, "../a"sv, "a/./b"sv, "a\0b"sv, "a/\0"sv}) {
    EXPECT_EQ(verdict(relpath), EINVAL) << relpath;
  }
}

TEST(EntryPath, aPathOfOursIsTakenApartWithoutBeingJudged) {
  EXPECT_EQ(namesOf("a/b c/.."), (EntryPath{"a", "b c", ".."}));
  EXPECT_EQ(namesOf("a"), EntryPath{"a"});
  EXPECT_EQ(namesOf(""), EntryPath{});
}

TEST(EntryPath, aNameHasAtMost255Bytes) {
  EXPECT_EQ(verdict(std::string(255, 'n') + "/a"), 0);
  EXPECT_EQ(verdict(std::string(256, 'n') + "/a"), ENAMETOOLONG);
  EXPECT_EQ(verdict("a/" + std::string(100'000, 'n')), ENAMETOOLONG);
}

TEST(EntryPath, aPathHasAtMost256Levels) {
  std::string path = "a";
  for (int i = 1; i < 256; ++i) path += "/a";
  EXPECT_EQ(verdict(path), 0);
  EXPECT_EQ(verdict(path + "/a"), ENAMETOOLONG);
}

TEST(EntryPath, anUnsafeNameCountsMoreThanALongOne) {
  EXPECT_EQ(verdict(std::string(256, 'n') + "/.."), EINVAL);
}

}  // namespace
}  // namespace tarnel::test
