// 4xx: the status of one location.
#include <array>
#include <string>

#include "CheckGroups.h"
#include "HostProbe.h"
#include "Refusals.h"
#include "Statuses.h"

namespace tarnel {
namespace {

using Kind = FabricSourceError::Kind;

// Of a file with content, or of whatever there is.
std::string someLocation(HostProbe& host) {
  const Material& material = host.material();
  if (material.file) return material.file->location;
  return material.shares.empty() ? std::string() : material.shares.front();
}

CheckVerdict aFileIsAFile(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped("share a file with content");
  const auto stat = statOf(host, file->location);
  if (!stat) return stat.error();
  if (!stat->isDirectory) return passed();
  return failedCheck("the file " + quoted(file->location) +
                     " is said to be a folder: set "
                     "isDirectory as it is");
}

CheckVerdict aFolderIsAFolder(HostProbe& host) {
  const auto& folder =
      host.material().subfolder ? host.material().subfolder : host.material().folder;
  if (!folder) return skipped("share a folder with something in it");
  const auto stat = statOf(host, *folder);
  if (!stat) return stat.error();
  if (stat->isDirectory) return passed();
  return failedCheck("the folder " + quoted(*folder) +
                     " is said to be no folder: set isDirectory "
                     "as it is");
}

CheckVerdict theNameIsTheLastOne(HostProbe& host) {
  const std::string location = someLocation(host);
  if (location.empty()) return skipped("share a folder");
  const auto stat = statOf(host, location);
  if (!stat) return stat.error();
  const std::string last = location.substr(location.rfind('/') + 1);
  if (stat->name == last) return passed();
  return failedCheck("the status of " + quoted(location) + " has the name " + quoted(stat->name) +
                     ": give the location's last name alone");
}

CheckVerdict sizesAreNotNegative(HostProbe& host) {
  const Material& material = host.material();
  for (const auto& file : {material.file, material.emptyFile, material.largeFile}) {
    if (!file) continue;
    const auto stat = statOf(host, file->location);
    if (!stat) return stat.error();
    if (stat->size < 0) {
      return failedCheck("the size of " + quoted(file->location) + " is " +
                         std::to_string(stat->size) + ": give bytes, never less than 0");
    }
  }
  return material.file || material.emptyFile ? passed() : skipped("share a file");
}

CheckVerdict timesAreMilliseconds(HostProbe& host) {
  // As milliseconds these are days of January 1970, as seconds the years 2001 to 2039.
  constexpr std::int64_t firstSeconds = 1'000'000'000;
  constexpr std::int64_t lastSeconds = 2'200'000'000;
  constexpr std::int64_t firstMicroseconds = 100'000'000'000'000;  // in ms: the year 5138
  const std::string location = someLocation(host);
  if (location.empty()) return skipped("share a folder");
  const auto stat = statOf(host, location);
  if (!stat) return stat.error();
  const bool isSeconds = stat->mtimeMs >= firstSeconds && stat->mtimeMs <= lastSeconds;
  if (!isSeconds && stat->mtimeMs < firstMicroseconds) return passed();
  return failedCheck("mtimeMs of " + quoted(location) + " is " + std::to_string(stat->mtimeMs) +
                     ", which looks like " + (isSeconds ? "seconds" : "micro- or nanoseconds") +
                     ": give milliseconds since 1970");
}

CheckVerdict modesAgreeWithKinds(HostProbe& host) {
  constexpr std::uint32_t kindBits = 0170000;
  constexpr std::uint32_t directory = 0040000;
  const Material& material = host.material();
  if (material.shares.empty()) return skipped("share a folder");
  std::vector<std::string> locations = {material.shares.front()};
  if (material.file) locations.push_back(material.file->location);
  for (const std::string& location : locations) {
    const auto stat = statOf(host, location);
    if (!stat) return stat.error();
    if ((stat->mode & ~(kindBits | 07777u)) != 0) {
      return failedCheck("mode of " + quoted(location) +
                         " has bits that no mode has: give st_mode");
    }
    const std::uint32_t kind = stat->mode & kindBits;
    if (kind != 0 && (kind == directory) != stat->isDirectory) {
      return failedCheck("mode and isDirectory of " + quoted(location) +
                         " disagree: give the mode "
                         "of what the location leads to");
    }
  }
  return passed();
}

CheckVerdict whatIsNotThereIsMissing(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const std::string& share = host.material().shares.front();
  return isRefusedAs(host, statRequest(below(share, "no-such-name-here")), {Kind::notFound});
}

CheckVerdict refusalsHoldNoNames(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const std::string& share = host.material().shares.front();
  for (const char* const name : {"this is a directory", "this is not a directory", "not a file"}) {
    auto verdict = isRefusedAs(host, statRequest(below(share, name)), {Kind::notFound});
    if (verdict.outcome != CheckOutcome::pass) {
      verdict.note += " (readers look for words: never put a location into a message)";
      return verdict;
    }
  }
  return passed();
}

CheckVerdict nothingIsBelowAFile(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped("share a file with content");
  return isRefusedAs(host, statRequest(below(file->location, "x")),
                     {Kind::notADirectory, Kind::notFound});
}

constexpr std::array checks = {
    HostCheck{401, "a file's status says so", aFileIsAFile},
    HostCheck{402, "a folder's status says so", aFolderIsAFolder},
    HostCheck{403, "a status has the location's last name", theNameIsTheLastOne},
    HostCheck{404, "sizes are not negative", sizesAreNotNegative},
    HostCheck{405, "times are milliseconds", timesAreMilliseconds},
    HostCheck{406, "modes agree with kinds", modesAgreeWithKinds},
    HostCheck{407, "what is not there is understood as missing", whatIsNotThereIsMissing},
    HostCheck{408, "a missing name's own words change nothing", refusalsHoldNoNames},
    HostCheck{409, "nothing is below a file", nothingIsBelowAFile}};

}  // namespace

std::span<const HostCheck> statChecks() { return checks; }

}  // namespace tarnel
