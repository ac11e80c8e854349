// The bytes of a file, as `read` gives them.
#pragma once

#include <cstdint>
#include <string>

#include "HostProbe.h"

namespace tarnel {

// The bytes of one answer. Fails on a refusal, on what is not base64, and on more than was asked
// for.
[[nodiscard]] Checked<Bytes> readOnce(const HostProbe& host, const std::string& location,
                                      std::int64_t offset, std::int64_t length);

// Reads from `offset` in requests of `length`, as the volume does: a short answer is asked on
// behind its end, an empty one is the end. Stops once more than `most` bytes have come.
[[nodiscard]] Checked<Bytes> readOn(const HostProbe& host, const std::string& location,
                                    std::int64_t offset, std::int64_t length, std::size_t most);

// The size that `stat` gives at this moment.
[[nodiscard]] Checked<std::int64_t> sizeOf(const HostProbe& host, const std::string& location);

}  // namespace tarnel
