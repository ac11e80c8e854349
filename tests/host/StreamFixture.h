// Streams of a host, taken off a real socket frame by frame.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "HostFixture.h"
#include "control/TreeRecord.h"

namespace tarnel::test {

// One connection; each frame in its turn.
class StreamClient {
 public:
  explicit StreamClient(const std::string& socketPath) : client(RawClient(socketPath).release()) {
    client.setDeadline(20);
  }
  ~StreamClient() { client.close(); }
  StreamClient(const StreamClient&) = delete;
  StreamClient& operator=(const StreamClient&) = delete;

  void begin(ControlOp op, const std::string& location) { begin({.op = op, .name = location}); }
  void begin(const ControlRequest& request) { EXPECT_TRUE(client.sendRaw(request)); }
  // nullopt when the host has hung up or is silent.
  std::optional<StreamFrame> frame() {
    auto next = client.readFrame();
    if (!next) return std::nullopt;
    return std::move(*next);
  }
  ControlResponse ask(const ControlRequest& request) {
    auto response = client.send(request);
    EXPECT_TRUE(response);
    return response.value_or(ControlResponse{});
  }

 private:
  ControlClient client;
};

// A `readStream` as a whole.
struct ReceivedFile {
  Bytes bytes;
  std::vector<std::size_t> pieces;  // sizes of the data frames
  std::string end;                  // "eof", the message of an `error`, or "hung up"
};

inline ReceivedFile receiveFile(StreamClient& client) {
  ReceivedFile received;
  while (auto frame = client.frame()) {
    switch (frame->tag) {
      case ControlStreamFrame::data:
        received.pieces.push_back(frame->payload.size());
        received.bytes += frame->payload;
        break;
      case ControlStreamFrame::eof:
        EXPECT_EQ(frame->payload, "");
        received.end = "eof";
        return received;
      case ControlStreamFrame::error:
        received.end = frame->payload;
        return received;
      default:
        ADD_FAILURE() << "a frame that has no place here: " << int{frame->tag};
    }
  }
  received.end = "hung up";
  return received;
}

// A `readTreeStream`, one text for each entry, failure and end: "dir a 755", "file a/b 644 hello"
// with the bytes behind it, "dir c 0: permission denied", "failed: ...", "error: ...", "eof".
using ReceivedTree = std::vector<std::string>;

class TreeReceiver {
 public:
  // Adds one frame; false at the end of the stream.
  bool take(StreamFrame frame) {
    const std::uint8_t tag = frame.tag;
    const auto meaning = TreeFrame::of(tag, std::move(frame.payload));
    if (!meaning) {
      ADD_FAILURE() << "no tree frame: " << int{tag};
      return false;
    }
    if (const auto* record = std::get_if<TreeRecord>(&meaning->content)) {
      add(*record);
      return true;
    }
    const auto* error = std::get_if<TreeError>(&meaning->content);
    lines.push_back(error != nullptr ? "error: " + error->message : "eof");
    return false;
  }

  ReceivedTree lines;
  std::vector<TreeHeader> headers;
  std::vector<std::int64_t> sizes;  // of what came behind each header

 private:
  void add(const TreeRecord& record) {
    if (const auto* header = std::get_if<TreeHeader>(&record.content)) {
      headers.push_back(*header);
      sizes.push_back(0);
      lines.push_back(lineOf(*header));
    } else if (const auto* piece = std::get_if<TreeBytes>(&record.content)) {
      ASSERT_FALSE(headers.empty());
      EXPECT_LE(piece->bytes.size(), static_cast<std::size_t>(TreeHeader::window));
      sizes.back() += static_cast<std::int64_t>(piece->bytes.size());
      if (piece->bytes.size() <= 100) lines.back() += " " + piece->bytes;
    } else {
      lines.push_back("failed: " + std::get<FileFailed>(record.content).message);
    }
  }
  static std::string lineOf(const TreeHeader& header) {
    std::string mode;
    for (std::uint32_t left = header.mode; left != 0; left /= 8) {
      mode.insert(mode.begin(), static_cast<char>('0' + left % 8));
    }
    return std::string(rawValue(header.kind)) + " " + header.relpath + " " +
           (mode.empty() ? "0" : mode) + (header.error ? ": " + *header.error : "");
  }
};

inline TreeReceiver receiveTree(StreamClient& client) {
  TreeReceiver receiver;
  while (auto frame = client.frame()) {
    if (!receiver.take(std::move(*frame))) return receiver;
  }
  receiver.lines.emplace_back("hung up");
  return receiver;
}

class StreamTest : public HostFixture {
 protected:
  ReceivedFile readStream(const ControlRequest& request) {
    if (!host) startHost();
    StreamClient client(socketPath());
    client.begin(request);
    return receiveFile(client);
  }
  ReceivedFile readStream(const std::string& location, std::optional<std::int64_t> offset = {},
                          std::optional<std::int64_t> length = {}) {
    return readStream(
        {.op = ControlOp::readStream, .name = location, .offset = offset, .length = length});
  }
  ReceivedTree tree(const std::string& location) {
    if (!host) startHost();
    StreamClient client(socketPath());
    client.begin(ControlOp::readTreeStream, location);
    return receiveTree(client).lines;
  }
  // A file of zeros that takes no room.
  void sparseFile(const std::string& relative, std::int64_t size) {
    temp.file(relative);
    std::filesystem::resize_file(temp / relative, static_cast<std::uintmax_t>(size));
  }

  // More than fits between the two sides while the client does not read.
  static constexpr std::int64_t muchMore = 16 * 1024 * 1024;
};

}  // namespace tarnel::test
