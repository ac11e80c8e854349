// Bytes in which every place shows if it is not where it belongs: every value occurs, and no two
// stretches are alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tarnel::test {

[[nodiscard]] inline std::string someBytes(std::size_t count, std::uint32_t seed = 1) {
  std::string bytes(count, '\0');
  for (char& byte : bytes) {
    seed = seed * 1'664'525 + 1'013'904'223;
    byte = static_cast<char>(seed >> 24);
  }
  return bytes;
}

}  // namespace tarnel::test
