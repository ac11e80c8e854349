#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>

#include "RecordJson.h"
#include "control/ControlResponse.h"
#include "control/FileStat.h"

namespace tarnel::test {
namespace {

using Kind = DecodingError::Kind;

constexpr const char* goodStat =
    R"({"name":"a","size":1,"mtimeMs":2,"isDirectory":false,"mode":420,"nlink":1,"owner":"o","group":"g"})";

std::string statWith(const std::string& key, const std::string& value) {
  return R"({"name":"a","size":1,"mtimeMs":2,"isDirectory":false,"nlink":1,"owner":"o","group":"g",")" +
         key + "\":" + value + "}";
}

TEST(ControlResponse, okHasTheSingleKeyStatus) {
  EXPECT_EQ(jsonOf(ControlResponse::ok()), R"({"status":"ok"})");
}

TEST(ControlResponse, errorHasExactlyStatusAndMessage) {
  EXPECT_EQ(jsonOf(ControlResponse::error("no such file")),
            R"({"status":"error","message":"no such file"})");
  EXPECT_EQ(jsonOf(ControlResponse::error("")), R"({"status":"error","message":""})");
}

TEST(ControlResponse, theStatusIsOneOfThreeTexts) {
  EXPECT_EQ(decoded<ControlResponse>(R"({"status":"review"})").status,
            ControlResponse::Status::review);
  EXPECT_EQ(failureOf<ControlResponse>(R"({"status":"OK"})"), Kind::dataCorrupted);
  EXPECT_EQ(failureOf<ControlResponse>(R"({"status":"fine"})"), Kind::dataCorrupted);
  EXPECT_EQ(failureOf<ControlResponse>(R"({"message":"x"})"), Kind::keyNotFound);
  EXPECT_EQ(failureOf<ControlResponse>(R"({"status":null})"), Kind::valueNotFound);
  EXPECT_EQ(failureOf<ControlResponse>(R"({"status":0})"), Kind::typeMismatch);
}

TEST(ControlResponse, statusesConvertBothWays) {
  int tag = 0;
  for (const char* text : {"ok", "review", "error"}) {
    const auto status = static_cast<ControlResponse::Status>(tag++);
    EXPECT_EQ(fromRawValue<ControlResponse::Status>(text), status);
    EXPECT_EQ(rawValue(status), text);
  }
  EXPECT_EQ(fromRawValue<ControlResponse::Status>("Ok"), std::nullopt);
}

TEST(ControlResponse, everyFieldIsWrittenInOrderAndReadBack) {
  ControlResponse response;
  response.message = "m";
  response.review = ReviewSummary{
      .sharedCount = 1, .excludedCount = -2, .secrets = {"s"}, .caps = {}, .isRemote = true};
  response.shares = {{SourceShare{.name = "Docs", .isRemote = false}}};
  response.remoteShares = {{RemoteShareInfo{.peer = "p", .name = "n", .isRemote = true}}};
  response.stat = decoded<ControlStat>(goodStat);
  response.entries = {{decoded<ControlStat>(goodStat)}};
  response.names = {{ControlName("x", true)}};
  response.dataBase64 = "AA//";
  const std::string json =
      R"({"status":"ok","message":"m","review":{"sharedCount":1,"excludedCount":-2,"secrets":["s"],)"
      R"("caps":[],"isRemote":true},"shares":[{"name":"Docs","isRemote":false}],)"
      R"("remoteShares":[{"peer":"p","name":"n","isRemote":true}],"stat":)" +
      std::string(goodStat) + R"(,"entries":[)" + goodStat +
      R"(],"names":[{"n":"x","d":true}],"dataBase64":"AA\/\/"})";
  EXPECT_EQ(jsonOf(response), json);
  EXPECT_EQ(decoded<ControlResponse>(json), response);
}

TEST(ControlResponse, absentAndNullPayloadsAreAlike) {
  EXPECT_EQ(decoded<ControlResponse>(
                R"({"status":"ok","message":null,"review":null,"shares":null,"remoteShares":null,)"
                R"("stat":null,"entries":null,"names":null,"dataBase64":null})"),
            ControlResponse::ok());
}

TEST(ControlResponse, anEmptyListIsPresent) {
  const auto response = decoded<ControlResponse>(R"({"status":"ok","entries":[]})");
  ASSERT_TRUE(response.entries.has_value());
  EXPECT_TRUE(response.entries->empty());
  EXPECT_NE(response, ControlResponse::ok());
  EXPECT_EQ(jsonOf(response), R"({"status":"ok","entries":[]})");
}

TEST(ControlResponse, oneBadEntryRejectsTheWholeResponse) {
  const std::string noGroup =
      R"({"name":"a","size":1,"mtimeMs":2,"isDirectory":false,"mode":420,"nlink":1,"owner":"o"})";
  const std::string good = goodStat;
  const auto list = [](const std::string& elements) {
    return R"({"status":"ok","entries":[)" + elements + "]}";
  };
  EXPECT_EQ(decoded<ControlResponse>(list(good + "," + good)).entries->size(), 2U);
  EXPECT_EQ(failureOf<ControlResponse>(list(good + "," + noGroup + "," + good)), Kind::keyNotFound);
  EXPECT_EQ(failureOf<ControlResponse>(list(good + ",null")), Kind::typeMismatch);
  EXPECT_EQ(failureOf<ControlResponse>(R"({"status":"ok","names":[{"n":"a","d":true},{"n":"b"}]})"),
            Kind::keyNotFound);
  EXPECT_EQ(failureOf<ControlResponse>(R"({"status":"ok","shares":[{"name":"a"}]})"),
            Kind::keyNotFound);
}

TEST(ControlResponse, aPayloadOfTheWrongShapeFails) {
  for (const char* text :
       {R"({"status":"ok","stat":[]})", R"({"status":"ok","entries":{}})",
        R"({"status":"ok","dataBase64":1})", R"({"status":"ok","message":false})",
        R"({"status":"ok","review":"x"})", R"([{"status":"ok"}])", "null", "7", R"("ok")"}) {
    EXPECT_EQ(failureOf<ControlResponse>(text), Kind::typeMismatch) << text;
  }
}

TEST(ControlResponse, garbageAndTruncatedTextsFail) {
  const std::string whole =
      R"({"status":"ok","entries":[)" + std::string(goodStat) + R"(],"dataBase64":"QUJD"})";
  ASSERT_TRUE(readJson<ControlResponse>(whole).has_value());
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_NE(failureOf<ControlResponse>(whole.substr(0, length)), std::nullopt) << length;
  }
  EXPECT_NE(failureOf<ControlResponse>("HTTP/1.1 400 Bad Request"), std::nullopt);
  EXPECT_EQ(failureOf<ControlResponse>(R"({"status":"ok"} x)"), Kind::dataCorrupted);
  EXPECT_EQ(failureOf<ControlResponse>(R"({"status":"ok"}{"status":"ok"})"), Kind::dataCorrupted);
}

TEST(ControlResponse, dataStaysTextUntilItsReaderDecodesIt) {
  EXPECT_EQ(
      decoded<ControlResponse>(R"({"status":"ok","dataBase64":"not base64 \u00e9"})").dataBase64,
      "not base64 \u00e9");
}

TEST(ControlResponse, escapedAndPlainSlashesReadAlike) {
  EXPECT_EQ(decoded<ControlResponse>(R"({"status":"ok","dataBase64":"\/\/8="})").dataBase64,
            "//8=");
  EXPECT_EQ(decoded<ControlResponse>(R"({"status":"ok","dataBase64":"//8="})").dataBase64, "//8=");
}

// Each change makes an unequal record of a copy.
template <class Record>
void expectEveryChangeCounts(const Record& record,
                             std::initializer_list<void (*)(Record&)> changes) {
  std::size_t number = 0;
  for (const auto change : changes) {
    Record other = record;
    EXPECT_TRUE(record == other);
    change(other);
    EXPECT_FALSE(record == other) << "change " << number;
    ++number;
  }
}

TEST(ControlResponse, everyFieldCountsInEquality) {
  expectEveryChangeCounts<ControlResponse>(
      ControlResponse::ok(),
      {[](ControlResponse& r) { r.status = ControlResponse::Status::review; },
       [](ControlResponse& r) { r.message = ""; }, [](ControlResponse& r) { r.review.emplace(); },
       [](ControlResponse& r) { r.shares.emplace(); },
       [](ControlResponse& r) { r.remoteShares.emplace(); },
       [](ControlResponse& r) { r.stat.emplace(); },
       [](ControlResponse& r) { r.entries.emplace(); },
       [](ControlResponse& r) { r.names.emplace(); },
       [](ControlResponse& r) { r.dataBase64 = ""; }});
}

TEST(ControlResponse, everyFieldOfItsPartsCountsInEquality) {
  expectEveryChangeCounts<ReviewSummary>(
      {},
      {[](ReviewSummary& r) { r.sharedCount = 1; }, [](ReviewSummary& r) { r.excludedCount = 1; },
       [](ReviewSummary& r) { r.secrets = {"s"}; }, [](ReviewSummary& r) { r.caps = {"c"}; },
       [](ReviewSummary& r) { r.isRemote = true; }});
  expectEveryChangeCounts<ControlStat>(
      {}, {[](ControlStat& s) { s.name = "n"; }, [](ControlStat& s) { s.size = 1; },
           [](ControlStat& s) { s.mtimeMs = 1; }, [](ControlStat& s) { s.isDirectory = true; },
           [](ControlStat& s) { s.mode = 1; }, [](ControlStat& s) { s.nlink = 1; },
           [](ControlStat& s) { s.owner = "o"; }, [](ControlStat& s) { s.group = "g"; }});
  expectEveryChangeCounts<ControlName>(
      {}, {[](ControlName& n) { n.name = "n"; }, [](ControlName& n) { n.isDirectory = true; }});
  expectEveryChangeCounts<RemoteShareInfo>(
      {}, {[](RemoteShareInfo& s) { s.peer = "p"; }, [](RemoteShareInfo& s) { s.name = "n"; },
           [](RemoteShareInfo& s) { s.isRemote = true; }});
}

TEST(ControlName, hasOneLetterKeys) {
  EXPECT_EQ(jsonOf(ControlName("x", true)), R"({"n":"x","d":true})");
  EXPECT_EQ(failureOf<ControlName>(R"({"name":"x","isDirectory":true})"), Kind::keyNotFound);
}

TEST(ControlStat, requiresEveryField) {
  EXPECT_EQ(jsonOf(decoded<ControlStat>(goodStat)), goodStat);
  for (const char* key :
       {"name", "size", "mtimeMs", "isDirectory", "mode", "nlink", "owner", "group"}) {
    std::string text = goodStat;
    text.insert(text.find("\"" + std::string(key) + "\"") + 1, "x");  // renames the key
    EXPECT_EQ(failureOf<ControlStat>(text), Kind::keyNotFound) << text;
  }
}

TEST(ControlStat, modeHasThirtyTwoBits) {
  EXPECT_EQ(decoded<ControlStat>(statWith("mode", "4294967295")).mode, 4294967295U);
  EXPECT_EQ(failureOf<ControlStat>(statWith("mode", "4294967296")), Kind::dataCorrupted);
  EXPECT_EQ(failureOf<ControlStat>(statWith("mode", "-1")), Kind::dataCorrupted);
}

TEST(ControlStat, isMadeFromAFileStatWithoutItsLinkFlag) {
  const FileStat stat{.name = "a",
                      .size = 1,
                      .mtimeMs = 2,
                      .isDirectory = false,
                      .mode = 420,
                      .nlink = 1,
                      .owner = "o",
                      .group = "g",
                      .isSymlink = true};
  EXPECT_EQ(jsonOf(ControlStat(stat)), goodStat);
  EXPECT_EQ(jsonOf(ControlName(stat)), R"({"n":"a","d":false})");
}

TEST(ReviewSummary, requiresEveryField) {
  EXPECT_EQ(failureOf<ReviewSummary>(
                R"({"sharedCount":1,"excludedCount":2,"secrets":[],"isRemote":false})"),
            Kind::keyNotFound);
  EXPECT_EQ(failureOf<ReviewSummary>(
                R"({"sharedCount":1,"excludedCount":2,"secrets":null,"caps":[],"isRemote":false})"),
            Kind::valueNotFound);
}

TEST(RemoteShareInfo, requiresEveryField) {
  EXPECT_EQ(failureOf<RemoteShareInfo>(R"({"peer":"p","name":"n"})"), Kind::keyNotFound);
  EXPECT_EQ(jsonOf(decoded<RemoteShareInfo>(R"({"isRemote":true,"name":"n","peer":"p"})")),
            R"({"peer":"p","name":"n","isRemote":true})");
}

}  // namespace
}  // namespace tarnel::test
