// What a host has to be asked about, found by looking through its shares.
//
// The search is bounded by CheckLimits (time, listings) and by the constants here; what answers
// badly is passed over, since checks of their own tell of it. Only safe names are followed.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "control/ControlResponse.h"

namespace tarnel {

class HostProbe;

struct Found {
  std::string location;
  ControlStat stat;
};

struct Material {
  static constexpr std::int64_t windowBytes = 262'144;
  static constexpr std::int64_t mostFileBytes = 1'048'576;

  std::vector<std::string> shares = {};  // locations
  std::optional<Found> file = {};        // with content, at most mostFileBytes, readable
  std::optional<Found> largeFile = {};   // of more than windowBytes
  std::optional<Found> emptyFile = {};
  std::optional<Found> unreadable = {};       // shown by stat, refused by read
  std::optional<std::string> folder = {};     // with something in it
  std::optional<std::string> subfolder = {};  // the same, below a share's own folder
  std::optional<std::string> emptyFolder = {};
  std::optional<std::string> lackingEntries = {};  // its listing is no refusal, and has none
  std::optional<std::string> tooLongListing = {};  // its answer passed 16 MiB
  std::size_t longestListing = 0;                  // entries
};

[[nodiscard]] Material findMaterial(const HostProbe& host);

// "me/Docs" and "a" make "me/Docs/a".
[[nodiscard]] std::string below(const std::string& location, const std::string& name);

}  // namespace tarnel
