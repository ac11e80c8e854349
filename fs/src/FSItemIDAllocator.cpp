#include "fs/FSItemIDAllocator.h"

#include <cstdlib>
#include <limits>

namespace tarnel {

std::uint64_t FSItemIDAllocator::id(const std::string& relpath) {
  MutexLock hold(lock);
  const auto [entry, isNew] = ids.try_emplace(relpath, next);
  if (isNew) {
    if (next == std::numeric_limits<std::uint64_t>::max()) std::abort();
    ++next;
  }
  return entry->second;
}

}  // namespace tarnel
