#include "fs/FabricItemTable.h"

#include <utility>

namespace tarnel {

std::shared_ptr<FabricItem> FabricItemTable::activateRoot() {
  return lookUpOrCreate("", FSItemIDAllocator::parentOfRoot, true, std::nullopt);
}

std::shared_ptr<FabricItem> FabricItemTable::lookUpOrCreate(std::string relpath,
                                                            std::uint64_t parentID,
                                                            bool isSynthesizedDirectory,
                                                            std::optional<FileStat> firstStat) {
  MutexLock hold(lock);
  if (const auto found = live.find(relpath); found != live.end()) return found->second;
  return make(std::move(relpath), parentID, isSynthesizedDirectory, std::move(firstStat));
}

std::shared_ptr<FabricItem> FabricItemTable::make(std::string relpath, std::uint64_t parentID,
                                                  bool isSynthesizedDirectory,
                                                  std::optional<FileStat> firstStat) {
  const std::uint64_t id = allocator.id(relpath);
  auto item = std::make_shared<FabricItem>(std::move(relpath), id, parentID, isSynthesizedDirectory,
                                           std::move(firstStat));
  live.emplace(item->relpath, item);
  return item;
}

void FabricItemTable::reclaim(const FabricItem& item) {
  std::shared_ptr<FabricItem> released;  // outlives the entry, whose key is the item's own text
  MutexLock hold(lock);
  const auto found = live.find(item.relpath);
  if (found == live.end() || found->second.get() != &item) return;
  released = std::move(found->second);
  live.erase(found);
}

}  // namespace tarnel
