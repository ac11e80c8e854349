// One id for each path, for the life of the volume: an id is never taken back, so a path that
// vanished and came again keeps its own. Two paths of one host file have two ids. Keys are exact
// bytes. 0 is never used, 1 is the parent of the root, 2 the root, 3 and upward everything else.
//
// Cost of a path: its text and about 28 bytes (a view, and a slot of an open-addressed table,
// Knuth, The Art of Computer Programming 3, 6.4, algorithm L). Threads: any. The lock is the
// innermost of the file-system half; nothing is called under it.
#pragma once

#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

#include "control/Mutex.h"
#include "fs/PathText.h"

namespace tarnel {

class FSItemIDAllocator {
 public:
  static constexpr std::uint64_t parentOfRoot = 1;
  static constexpr std::uint64_t root = 2;

  // A path's id, and its text as the allocator keeps it, valid as long as the allocator.
  struct Entry {
    std::uint64_t id;
    std::string_view relpath;
  };

  FSItemIDAllocator();

  // Running out of ids ends the process; memory runs out long before.
  [[nodiscard]] std::uint64_t id(std::string_view relpath) EXCLUDES(lock) {
    return entry(relpath).id;
  }
  [[nodiscard]] Entry entry(std::string_view relpath) EXCLUDES(lock);

 private:
  using Slot = std::uint32_t;  // an index into paths, plus one; 0: free

  [[nodiscard]] std::size_t slotOf(std::string_view relpath) const REQUIRES(lock);
  void grow() REQUIRES(lock);

  Mutex lock;  // guards everything below
  PathText texts GUARDED_BY(lock);
  std::deque<std::string_view> paths GUARDED_BY(lock);  // by id, from the root's on
  std::vector<Slot> slots GUARDED_BY(lock);             // a power of two, at most two thirds full
};

}  // namespace tarnel
