// Answers requests, one line for each: the operations `shares`, `stat`, `list` and `read` on the
// shares of a table, and an error for every other.
//
// `read` gives at most maxReadBytes for any length that is absent or larger; a reader asks again.
// Threads: any. Each connection brings its own buffer.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "control/Bytes.h"
#include "control/ControlRequest.h"
#include "host/AccountNames.h"
#include "host/BeneathResolver.h"
#include "host/HostOptions.h"
#include "host/Refusal.h"
#include "host/SharePath.h"
#include "host/ShareTable.h"

namespace tarnel {

class HostResponder {
 public:
  static constexpr std::int64_t maxReadBytes = 262'144;

  HostResponder(ShareTable shareTable, HostOptions hostOptions)
      : table(std::move(shareTable)), options(std::move(hostOptions)) {}

  // The answer with its line feed. `readBuffer` is memory that lives as long as the connection.
  [[nodiscard]] Bytes answer(const ControlRequest& request, Bytes& readBuffer);

 private:
  // A location with its share, which stays open as long as this does.
  struct Located {
    SharePath path;
    std::shared_ptr<const Share> share;
    BeneathResolver resolver;
  };
  [[nodiscard]] HostResult<Located> locate(const ControlRequest& request) const;

  [[nodiscard]] Bytes shares() const;
  [[nodiscard]] HostResult<Bytes> stat(const ControlRequest& request);
  [[nodiscard]] HostResult<Bytes> list(const ControlRequest& request);
  [[nodiscard]] HostResult<Bytes> read(const ControlRequest& request, Bytes& readBuffer) const;
  [[nodiscard]] HostResult<Bytes> dispatch(const ControlRequest& request, Bytes& readBuffer);
  void logNamesLeftOut(std::size_t count, std::string_view location) const;

  const ShareTable table;
  const HostOptions options;
  AccountNames accounts;
};

}  // namespace tarnel
