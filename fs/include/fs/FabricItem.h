// One item of the volume: a path with its stable id and the last status that the host gave for it.
// Lifetime: kept alive by the table until it is reclaimed, and by whoever holds it, also beyond the
// volume's own end.
// Threads: the fixed fields are constant after construction; the last status has its own lock.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "control/FileStat.h"
#include "fs/FSItemIDAllocator.h"
#include "fs/ItemLock.h"
#include "seam/Item.h"

namespace tarnel {

class FabricItem final : public Item {
 public:
  FabricItem(std::shared_ptr<FSItemIDAllocator> allocator, const FSItemIDAllocator::Entry& path,
             std::uint64_t parent, bool synthesized, const FileStat* firstStat);

 private:
  const std::shared_ptr<FSItemIDAllocator> paths;  // keeps the text of relpath

 public:
  const std::string_view relpath;     // "" for the root
  const std::uint64_t id;             // the path's, for the volume's life
  const std::uint64_t parentID;       // of the directory in which it was first looked up; 1: root
  const bool isSynthesizedDirectory;  // the root and the peers: the host is never asked about them

  // The last status that a lookup or an attribute request received; absent for what is synthesized.
  // Its name is the end of the path. The owner's and the group's, which nothing ever asks for
  // again, are not kept.
  [[nodiscard]] std::optional<FileStat> lastStat() const EXCLUDES(lock);
  void setLastStat(const FileStat& stat) EXCLUDES(lock);

 private:
  struct KnownStat {
    std::int64_t size;
    std::int64_t mtimeMs;
    std::uint32_t mode;
    std::uint32_t nlink;
    bool isDirectory;
    bool isSymlink;
    bool isKnown;
  };

  mutable ItemLock lock;  // guards _lastStat; held for one copy in or out
  KnownStat _lastStat GUARDED_BY(lock) = {};
};

}  // namespace tarnel
