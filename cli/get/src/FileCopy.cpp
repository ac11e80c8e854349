#include "get/FileCopy.h"

#include <algorithm>
#include <utility>

#include "control/ControlStreamFrame.h"
#include "get/IncomingFile.h"

namespace tarnel {
namespace {

CopyResult<void> append(CopyContext& context, IncomingFile& file, BytesView bytes) {
  if (!file.takes(bytes.size())) return copyFailure(EIO, "more bytes than announced");
  context.report.bytes += static_cast<std::int64_t>(bytes.size());
  context.onProgress();
  return file.write(bytes);
}

CopyResult<void> receiveStream(CopyContext& context, IncomingFile& file) {
  HostStream& stream = context.source.stream();
  int emptyFrames = 0;
  while (!context.isOver()) {
    const auto head = stream.readHead();
    if (!head) return std::unexpected(head.error());
    if (head->tag == ControlStreamFrame::eof) return {};
    if (head->tag == ControlStreamFrame::error || head->tag == ControlStreamFrame::fileError) {
      const auto refusal = stream.readRefusal();
      return std::unexpected(refusal ? *refusal : refusal.error());
    }
    if (head->tag != ControlStreamFrame::data) return copyFailure(EIO, "an unknown frame");
    if (head->length == 0 && ++emptyFrames > HostStream::maxEmptyFrames)
      return copyFailure(EIO, "empty frames");
    if (!file.takes(head->length)) return copyFailure(EIO, "more bytes than announced");
    while (stream.remaining() > 0) {
      const auto piece = stream.readPiece();
      if (!piece) return std::unexpected(piece.error());
      if (auto written = append(context, file, *piece); !written) return written;
    }
  }
  return copyFailure(EINTR);
}

CopyResult<void> receiveChunks(CopyContext& context, IncomingFile& file, const std::string& remote,
                               std::int64_t size) {
  for (std::int64_t offset = 0; !context.isOver();) {
    const std::int64_t length =
        size == 0 ? CopySource::readBytes : std::min(size - offset, CopySource::readBytes);
    const auto chunk = context.source.read(remote, offset, length);
    if (!chunk) return std::unexpected(chunk.error());
    if (chunk->empty()) return {};
    if (auto written = append(context, file, *chunk); !written) return written;
    offset += static_cast<std::int64_t>(chunk->size());
    if (offset == size) return {};
  }
  return copyFailure(EINTR);
}

// An empty file needs no bytes, but the host has the last word on whether it can be read.
CopyResult<void> receive(CopyContext& context, IncomingFile& file, const std::string& remote,
                         std::int64_t size) {
  const auto opened = context.source.openFile(remote, size);
  if (!opened) return std::unexpected(opened.error());
  if (!*opened) return receiveChunks(context, file, remote, size);
  auto received = receiveStream(context, file);
  // A stream that was not read to its end leaves bytes behind that no later request asked for.
  if (!received) context.source.stream().drop();
  return received;
}

CopyResult<void> copy(CopyContext& context, FolderChain& chain, const std::string& remote,
                      const std::string& name, const HostEntry& status) {
  const auto admission = admitFile(chain, name, status, context.rules);
  if (!admission) return std::unexpected(admission.error());
  if (admission->isWhole) {
    ++context.report.skipped;
    context.report.skippedBytes += status.size;
    context.onProgress();
    return {};
  }
  auto file = IncomingFile::create(chain, name, status, admission->over, context.interruption);
  if (!file) return std::unexpected(file.error());
  if (auto received = receive(context, *file, remote, status.size); !received) return received;
  if (auto published = file->publish(status.mtimeMs); !published) return published;
  ++context.report.files;
  context.onProgress();
  return {};
}

}  // namespace

bool copyFile(CopyContext& context, FolderChain& chain, const std::string& remote,
              const std::string& name, const HostEntry& status) {
  const auto copied = copy(context, chain, remote, name, status);
  if (copied) return true;
  chain.spoil();
  context.fail(remote, copied.error());
  return false;
}

}  // namespace tarnel
