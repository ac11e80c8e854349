#include "get/EntryPath.h"

#include <algorithm>

#include "fs/FabricLocation.h"

namespace tarnel {

CopyResult<void> checkEntryName(std::string_view name) {
  if (!isSafeFabricName(name)) return copyFailure(EINVAL, "unsafe name");
  if (name.size() > maxNameBytes) return copyFailure(ENAMETOOLONG);
  return {};
}

CopyResult<void> parseEntryPath(std::string_view relpath, EntryPath& path) {
  path.clear();
  bool tooLong = false;
  while (true) {
    const std::size_t end = relpath.find('/');
    const std::string_view name = relpath.substr(0, end);
    if (const auto checked = checkEntryName(name); !checked) {
      if (checked.error().error != ENAMETOOLONG) return checked;
      tooLong = true;  // an unsafe name further down counts more
    }
    if (path.size() < maxDepth) {
      path.push_back(name);
    } else {
      tooLong = true;
    }
    if (end == std::string_view::npos) break;
    relpath.remove_prefix(end + 1);
  }
  if (tooLong) return copyFailure(ENAMETOOLONG);
  return {};
}

EntryPath namesOf(std::string_view path) {
  EntryPath names;
  while (!path.empty()) {
    names.push_back(path.substr(0, path.find('/')));
    path.remove_prefix(std::min(names.back().size() + 1, path.size()));
  }
  return names;
}

}  // namespace tarnel
