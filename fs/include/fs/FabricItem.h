// One item of the volume: a path with its stable id and the last status that the host gave for it.
// Lifetime: kept alive by the table until it is reclaimed, and by whoever holds it.
// Threads: the fixed fields are constant after construction; the last status has its own lock.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "control/FileStat.h"
#include "control/Mutex.h"
#include "seam/Item.h"

namespace tarnel {

class FabricItem final : public Item {
 public:
  FabricItem(std::string path, std::uint64_t itemID, std::uint64_t parent, bool synthesized,
             std::optional<FileStat> firstStat);

  const std::string relpath;          // "" for the root
  const std::uint64_t id;             // the path's, for the volume's life
  const std::uint64_t parentID;       // of the directory in which it was first looked up; 1: root
  const bool isSynthesizedDirectory;  // the root and the peers: the host is never asked about them

  // The last status that a lookup or an attribute request received; absent for what is synthesized.
  [[nodiscard]] std::optional<FileStat> lastStat() const EXCLUDES(lock);
  void setLastStat(FileStat stat) EXCLUDES(lock);

 private:
  mutable Mutex lock;  // guards _lastStat; held for one copy in or out
  std::optional<FileStat> _lastStat GUARDED_BY(lock);
};

}  // namespace tarnel
