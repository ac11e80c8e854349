#include "fs/PathText.h"

#include <cstring>
#include <utility>

namespace tarnel {

std::string_view PathText::add(std::string_view path) {
  if (path.empty()) return {};
  if (path.size() > blockBytes / 8) {
    // A block of its own, behind the one that is being filled.
    auto own = std::make_unique_for_overwrite<char[]>(path.size());
    std::memcpy(own.get(), path.data(), path.size());
    const std::string_view stored(own.get(), path.size());
    blocks.insert(blocks.end() - (blocks.empty() ? 0 : 1), std::move(own));
    return stored;
  }
  if (blockBytes - used < path.size()) {
    blocks.push_back(std::make_unique_for_overwrite<char[]>(blockBytes));
    used = 0;
  }
  char* const place = blocks.back().get() + used;
  std::memcpy(place, path.data(), path.size());
  used += path.size();
  return {place, path.size()};
}

}  // namespace tarnel
