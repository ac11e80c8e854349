#include "host/DirectoryNames.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include "DirectoryStream.h"
#include "control/Text.h"

namespace tarnel {
namespace {

using Kind = DirectoryNames::Kind;

// nullopt for what is no file, directory or link.
std::optional<Kind> kindOf(mode_t mode) {
  if (S_ISREG(mode)) return Kind::file;
  if (S_ISDIR(mode)) return Kind::directory;
  return S_ISLNK(mode) ? std::optional(Kind::link) : std::nullopt;
}

std::optional<Kind> kindOf(int directoryFD, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return kindOf(static_cast<mode_t>(DTTOIF(entry.d_type)));
  struct stat status;
  if (::fstatat(directoryFD, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
  return kindOf(status.st_mode);
}

}  // namespace

HostResult<DirectoryNames> DirectoryNames::read(UniqueFd directory, std::size_t budget,
                                                const Wanted& wanted) {
  auto stream = DirectoryStream::open(std::move(directory));
  if (!stream) return std::unexpected(stream.error());
  DirectoryNames names;
  while (true) {
    const auto next = stream->next();
    if (!next) return std::unexpected(next.error());
    if (*next == nullptr) break;
    const std::string_view name = (*next)->d_name;
    if (!wanted(name)) continue;
    if (!isValidUtf8(name)) {
      ++names.notUtf8;
      continue;
    }
    const auto kind = kindOf(stream->fd(), **next);
    if (!kind) continue;
    names.add(name, *kind);
    if (names.bytes() > budget) return std::unexpected(Refusal::folderTooLarge);
  }
  names.sort();
  return names;
}

void DirectoryNames::add(std::string_view name, Kind kind) {
  starts.push_back(static_cast<std::uint32_t>(packed.size()));
  packed.push_back(static_cast<char>(kind));
  packed.append(name);
  packed.push_back('\0');
  isAllAscii = isAllAscii && isAscii(name);
}

DirectoryNames::Name DirectoryNames::at(std::uint32_t start) const {
  return {.text = packed.c_str() + start + 1, .kind = static_cast<Kind>(packed[start])};
}

void DirectoryNames::sort() {
  if (isAllAscii) {
    std::sort(starts.begin(), starts.end(),
              [&](std::uint32_t a, std::uint32_t b) { return at(a).text < at(b).text; });
    return;
  }
  // The composed forms, packed like the names: no allocation for each of them.
  std::string keys;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> order;  // of a key and of its name
  order.reserve(starts.size());
  for (const std::uint32_t start : starts) {
    order.emplace_back(static_cast<std::uint32_t>(keys.size()), start);
    keys.append(composed(at(start).text));
    keys.push_back('\0');
  }
  std::sort(order.begin(), order.end(), [&](const auto& a, const auto& b) {
    const int compared = std::strcmp(keys.c_str() + a.first, keys.c_str() + b.first);
    return compared < 0 || (compared == 0 && a.second < b.second);  // else the system's order
  });
  std::transform(order.begin(), order.end(), starts.begin(),
                 [](const auto& element) { return element.second; });
}

}  // namespace tarnel
