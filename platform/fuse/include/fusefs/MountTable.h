// The mounts of this system, as /proc/self/mountinfo tells them.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnel {

// The type under which our mounts stand in the table.
inline constexpr std::string_view mountType = "fuse.tarnelfs";

struct MountEntry {
  std::string mountpoint;
  std::string type;
  dev_t device = 0;
};

// In the table's order: of two mounts on one folder the later one is on top.
[[nodiscard]] std::vector<MountEntry> parseMountTable(std::string_view mountinfo);
[[nodiscard]] std::vector<MountEntry> readMountTable();

// The mount on top of exactly this folder, given as an absolute path without links.
[[nodiscard]] std::optional<MountEntry> mountAt(const std::string& path);

// True for the device of one of our own mounts.
[[nodiscard]] bool isOwnMount(dev_t device);

}  // namespace tarnel
