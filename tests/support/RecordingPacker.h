// A directory packer that keeps what it is given, up to a number of entries.
// Threads: one enumeration at a time; look at it after the reply.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fs/DirectoryEntryPacking.h"

namespace tarnel::test {

struct PackedEntry {
  std::string name;
  ItemType itemType;
  std::uint64_t itemID;
  std::uint64_t nextCookie;
  std::optional<ItemAttributes> attributes = {};

  friend bool operator==(const PackedEntry&, const PackedEntry&) = default;
};

class RecordingPacker final : public DirectoryEntryPacking {
 public:
  explicit RecordingPacker(std::size_t room = std::numeric_limits<std::size_t>::max())
      : capacity(room) {}

  [[nodiscard]] bool packEntry(std::string_view name, ItemType itemType, std::uint64_t itemID,
                               std::uint64_t nextCookie,
                               const std::optional<ItemAttributes>& attributes) override {
    ++offers;
    if (packed.size() == capacity) return false;
    packed.push_back({.name = std::string(name),
                      .itemType = itemType,
                      .itemID = itemID,
                      .nextCookie = nextCookie,
                      .attributes = attributes});
    return true;
  }

  [[nodiscard]] const std::vector<PackedEntry>& entries() const { return packed; }
  [[nodiscard]] std::size_t offered() const { return offers; }  // refused ones too

  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const PackedEntry& entry : packed) all.push_back(entry.name);
    return all;
  }

 private:
  const std::size_t capacity;
  std::vector<PackedEntry> packed;
  std::size_t offers = 0;
};

}  // namespace tarnel::test
