#include "NodeTable.h"

#include <algorithm>
#include <utility>

#include "fs/FSItemIDAllocator.h"

namespace tarnel {

NodeTable::NodeTable(const ItemPointer& root) {
  MutexLock hold(lock);
  nodes[rootNode] = {.item = root, .lookups = 1, .freshAt = {}};  // the kernel never forgets it
}

std::uint64_t NodeTable::nodeID(const FabricItem& item) {
  return item.id == FSItemIDAllocator::root ? rootNode : item.id;
}

NodeTable::ItemPointer NodeTable::item(std::uint64_t node) {
  MutexLock hold(lock);
  const auto found = nodes.find(node);
  return found == nodes.end() ? nullptr : found->second.item;
}

NodeTable::ItemPointer NodeTable::addLookup(const ItemPointer& item, Clock::time_point freshAt) {
  MutexLock hold(lock);
  Node& node = nodes[nodeID(*item)];
  ++node.lookups;
  node.freshAt = std::max(node.freshAt, freshAt);
  if (node.item == item) return nullptr;
  return std::exchange(node.item, item);
}

NodeTable::ItemPointer NodeTable::forget(std::uint64_t node, std::uint64_t lookups) {
  MutexLock hold(lock);
  const auto found = nodes.find(node);
  if (found == nodes.end() || node == rootNode) return nullptr;
  found->second.lookups -= std::min(lookups, found->second.lookups);
  if (found->second.lookups > 0) return nullptr;
  ItemPointer item = std::move(found->second.item);
  nodes.erase(found);
  return item;
}

bool NodeTable::knows(const FabricItem& item) {
  MutexLock hold(lock);
  return nodes.contains(nodeID(item));
}

void NodeTable::refreshed(std::uint64_t node, Clock::time_point at) {
  MutexLock hold(lock);
  const auto found = nodes.find(node);
  if (found != nodes.end()) found->second.freshAt = std::max(found->second.freshAt, at);
}

bool NodeTable::isFresherThan(std::uint64_t node, Clock::time_point at) {
  MutexLock hold(lock);
  const auto found = nodes.find(node);
  return found != nodes.end() && found->second.freshAt > at;
}

}  // namespace tarnel
