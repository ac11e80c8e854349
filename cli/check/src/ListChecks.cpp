// 5xx: listings.
#include <algorithm>
#include <array>
#include <set>
#include <string>

#include "CheckGroups.h"
#include "HostProbe.h"
#include "Refusals.h"
#include "fs/FabricLocation.h"

namespace tarnel {
namespace {

using Kind = FabricSourceError::Kind;

// A folder with something in it, else any share.
std::string someFolder(HostProbe& host) {
  const Material& material = host.material();
  if (material.folder) return *material.folder;
  return material.shares.empty() ? std::string() : material.shares.front();
}

Checked<std::vector<ControlStat>> entriesOf(const HostProbe& host, const std::string& folder) {
  auto answer = host.ask(listRequest(folder));
  if (!answer) return std::unexpected(answer.error());
  if (answer->response.entries) return std::move(*answer->response.entries);
  return failing("`list` of " + quoted(folder) + " was answered without `entries`, with " +
                 quoted(answer->line) + ": answer `entries`, an empty list where nothing is");
}

CheckVerdict aListingReadsAsRecords(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  std::vector<std::string> folders = {host.material().shares.front(), someFolder(host)};
  if (host.material().subfolder) folders.push_back(*host.material().subfolder);
  for (const std::string& folder : folders) {
    if (const auto entries = entriesOf(host, folder); !entries) return entries.error();
  }
  return passed();
}

CheckVerdict listedNamesAreSafe(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const auto entries = entriesOf(host, someFolder(host));
  if (!entries) return skipped("needs check 501 to pass");
  for (const ControlStat& entry : *entries) {
    if (isSafeFabricName(entry.name)) continue;
    return failedCheck("the listed name " + quoted(entry.name) +
                       " is never shown: list single "
                       "names, without \".\" and \"..\", \"/\" and NUL");
  }
  return passed();
}

CheckVerdict noNameIsListedTwice(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const auto entries = entriesOf(host, someFolder(host));
  if (!entries) return skipped("needs check 501 to pass");
  std::set<std::string_view> names;  // bytes: two compositions of a name are two files
  for (const ControlStat& entry : *entries) {
    if (names.insert(entry.name).second) continue;
    return failedCheck("the name " + quoted(entry.name) + " is listed twice: list each name once");
  }
  return passed();
}

CheckVerdict listedSizesAreNotNegative(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const auto entries = entriesOf(host, someFolder(host));
  if (!entries) return skipped("needs check 501 to pass");
  for (const ControlStat& entry : *entries) {
    if (entry.size >= 0) continue;
    return failedCheck("the listed size of " + quoted(entry.name) + " is " +
                       std::to_string(entry.size) + ": give bytes, never less than 0");
  }
  return passed();
}

CheckVerdict anEmptyFolderIsAnEmptyList(HostProbe& host) {
  if (const auto& lacking = host.material().lackingEntries) {
    return failedCheck("the listing of " + quoted(*lacking) +
                       " has no `entries` and is no refusal: an empty list is a list as well");
  }
  const auto& folder = host.material().emptyFolder;
  if (!folder) return skipped("share an empty folder");
  const auto entries = entriesOf(host, *folder);
  return entries ? passed() : entries.error();
}

CheckVerdict namesAloneAreAnsweredAsNames(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  ControlRequest request = listRequest(someFolder(host));
  request.namesOnly = true;
  const auto answer = host.ask(request);
  if (!answer) return answer.error();
  if (answer->response.names && !answer->response.entries) return passed();
  return failedCheck("`list` with namesOnly was answered with " + quoted(answer->line) +
                     ": answer `names`, whose records have the keys n and d");
}

CheckVerdict aLimitIsKept(HostProbe& host) {
  if (!host.material().folder) return skipped("share a folder with something in it");
  for (const bool namesOnly : {false, true}) {
    ControlRequest request = listRequest(*host.material().folder);
    request.limit = 1;
    if (namesOnly) request.namesOnly = true;
    const auto answer = host.ask(request);
    if (!answer) return answer.error();
    const auto& entries = answer->response.entries;
    const auto& names = answer->response.names;
    if ((entries && entries->size() > 1) || (names && names->size() > 1)) {
      return failedCheck("`list` with limit 1 gave more than one record: end at the limit");
    }
    if (!entries && !names) {
      return failedCheck("`list` with limit 1 was answered with " + quoted(answer->line) +
                         ": list the first of what is there");
    }
  }
  ControlRequest negative = listRequest(*host.material().folder);
  negative.limit = -1;
  return isRefused(host, negative);
}

CheckVerdict aFileHasNoListing(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped("share a file with content");
  return isRefusedAs(host, listRequest(file->location), {Kind::notADirectory});
}

CheckVerdict whatIsNotThereHasNoListing(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const std::string& share = host.material().shares.front();
  return isRefusedAs(host, listRequest(below(share, "no-such-name-here")), {Kind::notFound});
}

CheckVerdict bigListingsFitALine(HostProbe& host) {
  constexpr std::size_t big = 10'000;
  const Material& material = host.material();
  if (material.tooLongListing) {
    return failedCheck("the listing of " + quoted(*material.tooLongListing) +
                       " is a line of more "
                       "than 16 MiB: refuse such a folder with a message");
  }
  if (material.longestListing >= big) return passed();
  return skipped("share a folder of 10,000 files, or of 200,000, whose listing passes 16 MiB");
}

constexpr std::array checks = {
    HostCheck{501, "a listing reads as records", aListingReadsAsRecords},
    HostCheck{502, "listed names are safe", listedNamesAreSafe},
    HostCheck{503, "no name is listed twice", noNameIsListedTwice},
    HostCheck{504, "listed sizes are not negative", listedSizesAreNotNegative},
    HostCheck{505, "an empty folder is an empty list", anEmptyFolderIsAnEmptyList},
    HostCheck{506, "names alone are answered as names", namesAloneAreAnsweredAsNames},
    HostCheck{507, "a listing's limit is kept", aLimitIsKept},
    HostCheck{508, "a file's listing is understood as not a directory", aFileHasNoListing},
    HostCheck{509, "the listing of what is not there is understood as missing",
              whatIsNotThereHasNoListing},
    HostCheck{510, "big listings fit a line of 16 MiB", bigListingsFitALine}};

}  // namespace

std::span<const HostCheck> listChecks() { return checks; }

}  // namespace tarnel
