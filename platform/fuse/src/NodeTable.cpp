#include "NodeTable.h"

#include <algorithm>
#include <utility>

#include "fs/FSItemIDAllocator.h"

namespace tarnel {

NodeTable::NodeTable(const ItemPointer& root) {
  MutexLock hold(lock);
  at(rootNode) = {.item = root, .lookups = 1, .freshAt = {}};  // the kernel never forgets it
}

std::uint64_t NodeTable::nodeID(const FabricItem& item) {
  return item.id == FSItemIDAllocator::root ? rootNode : item.id;
}

NodeTable::Node& NodeTable::at(std::uint64_t node) {
  if (nodes.size() <= node) nodes.resize(node + 1);
  return nodes[node];
}

NodeTable::Node* NodeTable::find(std::uint64_t node) {
  if (node >= nodes.size() || nodes[node].lookups == 0) return nullptr;
  return &nodes[node];
}

NodeTable::ItemPointer NodeTable::item(std::uint64_t node) {
  MutexLock hold(lock);
  const Node* const found = find(node);
  return found != nullptr ? found->item : nullptr;
}

NodeTable::ItemPointer NodeTable::addLookup(const ItemPointer& item, Clock::time_point freshAt) {
  MutexLock hold(lock);
  Node& node = at(nodeID(*item));
  ++node.lookups;
  node.freshAt = std::max(node.freshAt, freshAt);
  if (node.item == item) return nullptr;
  return std::exchange(node.item, item);
}

NodeTable::ItemPointer NodeTable::forget(std::uint64_t node, std::uint64_t lookups) {
  MutexLock hold(lock);
  Node* const found = find(node);
  if (found == nullptr || node == rootNode) return nullptr;
  found->lookups -= std::min(lookups, found->lookups);
  if (found->lookups > 0) return nullptr;
  return std::exchange(*found, Node()).item;
}

bool NodeTable::knows(const FabricItem& item) {
  MutexLock hold(lock);
  return find(nodeID(item)) != nullptr;
}

void NodeTable::refreshed(std::uint64_t node, Clock::time_point at) {
  MutexLock hold(lock);
  if (Node* const found = find(node)) found->freshAt = std::max(found->freshAt, at);
}

bool NodeTable::isFresherThan(std::uint64_t node, Clock::time_point at) {
  MutexLock hold(lock);
  const Node* const found = find(node);
  return found != nullptr && found->freshAt > at;
}

}  // namespace tarnel
