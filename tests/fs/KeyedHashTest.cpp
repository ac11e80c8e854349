#include <gtest/gtest.h>

#include <set>
#include <string>

#include "fs/KeyedHash.h"

namespace tarnel {
namespace {

constexpr HashKey paperKey = {.first = 0x0706050403020100, .second = 0x0f0e0d0c0b0a0908};

// The bytes 0, 1, 2 and so on.
std::string counted(std::size_t size) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) bytes.push_back(static_cast<char>(i));
  return bytes;
}

TEST(KeyedHash, hasTheValuesOfItsAuthors) {
  EXPECT_EQ(keyedHash(paperKey, ""), 0x726fdb47dd0e0e31u);
  EXPECT_EQ(keyedHash(paperKey, counted(1)), 0x74f839c593dc67fdu);
  EXPECT_EQ(keyedHash(paperKey, counted(7)), 0xab0200f58b01d137u);
  EXPECT_EQ(keyedHash(paperKey, counted(8)), 0x93f5f5799a932462u);
  EXPECT_EQ(keyedHash(paperKey, counted(15)), 0xa129ca6149be45e5u);
}

TEST(KeyedHash, dependsOnEachByteAndOnTheLength) {
  std::set<std::uint64_t> seen;
  const std::string text = counted(40);
  for (std::size_t size = 0; size <= text.size(); ++size) {
    seen.insert(keyedHash(paperKey, text.substr(0, size)));
  }
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::string other = text;
    other[i] = '\xff';
    seen.insert(keyedHash(paperKey, other));
  }
  EXPECT_EQ(seen.size(), 81u);
}

TEST(KeyedHash, isAnotherOneUnderEachKey) {
  const HashKey one = HashKey::random();
  const HashKey other = HashKey::random();
  EXPECT_NE(keyedHash(one, "me/Docs"), keyedHash(other, "me/Docs"));
  EXPECT_NE(keyedHash(paperKey, "me/Docs"),
            keyedHash({.first = paperKey.first, .second = 0}, "me/Docs"));
}

}  // namespace
}  // namespace tarnel
