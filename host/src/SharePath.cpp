#include "host/SharePath.h"

#include <algorithm>

namespace tarnel {

bool isSafeName(std::string_view name) {
  if (name.empty() || name == "." || name == "..") return false;
  return name.find('/') == name.npos && name.find('\0') == name.npos;
}

std::string_view takeComponent(std::string_view& path) {
  const std::string_view first = path.substr(0, path.find('/'));
  path.remove_prefix(std::min(first.size() + 1, path.size()));
  return first;
}

std::optional<SharePath> SharePath::parse(std::string_view location) {
  if (location.empty() || location.back() == '/') return std::nullopt;
  std::string_view left = location;
  const std::string_view peer = takeComponent(left);
  const std::string_view share = takeComponent(left);
  const std::string_view rest = left;
  if (!isSafeName(peer) || !isSafeName(share)) return std::nullopt;
  while (!left.empty()) {
    if (!isSafeName(takeComponent(left))) return std::nullopt;
  }
  return SharePath{std::string(peer), std::string(share), std::string(rest)};
}

std::string_view SharePath::lastName() const {
  if (rest.empty()) return share;
  const auto slash = rest.rfind('/');
  return std::string_view(rest).substr(slash == rest.npos ? 0 : slash + 1);
}

}  // namespace tarnel
