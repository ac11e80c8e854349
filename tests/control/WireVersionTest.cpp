#include <gtest/gtest.h>

#include "control/WireVersion.h"

namespace tarnel::test {
namespace {

std::optional<std::int64_t> versionOf(const std::string& text) {
  return WireVersion::streamVersion({{"v", text}, {"other", "9"}});
}

TEST(WireVersion, everyFamilyIsAtItsFirstVersion) {
  using namespace WireVersion;
  for (const std::int64_t version :
       {protocolRev, controlSignal, controlClip, controlInput, controlDraw, shareURL,
        shareAvailability, shareScale, statsPing, exchange, sources, raiseHand, fileFabric,
        fileTail, shareMetadata}) {
    EXPECT_EQ(version, 1);
  }
  EXPECT_EQ(streamAttribute, "v");
}

TEST(WireVersion, aStreamsVersionIsADecimalNumberWithAtMostOneSign) {
  EXPECT_EQ(versionOf("+7"), 7);
  EXPECT_EQ(versionOf("-3"), -3);
  EXPECT_EQ(versionOf("07"), 7);
  EXPECT_EQ(versionOf("0"), 0);
  EXPECT_EQ(versionOf("-0"), 0);
  EXPECT_EQ(versionOf("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(versionOf("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
}

TEST(WireVersion, anyOtherTextIsNoVersion) {
  for (const char* bad : {"", " 7", "7 ", "7a", "+", "-", "+-7", "-+7", "++7", "--7", "7.0", "0x7",
                          "9223372036854775808", "-9223372036854775809"}) {
    EXPECT_EQ(versionOf(bad), std::nullopt) << bad;
  }
  EXPECT_EQ(versionOf(std::string("7\0", 2)), std::nullopt);
}

TEST(WireVersion, aMapWithoutTheKeyHasNoVersion) {
  EXPECT_EQ(WireVersion::streamVersion({}), std::nullopt);
  EXPECT_EQ(WireVersion::streamVersion({{"V", "1"}, {"", "1"}}), std::nullopt);
}

}  // namespace
}  // namespace tarnel::test
