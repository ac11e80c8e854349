// What the fuzz targets share: the entry, the cap on inputs and the check of a property.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace tarnel::fuzz {

inline constexpr std::size_t maxInputBytes = 65'536;

inline std::string_view inputOf(const std::uint8_t* data, std::size_t size) {
  return std::string_view(reinterpret_cast<const char*>(data), size).substr(0, maxInputBytes);
}

// Ends the process when a property does not hold, which is what a fuzzer takes for a finding.
inline void check(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", property);
  std::abort();
}

}  // namespace tarnel::fuzz
