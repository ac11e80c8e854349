#include <gtest/gtest.h>

#include <string>

#include "fs/FabricLocation.h"

namespace tarnel {
namespace {

TEST(SafeFabricName, refusesTheEmptyName) { EXPECT_FALSE(isSafeFabricName("")); }

TEST(SafeFabricName, refusesTheDotNamesAndNothingThatMerelyBeginsLikeThem) {
  EXPECT_FALSE(isSafeFabricName("."));
  EXPECT_FALSE(isSafeFabricName(".."));
  EXPECT_TRUE(isSafeFabricName("..."));
  EXPECT_TRUE(isSafeFabricName(".profile"));
  EXPECT_TRUE(isSafeFabricName("..profile"));
}

TEST(SafeFabricName, refusesASlashAnywhere) {
  for (const char* name : {"/", "a/b", "/a", "a/", "../a"}) EXPECT_FALSE(isSafeFabricName(name));
}

TEST(SafeFabricName, refusesANulAnywhere) {
  using namespace std::string_view_literals;
  for (const auto name : {"\0"sv, "a\0b"sv, "\0a"sv, "a\0"sv}) {
    EXPECT_FALSE(isSafeFabricName(name));
  }
}

TEST(SafeFabricName, acceptsBlanksBackslashesAndControlCharacters) {
  for (const char* name : {" ", "a\\b", "\\", " a ", "\n", "\x7f", "\x01"}) {
    EXPECT_TRUE(isSafeFabricName(name)) << name;
  }
}

TEST(SafeFabricName, acceptsNamesOfAnyScript) {
  // The last three only look like a dot or a slash.
  for (const char* name : {"été", "日本語", "👩‍👧", "。", "．", "∕"}) {
    EXPECT_TRUE(isSafeFabricName(name)) << name;
  }
}

TEST(SafeFabricName, hasNoLimitOnLength) {
  EXPECT_TRUE(isSafeFabricName(std::string(256, 'a')));
  EXPECT_TRUE(isSafeFabricName(std::string(10'000, 'a')));
}

}  // namespace
}  // namespace tarnel
