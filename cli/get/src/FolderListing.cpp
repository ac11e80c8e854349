#include "get/FolderListing.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <utility>

#include "control/ControlClient.h"
#include "control/ControlResponse.h"
#include "control/JsonReader.h"
#include "get/EntryPath.h"

namespace tarnel {
namespace {

std::unexpected<CopyError> malformed(const std::string& detail) {
  return copyFailure(
      EIO, description(ControlClientError{.kind = ControlClientError::Kind::malformedResponse,
                                          .detail = detail}));
}

}  // namespace

CopyResult<FolderListing> FolderListing::parse(BytesView line) {
  FolderListing listing;
  std::string message;
  bool isListed = false;
  JsonReader json(line);
  std::string_view key;
  json.enterObject();
  while (json.nextKey(key)) {
    if (key == "message" && !json.takeNull()) {
      json.read(message);
    } else if (key == "entries" && !isListed && !json.takeNull()) {
      isListed = true;
      json.enterArray();
      while (json.nextElement()) {
        ControlStat stat;
        json.read(stat);
        if (json.failed()) break;
        if (!checkEntryName(stat.name)) {
          ++listing.leftOut;
          continue;
        }
        listing.entries.push_back({.nameAt = static_cast<std::uint32_t>(listing.names.size()),
                                   .nameBytes = static_cast<std::uint32_t>(stat.name.size()),
                                   .status = {.isDirectory = stat.isDirectory,
                                              .mode = stat.mode,
                                              .size = stat.size,
                                              .mtimeMs = stat.mtimeMs}});
        listing.names += stat.name;
      }
    } else {
      json.skipValue();
    }
  }
  json.finish();
  if (json.failed()) return malformed(json.error().detail);
  if (!isListed) return std::unexpected(refusalError(message));
  listing.lineHash = std::hash<std::string_view>()(line);
  return listing;
}

std::string_view FolderListing::name(std::size_t index) const {
  return std::string_view(names).substr(entries[index].nameAt, entries[index].nameBytes);
}

std::optional<std::size_t> FolderListing::find(std::string_view wanted) {
  for (std::size_t i = cursor; i < std::min(cursor + 2, entries.size()); ++i) {
    // Two equal names stand apart only in an answer that is wrong anyway.
    if (name(i) != wanted) continue;
    cursor = i + 1;
    return i;
  }
  if (sorted.empty()) {
    sorted.resize(entries.size());
    std::iota(sorted.begin(), sorted.end(), 0U);
    std::ranges::sort(sorted, [&](std::uint32_t a, std::uint32_t b) {
      return std::pair(name(a), a) < std::pair(name(b), b);
    });
  }
  const auto found = std::ranges::lower_bound(sorted, wanted, {},
                                              [&](std::uint32_t index) { return name(index); });
  if (found == sorted.end() || name(*found) != wanted) return std::nullopt;
  cursor = std::size_t{*found} + 1;
  return *found;
}

std::size_t FolderListing::memory() const {
  return names.capacity() + entries.capacity() * sizeof(Listed) +
         sorted.capacity() * sizeof(std::uint32_t);
}

}  // namespace tarnel
