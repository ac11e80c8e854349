#include "fs/FabricItemTable.h"

#include <utility>

namespace tarnel {

std::shared_ptr<FabricItem> FabricItemTable::activateRoot() {
  return lookUpOrCreate("", FSItemIDAllocator::parentOfRoot, true, nullptr);
}

std::shared_ptr<FabricItem> FabricItemTable::lookUpOrCreate(std::string_view relpath,
                                                            std::uint64_t parentID,
                                                            bool isSynthesizedDirectory,
                                                            const FileStat* firstStat) {
  MutexLock hold(lock);
  const FSItemIDAllocator::Entry path = allocator->entry(relpath);
  if (live.size() <= path.id) live.resize(path.id + 1);
  std::shared_ptr<FabricItem>& item = live[path.id];
  if (!item) {
    item =
        std::make_shared<FabricItem>(allocator, path, parentID, isSynthesizedDirectory, firstStat);
  }
  return item;
}

void FabricItemTable::reclaim(const FabricItem& item) {
  std::shared_ptr<FabricItem> released;  // goes after the lock
  MutexLock hold(lock);
  if (item.id < live.size() && live[item.id].get() == &item) std::swap(live[item.id], released);
}

}  // namespace tarnel
