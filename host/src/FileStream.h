// The answer to `readStream`: a file's bytes in data frames, then `eof`.
//
// The bytes are those of a range, or of the whole file, up to the size that the file has when the
// stream begins: one that grows meanwhile ends there, one that becomes shorter ends with `error`.
// A file whose size the system gives as 0 is read to its end; some have content all the same.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "StreamWriter.h"
#include "host/BeneathResolver.h"

namespace tarnel::FileStream {

// Neither offset nor length is negative. False when the client has gone.
[[nodiscard]] bool send(const BeneathResolver& share, const std::string& path, std::int64_t offset,
                        std::optional<std::int64_t> length, AnswerSink& sink);

}  // namespace tarnel::FileStream
