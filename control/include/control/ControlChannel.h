// One lazily connected, self-healing connection that runs one request at a time, in order of
// arrival, and turns every transport failure into one of two errors.
//
// The first request connects; so does the first one after a failure. There is no retry inside a
// request, no back-off, no limit on reconnects. The caller never blocks: the reply comes later,
// from the channel's thread or, for a large answer when decoders are given, from one of theirs.
// When a request waits behind the running one, it is written as soon as the running one's answer
// line is there; that line is decoded and replied while the host works.
// Lifetime: nothing but a failure or cancelAll() closes the connection; the owner calls
// cancelAll(). Threads: every operation from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "control/Bytes.h"
#include "control/CodingError.h"
#include "control/ControlClient.h"
#include "control/ControlRequest.h"
#include "control/ControlResponse.h"
#include "control/Mutex.h"
#include "control/SerialQueue.h"
#include "control/TaskPool.h"

namespace tarnel {

enum class ControlChannelError { timedOut, disconnected };
[[nodiscard]] std::string_view description(ControlChannelError error);

// A coding error leaves the connection in step and in use; a channel error has dropped it.
using ControlChannelFailure = std::variant<ControlChannelError, EncodingError, DecodingError>;
using ControlChannelResult = std::expected<ControlResponse, ControlChannelFailure>;
using ControlChannelReply = std::function<void(ControlChannelResult)>;

class ControlChannel : public std::enable_shared_from_this<ControlChannel> {
 public:
  // With decoders, a longer answer line is decoded by them: a large listing, behind which other
  // answers would wait.
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

  struct Answer {
    Bytes line;
    ControlChannelReply reply;
  };

  void perform(const ControlRequest& request, double timeout, std::uint64_t startGeneration,
               const ControlChannelReply& reply);
  [[nodiscard]] std::expected<std::shared_ptr<ControlClient>, ControlChannelFailure> send(
      const ControlRequest& request, double timeout, std::uint64_t startGeneration);
  [[nodiscard]] std::expected<Bytes, ControlChannelFailure> receive(
      const std::shared_ptr<ControlClient>& used);
  [[nodiscard]] ControlChannelFailure failed(const std::shared_ptr<ControlClient>& used,
                                             const ControlExchangeFailure& failure);
  [[nodiscard]] std::expected<std::shared_ptr<ControlClient>, ControlChannelError>
  connectedClient();
  void giveOwed();
  void teardown(const std::shared_ptr<ControlClient>& used);

  const std::string socketPath;
  SerialQueue queue;
  const std::shared_ptr<TaskPool> decoders;
  Mutex lock;  // guards client and generation; never held across I/O
  std::shared_ptr<ControlClient> client GUARDED_BY(lock);
  std::uint64_t generation GUARDED_BY(lock) = 0;
  std::optional<Answer> owed;  // undecoded, while an item waits that gives it; the queue's thread
};

}  // namespace tarnel
