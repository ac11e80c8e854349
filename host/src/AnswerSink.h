// Where an answer goes: a whole line at once, or a long one in pieces. Also the memory for making
// pieces, which lives as long as the connection.
#pragma once

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

  Bytes fileBytes;
  Bytes linePiece;
};

}  // namespace tarnel
