#include "fs/FabricLocation.h"

#include <algorithm>
#include <utility>

#include "control/Text.h"

namespace tarnel {

bool isSafeFabricName(std::string_view name) {
  // No other text is canonically equivalent to "." or "..", so their bytes decide.
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
         name.find('\0') == std::string_view::npos;
}

bool operator==(const FabricLocation::Peer& a, const FabricLocation::Peer& b) {
  return textEqual(a.peer, b.peer);
}

bool operator==(const FabricLocation::InShare& a, const FabricLocation::InShare& b) {
  return textEqual(a.address, b.address) && textEqual(a.peer, b.peer) &&
         textEqual(a.share, b.share);
}

FabricLocation FabricLocation::parse(std::string_view relpath) {
  InShare parsed;
  std::size_t components = 0;
  while (!relpath.empty()) {
    const std::string_view component = relpath.substr(0, relpath.find('/'));
    relpath.remove_prefix(std::min(component.size() + 1, relpath.size()));
    if (component.empty()) continue;
    if (++components > 1) parsed.address += '/';
    parsed.address += component;
    if (components == 1) parsed.peer = component;
    if (components == 2) parsed.share = component;
  }
  if (components == 0) return {Root{}};
  if (components == 1) return {Peer{std::move(parsed.peer)}};
  return {std::move(parsed)};
}

std::string childPath(std::string_view directory, std::string_view name) {
  std::string path;
  path.reserve(directory.size() + 1 + name.size());
  path += directory;
  if (!directory.empty()) path += '/';
  path += name;
  return path;
}

}  // namespace tarnel
