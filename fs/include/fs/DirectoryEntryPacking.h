// The volume's view of the system's directory packer.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "seam/ItemAttributes.h"

namespace tarnel {

class DirectoryEntryPacking {
 public:
  DirectoryEntryPacking() = default;
  DirectoryEntryPacking(const DirectoryEntryPacking&) = delete;
  DirectoryEntryPacking& operator=(const DirectoryEntryPacking&) = delete;
  virtual ~DirectoryEntryPacking() = default;

  // True when the entry was taken, false when there is no room for it. nextCookie is where an
  // enumeration goes on after this entry; attributes are absent when names alone were asked for.
  [[nodiscard]] virtual bool packEntry(std::string_view name, ItemType itemType,
                                       std::uint64_t itemID, std::uint64_t nextCookie,
                                       const std::optional<ItemAttributes>& attributes) = 0;
};

}  // namespace tarnel
