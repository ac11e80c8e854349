#include "StreamWriter.h"

#include <algorithm>
#include <cstring>

#include "FileRange.h"
#include "control/ControlStreamFrame.h"

namespace tarnel {
namespace {

using ControlStreamFrame::headBytes;

constexpr auto window = static_cast<std::size_t>(ControlStreamFrame::window);
constexpr std::size_t capacity = headBytes + window;

}  // namespace

// When the last of so many copied bytes are read, all but a window or two of them have been sent,
// and they fill the socket: what was sent before them has been taken. A window more, because the
// system looks for room in a socket before it takes bytes, and not for all of them.
StreamWriter::StreamWriter(AnswerSink& answerSink)
    : sink(answerSink),
      copiedEnd(static_cast<std::int64_t>(sink.mostUnderWay()) + 3 * ControlStreamFrame::window) {
  if (sink.fileBytes.size() < capacity) sink.fileBytes.resize(capacity);
}

void StreamWriter::frame(std::uint8_t tag, BytesView payload) {
  if (payload.size() > capacity - headBytes) {
    flush();
    send(ControlStreamFrame::encode(tag, payload));
    return;
  }
  if (payload.size() + headBytes > capacity - used) flush();
  writeHead(tag, payload.size());
  used += payload.copy(sink.fileBytes.data() + used, payload.size());
}

void StreamWriter::error(Refusal refusal) {
  frame(ControlStreamFrame::error, description(refusal));
}

std::optional<Refusal> StreamWriter::file(int fd, std::int64_t offset, std::int64_t length) {
  const std::int64_t end = offset + length;
  const FileSent sent = inPieces(offset, length, [&](std::int64_t from, std::size_t count) {
    return end - from <= copiedEnd ? gather(fd, from, count) : handOver(fd, from, count);
  });
  if (sent.failure || sent.bytes == length) return sent.failure;
  return Refusal::fileBecameShorter;
}

std::optional<Refusal> StreamWriter::toTheEnd(int fd, std::int64_t offset, std::int64_t most) {
  return inPieces(offset, most,
                  [&](std::int64_t from, std::size_t count) { return gather(fd, from, count); })
      .failure;
}

template <class SendPiece>
StreamWriter::FileSent StreamWriter::inPieces(std::int64_t offset, std::int64_t length,
                                              SendPiece sendPiece) {
  FileSent sent;
  while (sent.bytes < length && !gone) {
    const auto wanted = std::min<std::int64_t>(length - sent.bytes, ControlStreamFrame::window);
    const FileSent piece = sendPiece(offset + sent.bytes, static_cast<std::size_t>(wanted));
    sent.bytes += piece.bytes;
    sent.failure = piece.failure;
    if (piece.bytes < wanted) break;
  }
  return sent;
}

StreamWriter::FileSent StreamWriter::gather(int fd, std::int64_t offset, std::size_t length) {
  if (length + headBytes > capacity - used) flush();
  const auto got = readRange(fd, offset, {sink.fileBytes.data() + used + headBytes, length});
  if (!got) return {.failure = got.error()};
  if (*got == 0) return {};
  writeHead(ControlStreamFrame::data, *got);
  used += *got;
  return {.bytes = static_cast<std::int64_t>(*got)};
}

StreamWriter::FileSent StreamWriter::handOver(int fd, std::int64_t offset, std::size_t length) {
  if (headBytes > capacity - used) flush();
  writeHead(ControlStreamFrame::data, length);
  flush();
  if (gone) return {};
  const std::size_t sent = sink.sendFile(fd, offset, length);
  const std::size_t left = length - sent;
  if (left == 0) return {.bytes = static_cast<std::int64_t>(length)};
  char* const rest = sink.fileBytes.data();
  const auto got = readRange(fd, offset + static_cast<std::int64_t>(sent), {rest, left});
  const std::size_t found = got.value_or(0);
  std::memset(rest + found, 0, left - found);
  send(BytesView(rest, left));
  FileSent piece{.bytes = static_cast<std::int64_t>(sent + found)};
  if (!got) piece.failure = got.error();
  return piece;
}

bool StreamWriter::finish() {
  flush();
  return !gone;
}

void StreamWriter::flush() {
  send(BytesView(sink.fileBytes.data(), used));
  used = 0;
}

void StreamWriter::writeHead(std::uint8_t tag, std::size_t length) {
  ControlStreamFrame::writeHead({.tag = tag, .length = static_cast<std::uint32_t>(length)},
                                sink.fileBytes.data() + used);
  used += headBytes;
}

void StreamWriter::send(BytesView bytes) {
  if (!gone && !bytes.empty()) gone = !sink.send(bytes);
}

}  // namespace tarnel
