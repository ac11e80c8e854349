// Answers requests. One line for each of the operations `shares`, `stat`, `list` and `read` on the
// shares of a table, for those that change the table (Sharing), and, an error, for every operation
// that is not served. Frames for `readStream` and `readTreeStream`, also when they cannot start.
//
// `read` gives at most ReadAnswer::maxBytes for any length that is absent or larger; a reader asks
// again. Threads: any. Each connection brings its own sink.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "AnswerSink.h"
#include "Sharing.h"
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
  HostResponder(std::unique_ptr<ShareTable> shareTable, HostOptions hostOptions)
      : table(std::move(shareTable)), options(std::move(hostOptions)), sharing(*table, options) {}

  // Sends the whole answer. False when the connection is over: the client cannot take the answer,
  // or there is nothing left to make one with (Refusal::exhausted).
  [[nodiscard]] bool answer(const ControlRequest& request, AnswerSink& sink);

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
  [[nodiscard]] HostResult<bool> read(const ControlRequest& request, AnswerSink& sink) const;
  [[nodiscard]] bool readStream(const ControlRequest& request, AnswerSink& sink) const;
  [[nodiscard]] bool readTreeStream(const ControlRequest& request, AnswerSink& sink) const;
  // Every other operation, whose answer is one line.
  [[nodiscard]] HostResult<Bytes> dispatch(const ControlRequest& request, AnswerSink& sink);
  void logTooLarge(std::string_view location) const;
  void logNamesLeftOut(std::size_t count, std::string_view location) const;

  const std::unique_ptr<ShareTable> table;
  const HostOptions options;
  Sharing sharing;
  AccountNames accounts;
};

}  // namespace tarnel
