#include <gtest/gtest.h>

#include "control/SourceShare.h"
#include "control/WireEnvelope.h"

namespace tarnel::test {
namespace {

using Decoded = WireDecoded<SourceShare>;

const SourceShare share{.name = "Docs", .isRemote = false};
const Decoded isShare = share;
const Decoded isMalformed = Malformed{};

Decoded decodedAs(std::int64_t ours, std::string_view text) {
  return WireEnvelope::decode<SourceShare>(ours, text);
}

TEST(WireEnvelope, isCompactWithTheVersionFirstAndNoLineFeed) {
  const std::string expected = R"({"v":1,"p":{"name":"Docs","isRemote":false}})";
  EXPECT_EQ(WireEnvelope::encode(share, 1), expected);
  EXPECT_EQ(WireEnvelope::encodeJSON(share, 1), expected);
  EXPECT_EQ(WireEnvelope::encode(std::int64_t{7}, -2), R"({"v":-2,"p":7})");
}

TEST(WireEnvelope, whatWasEncodedDecodes) {
  EXPECT_EQ(decodedAs(3, WireEnvelope::encode(share, 3)), isShare);
  EXPECT_EQ(WireEnvelope::decodeJSON<SourceShare>(3, WireEnvelope::encode(share, 3)), isShare);
  EXPECT_EQ(WireEnvelope::decodeOrNil<SourceShare>(3, WireEnvelope::encode(share, 3)), share);
}

TEST(WireEnvelope, anotherVersionIsAMismatchWhateverThePayloadHolds) {
  EXPECT_EQ(decodedAs(1, R"({"v":2,"p":0})"), Decoded(VersionMismatch{.theirs = 2, .ours = 1}));
  EXPECT_EQ(decodedAs(1, R"({"v":0,"p":{"name":"Docs","isRemote":false}})"),
            Decoded(VersionMismatch{.theirs = 0, .ours = 1}));
  EXPECT_EQ(decodedAs(1, R"({"v":2})"), Decoded(VersionMismatch{.theirs = 2, .ours = 1}));
  EXPECT_EQ(
      decodedAs(0, R"({"v":-9223372036854775808,"p":null})"),
      Decoded(VersionMismatch{.theirs = std::numeric_limits<std::int64_t>::min(), .ours = 0}));
}

TEST(WireEnvelope, withoutAnIntegerVersionItIsMalformed) {
  for (const char* bad : {
           R"({"p":{"name":"Docs","isRemote":false}})",
           R"({"v":"1","p":{"name":"Docs","isRemote":false}})",
           R"({"v":null,"p":{"name":"Docs","isRemote":false}})",
           R"({"v":1.5,"p":{"name":"Docs","isRemote":false}})",
           R"({"v":9223372036854775808,"p":{"name":"Docs","isRemote":false}})",
           R"({"V":1,"p":{"name":"Docs","isRemote":false}})",
           R"([1,2])",
           "not json",
           "",
       }) {
    EXPECT_EQ(decodedAs(1, bad), isMalformed) << bad;
  }
}

TEST(WireEnvelope, withoutAPayloadThatDecodesItIsMalformed) {
  for (const char* bad : {
           R"({"v":1})",
           R"({"v":1,"p":null})",
           R"({"v":1,"p":0})",
           R"({"v":1,"p":{"name":"Docs"}})",
           R"({"v":1,"p":{"name":"Docs","isRemote":false}} x)",
           R"({"v":1,"p":{"name":"Docs","isRemote":false})",
       }) {
    EXPECT_EQ(decodedAs(1, bad), isMalformed) << bad;
  }
}

TEST(WireEnvelope, keysComeInAnyOrderAndOthersAreIgnored) {
  EXPECT_EQ(decodedAs(1, R"({"p":{"name":"Docs","isRemote":false},"v":1,"extra":true})"), isShare);
}

TEST(WireEnvelope, theFirstOfTwoEqualKeysCounts) {
  EXPECT_EQ(decodedAs(1, R"({"v":1,"v":2,"p":{"name":"Docs","isRemote":false},"p":0})"), isShare);
  EXPECT_EQ(decodedAs(1, R"({"v":1,"p":0,"p":{"name":"Docs","isRemote":false}})"), isMalformed);
}

TEST(WireEnvelope, decodeOrNilDoesNotTellTheFailuresApart) {
  EXPECT_EQ(WireEnvelope::decodeOrNil<SourceShare>(1, WireEnvelope::encode(share, 2)),
            std::nullopt);
  EXPECT_EQ(WireEnvelope::decodeOrNil<SourceShare>(1, "garbage"), std::nullopt);
}

TEST(WireEnvelope, aPayloadThatCannotBeEncodedIsNothingToSendOrAFailure) {
  const SourceShare bad{.name = "\xFF", .isRemote = false};
  EXPECT_EQ(WireEnvelope::encode(bad, 1), "");
  EXPECT_FALSE(WireEnvelope::encodeJSON(bad, 1).has_value());
}

TEST(WireEnvelope, carriesAnyPayloadThatHasAJsonForm) {
  const std::vector<std::string> texts = {"a", "b/c"};
  EXPECT_EQ(WireEnvelope::encode(texts, 1), R"({"v":1,"p":["a","b\/c"]})");
  EXPECT_EQ(WireEnvelope::decodeOrNil<std::vector<std::string>>(1, WireEnvelope::encode(texts, 1)),
            texts);
}

}  // namespace
}  // namespace tarnel::test
