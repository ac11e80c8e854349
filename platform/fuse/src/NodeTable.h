// What the kernel knows: items by node id, with the number of times that the kernel was given each.
//
// A node's id is its item's id, but for the root, which the kernel calls 1. An id belongs to one
// path for the volume's life, so a node that the kernel forgot and met again keeps its number.
// Threads: any.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>

#include "control/Mutex.h"
#include "fs/FabricItem.h"

namespace tarnel {

class NodeTable {
 public:
  using Clock = std::chrono::steady_clock;
  using ItemPointer = std::shared_ptr<FabricItem>;
  static constexpr std::uint64_t rootNode = 1;

  explicit NodeTable(const ItemPointer& root);

  [[nodiscard]] static std::uint64_t nodeID(const FabricItem& item);
  [[nodiscard]] ItemPointer item(std::uint64_t node) EXCLUDES(lock);  // nullptr for an unknown node

  // One more lookup of the item. An item that stood for the path before is returned: it is no
  // longer referred to and has to be reclaimed.
  [[nodiscard]] ItemPointer addLookup(const ItemPointer& item, Clock::time_point freshAt)
      EXCLUDES(lock);
  // The item, to be reclaimed, when its last lookup is returned.
  [[nodiscard]] ItemPointer forget(std::uint64_t node, std::uint64_t lookups) EXCLUDES(lock);

  [[nodiscard]] bool knows(const FabricItem& item) EXCLUDES(lock);
  // The kernel got fresh attributes of the node.
  void refreshed(std::uint64_t node, Clock::time_point at) EXCLUDES(lock);
  // True when the kernel has attributes of the node that are younger than `at`.
  [[nodiscard]] bool isFresherThan(std::uint64_t node, Clock::time_point at) EXCLUDES(lock);

 private:
  struct Node {
    ItemPointer item;
    std::uint64_t lookups = 0;
    Clock::time_point freshAt;
  };

  // The node of a number, known or not yet.
  [[nodiscard]] Node& at(std::uint64_t node) REQUIRES(lock);
  [[nodiscard]] Node* find(std::uint64_t node) REQUIRES(lock);  // nullptr unless the kernel has it

  Mutex lock;                               // guards nodes
  std::deque<Node> nodes GUARDED_BY(lock);  // by number: ids are dense
};

}  // namespace tarnel
