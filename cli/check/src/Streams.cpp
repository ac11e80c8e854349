#include "Streams.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <variant>

#include "HostProbe.h"
#include "control/TreeRecord.h"

namespace tarnel {
namespace {

using End = StreamCourse::End;

constexpr std::size_t mostKept = 4'096;  // of a message

bool isTag(char byte) {
  for (const std::uint8_t tag :
       {ControlStreamFrame::data, ControlStreamFrame::eof, ControlStreamFrame::error,
        ControlStreamFrame::header, ControlStreamFrame::fileError}) {
    if (static_cast<std::uint8_t>(byte) == tag) return true;
  }
  return false;
}

std::string faultText(WireFault fault) {
  switch (fault) {
    case WireFault::closed:
      return "the host hung up before the end";
    case WireFault::silent:
      return "the stream stopped before its end";
    case WireFault::incomplete:
      return "the stream stopped inside a frame";
    case WireFault::tooLong:
      return "a frame of more than 8 MiB came";
  }
  __builtin_unreachable();
}

class Reading {
 public:
  Reading(const HostProbe& probe, Talk& connection, const OnFrame& frames)
      : host(probe), talk(connection), onFrame(frames), late(probe.in(probe.limits().stream)) {}

  StreamCourse run() {
    const auto first = talk.wire.nextByte(host.answerDeadline());
    if (!first) return broken(first.error());
    if (*first == '{') return readLine();
    if (!isTag(*first)) return ended(End::noFrame, std::string(1, *first));
    while (course.end == End::notAsked) readFrame();
    if (course.isWhole()) lookBehind();
    return std::move(course);
  }

 private:
  StreamCourse ended(End end, std::string fault) {
    course.end = end;
    course.fault = std::move(fault);
    return course;
  }
  StreamCourse broken(WireFault fault) { return ended(End::broken, faultText(fault)); }

  StreamCourse readLine() {
    auto line = talk.wire.line(host.answerDeadline());
    if (!line) return broken(line.error());
    course.message = line->substr(0, mostKept);
    return ended(End::notServed, "");
  }

  void readFrame() {
    const auto frame = talk.wire.frame(std::min(late, host.answerDeadline()));
    if (!frame) {
      const bool isLate = std::chrono::steady_clock::now() >= late;
      if (isLate && frame.error() != WireFault::closed) {
        ended(End::tooMuch, "");
      } else {
        broken(frame.error());
      }
      return;
    }
    bytes += static_cast<std::int64_t>(frame->payload.size());
    if (frame->tag == ControlStreamFrame::eof || frame->tag == ControlStreamFrame::error) {
      const bool isEof = frame->tag == ControlStreamFrame::eof;
      course.end = isEof ? End::eof : End::error;
      course.endPayloadBytes = frame->payload.size();
      if (!isEof) course.message = frame->payload.substr(0, mostKept);
      return;
    }
    ++course.framesBefore;
    if (auto fault = onFrame(*frame)) {
      ended(End::badFrame, std::move(*fault));
    } else if (bytes > host.limits().streamBytes || std::chrono::steady_clock::now() >= late) {
      ended(End::tooMuch, "");
    }
  }

  void lookBehind() {
    course.after = Bytes(talk.wire.bytesUntil(host.in(host.limits().quiet)).substr(0, mostKept));
    if (course.after.empty()) course.goesOn = talk.ask(sharesRequest()).has_value();
  }

  const HostProbe& host;
  Talk& talk;
  const OnFrame& onFrame;
  const Deadline late;
  StreamCourse course;
  std::int64_t bytes = 0;
};

// Makes the entries of a tree from its frames.
class TreeBuilder {
 public:
  explicit TreeBuilder(StreamedTree& stream) : tree(stream) {}

  std::optional<std::string> take(const StreamFrame& frame) {
    auto meaning = TreeFrame::of(frame.tag, frame.payload);
    if (!meaning) return "a frame without a meaning in a tree: " + quoted(frame.payload);
    auto* const record = std::get_if<TreeRecord>(&meaning->content);
    if (record == nullptr) return std::nullopt;
    if (auto* const header = std::get_if<TreeHeader>(&record->content)) {
      if (tree.entries.size() >= StreamedTree::mostEntries) return std::nullopt;
      if (header->relpath == tree.wanted) tree.kept = Bytes();
      tree.entries.push_back({.header = std::move(*header)});
    } else if (const auto* const bytes = std::get_if<TreeBytes>(&record->content)) {
      takeBytes(bytes->bytes);
    } else {
      fail();
    }
    return std::nullopt;
  }

 private:
  void takeBytes(BytesView bytes) {
    if (tree.entries.empty()) return stray("before the first header");
    TreeEntry& entry = tree.entries.back();
    if (entry.header.kind != TreeHeader::Kind::file) {
      return stray("behind the folder " + quoted(entry.header.relpath));
    }
    if (entry.hasFailed) return stray("behind the failure of " + quoted(entry.header.relpath));
    entry.bytes += static_cast<std::int64_t>(bytes.size());
    if (tree.kept && entry.header.relpath == tree.wanted) tree.kept->append(bytes);
  }
  void fail() {
    if (tree.entries.empty() || tree.entries.back().header.kind != TreeHeader::Kind::file) {
      return stray("as a failure that belongs to no file");
    }
    tree.entries.back().hasFailed = true;
  }
  void stray(std::string where) {
    if (tree.strayBytes.empty()) tree.strayBytes = std::move(where);
  }

  StreamedTree& tree;
};

}  // namespace

StreamCourse readStream(const HostProbe& host, const ControlRequest& request,
                        const OnFrame& onFrame) {
  auto talk = host.talk();
  if (!talk || !talk->send(textOf(request) + "\n")) {
    return {.end = End::broken, .fault = "the request could not be sent"};
  }
  return Reading(host, *talk, onFrame).run();
}

StreamedFile readFileStream(const HostProbe& host, const std::string& location) {
  StreamedFile stream{.location = location};
  const auto onFrame = [&](const StreamFrame& frame) -> std::optional<std::string> {
    if (frame.tag != ControlStreamFrame::data) {
      return "a frame with the tag " + quoted(std::string(1, static_cast<char>(frame.tag)));
    }
    stream.bytes.append(frame.payload);
    if (std::cmp_less_equal(stream.bytes.size(), 2 * Material::mostFileBytes)) return std::nullopt;
    return "far more bytes than the file has";
  };
  stream.course = readStream(host, {.op = ControlOp::readStream, .name = location}, onFrame);
  if (stream.course.end == End::tooMuch) {
    stream.course.end = End::broken;
    stream.course.fault = "no end came";
  }
  return stream;
}

StreamedTree readTreeStream(const HostProbe& host, const std::string& root,
                            const std::string& wanted) {
  StreamedTree tree{.root = root, .wanted = wanted};
  TreeBuilder builder(tree);
  tree.course = readStream(host, {.op = ControlOp::readTreeStream, .name = root},
                           [&](const StreamFrame& frame) { return builder.take(frame); });
  if (tree.entries.size() >= StreamedTree::mostEntries && tree.course.isWhole()) {
    tree.course.end = End::tooMuch;
  }
  return tree;
}

}  // namespace tarnel
