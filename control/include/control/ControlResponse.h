// A response of the control protocol: a status, an optional message and one optional slot for each
// kind of payload.
//
// JSON: as for ControlRequest. `status` is required and has no fallback for unknown texts; one bad
// element of a list rejects the whole response; an empty list is present, which is not the same as
// absent. The nested records require every field; those that are made by naming their fields have
// no initial values, so that a warning tells of one that was left out.
// An `error` status is a well-formed response: readers judge by the payload that they expect.
#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "control/CodingError.h"
#include "control/RawValue.h"
#include "control/SourceShare.h"

namespace tarnel {

class JsonReader;
class JsonWriter;
struct FileStat;

// What a `review` status wants confirmed.
struct ReviewSummary {
  std::int64_t sharedCount;
  std::int64_t excludedCount;
  std::vector<std::string> secrets;  // answered by the request's includeSecrets
  std::vector<std::string> caps;     // acknowledged by the request's ackCaps
  bool isRemote;

  void encode(JsonWriter& json) const;
  [[nodiscard]] static std::expected<ReviewSummary, DecodingError> decode(JsonReader& json);
  friend bool operator==(const ReviewSummary& a, const ReviewSummary& b);
};

// A FileStat without the symbolic-link flag, every field required.
struct ControlStat {
  std::string name;
  std::int64_t size = 0;     // bytes
  std::int64_t mtimeMs = 0;  // milliseconds since 1970-01-01 UTC
  bool isDirectory = false;
  std::uint32_t mode = 0;
  std::uint32_t nlink = 0;
  std::string owner;
  std::string group;

  ControlStat() = default;
  explicit ControlStat(FileStat stat);

  void encode(JsonWriter& json) const;
  [[nodiscard]] static std::expected<ControlStat, DecodingError> decode(JsonReader& json);
  friend bool operator==(const ControlStat& a, const ControlStat& b);
};

// One name of a names-only listing. Its JSON keys are "n" and "d": listings are long.
struct ControlName {
  std::string name;
  bool isDirectory = false;

  ControlName() = default;
  ControlName(std::string nameText, bool directory)
      : name(std::move(nameText)), isDirectory(directory) {}
  explicit ControlName(const FileStat& stat);

  void encode(JsonWriter& json) const;
  [[nodiscard]] static std::expected<ControlName, DecodingError> decode(JsonReader& json);
  friend bool operator==(const ControlName& a, const ControlName& b);
};

// A share that a peer offers.
struct RemoteShareInfo {
  std::string peer;
  std::string name;
  bool isRemote;

  void encode(JsonWriter& json) const;
  [[nodiscard]] static std::expected<RemoteShareInfo, DecodingError> decode(JsonReader& json);
  friend bool operator==(const RemoteShareInfo& a, const RemoteShareInfo& b);
};

struct ControlResponse {
  enum class Status { ok, review, error };

  Status status = Status::ok;
  std::optional<std::string> message = {};
  std::optional<ReviewSummary> review = {};
  std::optional<std::vector<SourceShare>> shares = {};
  std::optional<std::vector<RemoteShareInfo>> remoteShares = {};
  std::optional<ControlStat> stat = {};
  std::optional<std::vector<ControlStat>> entries = {};
  std::optional<std::vector<ControlName>> names = {};
  std::optional<std::string> dataBase64 = {};  // stays text here; readers decode it strictly

  [[nodiscard]] static ControlResponse ok() { return {}; }
  [[nodiscard]] static ControlResponse error(std::string message);

  void encode(JsonWriter& json) const;
  [[nodiscard]] static std::expected<ControlResponse, DecodingError> decode(JsonReader& json);
  friend bool operator==(const ControlResponse& a, const ControlResponse& b);
};
[[nodiscard]] std::string_view rawValue(ControlResponse::Status status);
template <>
std::optional<ControlResponse::Status> fromRawValue(std::string_view rawValue);

}  // namespace tarnel
