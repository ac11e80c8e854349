#include "StreamWriter.h"

#include <algorithm>
#include <cstring>

#include "FileRange.h"
#include "control/ControlStreamFrame.h"

namespace tarnel {
namespace {

constexpr std::size_t headBytes = 5;
constexpr auto window = static_cast<std::size_t>(ControlStreamFrame::window);
constexpr std::size_t capacity = headBytes + window;

}  // namespace

StreamWriter::StreamWriter(AnswerSink& answerSink) : sink(answerSink) {
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
  std::memcpy(sink.fileBytes.data() + used, payload.data(), payload.size());
  used += payload.size();
}

void StreamWriter::error(Refusal refusal) {
  frame(ControlStreamFrame::error, description(refusal));
}

StreamWriter::FileSent StreamWriter::file(int fd, std::int64_t offset, std::int64_t length) {
  FileSent sent;
  while (sent.bytes < length && !gone) {
    const auto wanted = static_cast<std::size_t>(
        std::min<std::int64_t>(length - sent.bytes, ControlStreamFrame::window));
    if (wanted + headBytes > capacity - used) flush();
    const auto got =
        readRange(fd, offset + sent.bytes, {sink.fileBytes.data() + used + headBytes, wanted});
    if (!got) {
      sent.failure = got.error();
      break;
    }
    if (*got == 0) break;
    writeHead(ControlStreamFrame::data, *got);
    used += *got;
    sent.bytes += static_cast<std::int64_t>(*got);
    if (*got < wanted) break;
  }
  return sent;
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
  char* const head = sink.fileBytes.data() + used;
  head[0] = static_cast<char>(tag);
  for (std::size_t i = 1; i < headBytes; ++i) {
    head[i] = static_cast<char>(length >> (8 * (headBytes - 1 - i)));
  }
  used += headBytes;
}

void StreamWriter::send(BytesView bytes) {
  if (!gone && !bytes.empty()) gone = !sink.send(bytes);
}

}  // namespace tarnel
