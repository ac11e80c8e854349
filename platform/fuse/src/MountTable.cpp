#include "fusefs/MountTable.h"

#include <sys/sysmacros.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <sstream>

namespace tarnel {
namespace {

// The table writes blanks, tabs, line feeds and backslashes as \040 and so on.
std::string unescaped(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned code = 0;
    const std::string_view octal = text.substr(i).substr(0, 4);
    if (octal.size() == 4 && octal[0] == '\\' &&
        std::from_chars(octal.data() + 1, octal.data() + 4, code, 8).ptr == octal.data() + 4) {
      out.push_back(static_cast<char>(code));
      i += 3;
    } else {
      out.push_back(text[i]);
    }
  }
  return out;
}

dev_t deviceOf(const std::string& majorMinor) {
  unsigned major = 0;
  unsigned minor = 0;
  const char* const end = majorMinor.data() + majorMinor.size();
  const auto first = std::from_chars(majorMinor.data(), end, major);
  if (first.ptr != end && *first.ptr == ':') std::from_chars(first.ptr + 1, end, minor);
  return makedev(major, minor);
}

// proc(5): ID PARENT MAJOR:MINOR ROOT MOUNTPOINT OPTIONS [TAGS]... - TYPE SOURCE SUPEROPTIONS
std::optional<MountEntry> parseLine(const std::string& line) {
  std::istringstream fields(line);
  std::string id, parent, device, root, mountpoint, field, type;
  if (!(fields >> id >> parent >> device >> root >> mountpoint)) return std::nullopt;
  while (fields >> field) {
    if (field == "-" && fields >> type) {
      return MountEntry{unescaped(mountpoint), unescaped(type), deviceOf(device)};
    }
  }
  return std::nullopt;
}

}  // namespace

std::vector<MountEntry> parseMountTable(std::string_view mountinfo) {
  std::vector<MountEntry> entries;
  std::istringstream lines{std::string(mountinfo)};
  for (std::string line; std::getline(lines, line);) {
    if (auto entry = parseLine(line)) entries.push_back(std::move(*entry));
  }
  return entries;
}

std::vector<MountEntry> readMountTable() {
  std::ifstream file("/proc/self/mountinfo");
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  return parseMountTable(text);
}

std::optional<MountEntry> mountAt(const std::string& path) {
  const auto entries = readMountTable();
  const auto found = std::find_if(entries.rbegin(), entries.rend(), [&](const MountEntry& entry) {
    return entry.mountpoint == path;
  });
  if (found == entries.rend()) return std::nullopt;
  return *found;
}

bool isOwnMount(dev_t device) {
  const auto entries = readMountTable();
  return std::any_of(entries.begin(), entries.end(), [&](const MountEntry& entry) {
    return entry.type == mountType && entry.device == device;
  });
}

}  // namespace tarnel
