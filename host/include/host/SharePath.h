// A location as requests name it: "peer/Share" for a share's own folder, "peer/Share/a/b" below it.
//
// parse accepts only locations inside a share whose every component is a safe name: not empty, not
// "." or "..", without "/" and NUL. The levels above (the root, a peer) have no status of the
// host's to give and parse as nothing, like everything unsafe. Threads: plain values.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarnel {

// The peer under whose name the host's own shares are found.
inline constexpr std::string_view localPeer = "me";

[[nodiscard]] bool isSafeName(std::string_view name);

struct SharePath {
  std::string peer;
  std::string share;
  std::string rest;  // below the share, components joined by "/"; empty: the share's own folder

  [[nodiscard]] static std::optional<SharePath> parse(std::string_view location);
  // The last component: the share's name when nothing is below it.
  [[nodiscard]] std::string_view lastName() const;

  friend bool operator==(const SharePath&, const SharePath&) = default;
};

// Cuts the first component off `path` and returns it; both are empty at the end.
[[nodiscard]] std::string_view takeComponent(std::string_view& path);

}  // namespace tarnel
