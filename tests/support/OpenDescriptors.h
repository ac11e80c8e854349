// How many descriptors this process holds: the leaks that are deliberate are counted, and the
// others.
#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace tarnel::test {

[[nodiscard]] inline std::size_t openDescriptors() {
  // The iteration itself holds one, each time alike.
  std::filesystem::directory_iterator all("/dev/fd/");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

}  // namespace tarnel::test
