// Sends requests through a channel, or two, and awaits their outcomes with a bound.
#pragma once

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <utility>

#include "control/ControlChannel.h"
#include "control/DualControlClient.h"
#include "support/Eventually.h"

namespace tarnel::test {

class ChannelOutcome {
 public:
  [[nodiscard]] ControlChannelReply reply() {
    return [to = promise](ControlChannelResult result) { to->set_value(std::move(result)); };
  }
  [[nodiscard]] ControlChannelResult wait() {
    if (future.wait_for(waitBound) == std::future_status::ready) return future.get();
    ADD_FAILURE() << "no outcome within the bound";
    return std::unexpected(ControlChannelError::timedOut);
  }
  [[nodiscard]] bool isThere() const {
    return future.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
  }

 private:
  std::shared_ptr<std::promise<ControlChannelResult>> promise =
      std::make_shared<std::promise<ControlChannelResult>>();
  std::future<ControlChannelResult> future = promise->get_future();
};

inline ChannelOutcome start(ControlChannel& channel, ControlRequest request, double timeout = 20) {
  ChannelOutcome outcome;
  channel.request(std::move(request), timeout, outcome.reply());
  return outcome;
}

inline ChannelOutcome start(DualControlClient& client, ControlRequest request) {
  ChannelOutcome outcome;
  client.request(std::move(request), outcome.reply());
  return outcome;
}

// "ok", the message of an answer, or what failed.
inline std::string textOf(const ControlChannelResult& result) {
  if (result) return result->message.value_or(std::string(rawValue(result->status)));
  if (const auto* error = std::get_if<ControlChannelError>(&result.error())) {
    return std::string(description(*error));
  }
  return std::holds_alternative<DecodingError>(result.error()) ? "decoding error"
                                                               : "encoding error";
}

inline constexpr const char* disconnected = "control connection unavailable";
inline constexpr const char* timedOut = "control request timed out";

// The two outcomes of an end of stream: errno is read there too, and is what the thread last had.
inline bool hasLostItsHost(const std::string& text) {
  return text == disconnected || text == timedOut;
}

}  // namespace tarnel::test
