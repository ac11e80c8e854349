// An item outside any table, with whatever id a test wants.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "fs/FabricItem.h"

namespace tarnel {

inline std::shared_ptr<FabricItem> madeItem(std::string_view path, std::uint64_t id,
                                            std::uint64_t parent, bool isSynthesized,
                                            const std::optional<FileStat>& firstStat) {
  const auto paths = std::make_shared<FSItemIDAllocator>();
  FSItemIDAllocator::Entry entry = paths->entry(path);
  entry.id = id;
  return std::make_shared<FabricItem>(paths, entry, parent, isSynthesized,
                                      firstStat ? &*firstStat : nullptr);
}

}  // namespace tarnel
