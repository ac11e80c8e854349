#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "RecordJson.h"
#include "control/ControlRequest.h"

namespace tarnel::test {
namespace {

using Kind = DecodingError::Kind;

TEST(ControlRequest, withOnlyAnOperationHasOneKey) {
  EXPECT_EQ(jsonOf(ControlRequest{.op = ControlOp::shares}), R"({"op":"shares"})");
}

TEST(ControlRequest, statOfANameHasExactlyTwoKeysInOrder) {
  ControlRequest request{.op = ControlOp::stat};
  request.name = "docs/a.txt";
  EXPECT_EQ(jsonOf(request), R"({"op":"stat","name":"docs\/a.txt"})");
}

TEST(ControlRequest, everyFieldIsWrittenInOrder) {
  const ControlRequest request{.op = ControlOp::read,
                               .name = "n",
                               .folder = "f",
                               .policy = SharePolicy::force,
                               .includeSecrets = {{"a", "b"}},
                               .ackCaps = true,
                               .all = false,
                               .label = "l",
                               .address = "d",
                               .offset = 7,
                               .length = 262'144,
                               .namesOnly = true,
                               .limit = -1};
  const std::string json =
      R"({"op":"read","name":"n","folder":"f","policy":"force","includeSecrets":["a","b"],)"
      R"("ackCaps":true,"all":false,"label":"l","address":"d","offset":7,"length":262144,)"
      R"("namesOnly":true,"limit":-1})";
  EXPECT_EQ(jsonOf(request), json);
  EXPECT_EQ(decoded<ControlRequest>(json), request);
}

TEST(ControlRequest, falseIsAValueAndIsWritten) {
  const ControlRequest request{.op = ControlOp::list, .ackCaps = false, .namesOnly = false};
  EXPECT_EQ(jsonOf(request), R"({"op":"list","ackCaps":false,"namesOnly":false})");
}

TEST(ControlRequest, zeroIsAValueAndIsWritten) {
  const ControlRequest request{.op = ControlOp::read, .offset = 0, .length = 0};
  EXPECT_EQ(jsonOf(request), R"({"op":"read","offset":0,"length":0})");
}

TEST(ControlRequest, theOperationIsRequiredAndCaseSensitive) {
  EXPECT_EQ(decoded<ControlRequest>(R"({"op":"readTreeStream"})").op, ControlOp::readTreeStream);
  EXPECT_EQ(failureOf<ControlRequest>(R"({"op":"ReadTreeStream"})"), Kind::dataCorrupted);
  EXPECT_EQ(failureOf<ControlRequest>(R"({"name":"x"})"), Kind::keyNotFound);
  EXPECT_EQ(failureOf<ControlRequest>(R"({"op":null})"), Kind::valueNotFound);
  EXPECT_EQ(failureOf<ControlRequest>(R"({"op":5})"), Kind::typeMismatch);
}

TEST(ControlRequest, nullLeavesAnOptionalFieldAbsent) {
  const auto request = decoded<ControlRequest>(
      R"({"op":"list","limit":null,"name":null,"policy":null,"includeSecrets":null,"all":null})");
  EXPECT_EQ(request, ControlRequest{.op = ControlOp::list});
  EXPECT_FALSE(request.limit.has_value());
}

TEST(ControlRequest, aPolicyIsOneOfThreeTexts) {
  EXPECT_EQ(decoded<ControlRequest>(R"({"op":"share","policy":"yes"})").policy, SharePolicy::yes);
  for (const char* policy : {"no", "Yes", "", "forced"}) {
    const std::string text = std::string(R"({"op":"share","policy":")") + policy + "\"}";
    EXPECT_EQ(failureOf<ControlRequest>(text), Kind::dataCorrupted) << text;
  }
}

TEST(ControlRequest, aValueOfTheWrongTypeFailsTheWholeRecord) {
  for (const char* text :
       {R"({"op":"list","name":1})", R"({"op":"list","limit":"1"})", R"({"op":"list","all":1})",
        R"({"op":"list","all":"true"})", R"({"op":"list","includeSecrets":"a"})",
        R"({"op":"list","includeSecrets":[1]})", R"({"op":"list","includeSecrets":[null]})",
        R"(["op"])", R"("op")"}) {
    EXPECT_EQ(failureOf<ControlRequest>(text), Kind::typeMismatch) << text;
  }
}

TEST(ControlRequest, numbersAreExactOverSixtyFourBitsAndFailBeyond) {
  const auto offset = [](const char* number) {
    return std::string(R"({"op":"read","offset":)") + number + "}";
  };
  EXPECT_EQ(decoded<ControlRequest>(offset("9223372036854775807")).offset,
            std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(decoded<ControlRequest>(offset("-9223372036854775808")).offset,
            std::numeric_limits<std::int64_t>::min());
  for (const char* number : {"9223372036854775808", "-9223372036854775809", "1e19", "1.5"}) {
    EXPECT_EQ(failureOf<ControlRequest>(offset(number)), Kind::dataCorrupted) << number;
  }
}

TEST(ControlRequest, unknownKeysAreIgnored) {
  EXPECT_EQ(decoded<ControlRequest>(R"({"x":[{"y":null}],"op":"stat","Op":"list"})"),
            ControlRequest{.op = ControlOp::stat});
}

TEST(ControlRequest, aTextThatIsNotUtf8CannotBeEncoded) {
  JsonWriter json;
  json.value(ControlRequest{.op = ControlOp::stat, .name = "me/\xff"});
  EXPECT_FALSE(json.finish().has_value());
}

TEST(ControlRequest, rawValuesConvertBothWays) {
  const char* const ops[] = {"share", "confirm", "cancel",     "unshare",        "shares", "stat",
                             "list",  "read",    "readStream", "readTreeStream", "bridge"};
  int tag = 0;
  for (const char* op : ops) {
    EXPECT_EQ(fromRawValue<ControlOp>(op), static_cast<ControlOp>(tag)) << op;
    EXPECT_EQ(rawValue(static_cast<ControlOp>(tag)), op);
    ++tag;
  }
  EXPECT_EQ(fromRawValue<ControlOp>("Share"), std::nullopt);
  tag = 0;
  for (const char* policy : {"interactive", "yes", "force"}) {
    EXPECT_EQ(fromRawValue<SharePolicy>(policy), static_cast<SharePolicy>(tag)) << policy;
    EXPECT_EQ(rawValue(static_cast<SharePolicy>(tag)), policy);
    ++tag;
  }
  EXPECT_EQ(fromRawValue<SharePolicy>("ye"), std::nullopt);
}

TEST(ControlRequest, everyFieldCountsInEquality) {
  const ControlRequest request{.op = ControlOp::read};
  for (auto change :
       {+[](ControlRequest& r) { r.op = ControlOp::list; }, +[](ControlRequest& r) { r.name = ""; },
        +[](ControlRequest& r) { r.folder = ""; },
        +[](ControlRequest& r) { r.policy = SharePolicy::interactive; },
        +[](ControlRequest& r) { r.includeSecrets.emplace(); },
        +[](ControlRequest& r) { r.ackCaps = false; }, +[](ControlRequest& r) { r.all = false; },
        +[](ControlRequest& r) { r.label = ""; }, +[](ControlRequest& r) { r.address = ""; },
        +[](ControlRequest& r) { r.offset = 0; }, +[](ControlRequest& r) { r.length = 0; },
        +[](ControlRequest& r) { r.namesOnly = false; }, +[](ControlRequest& r) { r.limit = 0; }}) {
    ControlRequest other = request;
    EXPECT_EQ(request, other);
    change(other);
    EXPECT_NE(request, other);
  }
}

TEST(ControlRequest, textsAreEqualByCanonicalEquivalence) {
  const ControlRequest composed{.op = ControlOp::stat, .name = "caf\u00e9"};
  const ControlRequest decomposed{.op = ControlOp::stat, .name = "cafe\u0301"};
  EXPECT_EQ(composed, decomposed);
  EXPECT_NE(composed, (ControlRequest{.op = ControlOp::stat, .name = "cafe"}));
  EXPECT_NE(composed, ControlRequest{.op = ControlOp::stat});
}

}  // namespace
}  // namespace tarnel::test
