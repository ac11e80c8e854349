// Reads a range of a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "control/Bytes.h"
#include "host/Refusal.h"

namespace tarnel {

// Fills `out` from `offset`, which is not negative; fewer bytes only at the end of the file.
// Returns how many.
[[nodiscard]] HostResult<std::size_t> readRange(int fd, std::int64_t offset, std::span<char> out);

// Up to `length` bytes from `offset`, fewer only at the end of the file; neither is negative. They
// stand in `buffer`, which grows to `length` once and is kept by the caller from one read to the
// next, and are valid until it changes.
[[nodiscard]] HostResult<BytesView> readRange(int fd, std::int64_t offset, std::int64_t length,
                                              Bytes& buffer);

}  // namespace tarnel
