// The verifier of a listing. Expected values were computed apart from this program, and a second
// spelling of the function checks the rest.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "fs/FabricVolume.h"

namespace tarnel {
namespace {

std::uint64_t verifier(const std::vector<std::string_view>& names) {
  return FabricVolume::directoryVerifier(names);
}

// FNV-1a over one text: the names, each with a zero byte behind it, and their count in eight bytes.
std::uint64_t expected(const std::vector<std::string_view>& names) {
  std::string hashed;
  for (const std::string_view name : names) hashed.append(name).push_back('\0');
  for (std::uint64_t count = names.size(), i = 0; i < 8; ++i, count /= 256) {
    hashed.push_back(static_cast<char>(count % 256));
  }
  std::uint64_t hash = 14'695'981'039'346'656'037u;
  for (const char c : hashed) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 1'099'511'628'211u;
  }
  return hash == 0 ? 1 : hash;
}

TEST(DirectoryVerifier, ofNoNamesIsTheHashOfEightZeroBytes) {
  EXPECT_EQ(verifier({}), 0xa8c7f832281a39c5u);
}

TEST(DirectoryVerifier, hasKnownValues) {
  EXPECT_EQ(verifier({"a"}), 0x84ccce42129a6085u);
  EXPECT_EQ(verifier({"a", "b"}), 0xbcfcf3e8cebe16f4u);
  EXPECT_EQ(verifier({"\u00e9.txt", "\u65e5\u672c"}), 0x80438a1de7354da1u);
}

TEST(DirectoryVerifier, agreesWithTheHashOfTheWholeText) {
  std::vector<std::string> many;
  for (int i = 0; i < 300; ++i) many.push_back("name " + std::to_string(i));
  const std::vector<std::string_view> names(many.begin(), many.end());
  EXPECT_EQ(verifier(names), expected(names));
  EXPECT_EQ(verifier({"\xff\x80"}), expected({"\xff\x80"}));
}

TEST(DirectoryVerifier, tellsWhereANameEnds) {
  EXPECT_NE(verifier({"ab", "c"}), verifier({"a", "bc"}));
  EXPECT_NE(verifier({"ab"}), verifier({"a", "b"}));
}

TEST(DirectoryVerifier, tellsTheOrderOfNames) {
  EXPECT_NE(verifier({"a", "b"}), verifier({"b", "a"}));
}

TEST(DirectoryVerifier, isOneWhereTheHashIsZero) {
  // Found by solving for a name whose hash, separator and count of one name come to 0.
  EXPECT_EQ(verifier({"abd\x06\x32\x39\x3e\x64\xf1\x11\x09\x10\x04\x1c\x38\x0c\x11"}), 1u);
}

}  // namespace
}  // namespace tarnel
