// The items that the system currently holds, by path, so that a second lookup of a path returns the
// same object. Keys are exact bytes.
// Threads: any. Lock order: the table's lock, then the allocator's, and no other nesting.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

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
  // keeps what it was made with. firstStat is for items that the host describes, absent for
  // synthesized ones.
  [[nodiscard]] std::shared_ptr<FabricItem> lookUpOrCreate(std::string relpath,
                                                           std::uint64_t parentID,
                                                           bool isSynthesizedDirectory,
                                                           std::optional<FileStat> firstStat)
      EXCLUDES(lock);

  // Forgets this very object; another one that was made for the path since then stays.
  void reclaim(const FabricItem& item) EXCLUDES(lock);

  FSItemIDAllocator allocator;

 private:
  [[nodiscard]] std::shared_ptr<FabricItem> make(std::string relpath, std::uint64_t parentID,
                                                 bool isSynthesizedDirectory,
                                                 std::optional<FileStat> firstStat) REQUIRES(lock);

  Mutex lock;  // guards live
  // A key is the relpath of its own item, which lives as long as the entry.
  std::unordered_map<std::string_view, std::shared_ptr<FabricItem>> live GUARDED_BY(lock);
};

}  // namespace tarnel
