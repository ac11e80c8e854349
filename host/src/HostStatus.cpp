#include "HostStatus.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "HostPlatform.h"

namespace tarnel {
namespace {

std::int64_t milliseconds(timespec time) {
  constexpr auto latest = std::numeric_limits<std::int64_t>::max() / 1'000 - 1;
  const auto seconds = std::clamp(static_cast<std::int64_t>(time.tv_sec), -latest, latest);
  // tv_nsec counts up from the whole second also before 1970, so this rounds down everywhere.
  return seconds * 1'000 + time.tv_nsec / 1'000'000;
}

std::uint32_t linkCount(std::uint64_t links) {
  constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
  return static_cast<std::uint32_t>(std::min(links, most));
}

}  // namespace

void fillControlStat(ControlStat& out, std::string_view name, const struct stat& status,
                     AccountNames& accounts) {
  out.name.assign(name);
  out.size = status.st_size;
  out.mtimeMs = milliseconds(modificationTime(status));
  out.isDirectory = S_ISDIR(status.st_mode);
  out.mode = status.st_mode;
  out.nlink = linkCount(status.st_nlink);
  out.owner = accounts.owner(status.st_uid);
  out.group = accounts.group(status.st_gid);
}

}  // namespace tarnel
