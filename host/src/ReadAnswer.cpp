#include "ReadAnswer.h"

#include <algorithm>

#include "FileRange.h"
#include "control/Base64.h"

namespace tarnel {
namespace {

// A multiple of three, so that the encodings of the pieces are the encoding of the whole. As much
// as fills one read of the receiver (ReceiveBuffer::readSize) with its encoding and the usual
// escapes.
constexpr std::int64_t pieceBytes = 48'000;
static_assert(pieceBytes % 3 == 0);

constexpr std::string_view opening = R"({"status":"ok","dataBase64":")";
constexpr std::string_view closing = "\"}\n";

}  // namespace

HostResult<bool> ReadAnswer::send(int fd, std::int64_t offset, std::int64_t length,
                                  AnswerSink& sink) {
  sink.linePiece.assign(opening);
  for (std::int64_t sent = 0;;) {
    const std::int64_t wanted = std::min(length - sent, pieceBytes);
    const auto bytes = readRange(fd, offset + sent, wanted, sink.fileBytes);
    if (!bytes && sent == 0) return std::unexpected(bytes.error());
    const BytesView piece = bytes.value_or(BytesView());
    base64::encodeEscapedTo(piece, sink.linePiece);
    sent += static_cast<std::int64_t>(piece.size());
    const bool isLast = static_cast<std::int64_t>(piece.size()) < pieceBytes || sent == length;
    if (isLast) sink.linePiece.append(closing);
    if (!sink.send(sink.linePiece)) return false;
    if (isLast) return true;
    sink.linePiece.clear();
  }
}

}  // namespace tarnel
