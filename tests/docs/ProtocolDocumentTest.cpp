// docs/protocol.md is what authors of hosts read: what it shows is read here as what it is said to
// be.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <sstream>

#include "FencedBlocks.h"
#include "control/ControlRequest.h"
#include "control/ControlResponse.h"
#include "control/ControlStreamFrame.h"
#include "control/ControlWire.h"
#include "control/FileStat.h"
#include "control/SourcesAnnouncement.h"
#include "control/TreeRecord.h"

namespace tarnel::test {
namespace {

const std::string document = std::string(TARNEL_DOCS) + "/protocol.md";

// What an example is after it was read and written again; nullopt when it cannot be read.
using WrittenAgain = std::function<std::optional<std::string>(const std::string& json)>;

template <class Record>
std::optional<std::string> writtenAgain(const std::string& json) {
  const auto record = readJson<Record>(json);
  if (!record) return std::nullopt;
  JsonWriter writer;
  writer.value(*record);
  return writer.finish().value_or("cannot be encoded");
}

std::optional<std::string> announcementAgain(const std::string& json) {
  const auto announcement = SourcesAnnouncement::decode(BytesView(json));
  if (!announcement) return std::nullopt;
  return announcement->encoded();
}

const std::map<std::string, WrittenAgain> records = {
    {"ControlRequest", writtenAgain<ControlRequest>},
    {"ControlResponse", writtenAgain<ControlResponse>},
    {"ReviewSummary", writtenAgain<ReviewSummary>},
    {"ControlStat", writtenAgain<ControlStat>},
    {"ControlName", writtenAgain<ControlName>},
    {"RemoteShareInfo", writtenAgain<RemoteShareInfo>},
    {"SourceShare", writtenAgain<SourceShare>},
    {"FileStat", writtenAgain<FileStat>},
    {"TreeHeader", writtenAgain<TreeHeader>},
    {"WireEnvelope<SourcesAnnouncement>", announcementAgain},
};

std::string textOfDocument() {
  std::ifstream file(document);
  return {std::istreambuf_iterator<char>(file), {}};
}

Bytes bytesOf(const std::string& hex) {
  Bytes bytes;
  std::istringstream in(hex);
  for (unsigned byte = 0; in >> std::hex >> byte;) bytes.push_back(static_cast<char>(byte));
  return bytes;
}

TEST(ProtocolDocument, everyJsonExampleReadsAsItsRecordAndIsSpelledAsItIsWritten) {
  std::set<std::string> shown;
  for (const FencedBlock& block : fencedBlocks(document)) {
    if (!block.info.starts_with("json")) continue;
    const std::string name = block.info.substr(std::min<std::size_t>(5, block.info.size()));
    const auto record = records.find(name);
    if (record == records.end() || block.lines.empty()) {
      ADD_FAILURE() << "line " << block.firstLine << ": examples of what? " << block.info;
      continue;
    }
    shown.insert(name);
    for (std::size_t i = 0; i < block.lines.size(); ++i) {
      const auto again = record->second(block.lines[i]);
      EXPECT_EQ(again.value_or("not a " + name), block.lines[i]) << "line " << block.firstLine + i;
    }
  }
  EXPECT_EQ(shown.size(), records.size()) << "there is a record without an example";
}

TEST(ProtocolDocument, everyBlockOfFramesIsAStream) {
  std::size_t streams = 0;
  for (const FencedBlock& block : fencedBlocks(document)) {
    if (block.info != "hex frames") continue;
    ++streams;
    std::optional<TreeFrame> last;
    for (std::size_t i = 0; i < block.lines.size(); ++i) {
      ReceiveBuffer buffer;
      buffer.append(bytesOf(block.lines[i]));
      const auto frame = ControlStreamFrame::parse(buffer);
      ASSERT_TRUE(frame && *frame) << "no frame: line " << block.firstLine + i;
      EXPECT_EQ(buffer.size(), 0U) << "more than a frame: line " << block.firstLine + i;
      last = TreeFrame::of((*frame)->tag, (*frame)->payload);
      EXPECT_TRUE(last.has_value()) << "means nothing: line " << block.firstLine + i;
    }
    EXPECT_TRUE(last && !std::holds_alternative<TreeRecord>(last->content))
        << "a stream ends with eof or error: line " << block.firstLine;
  }
  EXPECT_GT(streams, 0U);
}

TEST(ProtocolDocument, everyOperationIsDescribedAndShown) {
  const std::string text = textOfDocument();
  for (const ControlOp op :
       {ControlOp::share, ControlOp::confirm, ControlOp::cancel, ControlOp::unshare,
        ControlOp::shares, ControlOp::stat, ControlOp::list, ControlOp::read, ControlOp::readStream,
        ControlOp::readTreeStream, ControlOp::bridge}) {
    const std::string name(rawValue(op));
    EXPECT_THAT(text, testing::ContainsRegex("\n### " + name + "[\n,]"));
    EXPECT_THAT(text, testing::HasSubstr("\n{\"op\":\"" + name + "\""));
  }
}

TEST(ProtocolDocument, theLimitsAreThoseOfTheLibrary) {
  const auto grouped = [](std::int64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t at = digits.size(); at > 3;) digits.insert(at -= 3, ",");
    return digits + " bytes";
  };
  const std::string text = textOfDocument();
  for (const std::int64_t limit : {static_cast<std::int64_t>(ControlWire::maxFrameBytes),
                                   ControlStreamFrame::window, ControlStreamFrame::maxBodyBytes}) {
    EXPECT_THAT(text, testing::HasSubstr(grouped(limit)));
  }
  EXPECT_THAT(text, testing::HasSubstr("| " + std::to_string(JsonReader::maxDepth) + " |"));
}

}  // namespace
}  // namespace tarnel::test
