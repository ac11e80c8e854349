// Streams of a host, each read once and kept as far as checks look at it. Bounded: what one stream
// may carry and take is in CheckLimits, and a tree has at most `mostEntries`.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "control/Bytes.h"
#include "control/ControlRequest.h"
#include "control/ControlStreamFrame.h"
#include "control/TreeHeader.h"

namespace tarnel {

class HostProbe;

// How a stream went.
struct StreamCourse {
  enum class End {
    notAsked,   // there is nothing to ask for
    notServed,  // a line of JSON: the host does not serve the operation
    noFrame,    // neither a line nor a frame
    broken,     // no whole frame came, or one of more than 8 MiB
    badFrame,   // a frame that has no place in this stream
    eof,
    error,    // the stream failed as a whole
    tooMuch,  // longer than is looked at
  };
  End end = End::notAsked;
  std::string fault = {};           // for noFrame, broken and badFrame: what came
  Bytes message = {};               // of an error frame; the line of what is not served
  std::size_t framesBefore = 0;     // those before the end
  std::size_t endPayloadBytes = 0;  // of the end frame
  Bytes after = {};                 // the first bytes behind the end that nobody asked for
  bool goesOn = false;              // the next request of the connection was answered

  [[nodiscard]] bool isWhole() const { return end == End::eof || end == End::error; }
};

struct StreamedFile {
  StreamCourse course = {};
  std::string location = {};
  Bytes bytes = {};
};

struct TreeEntry {
  TreeHeader header;
  std::int64_t bytes = 0;  // that followed
  bool hasFailed = false;
};

struct StreamedTree {
  static constexpr std::size_t mostEntries = 100'000;

  StreamCourse course = {};
  std::string root = {};
  std::vector<TreeEntry> entries = {};
  std::string strayBytes = {};  // where bytes came that belong to no file; empty: nowhere
  std::string wanted = {};      // the relative path whose bytes are kept
  std::optional<Bytes> kept = {};
};

// What is wrong with a frame; absent when it has its place.
using OnFrame = std::function<std::optional<std::string>(const StreamFrame& frame)>;

[[nodiscard]] StreamCourse readStream(const HostProbe& host, const ControlRequest& request,
                                      const OnFrame& onFrame);
[[nodiscard]] StreamedFile readFileStream(const HostProbe& host, const std::string& location);
[[nodiscard]] StreamedTree readTreeStream(const HostProbe& host, const std::string& root,
                                          const std::string& wanted);

}  // namespace tarnel
