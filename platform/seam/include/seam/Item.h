// The base of everything that the system refers to by an object: the volume's own items derive from
// it. An item of another type is foreign to the volume, which answers EIO for it.
// Lifetime: shared between the volume's table and whoever holds the item for the system.
#pragma once

#include <memory>

namespace tarnel {

class Item {
 public:
  Item() = default;
  Item(const Item&) = delete;
  Item& operator=(const Item&) = delete;
  virtual ~Item() = default;
};

using ItemRef = std::shared_ptr<Item>;

}  // namespace tarnel
