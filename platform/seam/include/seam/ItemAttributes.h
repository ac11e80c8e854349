// An item's attributes, each valid only once it was set, and the bit set that asks for them.
#pragma once

#include <cstdint>

namespace tarnel {

enum class ItemType { unknown = 0, file = 1, directory = 2 };

// The bits of a request for attributes. Any other bit that is asked for is left unset in the reply.
enum class ItemAttribute : std::uint64_t {
  type = 0x1,
  mode = 0x2,
  linkCount = 0x4,
  uid = 0x8,
  gid = 0x10,
  flags = 0x20,
  size = 0x40,
  allocSize = 0x80,
  fileID = 0x100,
  parentID = 0x200,
  accessTime = 0x400,
  modifyTime = 0x800,
  changeTime = 0x1000,
  birthTime = 0x2000,
};

// A set of ItemAttribute bits, as the system asked for them.
using WantedAttributes = std::uint64_t;
inline constexpr WantedAttributes allAttributes = 0x3FFF;

[[nodiscard]] constexpr WantedAttributes bit(ItemAttribute attribute) {
  return static_cast<WantedAttributes>(attribute);
}

// Both parts carry the sign: -1500 ms is -1 s and -500,000,000 ns.
struct ItemTime {
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;

  friend bool operator==(const ItemTime&, const ItemTime&) = default;
};

struct ItemAttributes {
  WantedAttributes valid = 0;  // which of the fields below were set
  ItemType type = ItemType::unknown;
  std::uint32_t mode = 0;
  std::uint32_t linkCount = 0;
  std::uint32_t uid = 0;
  std::uint32_t gid = 0;
  std::uint32_t flags = 0;
  std::uint64_t size = 0;       // bytes
  std::uint64_t allocSize = 0;  // bytes
  std::uint64_t fileID = 0;
  std::uint64_t parentID = 0;
  ItemTime accessTime;
  ItemTime modifyTime;
  ItemTime changeTime;
  ItemTime birthTime;

  [[nodiscard]] bool isValid(ItemAttribute attribute) const {
    return (valid & bit(attribute)) != 0;
  }
  friend bool operator==(const ItemAttributes&, const ItemAttributes&) = default;
};

}  // namespace tarnel
