#include "fs/FabricItem.h"

#include <utility>

namespace tarnel {

FabricItem::FabricItem(std::string path, std::uint64_t itemID, std::uint64_t parent,
                       bool synthesized, std::optional<FileStat> firstStat)
    : relpath(std::move(path)),
      id(itemID),
      parentID(parent),
      isSynthesizedDirectory(synthesized),
      _lastStat(std::move(firstStat)) {}

std::optional<FileStat> FabricItem::lastStat() const {
  MutexLock hold(lock);
  return _lastStat;
}

void FabricItem::setLastStat(FileStat stat) {
  MutexLock hold(lock);
  std::swap(_lastStat.emplace(), stat);
}

}  // namespace tarnel
