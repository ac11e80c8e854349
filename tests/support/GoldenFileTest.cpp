#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "support/GoldenFile.h"

namespace tarnel::test {
namespace {

using List = std::vector<std::string>;

TEST(GoldenFile, readsTextsFlagsListsAndNumbers) {
  const GoldenLine line(R"({"group":"a b","bytes":"YS+/","in":["YQ==","","Yg=="],"ok":true,"n":1})",
                        7);
  EXPECT_EQ(line.text("group"), "a b");
  EXPECT_EQ(line.bytes("bytes"), "a/\xbf");
  EXPECT_EQ(line.list("in"), (List{"a", "", "b"}));
  EXPECT_TRUE(line.flag("ok"));
  EXPECT_FALSE(line.flag("free"));
  EXPECT_EQ(line.text("n"), "1");
  EXPECT_EQ(line.number(), 7U);
}

TEST(GoldenFile, aLineOfAnotherShapeFailsTheTest) {
  EXPECT_NONFATAL_FAILURE(GoldenLine(R"({"a":"b")", 1), "not a golden line");
  EXPECT_NONFATAL_FAILURE(GoldenLine(R"({"a" "b"})", 1), "not a golden line");
}

TEST(GoldenFile, aMissingFileFailsTheTest) {
  EXPECT_NONFATAL_FAILURE((void)readGolden("no such file.jsonl"), "no golden cases");
}

TEST(GoldenFile, unprintableBytesAreShownInHex) { EXPECT_EQ(readable("a\n\xff"), "a\\x0a\\xff"); }

}  // namespace
}  // namespace tarnel::test
