#include "get/CountTotals.h"

#include <algorithm>
#include <utility>

#include "control/TreeHeader.h"
#include "fs/FabricLocation.h"

namespace tarnel {

std::optional<CopyTotals> countTotals(CopyContext& context, const std::vector<std::string>& paths) {
  const auto end = ProgressLine::Clock::now() + maxTotalsTime;
  CopyTotals totals;
  const auto add = [&](const HostEntry& status) {
    ++totals.files;
    // Sizes of a hostile host may not fit a sum.
    return status.size >= 0 && !__builtin_add_overflow(totals.bytes, status.size, &totals.bytes);
  };
  std::vector<std::string> folders;
  for (const std::string& path : paths) {
    const FabricLocation location = FabricLocation::parse(path);
    if (location.inShare() == nullptr) return std::nullopt;
    const auto status = context.source.stat(location.inShare()->address, maxTotalsTime.count());
    if (!status) return std::nullopt;
    if (status->isDirectory) {
      folders.push_back(location.inShare()->address);
    } else if (!add(*status)) {
      return std::nullopt;
    }
  }
  std::size_t waiting = 0;
  for (std::size_t count = 0; !folders.empty(); ++count) {
    if (count == maxTotalsFolders || context.isOver()) return std::nullopt;
    if (waiting > maxTotalsPathBytes || ProgressLine::Clock::now() >= end) return std::nullopt;
    const std::string folder = std::move(folders.back());
    folders.pop_back();
    waiting -= std::min(waiting, folder.size());
    const auto listing = context.source.list(folder, maxTotalsTime.count());
    if (!listing) return std::nullopt;
    for (std::size_t i = 0; i < (*listing)->size(); ++i) {
      const std::string_view name = (*listing)->name(i);
      if (TreeHeader::isNoise(name)) continue;
      if (!(*listing)->entry(i).isDirectory) {
        if (!add((*listing)->entry(i))) return std::nullopt;
        continue;
      }
      folders.push_back(childPath(folder, name));
      waiting += folders.back().size();
      if (waiting > maxTotalsPathBytes) return std::nullopt;
    }
  }
  return totals;
}

}  // namespace tarnel
