#include "get/CopySource.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "control/Base64.h"
#include "control/ControlClient.h"
#include "control/ControlResponse.h"
#include "control/ControlWire.h"
#include "fs/ControlFabricSource.h"
#include "fs/FabricLocation.h"

namespace tarnel {
namespace {

CopyResult<ControlResponse> decoded(BytesView line) {
  auto response = ControlWire::decode<ControlResponse>(line);
  if (response) return std::move(*response);
  return copyFailure(
      EIO, description(ControlClientError{.kind = ControlClientError::Kind::malformedResponse,
                                          .detail = response.error().detail}));
}

// There was no answer, as distinct from one that says no.
bool isTransport(const CopyError& error) {
  return error.error == ENOTCONN || error.error == ETIMEDOUT || error.error == EINTR;
}

}  // namespace

CopySource::CopySource(const std::string& socketPath, Interruption& interruption)
    : bytes(socketPath, interruption), questions(socketPath, interruption) {}

CopyResult<Bytes> CopySource::question(HostStream& connection, const ControlRequest& request,
                                       double deadline, std::size_t maxBytes) {
  const auto asked = connection.ask(request, deadline);
  if (!asked) return std::unexpected(asked.error());
  return connection.readLine(maxBytes);
}

CopyResult<HostEntry> CopySource::stat(const std::string& path, double deadline) {
  const auto line = question(questions, {.op = ControlOp::stat, .name = path}, deadline);
  if (!line) return std::unexpected(line.error());
  const auto response = decoded(*line);
  if (!response) return std::unexpected(response.error());
  if (!response->stat) return std::unexpected(refusalError(response->message.value_or("")));
  const ControlStat& stat = *response->stat;
  return HostEntry{.isDirectory = stat.isDirectory,
                   .mode = stat.mode,
                   .size = stat.size,
                   .mtimeMs = stat.mtimeMs};
}

CopyResult<FolderListing*> CopySource::list(const std::string& path, double deadline) {
  auto found = std::ranges::find(kept, path, &Kept::path);
  if (found == kept.end()) {
    auto line = question(questions, {.op = ControlOp::list, .name = path}, deadline,
                         ControlWire::maxFrameBytes);
    // Whoever had less patience does not speak for the others.
    if (!line && deadline < questionDeadline) return std::unexpected(line.error());
    // A host that hung up is not asked again about this folder; the next one tries anew.
    kept.push_front(
        {.path = path,
         .listing = line ? FolderListing::parse(*line) : std::unexpected(line.error())});
    forgetListings();
  } else {
    kept.splice(kept.begin(), kept, found);
  }
  auto& listing = kept.front().listing;
  if (!listing) return std::unexpected(listing.error());
  return &*listing;
}

void CopySource::forgetListings() {
  std::size_t memory = 0;
  std::size_t count = 0;
  for (auto at = std::next(kept.begin()); at != kept.end();) {
    memory += at->path.size() + (at->listing ? at->listing->memory() : 0);
    at = memory > maxListingMemory || ++count >= maxKept ? kept.erase(at) : std::next(at);
  }
}

CopyResult<std::int64_t> CopySource::timeOf(const std::string& folder, std::string_view name) {
  const auto listing = list(folder);
  if (listing) {
    if (const auto index = (*listing)->find(name)) return (*listing)->entry(*index).mtimeMs;
  } else if (isTransport(listing.error())) {
    return std::unexpected(listing.error());
  }
  const auto status = stat(childPath(folder, name));
  if (!status) return std::unexpected(status.error());
  return status->mtimeMs;
}

CopyResult<std::vector<CopySource::Share>> CopySource::shares() {
  const auto line = question(questions, {.op = ControlOp::shares}, questionDeadline);
  if (!line) return std::unexpected(line.error());
  auto response = decoded(*line);
  if (!response) return std::unexpected(response.error());
  std::vector<Share> all;
  for (SourceShare& share : response->shares.value_or(std::vector<SourceShare>())) {
    all.push_back(
        {.peer = std::string(ControlFabricSource::localPeer), .name = std::move(share.name)});
  }
  for (RemoteShareInfo& share : response->remoteShares.value_or(std::vector<RemoteShareInfo>())) {
    all.push_back({.peer = std::move(share.peer), .name = std::move(share.name)});
  }
  return all;
}

CopyResult<bool> CopySource::openTree(const std::string& path) {
  return open({.op = ControlOp::readTreeStream, .name = path}, treesServed);
}

CopyResult<bool> CopySource::openFile(const std::string& path, std::int64_t size) {
  ControlRequest request{.op = ControlOp::readStream, .name = path};
  if (size > 0) {
    request.offset = 0;
    request.length = size;
  }
  return open(request, filesServed);
}

CopyResult<bool> CopySource::open(const ControlRequest& request, bool& served) {
  if (!served) return false;
  if (auto asked = bytes.ask(request, streamDeadline); !asked) {
    return std::unexpected(asked.error());
  }
  const auto framed = bytes.answersInFrames();
  if (!framed) return std::unexpected(framed.error());
  if (*framed) return true;
  // A stream that cannot start says so in a frame: a line means that there are no such streams.
  const auto line = bytes.readLine(maxAnswer);
  if (!line) return std::unexpected(line.error());
  if (auto response = decoded(*line); !response) return std::unexpected(response.error());
  served = false;
  return false;
}

CopyResult<Bytes> CopySource::read(const std::string& path, std::int64_t offset,
                                   std::int64_t length) {
  const auto line =
      question(bytes, {.op = ControlOp::read, .name = path, .offset = offset, .length = length},
               streamDeadline);
  if (!line) return std::unexpected(line.error());
  auto response = decoded(*line);
  if (!response) return std::unexpected(response.error());
  if (!response->dataBase64) return std::unexpected(refusalError(response->message.value_or("")));
  auto data = base64::decodeInPlace(std::move(*response->dataBase64));
  if (!data) return copyFailure(EIO, "bytes that are not base64");
  return std::move(*data);
}

}  // namespace tarnel
