// Reads a range of a file.
#pragma once

#include <cstdint>

#include "control/Bytes.h"
#include "host/Refusal.h"

namespace tarnel {

// Up to `length` bytes from `offset`, fewer only at the end of the file; neither is negative. They
// stand in `buffer`, which grows to `length` once and is kept by the caller from one read to the
// next, and are valid until it changes.
[[nodiscard]] HostResult<BytesView> readRange(int fd, std::int64_t offset, std::int64_t length,
                                              Bytes& buffer);

}  // namespace tarnel
