#include "control/ControlChannel.h"

#include <utility>

#include "control/ControlClient.h"
#include "control/ControlWire.h"

namespace tarnel {
namespace {

// The edge at which transport errors become channel errors.
ControlChannelError channelError(const ControlClientError& error) {
  switch (error.kind) {
    case ControlClientError::Kind::timedOut:
      return ControlChannelError::timedOut;
    case ControlClientError::Kind::malformedResponse:
    case ControlClientError::Kind::connectionClosed:
    case ControlClientError::Kind::oversizedResponse:
      return ControlChannelError::disconnected;
  }
  __builtin_unreachable();
}

struct FailedExchange {
  using Result = std::expected<Bytes, ControlChannelFailure>;
  Result operator()(const ControlClientError& error) const {
    return std::unexpected(channelError(error));
  }
  Result operator()(const EncodingError& error) const { return std::unexpected(error); }
};

ControlChannelResult decodeResponse(const Bytes& line) {
  auto response = ControlWire::decode<ControlResponse>(line);
  if (!response) return std::unexpected(ControlChannelFailure(std::move(response.error())));
  return std::move(*response);
}

}  // namespace

std::string_view description(ControlChannelError error) {
  switch (error) {
    case ControlChannelError::timedOut:
      return "control request timed out";
    case ControlChannelError::disconnected:
      return "control connection unavailable";
  }
  __builtin_unreachable();
}

std::shared_ptr<ControlChannel> ControlChannel::make(std::string socketPath, std::string label,
                                                     std::shared_ptr<TaskPool> decoders) {
  return std::shared_ptr<ControlChannel>(
      new ControlChannel(std::move(socketPath), std::move(label), std::move(decoders)));
}

ControlChannel::ControlChannel(std::string path, std::string label, std::shared_ptr<TaskPool> pool)
    : socketPath(std::move(path)), queue(std::move(label)), decoders(std::move(pool)) {}

void ControlChannel::request(ControlRequest request, double timeout, ControlChannelReply reply) {
  std::uint64_t startGeneration = 0;
  {
    MutexLock hold(lock);
    startGeneration = generation;
  }
  queue.post(
      [self = shared_from_this(), request = std::move(request), timeout, startGeneration,
       reply = std::move(reply)] { self->perform(request, timeout, startGeneration, reply); });
}

void ControlChannel::perform(const ControlRequest& request, double timeout,
                             std::uint64_t startGeneration, const ControlChannelReply& reply) {
  auto line = exchange(request, timeout, startGeneration);
  if (!line) return reply(std::unexpected(std::move(line.error())));
  // A large answer is decoded elsewhere when another request waits for this thread, a very large
  // one always: a request that comes a moment later would wait for it. Otherwise it is decoded
  // here, which saves a hand-over between threads.
  const bool isVeryLarge = line->size() > elsewhereDecodeBytes;
  const bool isLarge = line->size() > inlineDecodeBytes;
  if (decoders && (isVeryLarge || (isLarge && queue.hasWaiting()))) {
    decoders->post([line = std::move(*line), reply] { reply(decodeResponse(line)); });
  } else {
    reply(decodeResponse(*line));
  }
}

std::expected<Bytes, ControlChannelFailure> ControlChannel::exchange(
    const ControlRequest& request, double timeout, std::uint64_t startGeneration) {
  {
    MutexLock hold(lock);
    if (generation != startGeneration) return std::unexpected(ControlChannelError::disconnected);
  }
  const auto connected = connectedClient();
  if (!connected) return std::unexpected(connected.error());
  const std::shared_ptr<ControlClient>& used = *connected;
  used->setDeadline(timeout);
  auto line = used->exchange(request);
  if (line) return std::move(*line);
  // After the encoder's failure nothing was written: the connection is still in step and is kept.
  if (!std::holds_alternative<EncodingError>(line.error())) teardown(used);
  return std::visit(FailedExchange(), line.error());
}

std::expected<std::shared_ptr<ControlClient>, ControlChannelError>
ControlChannel::connectedClient() {
  std::shared_ptr<ControlClient> current;
  {
    MutexLock hold(lock);
    current = client;
  }
  if (current) {
    if (!current->hasUnrequestedBytes()) return current;
    // This host does not alternate: every later answer would be another request's.
    teardown(current);
  }
  const auto made = ControlClient::connect(socketPath);
  if (!made) return std::unexpected(ControlChannelError::disconnected);
  auto connected = std::make_shared<ControlClient>(*made);
  MutexLock hold(lock);
  client = connected;
  return connected;
}

void ControlChannel::teardown(const std::shared_ptr<ControlClient>& used) {
  {
    MutexLock hold(lock);
    if (client != used) return;  // cancelAll() took it and closes it behind this request
    client = nullptr;
  }
  used->close();
}

void ControlChannel::cancelAll() {
  std::shared_ptr<ControlClient> taken;
  {
    MutexLock hold(lock);
    taken = std::exchange(client, nullptr);
    ++generation;
  }
  if (!taken) return;
  taken->shutdownForAbort();
  // Behind the running request: a descriptor is never closed, and its number never used again,
  // while a request still works with it.
  queue.post([taken] { taken->close(); });
}

}  // namespace tarnel
