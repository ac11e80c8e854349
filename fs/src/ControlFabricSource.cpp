#include "fs/ControlFabricSource.h"

#include <utility>

#include "control/AsciiCase.h"
#include "control/Base64.h"

namespace tarnel {
namespace {

FabricSourceError sourceError(ControlChannelError error) {
  switch (error) {
    case ControlChannelError::timedOut:
      return {FabricSourceError::Kind::timedOut};
    case ControlChannelError::disconnected:
      return {FabricSourceError::Kind::disconnected};
  }
  __builtin_unreachable();
}

FabricFailure sourceFailure(ControlChannelFailure failure) {
  struct Convert {
    FabricFailure operator()(ControlChannelError error) const { return sourceError(error); }
    FabricFailure operator()(EncodingError error) const { return error; }
    FabricFailure operator()(DecodingError error) const { return error; }
  };
  return std::visit(Convert(), std::move(failure));
}

FileStat fileStat(ControlStat stat) {
  return {.name = std::move(stat.name),
          .size = stat.size,
          .mtimeMs = stat.mtimeMs,
          .isDirectory = stat.isDirectory,
          .mode = stat.mode,
          .nlink = stat.nlink,
          .owner = std::move(stat.owner),
          .group = std::move(stat.group),
          .isSymlink = false};
}

// A response with neither list, even a refusal, is an empty listing.
std::optional<std::vector<FabricShare>> sharesOf(ControlResponse& response) {
  std::vector<FabricShare> all;
  if (response.shares) {
    for (SourceShare& share : *response.shares) {
      all.push_back({.peer = std::string(ControlFabricSource::localPeer),
                     .name = std::move(share.name),
                     .isRemote = share.isRemote});
    }
  }
  if (response.remoteShares) {
    for (RemoteShareInfo& share : *response.remoteShares) {
      all.push_back({.peer = std::move(share.peer),
                     .name = std::move(share.name),
                     .isRemote = share.isRemote});
    }
  }
  return all;
}

std::optional<FileStat> statOf(ControlResponse& response) {
  if (!response.stat) return std::nullopt;
  return fileStat(std::move(*response.stat));
}

std::optional<std::vector<FileStat>> entriesOf(ControlResponse& response) {
  if (!response.entries) return std::nullopt;
  std::vector<FileStat> entries;
  entries.reserve(response.entries->size());
  for (ControlStat& entry : *response.entries) entries.push_back(fileStat(std::move(entry)));
  return entries;
}

std::optional<Bytes> bytesOf(ControlResponse& response) {
  if (!response.dataBase64) return std::nullopt;
  return base64::decodeInPlace(std::move(*response.dataBase64));
}

}  // namespace

ControlFabricSource::ControlFabricSource(std::shared_ptr<DualControlClient> controlClient)
    : client(std::move(controlClient)) {}

template <class T>
void ControlFabricSource::send(ControlRequest request, Extract<T> extract, Reply<T> reply) {
  client->request(std::move(request),
                  [extract, reply = std::move(reply)](ControlChannelResult response) {
                    if (!response) {
                      return reply(std::unexpected(sourceFailure(std::move(response.error()))));
                    }
                    auto payload = extract(*response);
                    response->entries.reset();  // a large listing need not stand in memory twice
                    if (!payload) return reply(std::unexpected(classify(response->message)));
                    reply(std::move(*payload));
                  });
}

void ControlFabricSource::shareListing(Reply<std::vector<FabricShare>> reply) {
  send(ControlRequest{.op = ControlOp::shares}, sharesOf, std::move(reply));
}

void ControlFabricSource::stat(const std::string& relpath, Reply<FileStat> reply) {
  send(ControlRequest{.op = ControlOp::stat, .name = relpath}, statOf, std::move(reply));
}

void ControlFabricSource::list(const std::string& relpath, Reply<std::vector<FileStat>> reply) {
  send(ControlRequest{.op = ControlOp::list, .name = relpath}, entriesOf, std::move(reply));
}

void ControlFabricSource::read(const std::string& relpath, std::int64_t offset, std::int64_t length,
                               Reply<Bytes> reply) {
  send(ControlRequest{.op = ControlOp::read, .name = relpath, .offset = offset, .length = length},
       bytesOf, std::move(reply));
}

void ControlFabricSource::cancelAll() { client->cancelAll(); }

FabricSourceError ControlFabricSource::classify(const std::optional<std::string>& message) {
  using Kind = FabricSourceError::Kind;
  const std::string text = asciiLower(message.value_or(""));
  const auto says = [&](std::string_view words) { return text.find(words) != std::string::npos; };
  if (says("is a directory")) return {Kind::isDirectory};
  if (says("not a directory")) return {Kind::notADirectory};
  if (says("not a file")) return {Kind::notADirectory};  // on purpose not isDirectory
  return {Kind::notFound};
}

}  // namespace tarnel
