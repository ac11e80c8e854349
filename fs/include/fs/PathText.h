// The texts of paths, each stored once for the life of the store and never moved.
//
// A volume remembers every path that it has seen, so what a path costs counts: the texts stand one
// behind the other in blocks, without a header, a terminating zero or spare room of their own.
// Lifetime: a view is valid as long as the store. Threads: the owner's lock.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace tarnel {

class PathText {
 public:
  [[nodiscard]] std::string_view add(std::string_view path);

 private:
  static constexpr std::size_t blockBytes = 65'536;

  std::vector<std::unique_ptr<char[]>> blocks;
  std::size_t used = blockBytes;  // of the last block; before the first one, nothing is left
};

}  // namespace tarnel
