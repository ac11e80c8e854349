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
  ControlChannelFailure operator()(const ControlClientError& error) const {
    return channelError(error);
  }
  ControlChannelFailure operator()(const EncodingError& error) const { return error; }
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
  const auto used = send(request, timeout, startGeneration);
  giveOwed();  // while the host works on this request
  auto line = used ? receive(*used) : std::unexpected(used.error());
  if (!line) return reply(std::unexpected(std::move(line.error())));
  if (decoders && line->size() > elsewhereDecodeBytes) {
    decoders->post([line = std::move(*line), reply] { reply(decodeResponse(line)); });
    return;
  }
  owed = Answer{.line = std::move(*line), .reply = reply};
  if (!queue.hasWaiting()) giveOwed();
}

void ControlChannel::giveOwed() {
  if (!owed) return;
  const Answer answer = std::move(*owed);
  owed.reset();
  answer.reply(decodeResponse(answer.line));
}

std::expected<std::shared_ptr<ControlClient>, ControlChannelFailure> ControlChannel::send(
    const ControlRequest& request, double timeout, std::uint64_t startGeneration) {
  {
    MutexLock hold(lock);
    if (generation != startGeneration) return std::unexpected(ControlChannelError::disconnected);
  }
  auto connected = connectedClient();
  if (!connected) return std::unexpected(connected.error());
  (*connected)->setDeadline(timeout);
  if (auto sent = (*connected)->sendRaw(request); !sent)
    return std::unexpected(failed(*connected, sent.error()));
  return std::move(*connected);
}

std::expected<Bytes, ControlChannelFailure> ControlChannel::receive(
    const std::shared_ptr<ControlClient>& used) {
  auto line = used->readLine();
  if (!line) return std::unexpected(failed(used, line.error()));
  return std::move(*line);
}

ControlChannelFailure ControlChannel::failed(const std::shared_ptr<ControlClient>& used,
                                             const ControlExchangeFailure& failure) {
  // After the encoder's failure nothing was written: the connection is still in step and is kept.
  if (!std::holds_alternative<EncodingError>(failure)) teardown(used);
  return std::visit(FailedExchange(), failure);
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
  queue.post([self = shared_from_this(), taken] {
    self->giveOwed();
    taken->close();
  });
}

}  // namespace tarnel
