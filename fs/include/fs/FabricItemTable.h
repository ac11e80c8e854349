// The items that the system currently holds, by path, so that a second lookup of a path returns the
// same object.
// Threads: any. Lock order: the table's lock, then the allocator's, and no other nesting.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string_view>

#include "control/FileStat.h"
#include "control/Mutex.h"
#include "fs/FSItemIDAllocator.h"
#include "fs/FabricItem.h"

namespace tarnel {

class FabricItemTable {
 public:
  // The root item, made on the first call and again after it was reclaimed.
  [[nodiscard]] std::shared_ptr<FabricItem> activateRoot() EXCLUDES(lock);

  // The live item of a path; made with the given parent and flag if there is none. A live item
  // keeps what it was made with. firstStat is for items that the host describes, null for
  // synthesized ones.
  [[nodiscard]] std::shared_ptr<FabricItem> lookUpOrCreate(std::string_view relpath,
                                                           std::uint64_t parentID,
                                                           bool isSynthesizedDirectory,
                                                           const FileStat* firstStat)
      EXCLUDES(lock);

  // Forgets this very object; another one that was made for the path since then stays.
  void reclaim(const FabricItem& item) EXCLUDES(lock);

  // The id of a path, also of one that has no item.
  [[nodiscard]] std::uint64_t id(std::string_view relpath) { return allocator->id(relpath); }

 private:
  const std::shared_ptr<FSItemIDAllocator> allocator = std::make_shared<FSItemIDAllocator>();
  Mutex lock;  // guards live
  // By id, which stands for exactly one path. A path that is not live costs two words.
  std::deque<std::shared_ptr<FabricItem>> live GUARDED_BY(lock);
};

}  // namespace tarnel
