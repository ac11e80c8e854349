// The answer to `read`: {"status":"ok","dataBase64":"..."}, sent piece by piece, so that the client
// takes the beginning out of the socket while the rest is read and encoded, and so that both pieces
// stay in the processor's cache.
#pragma once

#include <cstdint>

#include "AnswerSink.h"
#include "host/Refusal.h"

namespace tarnel::ReadAnswer {

// The most bytes of a file in one answer; a reader asks again.
inline constexpr std::int64_t maxBytes = 262'144;

// Up to `length` bytes (at most maxBytes) from `offset`, neither negative; fewer at the end of the
// file, and when the file cannot be read any further: a short answer is allowed, and the reader's
// next question meets the error. A refusal means that nothing was sent; false that the client has
// gone.
[[nodiscard]] HostResult<bool> send(int fd, std::int64_t offset, std::int64_t length,
                                    AnswerSink& sink);

}  // namespace tarnel::ReadAnswer
