// A request of the control protocol: one flat record for every operation.
//
// JSON: keys equal the field names, in field order; an absent field is left out, never null. On
// reading `op` is required, every other key may be absent or null, unknown keys are ignored, and a
// value of the wrong type or out of range fails the whole record.
#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "control/CodingError.h"
#include "control/RawValue.h"

namespace tarnel {

class JsonReader;
class JsonWriter;

// In the order of the table of their texts.
enum class ControlOp {
  share,
  confirm,
  cancel,
  unshare,
  shares,
  stat,
  list,
  read,
  readStream,
  readTreeStream,
  bridge,
};
[[nodiscard]] std::string_view rawValue(ControlOp op);
template <>
std::optional<ControlOp> fromRawValue(std::string_view rawValue);

enum class SharePolicy { interactive, yes, force };
[[nodiscard]] std::string_view rawValue(SharePolicy policy);
template <>
std::optional<SharePolicy> fromRawValue(std::string_view rawValue);

struct ControlRequest {
  ControlOp op;
  std::optional<std::string> name = {};    // the location that the operation works on
  std::optional<std::string> folder = {};  // from here to `address`: of the sharing operations
  std::optional<SharePolicy> policy = {};
  std::optional<std::vector<std::string>> includeSecrets = {};
  std::optional<bool> ackCaps = {};
  std::optional<bool> all = {};
  std::optional<std::string> label = {};
  std::optional<std::string> address = {};
  std::optional<std::int64_t> offset = {};  // bytes
  std::optional<std::int64_t> length = {};  // bytes
  std::optional<bool> namesOnly = {};
  std::optional<std::int64_t> limit = {};  // entries

  void encode(JsonWriter& json) const;
  [[nodiscard]] static std::expected<ControlRequest, DecodingError> decode(JsonReader& json);
  friend bool operator==(const ControlRequest& a, const ControlRequest& b);
};

}  // namespace tarnel
