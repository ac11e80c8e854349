// The golden cases of tests/golden that are about this module.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <map>
#include <optional>

#include "control/Base64.h"
#include "control/ControlRequest.h"
#include "control/ControlResponse.h"
#include "control/FileStat.h"
#include "control/JsonReader.h"
#include "control/JsonWriter.h"
#include "control/SourceShare.h"
#include "control/SourcesAnnouncement.h"
#include "control/Text.h"
#include "control/TreeHeader.h"
#include "control/WireEnvelope.h"
#include "control/WireVersion.h"
#include "support/GoldenFile.h"

namespace tarnel::test {
namespace {

// What is read, written again; nullopt when reading fails.
using ReadAgain = std::function<std::optional<std::string>(const std::string& json)>;

template <class Record>
std::optional<std::string> readAgain(const std::string& input) {
  const auto record = readJson<Record>(input);
  if (!record) return std::nullopt;
  JsonWriter json;
  json.value(*record);
  return json.finish().value_or("cannot be encoded");
}

const std::map<std::string, ReadAgain> readers = {
    {"ControlRequest", readAgain<ControlRequest>},
    {"ControlResponse", readAgain<ControlResponse>},
    {"ReviewSummary", readAgain<ReviewSummary>},
    {"ControlStat", readAgain<ControlStat>},
    {"ControlName", readAgain<ControlName>},
    {"RemoteShareInfo", readAgain<RemoteShareInfo>},
    {"SourceShare", readAgain<SourceShare>},
    {"FileStat", readAgain<FileStat>},
    {"TreeHeader", readAgain<TreeHeader>},
    {"SourcesAnnouncement", readAgain<SourcesAnnouncement>},
};

// The expectation of a line about input that succeeds with an output or fails. A free line may fail
// where the platform succeeds; what succeeds must have the platform's output.
void expectOutcome(const GoldenLine& line, const std::string& input, const std::string& outputKey,
                   const std::optional<std::string>& outcome) {
  const std::string where = "line " + std::to_string(line.number()) + ": " + readable(input);
  if (outcome && line.has(outputKey)) {
    EXPECT_EQ(readable(*outcome), readable(line.bytes(outputKey))) << where;
  }
  if (line.flag("free")) return;
  EXPECT_EQ(outcome.has_value(), line.flag("ok")) << where;
}

void report(const std::string& what, std::size_t lines) {
  std::cout << what << ": " << lines << " lines\n";
  EXPECT_GT(lines, 0U);
}

TEST(GoldenTest, goldenJsonRead) {
  const auto lines = readGolden("json_read.jsonl");
  for (const GoldenLine& line : lines) {
    const auto reader = readers.find(line.text("type"));
    if (reader == readers.end()) {
      ADD_FAILURE() << "line " << line.number() << ": no such record: " << line.text("type");
      continue;
    }
    const std::string input = line.bytes("input");
    expectOutcome(line, input, "again", reader->second(input));
  }
  report("json_read", lines.size());
}

TEST(GoldenTest, goldenJsonWrite) {
  const auto lines = readGolden("json_write.jsonl");
  for (const GoldenLine& line : lines) {
    JsonWriter json;
    if (line.has("int")) {
      json.value(std::int64_t{std::stoll(line.text("int"))});
    } else {
      json.value(line.bytes("text"));
    }
    EXPECT_EQ(readable(json.finish().value_or("cannot be encoded")), readable(line.bytes("json")))
        << "line " << line.number();
  }
  report("json_write", lines.size());
}

TEST(GoldenTest, goldenBase64) {
  const auto lines = readGolden("base64.jsonl");
  for (const GoldenLine& line : lines) {
    const std::string text = line.bytes("text");
    expectOutcome(line, text, "bytes", base64::decode(text));
  }
  report("base64", lines.size());
}

// What was found, in a golden line's words; the payload written again.
std::string resultOf(const SourcesAnnouncement& announcement) {
  JsonWriter json;
  json.value(announcement);
  return "ok " + readable(json.finish().value_or("cannot be encoded"));
}
std::string resultOf(const VersionMismatch& mismatch) {
  return "versionMismatch " + std::to_string(mismatch.theirs);
}
std::string resultOf(const Malformed&) { return "malformed"; }

std::string expectedResult(const GoldenLine& line) {
  std::string result = line.text("result");
  if (line.has("again")) result += " " + readable(line.bytes("again"));
  if (line.has("theirs")) result += " " + line.text("theirs");
  return result;
}

TEST(GoldenTest, goldenEnvelope) {
  const auto lines = readGolden("envelope.jsonl");
  for (const GoldenLine& line : lines) {
    const std::string input = line.bytes("input");
    const std::int64_t ours = std::stoll(line.text("ours"));
    const auto decoded = WireEnvelope::decode<SourcesAnnouncement>(ours, input);
    const auto result = std::visit([](const auto& found) { return resultOf(found); }, decoded);
    if (line.flag("free") && result == "malformed") continue;
    EXPECT_EQ(result, expectedResult(line))
        << "line " << line.number() << ": " << readable(input) << " as version " << ours;
  }
  report("envelope", lines.size());
}

TEST(GoldenTest, goldenIntParse) {
  const auto lines = readGolden("int_parse.jsonl");
  for (const GoldenLine& line : lines) {
    const std::string text = line.bytes("text");
    const auto version = WireVersion::streamVersion({{"v", text}});
    EXPECT_EQ(version ? std::to_string(*version) : "null", line.text("value"))
        << "line " << line.number() << ": " << readable(text);
  }
  report("int_parse", lines.size());
}

TEST(GoldenTest, goldenNoise) {
  const auto lines = readGolden("noise.jsonl");
  for (const GoldenLine& line : lines) {
    const std::string name = line.bytes("name");
    EXPECT_EQ(TreeHeader::isNoise(name), line.flag("noise"))
        << "line " << line.number() << ": " << readable(name);
  }
  report("noise", lines.size());
}

TEST(GoldenTest, goldenUtf8Repair) {
  const auto lines = readGolden("utf8_repair.jsonl");
  for (const GoldenLine& line : lines) {
    const std::string bytes = line.bytes("bytes");
    EXPECT_EQ(readable(repairedUtf8(bytes)), readable(line.bytes("text")))
        << "line " << line.number() << ": " << readable(bytes);
  }
  report("utf8_repair", lines.size());
}

TEST(GoldenTest, goldenTextCompare) {
  const auto lines = readGolden("text_compare.jsonl");
  for (const GoldenLine& line : lines) {
    const std::string a = line.bytes("a");
    const std::string b = line.bytes("b");
    EXPECT_EQ(textEqual(a, b), line.flag("equal"))
        << "line " << line.number() << ": " << readable(a) << " and " << readable(b);
    EXPECT_EQ(textLess(a, b), line.flag("less"))
        << "line " << line.number() << ": " << readable(a) << " and " << readable(b);
  }
  report("text_compare", lines.size());
}

TEST(GoldenTest, goldenTextSort) {
  const auto readableList = [](const std::vector<std::string>& list) {
    std::string out;
    for (const std::string& text : list) out += readable(text) + "|";
    return out;
  };
  const auto lines = readGolden("text_sort.jsonl");
  for (const GoldenLine& line : lines) {
    auto texts = line.list("in");
    sortByText(texts, [](const std::string& text) -> const std::string& { return text; });
    EXPECT_EQ(readableList(texts), readableList(line.list("out")))
        << "line " << line.number() << ": " << readableList(line.list("in"));
  }
  report("text_sort", lines.size());
}

}  // namespace
}  // namespace tarnel::test
