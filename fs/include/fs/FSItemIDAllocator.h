// One id for each path, for the life of the volume: an id is never taken back, so a path that
// vanished and came again keeps its own. Two paths of one host file have two ids.
// 0 is never used, 1 is the parent of the root, 2 the root, 3 and upward everything else.
// Threads: any. The lock is the innermost of the file-system half; nothing is called under it.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "control/Mutex.h"

namespace tarnel {

class FSItemIDAllocator {
 public:
  static constexpr std::uint64_t parentOfRoot = 1;
  static constexpr std::uint64_t root = 2;

  // Running out of 64-bit ids ends the process.
  [[nodiscard]] std::uint64_t id(const std::string& relpath) EXCLUDES(lock);

 private:
  Mutex lock;  // guards ids and next
  std::unordered_map<std::string, std::uint64_t> ids GUARDED_BY(lock) = {{"", root}};
  std::uint64_t next GUARDED_BY(lock) = root + 1;
};

}  // namespace tarnel
