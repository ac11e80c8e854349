// One lazily connected, self-healing connection that runs one request at a time, in order of
// arrival, and turns every transport failure into one of two errors.
//
// The first request connects; so does the first one after a failure. There is no retry inside a
// request, no back-off, no limit on reconnects. The caller never blocks: the reply comes later,
// from the channel's thread or, for a large answer when decoders are given, from one of theirs.
// Lifetime: nothing but a failure or cancelAll() closes the connection; the owner calls
// cancelAll(). Threads: every operation from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "control/Bytes.h"
#include "control/CodingError.h"
#include "control/ControlRequest.h"
#include "control/ControlResponse.h"
#include "control/Mutex.h"
#include "control/SerialQueue.h"
#include "control/TaskPool.h"

namespace tarnel {

class ControlClient;

enum class ControlChannelError { timedOut, disconnected };
[[nodiscard]] std::string_view description(ControlChannelError error);

// A coding error leaves the connection in step and in use; a channel error has dropped it.
using ControlChannelFailure = std::variant<ControlChannelError, EncodingError, DecodingError>;
using ControlChannelResult = std::expected<ControlResponse, ControlChannelFailure>;
using ControlChannelReply = std::function<void(ControlChannelResult)>;

class ControlChannel : public std::enable_shared_from_this<ControlChannel> {
 public:
  // With decoders, an answer line longer than the first is decoded by them when another request
  // waits behind it, and one longer than the second always: a whole chunk of a file, a large
  // listing.
  static constexpr std::size_t inlineDecodeBytes = 16'384;
  static constexpr std::size_t elsewhereDecodeBytes = 65'536;

  [[nodiscard]] static std::shared_ptr<ControlChannel> make(
      std::string socketPath, std::string label, std::shared_ptr<TaskPool> decoders = nullptr);

  // timeout: seconds of silence that each socket call of this request allows.
  void request(ControlRequest request, double timeout, ControlChannelReply reply);

  // Shuts the connection down at once; the close waits behind the request that is running. Requests
  // that had not started fail with disconnected and never reach the host. Later ones run normally.
  void cancelAll();

  [[nodiscard]] const std::string& label() const { return queue.label(); }

 private:
  ControlChannel(std::string socketPath, std::string label, std::shared_ptr<TaskPool> decoders);

  void perform(const ControlRequest& request, double timeout, std::uint64_t startGeneration,
               const ControlChannelReply& reply);
  [[nodiscard]] std::expected<Bytes, ControlChannelFailure> exchange(const ControlRequest& request,
                                                                     double timeout,
                                                                     std::uint64_t startGeneration);
  [[nodiscard]] std::expected<std::shared_ptr<ControlClient>, ControlChannelError>
  connectedClient();
  void teardown(const std::shared_ptr<ControlClient>& used);

  const std::string socketPath;
  SerialQueue queue;
  const std::shared_ptr<TaskPool> decoders;
  Mutex lock;  // guards client and generation; never held across I/O
  std::shared_ptr<ControlClient> client GUARDED_BY(lock);
  std::uint64_t generation GUARDED_BY(lock) = 0;
};

}  // namespace tarnel
