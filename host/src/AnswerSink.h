// Where an answer goes: a whole line at once, or a long one in pieces. Also what lives as long as
// the connection: the memory for making pieces, and the reviews that wait for an answer.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ShareReviews.h"
#include "control/Bytes.h"

namespace tarnel {

class AnswerSink {
 public:
  AnswerSink() = default;
  AnswerSink(const AnswerSink&) = delete;
  AnswerSink& operator=(const AnswerSink&) = delete;
  virtual ~AnswerSink() = default;

  // False when the client has gone: the connection is over.
  [[nodiscard]] virtual bool send(BytesView bytes) = 0;
  // Sends bytes of a file without a copy in this process. Returns how many; fewer than `length`
  // when the file ends or cannot be read, the system has no such way or the client has gone:
  // whoever asks goes on by reading and sending.
  [[nodiscard]] virtual std::size_t sendFile(int fd, std::int64_t offset, std::size_t length) = 0;
  // How many bytes at most can have been sent and not yet taken by the client.
  [[nodiscard]] virtual std::size_t mostUnderWay() const = 0;
  // True once the connection is over, or about to be: what nobody will read need not be made.
  [[nodiscard]] virtual bool isOver() const = 0;

  ShareReviews reviews;
  Bytes fileBytes;
  Bytes linePiece;
};

}  // namespace tarnel
