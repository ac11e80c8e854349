#include "fs/FSItemIDAllocator.h"

#include <cstdlib>
#include <limits>

#include "fs/KeyedHash.h"

namespace tarnel {
namespace {

constexpr std::size_t firstSlots = 64;

const HashKey& hashKey() {
  static const HashKey key = HashKey::random();
  return key;
}

}  // namespace

FSItemIDAllocator::FSItemIDAllocator() {
  MutexLock hold(lock);
  slots.resize(firstSlots);
  paths.emplace_back();  // the root is the empty path
  slots[slotOf({})] = 1;
}

FSItemIDAllocator::Entry FSItemIDAllocator::entry(std::string_view relpath) {
  MutexLock hold(lock);
  std::size_t slot = slotOf(relpath);
  if (slots[slot] == 0) {
    if (paths.size() >= std::numeric_limits<Slot>::max()) std::abort();
    if ((paths.size() + 1) * 3 > slots.size() * 2) {
      grow();
      slot = slotOf(relpath);
    }
    paths.push_back(texts.add(relpath));
    slots[slot] = static_cast<Slot>(paths.size());
  }
  const std::size_t index = slots[slot] - 1;
  return {.id = root + index, .relpath = paths[index]};
}

// The path's slot, or the free one where it belongs.
std::size_t FSItemIDAllocator::slotOf(std::string_view relpath) const {
  const std::size_t mask = slots.size() - 1;
  std::size_t slot = keyedHash(hashKey(), relpath) & mask;
  while (slots[slot] != 0 && paths[slots[slot] - 1] != relpath) slot = (slot + 1) & mask;
  return slot;
}

void FSItemIDAllocator::grow() {
  slots.assign(slots.size() * 2, 0);
  for (std::size_t i = 0; i < paths.size(); ++i) slots[slotOf(paths[i])] = static_cast<Slot>(i + 1);
}

}  // namespace tarnel
