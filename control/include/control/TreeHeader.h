// One entry of a streamed tree: the JSON record in a `header` frame.
//
// relpath is relative to the root of the tree, names joined by "/". Nothing is checked here: a
// reader judges every relpath before it makes a path of it. size is signed, as sent.
// JSON: keys in field order; `error` is left out when absent, and it alone may be absent or null on
// reading. The initial values of mode and size are for whoever makes a header, not for its JSON.
#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "control/CodingError.h"
#include "control/ControlStreamFrame.h"
#include "control/RawValue.h"

namespace tarnel {

class JsonReader;
class JsonWriter;

struct TreeHeader {
  enum class Kind { dir, file };

  // The most bytes of a file that a writer puts into one frame.
  static constexpr std::int64_t window = ControlStreamFrame::window;

  std::string relpath;
  Kind kind;
  std::uint32_t mode = 0;                 // POSIX mode bits
  std::int64_t size = 0;                  // bytes
  std::optional<std::string> error = {};  // why the entry's contents do not follow

  // Whether a walk leaves the name out: Finder's ".DS_Store" and the "._" companion files. `name`
  // is one component; paths are not split.
  [[nodiscard]] static bool isNoise(std::string_view name);

  void encode(JsonWriter& json) const;
  [[nodiscard]] static std::expected<TreeHeader, DecodingError> decode(JsonReader& json);
  friend bool operator==(const TreeHeader& a, const TreeHeader& b);
};
[[nodiscard]] std::string_view rawValue(TreeHeader::Kind kind);
template <>
std::optional<TreeHeader::Kind> fromRawValue(std::string_view rawValue);

}  // namespace tarnel
