#include "fs/FabricItem.h"

#include <string>
#include <utility>

namespace tarnel {

FabricItem::FabricItem(std::shared_ptr<FSItemIDAllocator> allocator,
                       const FSItemIDAllocator::Entry& path, std::uint64_t parent, bool synthesized,
                       const FileStat* firstStat)
    : paths(std::move(allocator)),
      relpath(path.relpath),
      id(path.id),
      parentID(parent),
      isSynthesizedDirectory(synthesized) {
  if (firstStat != nullptr) setLastStat(*firstStat);
}

std::optional<FileStat> FabricItem::lastStat() const {
  KnownStat known{};
  {
    ItemLockHold hold(lock);
    known = _lastStat;
  }
  if (!known.isKnown) return std::nullopt;
  return FileStat{.name = std::string(relpath.substr(relpath.rfind('/') + 1)),
                  .size = known.size,
                  .mtimeMs = known.mtimeMs,
                  .isDirectory = known.isDirectory,
                  .mode = known.mode,
                  .nlink = known.nlink,
                  .isSymlink = known.isSymlink};
}

void FabricItem::setLastStat(const FileStat& stat) {
  const KnownStat known = {.size = stat.size,
                           .mtimeMs = stat.mtimeMs,
                           .mode = stat.mode,
                           .nlink = stat.nlink,
                           .isDirectory = stat.isDirectory,
                           .isSymlink = stat.isSymlink,
                           .isKnown = true};
  ItemLockHold hold(lock);
  _lastStat = known;
}

}  // namespace tarnel
