#include "HostResponder.h"

#include <algorithm>
#include <utility>

#include "AnswerLine.h"
#include "FileStream.h"
#include "HostStatus.h"
#include "ReadAnswer.h"
#include "StreamWriter.h"
#include "TreeStream.h"
#include "control/ControlResponse.h"
#include "control/Printable.h"
#include "host/DirectoryLister.h"

namespace tarnel {
namespace {

HostResult<Bytes> lineOf(const HostResult<ControlResponse>& response) {
  if (!response) return std::unexpected(response.error());
  return answerLine(*response);
}

// Every reader takes a refusal that it does not know for a missing path. What only the host's own
// want keeps it from looking at must not seem to be gone, so the client is hung up on: that it
// takes for what it is, and its connection's descriptor is free.
bool refuse(Refusal refusal, AnswerSink& sink) {
  return refusal != Refusal::exhausted && sink.send(answerLine(refusal));
}

// A stream that is over before it began.
bool sendError(Refusal refusal, AnswerSink& sink) {
  StreamWriter writer(sink);
  writer.error(refusal);
  return writer.finish();
}

}  // namespace

bool HostResponder::answer(const ControlRequest& request, AnswerSink& sink) {
  if (request.op == ControlOp::read) {
    const auto sent = read(request, sink);
    return sent ? *sent : refuse(sent.error(), sink);
  }
  if (request.op == ControlOp::readStream) return readStream(request, sink);
  if (request.op == ControlOp::readTreeStream) return readTreeStream(request, sink);
  const auto line = dispatch(request, sink);
  return line ? sink.send(*line) : refuse(line.error(), sink);
}

HostResult<Bytes> HostResponder::dispatch(const ControlRequest& request, AnswerSink& sink) {
  switch (request.op) {
    case ControlOp::shares:
      return shares();
    case ControlOp::stat:
      return stat(request);
    case ControlOp::list:
      return list(request);
    case ControlOp::share:
      return lineOf(sharing.share(request, sink));
    case ControlOp::confirm:
      return lineOf(sharing.confirm(request, sink.reviews));
    case ControlOp::cancel:
      return lineOf(Sharing::cancel(request, sink.reviews));
    case ControlOp::unshare:
      return lineOf(sharing.unshare(request));
    case ControlOp::read:
    case ControlOp::readStream:
    case ControlOp::readTreeStream:
    case ControlOp::bridge:
      return std::unexpected(Refusal::notServed);
  }
  __builtin_unreachable();
}

HostResult<HostResponder::Located> HostResponder::locate(const ControlRequest& request) const {
  if (!request.name) return std::unexpected(Refusal::noLocation);
  auto path = SharePath::parse(*request.name);
  if (!path) return std::unexpected(Refusal::noSuchFile);
  auto share = table->find(path->peer, path->share);
  if (!share) return std::unexpected(Refusal::noSuchFile);
  const BeneathResolver resolver(share->root.get(), options.isOwnMount,
                                 BeneathResolver::Road::fastest,
                                 share->hidden ? &*share->hidden : nullptr);
  return Located{std::move(*path), std::move(share), resolver};
}

Bytes HostResponder::shares() const {
  ControlResponse response = ControlResponse::ok();
  response.shares = table->localShares();
  response.remoteShares = table->remoteShares();
  return answerLine(response);
}

HostResult<Bytes> HostResponder::stat(const ControlRequest& request) {
  const auto located = locate(request);
  if (!located) return std::unexpected(located.error());
  const auto status = located->resolver.status(located->path.rest);
  if (!status) return std::unexpected(status.error());
  ControlResponse response = ControlResponse::ok();
  fillControlStat(response.stat.emplace(), located->path.lastName(), *status, accounts);
  return answerLine(response);
}

HostResult<Bytes> HostResponder::list(const ControlRequest& request) {
  const auto located = locate(request);
  if (!located) return std::unexpected(located.error());
  if (request.limit.value_or(0) < 0) return std::unexpected(Refusal::invalidLimit);
  auto listing = DirectoryLister(located->resolver, accounts, located->path.rest,
                                 {.namesOnly = request.namesOnly.value_or(false),
                                  .limit = request.limit,
                                  .maxAnswerBytes = options.maxAnswerBytes})
                     .run();
  if (!listing) {
    if (listing.error() == Refusal::listingTooLarge) logTooLarge(*request.name);
    return std::unexpected(listing.error());
  }
  logNamesLeftOut(listing->namesLeftOut, *request.name);
  return std::move(listing->line);
}

HostResult<bool> HostResponder::read(const ControlRequest& request, AnswerSink& sink) const {
  const auto located = locate(request);
  if (!located) return std::unexpected(located.error());
  const std::int64_t offset = request.offset.value_or(0);
  const std::int64_t length =
      std::min(request.length.value_or(ReadAnswer::maxBytes), ReadAnswer::maxBytes);
  if (offset < 0) return std::unexpected(Refusal::invalidOffset);
  if (length < 0) return std::unexpected(Refusal::invalidLength);
  const auto file = located->resolver.openFile(located->path.rest);
  if (!file) return std::unexpected(file.error());
  return ReadAnswer::send(file->get(), offset, length, sink);
}

bool HostResponder::readStream(const ControlRequest& request, AnswerSink& sink) const {
  const auto located = locate(request);
  if (!located) return sendError(located.error(), sink);
  const std::int64_t offset = request.offset.value_or(0);
  if (offset < 0) return sendError(Refusal::invalidOffset, sink);
  if (request.length.value_or(0) < 0) return sendError(Refusal::invalidLength, sink);
  return FileStream::send(located->resolver, located->path.rest, offset, request.length, sink);
}

bool HostResponder::readTreeStream(const ControlRequest& request, AnswerSink& sink) const {
  const auto located = locate(request);
  if (!located) return sendError(located.error(), sink);
  TreeStream stream(located->resolver, sink);
  const bool isThere = stream.send(located->path.rest, located->path.lastName());
  logNamesLeftOut(stream.namesLeftOut(), *request.name);
  return isThere;
}

// The reader shows such a folder as missing: only this line tells why.
void HostResponder::logTooLarge(std::string_view location) const {
  if (!options.log) return;
  options.log(printable(location) + ": " + std::string(description(Refusal::listingTooLarge)));
}

void HostResponder::logNamesLeftOut(std::size_t count, std::string_view location) const {
  if (count == 0 || !options.log) return;
  options.log("left out " + std::to_string(count) +
              (count == 1 ? " name that is" : " names that are") + " not valid UTF-8 in " +
              printable(location));
}

}  // namespace tarnel
